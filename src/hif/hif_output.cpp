#include "hif/hif_output.hpp"

#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <vector>

namespace qdcli::hif {
namespace {

// Line buffer of the typed report: a formatted text keeps at most 79
// characters and its NUL.
constexpr std::size_t kTypedLineBuffer = 80;
// A piece of this report carries at most five values (the pause-table line).
constexpr std::size_t kMaxFields = 5;

// One conversion of a piece format, from its '%' to its conversion letter.
struct Conversion {
    bool left = false;
    std::size_t width = 0;
    bool long_value = false;  // l, ll or L: a 64-bit value
    char letter = 0;          // 'd', 'u', 'x', 's'; 0 when the format ends early
    std::size_t end = 0;      // index just past the conversion
};

Conversion parse_conversion(const char *format, std::size_t at) {
    Conversion c;
    std::size_t i = at + 1;
    if (format[i] == '-') {
        c.left = true;
        ++i;
    }
    while (format[i] >= '0' && format[i] <= '9') c.width = c.width * 10 + static_cast<std::size_t>(format[i++] - '0');
    while (format[i] == 'l' || format[i] == 'L') {
        c.long_value = true;
        ++i;
    }
    c.letter = format[i];
    c.end = format[i] == '\0' ? i : i + 1;
    return c;
}

std::string number_text(std::uint64_t value, int base) {
    char digits[24];
    const auto result = std::to_chars(digits, digits + sizeof digits, value, base);
    return std::string(digits, result.ptr);
}

// What printf prints for `field` under conversion `c`: the conversion, not
// the field, decides the width of the value, as it does for printf.
std::string value_text(const Conversion &c, const Field &field) {
    if (field.kind == Field::Kind::text) return field.text ? field.text : "";
    const std::uint64_t value = c.long_value ? field.number : (field.number & 0xffffffffu);
    switch (c.letter) {
    case 'd':
        if (c.long_value) {
            const auto v = static_cast<std::int64_t>(value);
            return v < 0 ? "-" + number_text(0 - value, 10) : number_text(value, 10);
        } else {
            const auto v = static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
            return v < 0 ? "-" + number_text(0 - static_cast<std::int64_t>(v), 10) : number_text(value, 10);
        }
    case 'x':
        return number_text(value, 16);
    default:
        return number_text(value, 10);
    }
}

void pad(std::string &out, const std::string &value, const Conversion &c) {
    const std::size_t blanks = value.size() < c.width ? c.width - value.size() : 0;
    if (!c.left) out.append(blanks, ' ');
    out += value;
    if (c.left) out.append(blanks, ' ');
}

PrtValue typed_value(const Field &field) {
    switch (field.kind) {
    case Field::Kind::word:
    case Field::Kind::counter:
        return u32(field.attr, static_cast<std::uint32_t>(field.number));
    case Field::Kind::wide:
        return u64(field.attr, field.number);
    case Field::Kind::text:
        break;
    }
    return text(field.attr, field.text);
}

template <std::size_t... I>
void typed_line(Printer &printer, const char *format, const PrtValue *values, std::index_sequence<I...>) {
    printer.line(format, values[I]...);
}

}  // namespace

std::string render_text(const char *format, std::span<const Field> fields) {
    std::string out;
    std::size_t next = 0;
    for (std::size_t i = 0; format[i] != '\0';) {
        if (format[i] != '%') {
            out += format[i++];
            continue;
        }
        if (format[i + 1] == '%') {
            out += '%';
            i += 2;
            continue;
        }
        const Conversion c = parse_conversion(format, i);
        const Field missing{};
        const Field &field = next < fields.size() ? fields[next] : missing;
        ++next;
        pad(out, value_text(c, field), c);
        i = c.end;
    }
    return out;
}

std::string typed_format(const char *format) {
    std::string out;
    for (std::size_t i = 0; format[i] != '\0';) {
        if (format[i] != '%') {
            out += format[i++];
            continue;
        }
        if (format[i + 1] == '%') {
            out += "%%";
            i += 2;
            continue;
        }
        const Conversion c = parse_conversion(format, i);
        out += '%';
        if (c.left) out += '-';
        if (c.width) out += std::to_string(c.width);
        out += 's';
        i = c.end;
    }
    return out;
}

// ---- standard output ----

void TextOutput::put(const char *format, std::initializer_list<Field> fields) {
    const std::string text = render_text(format, std::span<const Field>(fields.begin(), fields.size()));
    std::fputs(text.c_str(), stdout);
}

void TextOutput::formatted(const char *format, ...) {
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
}

void TextOutput::overflow_column(const Field &word) { put("  %8s", {word}); }

// ---- the shell's printer ----

void TypedOutput::put(const char *format, std::initializer_list<Field> fields) {
    const std::string typed = typed_format(format);
    PrtValue values[kMaxFields]{};
    std::size_t count = 0;
    for (const Field &field : fields)
        if (count < kMaxFields) values[count++] = typed_value(field);
    switch (count) {
    case 0: typed_line(printer_, typed.c_str(), values, std::make_index_sequence<0>{}); break;
    case 1: typed_line(printer_, typed.c_str(), values, std::make_index_sequence<1>{}); break;
    case 2: typed_line(printer_, typed.c_str(), values, std::make_index_sequence<2>{}); break;
    case 3: typed_line(printer_, typed.c_str(), values, std::make_index_sequence<3>{}); break;
    case 4: typed_line(printer_, typed.c_str(), values, std::make_index_sequence<4>{}); break;
    default: typed_line(printer_, typed.c_str(), values, std::make_index_sequence<kMaxFields>{}); break;
    }
}

void TypedOutput::formatted(const char *format, ...) {
    char line[kTypedLineBuffer];
    va_list args;
    va_start(args, format);
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    printer_.literal(line);
}

void TypedOutput::overflow_column(const Field &word) {
    char padded[16];
    std::snprintf(padded, sizeof padded, "  %8s", word.text ? word.text : "");
    put("  %8s", {label(word.attr, padded)});
}

}  // namespace qdcli::hif
