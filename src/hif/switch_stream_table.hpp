// SPDX-License-Identifier: MIT
// Attribute-stream walk shared by the two switch-wide renderers.
//
// The daemon produces the switch-wide queuing report as a stream of
// attributes. Each renderer is a table with one row per attribute ID: how
// many bytes of the value the row reads, and what it prints. The walk looks
// the ID up, checks the value, and runs the row.
//
// Value lengths: every value is read through a PayloadReader over the value
// and the length that cmd_rsp_attr_getnext reported. A value shorter than the
// row reads is not rendered at all (no state word changes); it is reported
// like an unknown attribute, as " Malformed attr 0x%x: %u bytes, %u expected",
// and the walk goes on with the next attribute. A longer value is accepted
// and read from its start, so a u8 row takes the first (low) byte of a value
// sent as a 32-bit word.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "output/observe.hpp"
#include "frame/reader.hpp"
#include "qdcli/attributes.h"
#include "qdcli/platform.h"
#include "qdcli/wire.h"

namespace qdcli::stream {

// Bytes a row reads from the value, in host order.
inline constexpr std::uint8_t none = 0;
inline constexpr std::uint8_t u8 = 1;
inline constexpr std::uint8_t u16 = 2;
inline constexpr std::uint8_t u32 = 4;
inline constexpr std::uint8_t u64 = 8;

// Per-walk state common to both renderers. A row that ends the walk early
// (the hand-over to the host-interface renderer) sets `done` and `result`.
struct WalkState {
    bool done = false;
    std::int32_t result = -1;
};

template <class Context>
struct Row {
    std::uint32_t id;
    std::uint8_t width;
    void (*render)(Context &context, const PayloadReader &value);
};

template <class Context, std::size_t N>
constexpr bool ids_unique(const std::array<Row<Context>, N> &table) {
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t j = i + 1; j < N; ++j)
            if (table[i].id == table[j].id) return false;
    return true;
}

template <class Context, std::size_t N>
const Row<Context> *find_row(const std::array<Row<Context>, N> &table, std::uint32_t id) {
    for (const Row<Context> &row : table)
        if (row.id == id) return &row;
    return nullptr;
}

// Tells the host's observer the value a row reads: numbers widened to 32
// bits, 64-bit counters whole. An interface index is not told as a value: it
// starts the next subject, which carries it.
inline void tell_value(std::uint32_t id, std::uint8_t width, const PayloadReader &v) {
    if ((id >> 24) == ATTR_TYPE_IF_INDEX) return;
    switch (width) {
    case u8: observe::u32(id, v.u8(0)); break;
    case u16: observe::u32(id, v.host16(0)); break;
    case u32: observe::u32(id, v.host32(0)); break;
    case u64: observe::u64(id, v.host64_low_first(0)); break;
    default: break;
    }
}

// The observer's rows of a walk, by the catalogue: an attribute of a table
// starts a row of it when it is the table's index (unless it continues the
// index's list) or when another table's row is open; any other attribute
// ends the open row.
class StreamRows {
public:
    StreamRows() = default;
    StreamRows(const StreamRows &) = delete;
    StreamRows &operator=(const StreamRows &) = delete;
    ~StreamRows() { close(); }

    void before(std::uint32_t id) {
        const qdcli_attr_info *info = qdcli_attr_find(id);
        const char *table = info != nullptr && (id >> 24) != ATTR_TYPE_IF_INDEX ? info->table : nullptr;
        const bool starts = table != nullptr && (info->flags & QDCLI_ATTR_FLAG_ROW_START) != 0 &&
                            !((info->flags & QDCLI_ATTR_FLAG_LIST) != 0 && id == last_);
        if (table == nullptr || starts || table != open_) close();
        if (table != nullptr && open_ == nullptr) {
            open_ = table;
            observe::row_begin(open_);
        }
        last_ = id;
    }
    void close() {
        if (open_ != nullptr) observe::row_end(open_);
        open_ = nullptr;
    }

private:
    const char *open_ = nullptr;
    std::uint32_t last_ = 0;
};

// Fetches attributes until the end of the stream (-1) or until a row ends
// the walk; returns -1 or the result that row left.
template <class Context, std::size_t N>
std::int32_t walk(cmd_rsp *rsp, const std::array<Row<Context>, N> &table, Context &context) {
    // Without an observer nothing is looked up or told.
    const bool observed = observe::active();
    StreamRows rows;
    for (;;) {
        void *value = nullptr;
        std::uint32_t length = 0;
        const std::int32_t next = cmd_rsp_attr_getnext(rsp, &value, &length);
        if (next == -1) return -1;
        const auto id = static_cast<std::uint32_t>(next);
        const Row<Context> *row = find_row(table, id);
        if (row == nullptr) {
            std::printf("\n Unknown attr 0x%x\n", id);
            continue;
        }
        const PayloadReader reader(value, length);
        if (!reader.covers(0, row->width)) {
            observe::fail_on_stdout(QDCLI_FAILURE_DAMAGED, 0, "\n Malformed attr 0x%x: %u bytes, %u expected\n", id,
                                    static_cast<unsigned>(reader.length()), static_cast<unsigned>(row->width));
            continue;
        }
        if (observed) {
            rows.before(id);
            tell_value(id, row->width, reader);
        }
        row->render(context, reader);
        if (context.done) return context.result;
    }
}

// Value helpers: the reader has been checked to cover the row's width.
inline std::uint8_t byte_of(const PayloadReader &v) { return v.u8(0); }
inline std::uint16_t half_of(const PayloadReader &v) { return v.host16(0); }
inline std::uint32_t word_of(const PayloadReader &v) { return v.host32(0); }
inline std::int32_t signed_of(const PayloadReader &v) { return static_cast<std::int32_t>(v.host32(0)); }
inline unsigned long long counter_of(const PayloadReader &v) { return v.host64_low_first(0); }

}  // namespace qdcli::stream
