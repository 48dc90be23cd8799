// SPDX-License-Identifier: MIT
#include "output/printer.hpp"

#include <algorithm>
#include <cstdio>
#include <string>

#include "output/observe.hpp"

namespace qdcli {

void Printer::bind(Bound &bound, const PrtValue &value, bool tell) {
    const void *bytes = nullptr;
    std::uint32_t length = 0;
    switch (value.kind) {
    case PrtValue::Kind::u32:
    case PrtValue::Kind::i32:
        bound.u32 = static_cast<std::uint32_t>(value.number);
        bytes = &bound.u32;
        length = 4;
        break;
    case PrtValue::Kind::u64:
        bound.u64 = value.number;
        bytes = &bound.u64;
        length = 8;
        break;
    case PrtValue::Kind::text: {
        const char *text = value.text ? value.text : "";
        bytes = text;
        length = static_cast<std::uint32_t>(std::strlen(text) + 1);
        break;
    }
    }
    cmd_prt_arg_make(&bound.arg, value.attr, bytes, length);
    if (tell) observe::value(value.attr, bytes, length);
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

namespace {

// Formats into a buffer of `buffer_size` bytes (at most 256), cut like snprintf.
struct Formatted {
    char text[256] = "";
    Formatted(std::size_t buffer_size, const char *format, va_list args) {
        if (buffer_size > sizeof text) buffer_size = sizeof text;
        if (buffer_size > 0) std::vsnprintf(text, buffer_size, format, args);
    }
};

}  // namespace

void Printer::formatted(std::size_t buffer_size, const char *format, ...) {
    if (buffer_size == 0) return;
    va_list args;
    va_start(args, format);
    const Formatted f(buffer_size, format, args);
    va_end(args);
    literal(f.text);
}

void Printer::fail_literal(qdcli_failure_kind kind, std::int32_t code, const char *text) {
    literal(text);
    observe::failure(kind, text, code);
}

void Printer::fail(qdcli_failure_kind kind, std::int32_t code, std::size_t buffer_size, const char *format, ...) {
    va_list args;
    va_start(args, format);
    vfail(kind, code, buffer_size, format, args);
    va_end(args);
}

void Printer::vfail(qdcli_failure_kind kind, std::int32_t code, std::size_t buffer_size, const char *format,
                    va_list args) {
    if (buffer_size == 0) return;
    const Formatted f(buffer_size, format, args);
    fail_literal(kind, code, f.text);
}

}  // namespace qdcli
