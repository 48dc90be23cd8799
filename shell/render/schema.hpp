// SPDX-License-Identifier: MIT
// The schemas of qdsh's structured output, generated from the attribute
// catalogue of the loaded library: a JSON Schema (draft 2020-12) and an XML
// Schema. Every member a document may have is declared, with its type, its
// range (the width of a counter, so that its wrap is known) and its
// description. The generated files are committed under schema/ and
// installed under share/qdcli/schema/.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "qdcli/attributes.h"

namespace qdsh {

// The words of a state attribute (qdcli_attr_states), or null.
using StatesLookup = const char *const *(*)(std::uint32_t);

std::string json_schema(const qdcli_attr_info *catalogue, std::size_t count, StatesLookup states = nullptr);
std::string xml_schema(const qdcli_attr_info *catalogue, std::size_t count, StatesLookup states = nullptr);

}  // namespace qdsh
