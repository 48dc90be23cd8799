# SPDX-License-Identifier: MIT
# Installs the build tree into a fresh prefix, checks the installed files,
# reads the pkg-config file, and builds a small consumer with
# find_package(qdcli).
#
# Arguments (-D): BUILD_DIR, PREFIX, LIBDIR, INCLUDEDIR, CONSUMER_SOURCE,
# CONSUMER_BINARY, GENERATOR, C_COMPILER, PKG_CONFIG (may be empty),
# CXX_COMPILER, CXX_FLAGS (the build's, sanitizers included), MAKE_PROGRAM,
# HOST_SOURCE, HOST_BINARY.

function(fail what)
  message(FATAL_ERROR "install check: ${what}")
endfunction()

file(REMOVE_RECURSE "${PREFIX}" "${CONSUMER_BINARY}" "${HOST_BINARY}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${PREFIX}"
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  fail("cmake --install failed (${rc}):\n${out}${err}")
endif()

foreach(path
    ${LIBDIR}/libqdcli.so
    ${INCLUDEDIR}/qdcli/platform.h
    ${INCLUDEDIR}/qdcli/wire.h
    ${INCLUDEDIR}/qdcli/handlers.h
    ${INCLUDEDIR}/qdcli/commands.h
    ${LIBDIR}/cmake/qdcli/qdcliConfig.cmake
    ${LIBDIR}/cmake/qdcli/qdcliConfigVersion.cmake
    ${LIBDIR}/cmake/qdcli/qdcliTargets.cmake
    ${LIBDIR}/pkgconfig/qdcli.pc)
  if(NOT EXISTS "${PREFIX}/${path}")
    fail("${path} was not installed")
  endif()
endforeach()

# The pkg-config file must lead to the installed headers and library.
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} "${PREFIX}/${LIBDIR}/pkgconfig")
  execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs qdcli
    RESULT_VARIABLE rc OUTPUT_VARIABLE flags ERROR_VARIABLE err OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT rc EQUAL 0)
    fail("pkg-config does not accept qdcli.pc: ${err}")
  endif()
  # Each flag names a directory that holds what it is for.
  foreach(check "-I;include;qdcli/handlers.h" "-L;library;libqdcli.so")
    list(GET check 0 flag)
    list(GET check 1 what)
    list(GET check 2 file)
    if(NOT flags MATCHES "${flag}([^ ]+)")
      fail("pkg-config gives no ${what} directory: ${flags}")
    endif()
    if(NOT EXISTS "${CMAKE_MATCH_1}/${file}")
      fail("pkg-config ${what} directory ${CMAKE_MATCH_1} holds no ${file}")
    endif()
  endforeach()
  if(NOT flags MATCHES "-lqdcli")
    fail("pkg-config does not link -lqdcli: ${flags}")
  endif()
endif()

