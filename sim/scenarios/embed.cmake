# SPDX-License-Identifier: MIT
# Writes a C++ source that holds the default scenario's fragments.
#   cmake -DOUTPUT=<file.cpp> -DINPUTS=<a.json|b.json|...> -P embed.cmake
# The fragments are kept in the order given (the build sorts them by name).
string(REPLACE "|" ";" fragments "${INPUTS}")
set(delimiter "qdsim_fragment")
set(body "")
set(count 0)
foreach(fragment IN LISTS fragments)
  file(READ "${fragment}" text)
  string(FIND "${text}" ")${delimiter}\"" clash)
  if(NOT clash EQUAL -1)
    message(FATAL_ERROR "${fragment} contains the text that ends the embedded literal")
  endif()
  get_filename_component(name "${fragment}" NAME)
  string(APPEND body "    {\"${name}\", R\"${delimiter}(${text})${delimiter}\"},\n")
  math(EXPR count "${count} + 1")
endforeach()
if(count EQUAL 0)
  set(body "    {\"empty.json\", \"{}\"},\n")
  set(count 1)
endif()
file(WRITE "${OUTPUT}.tmp"
"// Generated from sim/scenarios/default/*.json by embed.cmake; do not edit.
#include \"model/embedded.hpp\"

namespace qdsim::embedded {

const Fragment kDefaultFragments[] = {
${body}};

const std::size_t kDefaultFragmentCount = ${count};

}  // namespace qdsim::embedded
")
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")
