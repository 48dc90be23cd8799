# SPDX-License-Identifier: MIT
# Installation, in three components:
#   runtime      libqdcli.so.N (what a switch needs to run the handlers)
#   development  headers, the libqdcli.so link, CMake package, qdcli.pc
#   simulator    libqdsim.so, its header and qdsim.pc, qdsh with its man page
#                and bash completion, the example scenarios
# cmake --install build --component runtime installs one of them; without
# --component every one that was built is installed.
#
# The CMake package has one export set per component that has targets:
# find_package(qdcli) gives qdcli::qdcli, find_package(qdcli COMPONENTS sim)
# adds qdcli::qdsim.
include(CMakePackageConfigHelpers)

install(TARGETS qdcli EXPORT qdcliTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qdcli DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development)
# Schemas of the structured output, generated from the attribute catalogue
# (qdsh --schema json|xml), for any host that renders the same documents.
install(FILES ${PROJECT_SOURCE_DIR}/schema/qdcli-document.schema.json ${PROJECT_SOURCE_DIR}/schema/qdcli-document.xsd
  DESTINATION ${CMAKE_INSTALL_DATADIR}/qdcli/schema COMPONENT development)

set(QDCLI_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/qdcli)
install(EXPORT qdcliTargets
  NAMESPACE qdcli::
  FILE qdcliTargets.cmake
  DESTINATION ${QDCLI_INSTALL_CMAKEDIR}
  COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qdcliConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qdcliConfig.cmake
  INSTALL_DESTINATION ${QDCLI_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qdcliConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qdcliConfig.cmake ${PROJECT_BINARY_DIR}/qdcliConfigVersion.cmake
  DESTINATION ${QDCLI_INSTALL_CMAKEDIR}
  COMPONENT development)

# pkg-config: paths relative to the .pc file, so the installed tree can be
# moved (and installed with cmake --install --prefix).
set(QDCLI_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${QDCLI_PC_DIR}")
  set(QDCLI_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH QDCLI_PC_UP "/qdcli-root/${QDCLI_PC_DIR}" "/qdcli-root")
  string(REGEX REPLACE "/$" "" QDCLI_PC_UP "${QDCLI_PC_UP}")
  set(QDCLI_PC_PREFIX "\${pcfiledir}/${QDCLI_PC_UP}")
endif()
foreach(kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(QDCLI_PC_${kind} "${CMAKE_INSTALL_${kind}}")
  else()
    set(QDCLI_PC_${kind} "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/qdcli.pc.in ${PROJECT_BINARY_DIR}/qdcli.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qdcli.pc DESTINATION ${QDCLI_PC_DIR} COMPONENT development)

if(TARGET qdsim)
  install(TARGETS qdsim EXPORT qdsimTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT simulator)
  install(EXPORT qdsimTargets
    NAMESPACE qdcli::
    FILE qdsimTargets.cmake
    DESTINATION ${QDCLI_INSTALL_CMAKEDIR}
    COMPONENT simulator)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/sim/include/qdsim DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT simulator)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/scenarios/ DESTINATION ${CMAKE_INSTALL_DATADIR}/qdcli/scenarios
    COMPONENT simulator)
  # The scenario format, where the scenarios' README links to it (../sim/README.md).
  install(FILES ${PROJECT_SOURCE_DIR}/sim/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/qdcli/sim
    COMPONENT simulator)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/qdsim.pc.in ${PROJECT_BINARY_DIR}/qdsim.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/qdsim.pc DESTINATION ${QDCLI_PC_DIR} COMPONENT simulator)
endif()

if(TARGET qdsh)
  install(TARGETS qdsh RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT simulator)
  # Alerting and recording rules for what `qdsh serve` exports.
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/share/qdcli/prometheus/ DESTINATION ${CMAKE_INSTALL_DATADIR}/qdcli/prometheus
    COMPONENT simulator)
  install(FILES ${QDSH_MAN_PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT simulator)
  # Where bash-completion looks for completions loaded on demand.
  install(FILES ${QDSH_BASH_COMPLETION} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME qdsh COMPONENT simulator)
endif()

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