# A consumer that finds the package and links qdcli::qdcli.
execute_process(COMMAND "${CMAKE_COMMAND}" -S "${CONSUMER_SOURCE}" -B "${CONSUMER_BINARY}" -G "${GENERATOR}"
    "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_PREFIX_PATH=${PREFIX}"
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  fail("the consumer could not be configured:\n${out}${err}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${CONSUMER_BINARY}"
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  fail("the consumer could not be built:\n${out}${err}")
endif()
message(STATUS "install check: ${PREFIX} holds the library, headers, package and pkg-config files")

# The pieces of the other components: the simulator's library, header and
# pkg-config file, qdsh with its man page and completion, the licence.
foreach(path
    ${LIBDIR}/libqdsim.so
    ${INCLUDEDIR}/qdsim/sim.h
    ${LIBDIR}/pkgconfig/qdsim.pc
    ${LIBDIR}/cmake/qdcli/qdsimTargets.cmake
    bin/qdsh
    share/man/man1/qdsh.1
    share/bash-completion/completions/qdsh
    share/doc/qdcli/LICENSE)
  if(NOT EXISTS "${PREFIX}/${path}")
    fail("${path} was not installed")
  endif()
endforeach()

# The installed scenarios' README links only to files that are installed.
file(READ "${PREFIX}/share/qdcli/scenarios/README.md" scenarios_readme)
string(REGEX MATCHALL "\\]\\([^)#]+" links "${scenarios_readme}")
foreach(link ${links})
  string(SUBSTRING "${link}" 2 -1 target)
  if(NOT target MATCHES "^[a-z]+:" AND NOT EXISTS "${PREFIX}/share/qdcli/scenarios/${target}")
    fail("share/qdcli/scenarios/README.md links to ${target}, which is not installed")
  endif()
endforeach()

function(run_checked what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    fail("${what} failed (${rc}):\n${out}${err}")
  endif()
  set(run_output "${out}" PARENT_SCOPE)
endfunction()

# The example host reports all three ways; both builds must print them.
function(check_host_output how)
  foreach(expected "No-credit" "status 0" "range [0-9]+ to [0-9]+, default [01]")
    if(NOT run_output MATCHES "${expected}")
      fail("the example host built with ${how} printed no \"${expected}\":\n${run_output}")
    endif()
  endforeach()
endfunction()

# Outside CMake project: find_package(qdcli COMPONENTS sim).
run_checked("configuring the example host" "${CMAKE_COMMAND}" -S "${HOST_SOURCE}" -B "${HOST_BINARY}/cmake"
  -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_PREFIX_PATH=${PREFIX}"
  "-DCMAKE_BUILD_RPATH=${PREFIX}/${LIBDIR}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
  "-DCMAKE_EXE_LINKER_FLAGS=${CXX_FLAGS}")
run_checked("building the example host" "${CMAKE_COMMAND}" --build "${HOST_BINARY}/cmake")
run_checked("the example host (CMake)" "${HOST_BINARY}/cmake/qdcli_example_host")
check_host_output(find_package)

# Outside Makefile project: pkg-config qdsim (which requires qdcli).
if(PKG_CONFIG AND MAKE_PROGRAM)
  file(MAKE_DIRECTORY "${HOST_BINARY}/make")
  file(COPY "${HOST_SOURCE}/host.cpp" "${HOST_SOURCE}/Makefile" DESTINATION "${HOST_BINARY}/make")
  # As the README writes it: PKG_CONFIG_PATH on make's command line, not in
  # the environment.
  unset(ENV{PKG_CONFIG_PATH})
  run_checked("building the example host with make" "${MAKE_PROGRAM}" -C "${HOST_BINARY}/make"
    "PKG_CONFIG_PATH=${PREFIX}/${LIBDIR}/pkgconfig"
    "CXX=${CXX_COMPILER}" "PKG_CONFIG=${PKG_CONFIG}" "CXXFLAGS=-O2 -Wall -Wextra ${CXX_FLAGS}")
  run_checked("the example host (make)" "${HOST_BINARY}/make/qdcli_example_host")
  check_host_output(pkg-config)
endif()

# One component alone: the runtime is the library and nothing to build with.
file(REMOVE_RECURSE "${PREFIX}-runtime")
run_checked("installing the runtime component" "${CMAKE_COMMAND}" --install "${BUILD_DIR}"
  --prefix "${PREFIX}-runtime" --component runtime)
file(GLOB runtime_libs "${PREFIX}-runtime/${LIBDIR}/libqdcli.so.*")
if(NOT runtime_libs)
  fail("the runtime component holds no libqdcli.so.N")
endif()
foreach(path ${INCLUDEDIR}/qdcli/platform.h ${LIBDIR}/libqdcli.so ${LIBDIR}/libqdsim.so bin/qdsh)
  if(EXISTS "${PREFIX}-runtime/${path}")
    fail("the runtime component installs ${path}")
  endif()
endforeach()
message(STATUS "install check: the example host builds and runs with find_package and pkg-config")
