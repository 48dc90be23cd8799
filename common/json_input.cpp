// SPDX-License-Identifier: MIT
#include "json_input.hpp"

#include "positions.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

namespace qdsim {
namespace {

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    ~FileDescriptor() {
        if (fd_ >= 0) close(fd_);
    }
    int get() const { return fd_; }

private:
    int fd_;
};

std::string size_text(std::size_t bytes) { return std::to_string(bytes >> 20) + " MiB"; }

}  // namespace

bool read_json_file(const std::string &path, std::string &text, std::string &error) {
    // O_NONBLOCK: opening a FIFO with no writer must not wait for one.
    FileDescriptor fd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (fd.get() < 0) {
        error = "cannot be read";
        return false;
    }
    struct stat st {};
    if (fstat(fd.get(), &st) != 0) {
        error = std::string("cannot be read: ") + std::strerror(errno);
        return false;
    }
    if (S_ISDIR(st.st_mode)) {
        error = "is a directory, not a scenario file";
        return false;
    }
    if (!S_ISREG(st.st_mode)) {
        error = "is not a regular file (a device, FIFO or socket is not read)";
        return false;
    }
    if (static_cast<std::uintmax_t>(st.st_size) > kMaxScenarioBytes) {
        error = "is larger than " + size_text(kMaxScenarioBytes) + ", the most a scenario file may hold";
        return false;
    }
    try {
        text.clear();
        text.reserve(static_cast<std::size_t>(st.st_size));
        char buffer[65536];
        for (;;) {
            const ssize_t n = read(fd.get(), buffer, sizeof buffer);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) {
                error = std::string("cannot be read: ") + std::strerror(errno);
                return false;
            }
            if (n == 0) break;
            // The file may grow while it is read: the bound holds all the same.
            if (text.size() + static_cast<std::size_t>(n) > kMaxScenarioBytes) {
                error = "is larger than " + size_text(kMaxScenarioBytes) + ", the most a scenario file may hold";
                return false;
            }
            text.append(buffer, static_cast<std::size_t>(n));
        }
    } catch (const std::bad_alloc &) {
        error = "cannot be read: out of memory";
        return false;
    }
    return true;
}

bool check_json_depth(std::string_view text, std::string &error, std::size_t &offset) {
    std::size_t depth = 0;
    std::size_t items = 0;
    bool in_string = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (in_string) {
            if (c == '\\')
                ++i;  // the escaped character, whatever it is
            else if (c == '"')
                in_string = false;
            continue;
        }
        if ((c == ',' || c == '[' || c == '{') && ++items > kMaxJsonItems) {
            error = "holds more than " + std::to_string(kMaxJsonItems) + " values";
            offset = i;
            return false;
        }
        switch (c) {
        case '"': in_string = true; break;
        case '[':
        case '{':
            if (++depth > kMaxJsonDepth) {
                error = "nests deeper than " + std::to_string(kMaxJsonDepth) + " levels";
                offset = i;
                return false;
            }
            break;
        case ']':
        case '}':
            if (depth > 0) --depth;  // an unbalanced text is the parser's to refuse
            break;
        default: break;
        }
    }
    return true;
}

namespace {

enum class Parsed { ok, refused, syntax };

// Parses `text` within the nesting limit: refused with `error` saying why, or
// a syntax error that `failure` places.
Parsed parse_checked(std::string_view text, Json &out, ParseFailure &failure, std::string &error) {
    std::size_t offset = 0;
    if (!check_json_depth(text, error, offset)) {
        error += " (at byte " + std::to_string(offset + 1) + ")";
        return Parsed::refused;
    }
    try {
        PositionMap positions;
        if (!parse_with_positions(text, {}, out, positions, failure)) return Parsed::syntax;
    } catch (const std::bad_alloc &) {
        error = "does not fit in memory";
        return Parsed::refused;
    }
    return Parsed::ok;
}

}  // namespace

bool parse_json_value(std::string_view text, Json &out, std::string &error) {
    ParseFailure failure;
    try {
        const Parsed parsed = parse_checked(text, out, failure, error);
        if (parsed == Parsed::syntax)
            error = "is not JSON: " + failure.reason + " (line " + std::to_string(failure.where.line) + ", column " +
                    std::to_string(failure.where.column) + ")";
        return parsed == Parsed::ok;
    } catch (const std::exception &) {
        error = "is not JSON";
        return false;
    }
}

