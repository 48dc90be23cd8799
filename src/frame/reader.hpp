// SPDX-License-Identifier: MIT
// Bounds-checked reader over a received payload.
//
// Every read of a reply goes through this view of (pointer, length). A read
// that would reach past the payload returns 0 and touches nothing; a report
// checks covers() for everything it will read before printing any of it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qdcli {

class PayloadReader {
public:
    PayloadReader() = default;
    PayloadReader(const void *data, std::size_t length)
        : data_(static_cast<const std::uint8_t *>(data)), length_(data ? length : 0) {}

    std::size_t length() const { return length_; }
    bool empty() const { return length_ == 0; }
    const std::uint8_t *data() const { return data_; }

    // True when bytes [offset, offset + count) lie inside the payload.
    // Compares lengths, so no pointer arithmetic can overflow.
    bool covers(std::size_t offset, std::size_t count) const {
        return offset <= length_ && count <= length_ - offset;
    }

    // The payload from `offset` on (empty when offset is past the end).
    PayloadReader from(std::size_t offset) const {
        if (offset >= length_) return {};
        return PayloadReader(data_ + offset, length_ - offset);
    }

    std::uint8_t u8(std::size_t offset) const;
    std::uint16_t be16(std::size_t offset) const;
    std::uint32_t be32(std::size_t offset) const;
    std::uint16_t host16(std::size_t offset) const;
    std::uint32_t host32(std::size_t offset) const;
    // 64-bit counter carried as two big-endian 32-bit words, low word first.
    std::uint64_t be64_low_first(std::size_t offset) const;
    // 64-bit counter carried as two host-order 32-bit words, low word first
    // (also correct for unaligned fields).
    std::uint64_t host64_low_first(std::size_t offset) const;

private:
    const std::uint8_t *data_ = nullptr;
    std::size_t length_ = 0;
};

}  // namespace qdcli
