// SPDX-License-Identifier: MIT
// Reads the dynamic symbol table and the DT_NEEDED/flags entries of an
// ELF64 shared object, with every offset checked against the file size.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace qdabi {

struct DynamicSymbol {
    std::string name;
    bool defined = false;   // st_shndx != SHN_UNDEF
    bool absolute = false;  // st_shndx == SHN_ABS: the name of a version node
    unsigned binding = 0;   // STB_*
    unsigned type = 0;      // STT_*
    unsigned visibility = 0;  // STV_*
};

struct DynamicInfo {
    std::vector<DynamicSymbol> symbols;  // .dynsym without its null entry
    std::vector<std::string> needed;     // DT_NEEDED, in order
    bool symbolic = false;               // DT_SYMBOLIC or DF_SYMBOLIC
};

// Parses `path`; on failure returns false and says why in `error`.
bool read_dynamic_info(const std::string &path, DynamicInfo &info, std::string &error);

// Names that a dynamic symbol table exports: defined, global or weak,
// default or protected visibility, not a version node.
std::set<std::string> exported_names(const DynamicInfo &info);
// Names of the version nodes it defines (absolute symbols).
std::set<std::string> version_nodes(const DynamicInfo &info);
// Names that it expects the host to provide.
std::set<std::string> undefined_names(const DynamicInfo &info);

// The names under "global:" of a linker version script.
bool read_version_script(const std::string &path, std::set<std::string> &names, std::string &error);
// The functions declared in a C header: "type name(" at the start of a line.
bool read_declared_functions(const std::string &path, std::set<std::string> &names, std::string &error);

}  // namespace qdabi
