// SPDX-License-Identifier: MIT
#include "output/bounded_string.hpp"

#include <cstring>

namespace qdcli {

std::size_t strnlen_s(const char *text, std::size_t max) {
    if (text == nullptr) return 0;
    std::size_t length = 0;
    while (length < max && text[length] != '\0') ++length;
    return length;
}

int strncpy_s(char *dest, std::size_t dest_size, const char *source, std::size_t count) {
    if (dest == nullptr || dest_size == 0) return 1;
    dest[0] = '\0';
    return strncat_s(dest, dest_size, source, count);
}

int strncat_s(char *dest, std::size_t dest_size, const char *source, std::size_t count) {
    if (dest == nullptr || dest_size == 0) return 1;
    std::size_t used = strnlen_s(dest, dest_size);
    if (used == dest_size) {  // no terminator within the buffer: cut it
        dest[dest_size - 1] = '\0';
        return 1;
    }
    if (source == nullptr) return 1;
    const std::size_t wanted = strnlen_s(source, count);
    const std::size_t room = dest_size - 1 - used;
    const std::size_t taken = wanted < room ? wanted : room;
    std::memcpy(dest + used, source, taken);
    dest[used + taken] = '\0';
    return taken < wanted ? 1 : 0;
}

}  // namespace qdcli
