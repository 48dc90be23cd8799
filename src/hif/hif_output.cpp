// SPDX-License-Identifier: MIT
#include "hif/hif_output.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <span>
#include <string_view>
#include <utility>

#include "output/observe.hpp"

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

// A piece as it is assembled, on the stack. A line of the report is well
// under 256 characters, and so are the piece formats and the printer formats
// made from them; whatever would run past the end is left out.
class PieceText {
public:
    void append(std::string_view text) {
        const std::size_t n = std::min(text.size(), kCapacity - size_);
        std::copy_n(text.begin(), n, chars_ + size_);
        size_ += n;
    }
    void append(std::size_t count, char c) {
        const std::size_t n = std::min(count, kCapacity - size_);
        std::fill_n(chars_ + size_, n, c);
        size_ += n;
    }
    void append(char c) { append(1, c); }
    const char *c_str() {
        chars_[size_] = '\0';
        return chars_;
    }

private:
    static constexpr std::size_t kCapacity = 255;
    char chars_[kCapacity + 1];
    std::size_t size_ = 0;
};

// Room for a number: a '-' and the 20 digits of the largest 64-bit value.
using NumberText = std::array<char, 21>;

template <class Number>
std::string_view number_text(Number value, int base, NumberText &chars) {
    const auto result = std::to_chars(chars.data(), chars.data() + chars.size(), value, base);
    return {chars.data(), result.ptr};
}

// What printf prints for `field` under conversion `c`: the conversion, not
// the field, decides the width of the value, as it does for printf.
std::string_view value_text(const Conversion &c, const Field &field, NumberText &chars) {
    if (field.kind == Field::Kind::text) return field.text ? field.text : "";
    const std::uint64_t value = c.long_value ? field.number : (field.number & 0xffffffffu);
    if (c.letter == 'd') {
        const std::int64_t signed_value = c.long_value ? static_cast<std::int64_t>(value)
                                                       : static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
        return number_text(signed_value, 10, chars);
    }
    return number_text(value, c.letter == 'x' ? 16 : 10, chars);
}

void pad(PieceText &out, std::string_view value, const Conversion &c) {
    const std::size_t blanks = value.size() < c.width ? c.width - value.size() : 0;
    if (!c.left) out.append(blanks, ' ');
    out.append(value);
    if (c.left) out.append(blanks, ' ');
}

// Walks a piece format: `text` gets each character that stands for itself
// ("%%" is one '%'), `conversion` each conversion.
template <class Text, class Convert>
void walk_format(const char *format, Text &&text, Convert &&conversion) {
    for (std::size_t i = 0; format[i] != '\0';) {
        if (format[i] != '%') {
            text(format[i++]);
        } else if (format[i + 1] == '%') {
            text('%');
            i += 2;
        } else {
            const Conversion c = parse_conversion(format, i);
            conversion(c);
            i = c.end;
        }
    }
}

// The text of a piece as the text report prints it: each conversion renders
// its field the way printf would render the field's value for it.
void render_text(const char *format, std::span<const Field> fields, PieceText &out) {
    std::size_t next = 0;
    walk_format(
        format, [&](char c) { out.append(c); },
        [&](const Conversion &c) {
            const Field missing{};
            const Field &field = next < fields.size() ? fields[next] : missing;
            ++next;
            NumberText chars;
            pad(out, value_text(c, field, chars), c);
        });
}

// The printer format of a piece: every conversion becomes %[-][width]s.
void typed_format(const char *format, PieceText &out) {
    walk_format(
        format, [&](char c) { out.append(c == '%' ? "%%" : std::string_view(&c, 1)); },
        [&](const Conversion &c) {
            out.append('%');
            if (c.left) out.append('-');
            NumberText chars;
            if (c.width) out.append(number_text(c.width, 10, chars));
            out.append('s');
        });
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

// The value of a field as the observer gets it: what the report prints, with
// the lengths of the printer's typed arguments (a counter of the text report
// is whole, 8 bytes).
void tell_field(const Field &field, bool whole_counters) {
    switch (field.kind) {
    case Field::Kind::word: observe::u32(field.attr, static_cast<std::uint32_t>(field.number)); break;
    case Field::Kind::counter:
        if (whole_counters)
            observe::u64(field.attr, field.number);
        else
            observe::u32(field.attr, static_cast<std::uint32_t>(field.number));
        break;
    case Field::Kind::wide: observe::u64(field.attr, field.number); break;
    case Field::Kind::text: observe::text(field.attr, field.text); break;
    }
}

}  // namespace

void HifOutput::tell(const Field &field) { tell_field(field, false); }

// ---- standard output ----

void TextOutput::put(const char *format, std::initializer_list<Field> fields) {
    for (const Field &field : fields) tell_field(field, true);
    PieceText text;
    render_text(format, std::span<const Field>(fields.begin(), fields.size()), text);
    std::fputs(text.c_str(), stdout);
}

void TextOutput::formatted(const char *format, ...) {
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
}

void TextOutput::fail(qdcli_failure_kind kind, std::int32_t code, const char *format, ...) {
    va_list args;
    va_start(args, format);
    observe::fail_on_stdout_v(kind, code, format, args);
    va_end(args);
}

void TextOutput::overflow_column(const Field &word) { put("  %8s", {word}); }

// ---- the shell's printer ----

void TypedOutput::put(const char *format, std::initializer_list<Field> fields) {
    PieceText typed;
    typed_format(format, typed);
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

void TypedOutput::fail(qdcli_failure_kind kind, std::int32_t code, const char *format, ...) {
    va_list args;
    va_start(args, format);
    printer_.vfail(kind, code, kTypedLineBuffer, format, args);
    va_end(args);
}

void TypedOutput::overflow_column(const Field &word) {
    char padded[16];
    std::snprintf(padded, sizeof padded, "  %8s", word.text ? word.text : "");
    put("  %8s", {label(word.attr, padded)});
}

}  // namespace qdcli::hif
