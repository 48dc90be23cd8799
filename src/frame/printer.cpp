#include "frame/printer.hpp"

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
    if (text.find('%') == std::string_view::npos) {
        const std::string copy(text);
        cmd_prt(handle_, copy.c_str());
        return;
    }
    std::string escaped;
    escaped.reserve(text.size() + 8);
    for (const char c : text) {
        escaped += c;
        if (c == '%') escaped += '%';
    }
    cmd_prt(handle_, escaped.c_str());
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
