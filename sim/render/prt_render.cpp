// SPDX-License-Identifier: MIT
#include "render/prt_render.hpp"

#include <cstring>

#include "attribute_ids.hpp"
#include "qdcli/wire.h"

namespace qdprt {

void encode_arg(cmd_prt_arg *record, std::uint32_t attr, const void *value, std::uint32_t length) {
    if (record == nullptr) return;
    std::memset(record, 0, sizeof *record);
    std::memcpy(reinterpret_cast<char *>(record), &attr, 4);
    std::memcpy(reinterpret_cast<char *>(record) + 4, &length, 4);
    std::memcpy(reinterpret_cast<char *>(record) + 8, &value, sizeof value);
}

ArgView decode_arg(const cmd_prt_arg *record) {
    ArgView arg;
    if (record == nullptr) return arg;
    std::memcpy(&arg.attr, reinterpret_cast<const char *>(record), 4);
    std::memcpy(&arg.length, reinterpret_cast<const char *>(record) + 4, 4);
    std::memcpy(&arg.value, reinterpret_cast<const char *>(record) + 8, sizeof arg.value);
    return arg;
}

bool is_text_attr(std::uint32_t attr) {
    return ATTR_ID_TYPE(attr) == ATTR_TYPE_TEXT || attr == qdcli::attr::ext_if_name || attr == qdcli::attr::ext_drop_mode;
}

std::string value_text(const ArgView &arg) {
    const auto *bytes = static_cast<const unsigned char *>(arg.value);
    if (bytes == nullptr) return {};
    if (is_text_attr(arg.attr)) {
        std::size_t n = 0;
        while (n < arg.length && bytes[n] != '\0') ++n;
        return std::string(reinterpret_cast<const char *>(bytes), n);
    }
    switch (ATTR_ID_TYPE(arg.attr)) {
    case ATTR_TYPE_U8:
        return arg.length >= 1 ? std::to_string(bytes[0]) : std::string{};
    case ATTR_TYPE_INT32: {
        std::int32_t v = 0;
        if (arg.length >= 4) std::memcpy(&v, bytes, 4);
        return std::to_string(v);
    }
    default:
        if (arg.length >= 8) {
            std::uint64_t v = 0;
            std::memcpy(&v, bytes, 8);
            return std::to_string(v);
        }
        if (arg.length >= 4) {
            std::uint32_t v = 0;
            std::memcpy(&v, bytes, 4);
            return std::to_string(v);
        }
        if (arg.length == 2) {
            std::uint16_t v = 0;
            std::memcpy(&v, bytes, 2);
            return std::to_string(v);
        }
        return arg.length == 1 ? std::to_string(bytes[0]) : std::string{};
    }
}

namespace {

struct Conversion {
    bool left = false;
    int width = 0;
    int precision = -1;
    std::size_t end = 0;  // index just past the conversion
    bool valid = false;
};

Conversion parse_conversion(const char *format, std::size_t at) {
    Conversion c;
    std::size_t i = at + 1;
    if (format[i] == '-') {
        c.left = true;
        ++i;
    }
    while (format[i] >= '0' && format[i] <= '9') c.width = c.width * 10 + (format[i++] - '0');
    if (format[i] == '.') {
        ++i;
        c.precision = 0;
        while (format[i] >= '0' && format[i] <= '9') c.precision = c.precision * 10 + (format[i++] - '0');
    }
    if (format[i] == 's') {
        c.valid = true;
        c.end = i + 1;
    }
    return c;
}

}  // namespace

std::size_t count_conversions(const char *format) {
    std::size_t count = 0;
    for (std::size_t i = 0; format && format[i] != '\0'; ++i) {
        if (format[i] != '%') continue;
        if (format[i + 1] == '%') {
            ++i;
            continue;
        }
        const Conversion c = parse_conversion(format, i);
        if (c.valid) {
            ++count;
            i = c.end - 1;
        }
    }
    return count;
}

std::string render(const char *format, const std::vector<ArgView> &args) {
    std::string out;
    if (format == nullptr) return out;
    std::size_t next = 0;
    for (std::size_t i = 0; format[i] != '\0'; ++i) {
        if (format[i] != '%') {
            out += format[i];
            continue;
        }
        if (format[i + 1] == '%') {
            out += '%';
            ++i;
            continue;
        }
        const Conversion c = parse_conversion(format, i);
        if (!c.valid) {  // not a conversion of this printer: kept as it stands
            out += '%';
            continue;
        }
        std::string value = next < args.size() ? value_text(args[next]) : std::string{};
        ++next;
        if (c.precision >= 0 && value.size() > static_cast<std::size_t>(c.precision)) value.resize(c.precision);
        const std::size_t pad = value.size() < static_cast<std::size_t>(c.width) ? c.width - value.size() : 0;
        if (c.left) {
            out += value;
            out.append(pad, ' ');
        } else {
            out.append(pad, ' ');
            out += value;
        }
        i = c.end - 1;
    }
    return out;
}

}  // namespace qdprt
