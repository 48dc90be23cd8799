# SPDX-License-Identifier: MIT
# Shared by the fuzz build (fuzz/CMakeLists.txt) and the replay test
# (tests/fuzz-regression): the targets are the files fuzz/entries/<name>.cpp.
set(QDFUZZ_DIR ${CMAKE_CURRENT_LIST_DIR})
set(QDFUZZ_HARNESS_SOURCES
  ${QDFUZZ_DIR}/harness/harness.cpp
  ${QDFUZZ_DIR}/harness/layouts.cpp)

# Names of all targets, sorted.
function(qdfuzz_target_names out)
  file(GLOB entries CONFIGURE_DEPENDS ${QDFUZZ_DIR}/entries/*.cpp)
  set(names "")
  foreach(entry ${entries})
    get_filename_component(name ${entry} NAME_WE)
    list(APPEND names ${name})
  endforeach()
  list(SORT names)
  set(${out} ${names} PARENT_SCOPE)
endfunction()

# Writes a source file with the table of all targets (name, entry, seeds).
function(qdfuzz_write_registry path)
  qdfuzz_target_names(names)
  set(text "// Generated from fuzz/entries/*.cpp by fuzz/qdfuzz.cmake.\n#include \"harness/registry.hpp\"\n\n")
  foreach(name ${names})
    string(APPEND text "QDFUZZ_ENTRY(${name});\n")
  endforeach()
  string(APPEND text "\nnamespace qdfuzz {\nconst Target kTargets[] = {\n")
  foreach(name ${names})
    string(APPEND text "    {\"${name}\", qdfuzz_${name}, qdfuzz_seeds_${name}},\n")
  endforeach()
  string(APPEND text "};\nconst std::size_t kTargetCount = sizeof kTargets / sizeof kTargets[0];\n}  // namespace qdfuzz\n")
  file(CONFIGURE OUTPUT ${path} CONTENT "${text}")
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
