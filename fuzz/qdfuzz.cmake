# SPDX-License-Identifier: MIT
# Shared by the fuzz build (fuzz/CMakeLists.txt) and the replay test
# (tests/fuzz-regression): the targets are the rows of fuzz/entries/targets.hpp,
# defined in the family files fuzz/entries/*.cpp.
set(QDFUZZ_DIR ${CMAKE_CURRENT_LIST_DIR})
file(GLOB QDFUZZ_ENTRY_SOURCES CONFIGURE_DEPENDS ${QDFUZZ_DIR}/entries/*.cpp)
set(QDFUZZ_HARNESS_SOURCES
  ${QDFUZZ_DIR}/harness/harness.cpp
  ${QDFUZZ_DIR}/harness/layouts.cpp
  ${QDFUZZ_DIR}/harness/registry.cpp
  ${QDFUZZ_ENTRY_SOURCES})
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QDFUZZ_DIR}/entries/targets.hpp)

# Names of all targets, as the table lists them (sorted).
function(qdfuzz_target_names out)
  file(READ ${QDFUZZ_DIR}/entries/targets.hpp table)
  string(REGEX MATCHALL "\n *X\\([a-z0-9_]+\\)" rows "${table}")
  set(names "")
  foreach(row ${rows})
    string(REGEX REPLACE "^\n *X\\(([a-z0-9_]+)\\)$" "\\1" name "${row}")
    list(APPEND names ${name})
  endforeach()
  set(${out} ${names} PARENT_SCOPE)
endfunction()

# Sources of an existing target, as absolute paths.
function(qdfuzz_sources_of target out)
  get_target_property(sources ${target} SOURCES)
  get_target_property(base ${target} SOURCE_DIR)
  set(result "")
  foreach(source ${sources})
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${base} OUTPUT_VARIABLE absolute)
    list(APPEND result ${absolute})
  endforeach()
  set(${out} ${result} PARENT_SCOPE)
endfunction()
