// SPDX-License-Identifier: MIT
#include "elf_dynamic.hpp"

#include <elf.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace qdabi {
namespace {

bool read_file(const std::string &path, std::string &contents) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    contents.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return true;
}

// A checked view of the file: a record is copied out only when it lies
// entirely inside the file.
class Image {
public:
    explicit Image(const std::string &bytes) : bytes_(bytes) {}

    bool fits(std::uint64_t offset, std::uint64_t count) const {
        return offset <= bytes_.size() && count <= bytes_.size() - offset;
    }
    template <class T>
    bool read(std::uint64_t offset, T &out) const {
        if (!fits(offset, sizeof out)) return false;
        std::memcpy(&out, bytes_.data() + offset, sizeof out);
        return true;
    }
    // NUL-terminated string at `offset` of the string table [base, base + size).
    bool string_at(const Elf64_Shdr &table, std::uint64_t offset, std::string &out) const {
        if (offset >= table.sh_size || !fits(table.sh_offset, table.sh_size)) return false;
        const char *start = bytes_.data() + table.sh_offset + offset;
        const std::size_t room = table.sh_size - offset;
        const void *end = std::memchr(start, '\0', room);
        if (end == nullptr) return false;
        out.assign(start, static_cast<const char *>(end));
        return true;
    }

private:
    const std::string &bytes_;
};

}  // namespace

bool read_dynamic_info(const std::string &path, DynamicInfo &info, std::string &error) {
    std::string bytes;
    if (!read_file(path, bytes)) {
        error = "cannot read " + path;
        return false;
    }
    const Image image(bytes);
    Elf64_Ehdr header;
    if (!image.read(0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ELFCLASS64) {
        error = path + " is not an ELF64 file";
        return false;
    }
    if (header.e_shentsize != sizeof(Elf64_Shdr) || header.e_shnum == 0) {
        error = path + " has no usable section headers";
        return false;
    }
    std::vector<Elf64_Shdr> sections(header.e_shnum);
    for (std::size_t i = 0; i < sections.size(); ++i) {
        if (!image.read(header.e_shoff + i * sizeof(Elf64_Shdr), sections[i])) {
            error = path + ": section header " + std::to_string(i) + " lies past the end of the file";
            return false;
        }
    }
    const auto linked = [&](const Elf64_Shdr &section, const Elf64_Shdr *&table) {
        if (section.sh_link >= sections.size()) return false;
        table = &sections[section.sh_link];
        return table->sh_type == SHT_STRTAB;
    };

    bool have_dynsym = false, have_dynamic = false;
    for (const Elf64_Shdr &section : sections) {
        const Elf64_Shdr *strings = nullptr;
        if (section.sh_type == SHT_DYNSYM) {
            if (!linked(section, strings) || section.sh_entsize != sizeof(Elf64_Sym)) {
                error = path + ": malformed .dynsym";
                return false;
            }
            have_dynsym = true;
            const std::uint64_t count = section.sh_size / sizeof(Elf64_Sym);
            for (std::uint64_t i = 1; i < count; ++i) {  // entry 0 is the null symbol
                Elf64_Sym sym;
                DynamicSymbol out;
                if (!image.read(section.sh_offset + i * sizeof(Elf64_Sym), sym) ||
                    !image.string_at(*strings, sym.st_name, out.name)) {
                    error = path + ": dynamic symbol " + std::to_string(i) + " is damaged";
                    return false;
                }
                out.defined = sym.st_shndx != SHN_UNDEF;
                out.absolute = sym.st_shndx == SHN_ABS;
                out.binding = ELF64_ST_BIND(sym.st_info);
                out.type = ELF64_ST_TYPE(sym.st_info);
                out.visibility = ELF64_ST_VISIBILITY(sym.st_other);
                info.symbols.push_back(out);
            }
        } else if (section.sh_type == SHT_DYNAMIC) {
            if (!linked(section, strings) || section.sh_entsize != sizeof(Elf64_Dyn)) {
                error = path + ": malformed .dynamic";
                return false;
            }
            have_dynamic = true;
            const std::uint64_t count = section.sh_size / sizeof(Elf64_Dyn);
            for (std::uint64_t i = 0; i < count; ++i) {
                Elf64_Dyn entry;
                if (!image.read(section.sh_offset + i * sizeof(Elf64_Dyn), entry)) {
                    error = path + ": dynamic entry " + std::to_string(i) + " lies past the end of the file";
                    return false;
                }
                if (entry.d_tag == DT_NULL) break;
                if (entry.d_tag == DT_SYMBOLIC) info.symbolic = true;
                if (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_SYMBOLIC) != 0) info.symbolic = true;
                if (entry.d_tag == DT_NEEDED) {
                    std::string name;
                    if (!image.string_at(*strings, entry.d_un.d_val, name)) {
                        error = path + ": DT_NEEDED entry with a damaged name";
                        return false;
                    }
                    info.needed.push_back(name);
                }
            }
        }
    }
    if (!have_dynsym || !have_dynamic) {
        error = path + " has no dynamic symbol table or no dynamic section";
        return false;
    }
    return true;
}

