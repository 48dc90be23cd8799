// SPDX-License-Identifier: MIT
#include "model/json_input.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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

bool parse_json_value(std::string_view text, Json &out, std::string &error) {
    std::size_t offset = 0;
    if (!check_json_depth(text, error, offset)) {
        error += " (at byte " + std::to_string(offset + 1) + ")";
        return false;
    }
    try {
        out = Json::parse(text);
    } catch (const Json::exception &e) {
        // Not only syntax: a number too large for any JSON number type
        // (1e800) is refused here as well.
        error = std::string("is not JSON: ") + e.what();
        return false;
    } catch (const std::bad_alloc &) {
        error = "does not fit in memory";
        return false;
    }
    return true;
}

}  // namespace qdsim
