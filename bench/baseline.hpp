// SPDX-License-Identifier: MIT
// The formatting limit of a report: its own output bytes written again by a
// bare snprintf loop, one call per line, every number converted with %llu
// from its value, into a buffer that is handed to a sink every 4 KB.
//
// A report is compared with this: the same bytes, the same number
// conversions, none of the decoding, the transport or the printer. Digits
// that a %llu would not give back as written (a leading zero, more than 19
// digits) stay literal text, and so does everything between numbers.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace qdbench {

class SnprintfBaseline {
public:
    explicit SnprintfBaseline(std::string_view text) {
        std::size_t start = 0;
        while (start < text.size()) {
            std::size_t end = text.find('\n', start);
            end = end == std::string_view::npos ? text.size() : end + 1;
            add_line(text.substr(start, end - start));
            start = end;
        }
    }

    // Writes the bytes again; `sink(const char *, std::size_t)` gets them
    // in chunks. Returns the number of bytes.
    template <class Sink>
    std::size_t write(Sink &&sink) const {
        char buffer[kChunk + kMaxPiece];
        std::size_t used = 0, total = 0;
        for (const Piece &p : pieces_) {
            const unsigned long long *a = p.args;
            const int n = std::snprintf(buffer + used, kMaxPiece, p.format.c_str(), a[0], a[1], a[2], a[3], a[4],
                                        a[5], a[6], a[7]);
            used += static_cast<std::size_t>(n > 0 ? n : 0);
            if (used >= kChunk) {
                sink(static_cast<const char *>(buffer), used);
                total += used;
                used = 0;
            }
        }
        if (used) sink(static_cast<const char *>(buffer), used);
        return total + used;
    }

    std::string text() const {
        std::string out;
        write([&](const char *p, std::size_t n) { out.append(p, n); });
        return out;
    }

    // CPU seconds of one write into a sink that only counts, the fastest of
    // several rounds of at least 20 ms each (this machine is shared).
    double cpu_seconds_per_write() const {
        double best = 1e9;
        for (int round = 0; round < 5; ++round) {
            std::size_t writes = 0, bytes = 0;
            const double start = cpu_now();
            double now = start;
            while (now - start < 0.02) {
                bytes += write([](const char *, std::size_t n) { (void)n; });
                ++writes;
                now = cpu_now();
            }
            if (bytes == 0 && !pieces_.empty()) return 0;
            best = std::min(best, (now - start) / static_cast<double>(writes));
        }
        return best;
    }

    static double cpu_now() {
        timespec ts{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
        return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
    }

private:
    static constexpr std::size_t kChunk = 4096;
    static constexpr std::size_t kMaxPiece = 4096;  // longer lines are cut into pieces
    static constexpr int kMaxArgs = 8;

    struct Piece {
        std::string format;
        unsigned long long args[kMaxArgs] = {};
    };

    void add_line(std::string_view line) {
        Piece piece;
        int args = 0;
        std::size_t literal = 0;  // bytes of text in the piece's format
        auto flush = [&] {
            if (!piece.format.empty()) pieces_.push_back(piece);
            piece = Piece{};
            args = 0;
            literal = 0;
        };
        for (std::size_t i = 0; i < line.size();) {
            if (line[i] >= '0' && line[i] <= '9') {
                std::size_t j = i;
                while (j < line.size() && line[j] >= '0' && line[j] <= '9') ++j;
                const std::string_view digits = line.substr(i, j - i);
                if ((digits.size() == 1 || digits[0] != '0') && digits.size() <= 19) {
                    if (args == kMaxArgs) flush();
                    piece.format += "%llu";
                    piece.args[args++] = std::stoull(std::string(digits));
                    literal += digits.size();
                } else {
                    piece.format.append(digits);
                    literal += digits.size();
                }
                i = j;
            } else {
                piece.format += line[i] == '%' ? "%%" : std::string(1, line[i]);
                ++literal;
                ++i;
            }
            if (literal >= kMaxPiece / 2) flush();
        }
        flush();
    }

    std::vector<Piece> pieces_;
};

// What a run writes to standard output, kept in a temporary file.
class CapturedStdout {
public:
    CapturedStdout() : file_(std::tmpfile()) {
        std::fflush(stdout);
        saved_ = dup(STDOUT_FILENO);
        if (file_) dup2(fileno(file_), STDOUT_FILENO);
    }
    ~CapturedStdout() {
        restore();
        if (file_) std::fclose(file_);
    }
    CapturedStdout(const CapturedStdout &) = delete;
    CapturedStdout &operator=(const CapturedStdout &) = delete;

    std::string text() {
        restore();
        std::string out;
        if (!file_) return out;
        std::rewind(file_);
        char buf[4096];
        for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, file_)) > 0;) out.append(buf, n);
        return out;
    }

private:
    void restore() {
        if (saved_ < 0) return;
        std::fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
        saved_ = -1;
    }
    std::FILE *file_;
    int saved_ = -1;
};

}  // namespace qdbench