std::set<std::string> exported_names(const DynamicInfo &info) {
    std::set<std::string> names;
    for (const DynamicSymbol &sym : info.symbols) {
        const bool visible_binding = sym.binding == STB_GLOBAL || sym.binding == STB_WEAK ||
                                     sym.binding == STB_GNU_UNIQUE;
        const bool visible = sym.visibility == STV_DEFAULT || sym.visibility == STV_PROTECTED;
        if (sym.defined && !sym.absolute && visible_binding && visible) names.insert(sym.name);
    }
    return names;
}

std::set<std::string> version_nodes(const DynamicInfo &info) {
    std::set<std::string> names;
    for (const DynamicSymbol &sym : info.symbols)
        if (sym.absolute) names.insert(sym.name);
    return names;
}

std::set<std::string> undefined_names(const DynamicInfo &info) {
    std::set<std::string> names;
    for (const DynamicSymbol &sym : info.symbols)
        if (!sym.defined) names.insert(sym.name);
    return names;
}

bool read_version_script(const std::string &path, std::set<std::string> &names, std::string &error) {
    std::string text;
    if (!read_file(path, text)) {
        error = "cannot read " + path;
        return false;
    }
    text = std::regex_replace(text, std::regex(R"(/\*[\s\S]*?\*/)"), " ");
    const std::size_t global = text.find("global:");
    const std::size_t local = text.find("local:");
    if (global == std::string::npos || local == std::string::npos || local < global) {
        error = path + " has no global: section followed by local:";
        return false;
    }
    std::istringstream in(text.substr(global + 7, local - global - 7));
    std::string token;
    while (std::getline(in, token, ';')) {
        const std::size_t first = token.find_first_not_of(" \t\r\n");
        if (first == std::string::npos) continue;
        const std::size_t last = token.find_last_not_of(" \t\r\n");
        names.insert(token.substr(first, last - first + 1));
    }
    return true;
}

bool read_declared_functions(const std::string &path, std::set<std::string> &names, std::string &error) {
    std::ifstream in(path);
    if (!in) {
        error = "cannot read " + path;
        return false;
    }
    // A declaration starts in column 0 with its return type; continuation
    // lines, struct fields, comments and macros do not match.
    const std::regex declaration(R"(^(?:const\s+)?[A-Za-z_]\w*(?:\s+|\s*\*\s*)([A-Za-z_]\w*)\s*\()");
    std::string line;
    std::smatch match;
    while (std::getline(in, line)) {
        if (line.rfind("typedef", 0) == 0 || line.rfind("QDCLI_", 0) == 0) continue;
        if (std::regex_search(line, match, declaration)) names.insert(match[1]);
    }
    return true;
}

}  // namespace qdabi
