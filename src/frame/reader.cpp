// SPDX-License-Identifier: MIT
#include "frame/reader.hpp"

#include <cstring>

namespace qdcli {

std::uint8_t PayloadReader::u8(std::size_t offset) const {
    return covers(offset, 1) ? data_[offset] : 0;
}

std::uint16_t PayloadReader::be16(std::size_t offset) const {
    if (!covers(offset, 2)) return 0;
    return static_cast<std::uint16_t>((data_[offset] << 8) | data_[offset + 1]);
}

std::uint32_t PayloadReader::be32(std::size_t offset) const {
    if (!covers(offset, 4)) return 0;
    const std::uint8_t *p = data_ + offset;
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) |
           std::uint32_t{p[3]};
}

std::uint16_t PayloadReader::host16(std::size_t offset) const {
    std::uint16_t value = 0;
    if (covers(offset, 2)) std::memcpy(&value, data_ + offset, 2);
    return value;
}

std::uint32_t PayloadReader::host32(std::size_t offset) const {
    std::uint32_t value = 0;
    if (covers(offset, 4)) std::memcpy(&value, data_ + offset, 4);
    return value;
}

std::uint64_t PayloadReader::be64_low_first(std::size_t offset) const {
    if (!covers(offset, 8)) return 0;
    return std::uint64_t{be32(offset)} | (std::uint64_t{be32(offset + 4)} << 32);
}

std::uint64_t PayloadReader::host64_low_first(std::size_t offset) const {
    if (!covers(offset, 8)) return 0;
    return std::uint64_t{host32(offset)} | (std::uint64_t{host32(offset + 4)} << 32);
}

}  // namespace qdcli
