// SPDX-License-Identifier: MIT
#include "frame/printer.hpp"

#include <algorithm>
#include <cstdio>
#include <string>

namespace qdcli {

void Printer::bind(Bound &bound, const PrtValue &value) {
    switch (value.kind) {
    case PrtValue::Kind::u32:
    case PrtValue::Kind::i32:
        bound.u32 = static_cast<std::uint32_t>(value.number);
        cmd_prt_arg_make(&bound.arg, value.attr, &bound.u32, 4);
        break;
    case PrtValue::Kind::u64:
        bound.u64 = value.number;
        cmd_prt_arg_make(&bound.arg, value.attr, &bound.u64, 8);
        break;
    case PrtValue::Kind::text: {
        const char *text = value.text ? value.text : "";
        cmd_prt_arg_make(&bound.arg, value.attr, text, static_cast<std::uint32_t>(std::strlen(text) + 1));
        break;
    }
    }
}

void Printer::literal(std::string_view text) {
    // cmd_prt takes its text as a format: every '%' is doubled so that it
    // prints as it stands. Messages fit the stack buffer; a longer text is
    // assembled on the heap.
    const std::size_t escaped_size = text.size() + static_cast<std::size_t>(std::count(text.begin(), text.end(), '%'));
    char stack_buffer[512];
    std::string heap_buffer;
    char *out = stack_buffer;
    if (escaped_size >= sizeof stack_buffer) {
        heap_buffer.resize(escaped_size);
        out = heap_buffer.data();
    }
    std::size_t n = 0;
    for (const char c : text) {
        out[n++] = c;
        if (c == '%') out[n++] = '%';
    }
    out[n] = '\0';
    cmd_prt(handle_, out);
}

void Printer::formatted(std::size_t buffer_size, const char *format, ...) {
    char buffer[256];
    if (buffer_size == 0) return;
    if (buffer_size > sizeof buffer) buffer_size = sizeof buffer;
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, buffer_size, format, args);
    va_end(args);
    literal(buffer);
}

}  // namespace qdcli
