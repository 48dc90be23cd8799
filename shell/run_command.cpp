// SPDX-License-Identifier: MIT
// Runs one command with everything it prints captured, and builds its
// document.
#include <unistd.h>

#include <cstdio>
#include <regex>

#include "document.hpp"
#include "grammar.hpp"
#include "qdcli/wire.h"
#include "qdsim/sim.h"
#include "shell.hpp"

namespace qdsh {
namespace {

// Redirects standard output to an anonymous file while a command runs and
// takes the printer's flushes as they come, keeping the order of both.
class Capture {
public:
    Capture() {
        std::fflush(stdout);
        file_ = std::tmpfile();
        if (file_ == nullptr) return;
        saved_ = dup(STDOUT_FILENO);
        if (saved_ < 0 || dup2(fileno(file_), STDOUT_FILENO) < 0) {
            restore();
            return;
        }
        qdsim::set_flush_sink([this](const qdsim::PrinterFlush &flush) {
            take_standard_output();
            Segment s;
            s.kind = Segment::Kind::printer;
            s.text = flush.text;
            for (const qdsim::Attribute &a : flush.values) s.values.push_back({a.id, a.value});
            segments_.push_back(std::move(s));
        });
    }
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;
    ~Capture() { restore(); }

    std::vector<Segment> finish() {
        take_standard_output();
        restore();
        return std::move(segments_);
    }

private:
    void take_standard_output() {
        if (file_ == nullptr) return;
        std::fflush(stdout);
        std::string text;
        char buffer[4096];
        for (;;) {
            const ssize_t n = pread(fileno(file_), buffer, sizeof buffer, offset_);
            if (n <= 0) break;
            text.append(buffer, static_cast<std::size_t>(n));
            offset_ += n;
        }
        if (text.empty()) return;
        if (!segments_.empty() && segments_.back().kind == Segment::Kind::standard_output)
            segments_.back().text += text;
        else
            segments_.push_back({Segment::Kind::standard_output, std::move(text), {}});
    }

    void restore() {
        qdsim::set_flush_sink(nullptr);
        if (saved_ >= 0) {
            std::fflush(stdout);
            dup2(saved_, STDOUT_FILENO);
            close(saved_);
            saved_ = -1;
        }
        if (file_ != nullptr) {
            std::fclose(file_);
            file_ = nullptr;
        }
    }

    std::FILE *file_ = nullptr;
    int saved_ = -1;
    off_t offset_ = 0;
    std::vector<Segment> segments_;
};

int g_capture_depth = 0;

// The interface's own spelling ("Ethernet2/24" for "eth2/24").
std::string canonical_interface(const std::string &spelling) {
    if (const auto index = qdsim::find_interface(spelling))
        for (const qdsim::InterfaceInfo &i : qdsim::interfaces())
            if (i.if_index == *index) return i.name;
    return spelling;
}

}  // namespace

CommandOutcome run_command(Shell &shell, std::string_view line, AttributeLookup lookup) {
    CommandOutcome outcome;
    std::vector<std::string> shell_errors;
    if (g_capture_depth > 0) {
        // A command run by a handler: its output belongs to the outer one.
        outcome.ok = shell.run(line);
        return outcome;
    }
    ++g_capture_depth;
    set_error_listener([&shell_errors](const std::string &message) { shell_errors.push_back(message); });
    bool handler_ok = true;
    {
        Capture capture;
        handler_ok = shell.run(line);
        outcome.segments = capture.finish();
    }
    set_error_listener(nullptr);
    --g_capture_depth;
    // The walk over every interface reports them in the platform's order.
    std::vector<std::string> walk;
    const MatchResult matched = match_line(line);
    if (matched.ok && matched.match.command->handler == "qd_cli_show_queuing_interface" && matched.match.params.empty())
        for (const qdsim::InterfaceInfo &i : qdsim::interfaces())
            if (!i.sub_intf && (i.type == IF_TYPE_ETH || i.type == IF_TYPE_ETH_ALT || i.type == IF_TYPE_HIF))
                walk.push_back(i.name);
    std::string named;
    std::smatch m;
    const std::string text(line);
    static const std::regex spelled(R"(\b(ethernet|eth|e)[0-9]+(/[0-9]+)+)", std::regex::icase);
    if (std::regex_search(text, m, spelled)) named = canonical_interface(m.str(0));
    outcome.document =
        build_document(line, outcome.segments, shell_errors, handler_ok, lookup, outcome.ok, named, walk);
    return outcome;
}

}  // namespace qdsh
