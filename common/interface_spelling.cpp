// SPDX-License-Identifier: MIT
#include "interface_spelling.hpp"

#include <cctype>

namespace qdsim {

std::string fold_interface_name(std::string_view name) {
    std::string out;
    out.reserve(name.size());
    for (char c : name)
        if (c != ' ' && c != '\t') out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string expand_interface_name(std::string_view spelling) {
    std::string s = fold_interface_name(spelling);
    std::size_t letters = 0;
    while (letters < s.size() && std::isalpha(static_cast<unsigned char>(s[letters]))) ++letters;
    if (letters == 0 || letters == s.size() || !std::isdigit(static_cast<unsigned char>(s[letters]))) return s;
    if (std::string_view("ethernet").substr(0, letters) != std::string_view(s).substr(0, letters)) return s;
    return "ethernet" + s.substr(letters);
}

}  // namespace qdsim
