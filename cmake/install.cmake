# Installation: the library, its headers, the CMake package (export set
# qdcliTargets, namespace qdcli::) and a pkg-config file.
#
# Included last from the top-level CMakeLists.txt, so every directory has
# added its own targets to the qdcliTargets export set (for instance
# install(TARGETS qdsim EXPORT qdcliTargets ...)) before it is written here.
include(CMakePackageConfigHelpers)

install(TARGETS qdcli EXPORT qdcliTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qdcli DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# CMake package: find_package(qdcli) gives qdcli::qdcli.
set(QDCLI_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/qdcli)
install(EXPORT qdcliTargets
  NAMESPACE qdcli::
  FILE qdcliTargets.cmake
  DESTINATION ${QDCLI_INSTALL_CMAKEDIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qdcliConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qdcliConfig.cmake
  INSTALL_DESTINATION ${QDCLI_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qdcliConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qdcliConfig.cmake ${PROJECT_BINARY_DIR}/qdcliConfigVersion.cmake
  DESTINATION ${QDCLI_INSTALL_CMAKEDIR})

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
install(FILES ${PROJECT_BINARY_DIR}/qdcli.pc DESTINATION ${QDCLI_PC_DIR})
