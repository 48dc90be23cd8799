// SPDX-License-Identifier: MIT
#include "operator/watch.hpp"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <memory>

#include "exec/command.hpp"
#include "qdsim/sim.h"
#include "term/signals.hpp"

namespace qdsh {

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

void on_interrupt(int) { g_interrupted = 1; }

// Ctrl-C ends the watch, not qdsh, while a watch runs.
class InterruptGuard {
public:
    InterruptGuard() {
        g_interrupted = 0;
        struct sigaction sa {};
        sa.sa_handler = on_interrupt;
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = 0;  // no SA_RESTART: a sleep ends at once
        sigaction(SIGINT, &sa, &saved_);
    }
    ~InterruptGuard() { sigaction(SIGINT, &saved_, nullptr); }
    InterruptGuard(const InterruptGuard &) = delete;
    InterruptGuard &operator=(const InterruptGuard &) = delete;

private:
    struct sigaction saved_ {};
};

std::string rfc3339(std::time_t seconds, int millis) {
    std::tm tm{};
    gmtime_r(&seconds, &tm);
    char text[96];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", tm.tm_year + 1900, tm.tm_mon + 1,
                  tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, millis);
    return text;
}

// While a watch runs on a terminal, a key press is read at once and not
// echoed: q ends the watch. Ctrl-C still raises SIGINT.
class KeyReader {
public:
    KeyReader() {
        if (isatty(STDIN_FILENO) != 1 || tcgetattr(STDIN_FILENO, &saved_) != 0) return;
        termios raw = saved_;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_cc[VMIN] = 0;
        raw.c_cc[VTIME] = 0;
        active_ = tcsetattr(STDIN_FILENO, TCSANOW, &raw) == 0;
    }
    ~KeyReader() {
        if (active_) tcsetattr(STDIN_FILENO, TCSANOW, &saved_);
    }
    KeyReader(const KeyReader &) = delete;
    KeyReader &operator=(const KeyReader &) = delete;

    // Waits up to `ns` nanoseconds for a key; true when q was pressed.
    bool quit_within(long long ns) {
        if (!active_) {
            timespec ts{static_cast<time_t>(ns / 1000000000), static_cast<long>(ns % 1000000000)};
            nanosleep(&ts, nullptr);
            return false;
        }
        pollfd fd{STDIN_FILENO, POLLIN, 0};
        if (poll(&fd, 1, static_cast<int>(std::min<long long>(ns / 1000000 + 1, 1000))) <= 0) return false;
        char keys[64];
        const ssize_t n = read(STDIN_FILENO, keys, sizeof keys);
        for (ssize_t i = 0; i < n; ++i)
            if (keys[i] == 'q' || keys[i] == 'Q') return true;
        return n == 0 && (fd.revents & POLLHUP) != 0;
    }

private:
    termios saved_{};
    bool active_ = false;
};

class RealClock : public WatchClock {
public:
    void start() override {
        origin_ = std::chrono::steady_clock::now();
        guard_ = std::make_unique<InterruptGuard>();
        keys_ = std::make_unique<KeyReader>();
        qdsim::set_clock_mode(qdsim::ClockMode::real_time);
    }
    double now() override {
        stamp_ = std::chrono::system_clock::now();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - origin_).count();
    }
    bool wait(double seconds) override {
        // Samples keep to their schedule: the time a command took is not
        // added to the interval.
        next_ += seconds;
        const auto deadline = origin_ + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                            std::chrono::duration<double>(next_));
        // SIGTERM and SIGHUP (qdsh's own handlers) end the watch as Ctrl-C does.
        while (!g_interrupted && termination_signal() == 0) {
            const auto left = deadline - std::chrono::steady_clock::now();
            if (left <= std::chrono::steady_clock::duration::zero()) return true;
            if (keys_->quit_within(std::chrono::duration_cast<std::chrono::nanoseconds>(left).count())) return false;
        }
        return false;
    }
    std::string timestamp() override {
        const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(stamp_.time_since_epoch()).count();
        return rfc3339(static_cast<std::time_t>(ms / 1000), static_cast<int>(ms % 1000));
    }
    void stop() override {
        qdsim::set_clock_mode(qdsim::ClockMode::per_command);
        keys_.reset();
        guard_.reset();
    }

private:
    std::chrono::steady_clock::time_point origin_;
    std::chrono::system_clock::time_point stamp_;
    std::unique_ptr<InterruptGuard> guard_;
    std::unique_ptr<KeyReader> keys_;
    double next_ = 0;
};

