// SPDX-License-Identifier: MIT
#include "shell/catalogue.hpp"

#include <cstdio>

namespace qdsim::shell {

std::string attribute_name(std::uint32_t id) {
    if (const AttributeInfo *a = find_attribute(id)) return a->name;
    char buf[24];
    std::snprintf(buf, sizeof buf, "attr_0x%08x", id);
    return buf;
}

std::uint32_t expected_length(AttrKind kind) {
    switch (kind) {
    case QDCLI_ATTR_U8: return 1;
    case QDCLI_ATTR_U16: return 2;
    case QDCLI_ATTR_U32:
    case QDCLI_ATTR_I32:
    case QDCLI_ATTR_IF_INDEX: return 4;
    case QDCLI_ATTR_U64:
    case QDCLI_ATTR_FLAGS8: return 8;
    case QDCLI_ATTR_TEXT:
    case QDCLI_ATTR_MARKER: return 0;
    }
    return 0;
}

const char *kind_name(AttrKind kind) {
    switch (kind) {
    case QDCLI_ATTR_U8: return "u8";
    case QDCLI_ATTR_U16: return "u16";
    case QDCLI_ATTR_U32: return "u32";
    case QDCLI_ATTR_U64: return "u64";
    case QDCLI_ATTR_I32: return "i32";
    case QDCLI_ATTR_IF_INDEX: return "if_index";
    case QDCLI_ATTR_TEXT: return "text";
    case QDCLI_ATTR_FLAGS8: return "flags8";
    case QDCLI_ATTR_MARKER: return "marker";
    }
    return "?";
}

}  // namespace qdsim::shell
