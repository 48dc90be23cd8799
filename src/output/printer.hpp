// SPDX-License-Identifier: MIT
// Typed output through the shell's printer.
//
// A line is a fixed format whose %s conversions each take one typed value:
//   out.line("    qos-group %s\n", u32(attr::rx_qos_group, group));
// The values and their argument records live for the one cmd_prt call.
// Text that is not a fixed format (a formatted message, a name) goes through
// literal(), which prints it as it stands: a '%' in it is never a conversion.
// Every typed value is also told to the host's observer, if it has one, right
// before the line is printed (output/observe.hpp); line_untold() is for a line
// whose values the report tells the observer itself, in another shape.
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "qdcli/observer.h"
#include "qdcli/platform.h"

namespace qdcli {

// One typed value for a %s conversion.
struct PrtValue {
    enum class Kind { u32, u64, i32, text };
    std::uint32_t attr;
    Kind kind;
    std::uint64_t number;
    const char *text;
};

inline PrtValue u32(std::uint32_t attr, std::uint32_t value) { return {attr, PrtValue::Kind::u32, value, nullptr}; }
inline PrtValue i32(std::uint32_t attr, std::int32_t value) {
    return {attr, PrtValue::Kind::i32, static_cast<std::uint32_t>(value), nullptr};
}
inline PrtValue u64(std::uint32_t attr, std::uint64_t value) { return {attr, PrtValue::Kind::u64, value, nullptr}; }
// Text values are passed with length = text length + 1 (the NUL included).
inline PrtValue text(std::uint32_t attr, const char *value) { return {attr, PrtValue::Kind::text, 0, value}; }

class Printer {
public:
    explicit Printer(std::uint32_t handle) : handle_(handle) {}
    explicit Printer(cmd_paraminfo *pinfo) : handle_(cmd_paraminfo_to_rxhandle(pinfo)) {}

    std::uint32_t handle() const { return handle_; }

    // A fixed format with one typed value per %s conversion.
    template <class... V>
    void line(const char *format, const V &...values) {
        emit(true, format, std::index_sequence_for<V...>{}, values...);
    }

    template <class... V>
    void line_untold(const char *format, const V &...values) {
        emit(false, format, std::index_sequence_for<V...>{}, values...);
    }

    // Prints `text` exactly as it stands.
    void literal(std::string_view text);

    // Formats into a buffer of `buffer_size` bytes (longer text is cut to
    // buffer_size - 1 characters) and prints the result as it stands.
    void formatted(std::size_t buffer_size, const char *format, ...) __attribute__((format(printf, 3, 4)));

    void flush() { cmd_prt_send(handle_); }

    // A failure or refusal: printed as literal() or formatted() print it,
    // and told to the host's observer with the text printed.
    void fail_literal(qdcli_failure_kind kind, std::int32_t code, const char *text);
    void fail(qdcli_failure_kind kind, std::int32_t code, std::size_t buffer_size, const char *format, ...)
        __attribute__((format(printf, 5, 6)));
    void vfail(qdcli_failure_kind kind, std::int32_t code, std::size_t buffer_size, const char *format, va_list args)
        __attribute__((format(printf, 5, 0)));

private:
    struct Bound {
        cmd_prt_arg arg{};
        std::uint32_t u32 = 0;
        std::uint64_t u64 = 0;
    };

    static void bind(Bound &bound, const PrtValue &value, bool tell);

    template <class... V, std::size_t... I>
    void emit(bool tell, const char *format, std::index_sequence<I...>, const V &...values) {
        if constexpr (sizeof...(V) == 0) {
            (void)tell;
            cmd_prt(handle_, format);
        } else {
            std::array<Bound, sizeof...(V)> bound{};
            (bind(bound[I], values, tell), ...);
            cmd_prt(handle_, format, static_cast<const cmd_prt_arg *>(&bound[I].arg)...);
        }
    }

    std::uint32_t handle_;
};

}  // namespace qdcli
