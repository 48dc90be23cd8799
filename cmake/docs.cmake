# SPDX-License-Identifier: MIT
# API reference: cmake --build build --target docs writes build/docs/html.
# Doxygen warnings are errors, so an undocumented parameter or a broken
# reference fails the target.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  set(QDCLI_DOXYGEN_INPUT
    "${PROJECT_SOURCE_DIR}/docs/embedding.md ${PROJECT_SOURCE_DIR}/include/qdcli ${PROJECT_SOURCE_DIR}/sim/include/qdsim")
  configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
  add_custom_target(docs
    COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "Writing the API reference (${PROJECT_BINARY_DIR}/docs/html)"
    VERBATIM)
else()
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E echo "docs: doxygen is not installed (scripts/deps.sh test installs it)"
    COMMAND ${CMAKE_COMMAND} -E false
    VERBATIM)
endif()