// One tick of the simulator is one second; an interval is rounded to whole
// ticks (at least one). Timestamps count from the simulator's clock origin
// at 1970-01-01T00:00:00Z, so runs are repeatable.
class SimulatedClock : public WatchClock {
public:
    void start() override { qdsim::set_clock_mode(qdsim::ClockMode::host); }
    double now() override {
        ticks_ = qdsim::clock_ticks();
        return static_cast<double>(ticks_);
    }
    bool wait(double seconds) override {
        qdsim::advance_clock(static_cast<std::uint64_t>(std::max(1.0, std::round(seconds))));
        return true;
    }
    std::string timestamp() override { return rfc3339(static_cast<std::time_t>(ticks_), 0); }
    void stop() override { qdsim::set_clock_mode(qdsim::ClockMode::per_command); }

private:
    std::uint64_t ticks_ = 0;
};

// The screen of a sample on a terminal: drawn from the top left over the
// last one, cut to the terminal's height so that it never scrolls.
std::string fit_screen(const std::string &screen) {
    winsize size{};
    const std::size_t rows = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 2 ? size.ws_row : 24;
    std::string out = "\033[H";
    std::size_t line = 0, from = 0, total = 0;
    for (std::size_t i = 0; i < screen.size(); ++i) total += screen[i] == '\n';
    while (from < screen.size()) {
        const std::size_t nl = screen.find('\n', from);
        const std::size_t end = nl == std::string::npos ? screen.size() : nl;
        if (line + 1 == rows - 1 && total > rows - 1) {
            out += "  ... " + std::to_string(total - line) + " more rows (q or Ctrl-C ends the watch; --nonzero keeps the rows that count)\033[K\n";
            break;
        }
        out += screen.substr(from, end - from) + "\033[K\n";
        ++line;
        from = end + 1;
    }
    return out + "\033[J";
}

}  // namespace

std::unique_ptr<WatchClock> real_clock() { return std::make_unique<RealClock>(); }
std::unique_ptr<WatchClock> simulated_clock() { return std::make_unique<SimulatedClock>(); }

bool run_watch(Executor &executor, AttributeLookup attrs, NameLookup names, const WatchOptions &options,
               const WatchOutput &output, WatchClock &clock) {
    if (attrs == nullptr || names == nullptr) {
        report_error("watch: the handler library has no attribute catalogue (qdcli_attr_find_name): no counters to watch");
        return false;
    }
    bool ok = true;
    DeltaTracker tracker;
    clock.start();
    char every[64];
    std::snprintf(every, sizeof every, "Every %gs: ", options.interval);
    for (long n = 1; options.count == 0 || n <= options.count; ++n) {
        if (n > 1 && !clock.wait(options.interval)) break;
        const double t = clock.now();
        const CommandOutcome outcome = run_command(executor, options.command, attrs);
        ok = outcome.ok && ok;
        Document document = outcome.document;
        if (options.nonzero) drop_zero_rows(document, names);
        const std::vector<Sample> samples = collect_samples(document, names);
        const std::vector<DeltaTracker::Reading> readings = tracker.update(samples, t);
        std::string out;
        if (output.format == Format::text) {
            std::string header = every + options.command + "    sample " + std::to_string(n);
            if (options.count > 0) header += " of " + std::to_string(options.count);
            if (n > 1) {
                char after[64];
                std::snprintf(after, sizeof after, ", %.2f s after the last", tracker.interval());
                header += after;
            }
            std::string screen = render_watch_text(header, samples, readings, output.terminal);
            for (const Document &e : document.value("errors", Document::array()))
                screen += "  error: " + e.value("message", std::string{}) + "\n";
            if (output.terminal)
                out = fit_screen(screen);
            else
                out = screen + "\n";
        } else {
            const Document d = watch_document(document, samples, readings, clock.timestamp(), tracker.interval(), n);
            // XML samples are the children of one <qdsh> element, closed when
            // the watch ends.
            if (output.format == Format::xml && output.xml_wrap && n == 1) out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<qdsh>\n";
            out += output.format == Format::json ? to_json(d, output.pretty) : to_xml(d, output.pretty);
            if (out.empty() || out.back() != '\n') out += "\n";
        }
        std::fwrite(out.data(), 1, out.size(), stdout);
        std::fflush(stdout);
    }
    clock.stop();
    if (output.format == Format::xml && output.xml_wrap) {
        std::fputs("</qdsh>\n", stdout);
        std::fflush(stdout);
    }
    return ok;
}

}  // namespace qdsh
