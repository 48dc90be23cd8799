# Installs the build tree into a fresh prefix, checks the installed files,
# reads the pkg-config file, and builds a small consumer with
# find_package(qdcli).
#
# Arguments (-D): BUILD_DIR, PREFIX, LIBDIR, INCLUDEDIR, CONSUMER_SOURCE,
# CONSUMER_BINARY, GENERATOR, C_COMPILER, PKG_CONFIG (may be empty).

function(fail what)
  message(FATAL_ERROR "install check: ${what}")
endfunction()

file(REMOVE_RECURSE "${PREFIX}" "${CONSUMER_BINARY}")
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
  if(NOT flags MATCHES "-I([^ ]+)")
    fail("pkg-config gives no include directory: ${flags}")
  endif()
  if(NOT EXISTS "${CMAKE_MATCH_1}/qdcli/handlers.h")
    fail("pkg-config include directory ${CMAKE_MATCH_1} holds no qdcli/handlers.h")
  endif()
  if(NOT flags MATCHES "-L([^ ]+)")
    fail("pkg-config gives no library directory: ${flags}")
  endif()
  if(NOT EXISTS "${CMAKE_MATCH_1}/libqdcli.so")
    fail("pkg-config library directory ${CMAKE_MATCH_1} holds no libqdcli.so")
  endif()
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
