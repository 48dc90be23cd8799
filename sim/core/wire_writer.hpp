// SPDX-License-Identifier: MIT
// Builds reply payloads byte by byte. Big-endian, host-order and the
// line cards' 64-bit encoding (two big-endian words, less significant first)
// are explicit in every call, so an encoder reads like its wire table.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qdsim {

class WireWriter {
public:
    WireWriter() = default;
    explicit WireWriter(std::size_t size) : bytes_(size, 0) {}

    std::size_t size() const { return bytes_.size(); }
    const std::vector<std::uint8_t> &bytes() const { return bytes_; }
    std::vector<std::uint8_t> take() { return std::move(bytes_); }

    // Appending.
    WireWriter &u8(std::uint32_t v) {
        bytes_.push_back(static_cast<std::uint8_t>(v));
        return *this;
    }
    WireWriter &be16(std::uint32_t v) { return u8(v >> 8).u8(v); }
    WireWriter &be32(std::uint32_t v) { return u8(v >> 24).u8(v >> 16).u8(v >> 8).u8(v); }
    WireWriter &host16(std::uint16_t v) { return raw(&v, 2); }
    WireWriter &host32(std::uint32_t v) { return raw(&v, 4); }
    WireWriter &host64(std::uint64_t v) { return raw(&v, 8); }
    WireWriter &be64_low_first(std::uint64_t v) {
        return be32(static_cast<std::uint32_t>(v)).be32(static_cast<std::uint32_t>(v >> 32));
    }
    WireWriter &zeros(std::size_t n) {
        bytes_.insert(bytes_.end(), n, 0);
        return *this;
    }
    // Text in a fixed field of `width` bytes, NUL-padded (cut to width - 1).
    WireWriter &text(std::string_view s, std::size_t width) {
        const std::size_t n = s.size() < width ? s.size() : (width ? width - 1 : 0);
        raw(s.data(), n);
        return zeros(width - n);
    }
    WireWriter &raw(const void *data, std::size_t n) {
        const auto *p = static_cast<const std::uint8_t *>(data);
        bytes_.insert(bytes_.end(), p, p + n);
        return *this;
    }

    // Writing at a fixed offset; the buffer grows as needed.
    void put_u8(std::size_t at, std::uint32_t v) { grow(at + 1)[at] = static_cast<std::uint8_t>(v); }
    void put_be16(std::size_t at, std::uint32_t v) {
        put_u8(at, v >> 8);
        put_u8(at + 1, v);
    }
    void put_be32(std::size_t at, std::uint32_t v) {
        put_be16(at, v >> 16);
        put_be16(at + 2, v);
    }
    void put_host32(std::size_t at, std::uint32_t v) { std::memcpy(grow(at + 4).data() + at, &v, 4); }
    void put_be64_low_first(std::size_t at, std::uint64_t v) {
        put_be32(at, static_cast<std::uint32_t>(v));
        put_be32(at + 4, static_cast<std::uint32_t>(v >> 32));
    }

private:
    std::vector<std::uint8_t> &grow(std::size_t size) {
        if (bytes_.size() < size) bytes_.resize(size, 0);
        return bytes_;
    }
    std::vector<std::uint8_t> bytes_;
};

}  // namespace qdsim