bool read_json_document(const std::string &path, Json &out, std::string &error) {
    std::string text;
    if (!read_json_file(path, text, error)) return false;
    ParseFailure failure;
    const Parsed parsed = parse_checked(text, out, failure, error);
    if (parsed == Parsed::syntax)
        error = "line " + std::to_string(failure.where.line) + ", column " + std::to_string(failure.where.column) +
                ": " + failure.reason;
    return parsed == Parsed::ok;
}

namespace {

// Length of the valid UTF-8 sequence at text[i] (0: not one) and its code point.
std::size_t utf8_sequence(std::string_view text, std::size_t i, std::uint32_t &code) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char b = byte(i);
    std::size_t n = 0;
    unsigned char lo = 0x80, hi = 0xbf;
    if (b >= 0xc2 && b <= 0xdf) {
        n = 2;
        code = b & 0x1fu;
    } else if (b >= 0xe0 && b <= 0xef) {
        n = 3;
        code = b & 0x0fu;
        if (b == 0xe0) lo = 0xa0;
        if (b == 0xed) hi = 0x9f;  // no surrogates
    } else if (b >= 0xf0 && b <= 0xf4) {
        n = 4;
        code = b & 0x07u;
        if (b == 0xf0) lo = 0x90;
        if (b == 0xf4) hi = 0x8f;
    } else {
        return 0;
    }
    if (i + n > text.size()) return 0;
    for (std::size_t k = 1; k < n; ++k) {
        const unsigned char c = byte(i + k);
        if (c < (k == 1 ? lo : 0x80) || c > (k == 1 ? hi : 0xbf)) return 0;
        code = (code << 6) | (c & 0x3fu);
    }
    return n;
}

void hex_byte(std::string &out, unsigned char b) {
    static constexpr char kHex[] = "0123456789abcdef";
    out += {'\\', 'x', kHex[b >> 4], kHex[b & 0xf]};
}

}  // namespace

std::string terminal_safe(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto b = static_cast<unsigned char>(text[i]);
        if (b < 0x80) {
            if ((b < 0x20 && b != '\n' && b != '\t') || b == 0x7f)
                hex_byte(out, b);
            else
                out += static_cast<char>(b);
            ++i;
            continue;
        }
        std::uint32_t code = 0;
        const std::size_t n = utf8_sequence(text, i, code);
        if (n == 0 || code <= 0x9f) {  // not UTF-8, or a C1 control: each byte shown
            for (std::size_t k = 0; k < std::max<std::size_t>(n, 1); ++k) hex_byte(out, static_cast<unsigned char>(text[i + k]));
            i += std::max<std::size_t>(n, 1);
            continue;
        }
        out.append(text.substr(i, n));
        i += n;
    }
    return out;
}

bool plain_text(std::string_view text, std::string &why) {
    for (std::size_t i = 0; i < text.size();) {
        const auto b = static_cast<unsigned char>(text[i]);
        std::uint32_t code = b;
        const std::size_t n = b < 0x80 ? 1 : utf8_sequence(text, i, code);
        if (n == 0) {
            why = "byte " + std::to_string(i + 1) + " is not valid UTF-8";
            return false;
        }
        if (code < 0x20 || (code >= 0x7f && code <= 0x9f)) {
            std::string shown;
            hex_byte(shown, static_cast<unsigned char>(code));
            why = "character " + std::to_string(i + 1) + " is a control character (" + (code >= 0x80 ? "U+00" + shown.substr(2) : shown) + ")";
            return false;
        }
        i += n;
    }
    return true;
}

std::string quoted_excerpt(std::string_view text) {
    constexpr std::size_t kMost = 64;
    if (text.size() <= kMost) return "\"" + std::string(text) + "\"";
    return "\"" + std::string(text.substr(0, kMost)) + "\"...";
}

std::string pointer_token(std::string_view token) {
    std::string out = "/";
    for (char c : token) {
        if (c == '~') out += "~0";
        else if (c == '/') out += "~1";
        else out += c;
    }
    return out;
}

}  // namespace qdsim
