// SPDX-License-Identifier: MIT
#include "serve.hpp"

#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

#include <httplib.h>

#include "qdsim/sim.h"
#include "shell.hpp"
#include "watch.hpp"

namespace qdsh {

namespace {

bool is_loopback(const std::string &host) {
    return host == "localhost" || host == "::1" || host.starts_with("127.");
}

// What one collection gave: the counters of every command, and how it went.
struct Collection {
    std::vector<Sample> samples;
    std::vector<std::pair<std::string, CommandHealth>> commands;
    std::map<std::pair<std::string, std::string>, long> errors;  // (command, kind) -> errors since the start
    double seconds = 0;
};

// Runs the collections on a thread of its own, one at a time: every handler
// call and the simulated switch stay on that thread. A scrape that comes
// while a collection runs waits for that one and shares its result.
class Collector {
public:
    Collector(Shell &shell, AttributeLookup attrs, NameLookup names, const ServeOptions &options)
        : shell_(shell), attrs_(attrs), names_(names), options_(options), thread_([this] { loop(); }) {}
    ~Collector() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }
    Collector(const Collector &) = delete;
    Collector &operator=(const Collector &) = delete;

    // The result of a collection that started at or after this call, or of
    // the one under way; false when none finished within the timeout.
    bool collect(Collection &out) {
        std::unique_lock<std::mutex> lock(mutex_);
        const std::uint64_t wanted = running_ ? started_ : started_ + 1;
        requested_ = std::max(requested_, wanted);
        wake_.notify_all();
        const bool done = done_.wait_for(lock, std::chrono::duration<double>(options_.timeout),
                                         [&] { return finished_ >= wanted || stopping_; });
        if (!done || finished_ < wanted) return false;
        out = last_;
        return true;
    }

private:
    void loop() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            wake_.wait(lock, [&] { return stopping_ || requested_ > started_; });
            if (stopping_) return;
            running_ = true;
            const std::uint64_t number = ++started_;
            lock.unlock();
            Collection c = run_once();
            lock.lock();
            running_ = false;
            last_ = std::move(c);
            finished_ = number;
            done_.notify_all();
        }
    }

    Collection run_once() {
        Collection c;
        const auto start = std::chrono::steady_clock::now();
        for (const std::string &command : options_.commands) {
            RunOptions quiet;
            quiet.report = false;
            const CommandOutcome outcome = run_command(shell_, command, attrs_, quiet);
            Document document = outcome.document;
            if (options_.nonzero) drop_zero_rows(document, names_);
            std::vector<Sample> samples = collect_samples(document, names_);
            c.samples.insert(c.samples.end(), std::make_move_iterator(samples.begin()),
                             std::make_move_iterator(samples.end()));
            // Errors count by kind; a subject the switch does not support
            // here is no error.
            CommandHealth health = command_health(document, outcome.ok);
            for (const auto &[kind, n] : health.errors) errors_[{command, kind}] += n;
            c.commands.emplace_back(command, std::move(health));
        }
        carry_counters(c.samples, counters_);
        c.errors = errors_;
        c.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        return c;
    }

    Shell &shell_;
    AttributeLookup attrs_;
    NameLookup names_;
    const ServeOptions &options_;
    std::mutex mutex_;
    std::condition_variable wake_, done_;
    bool stopping_ = false;
    bool running_ = false;
    std::uint64_t requested_ = 0, started_ = 0, finished_ = 0;
    Collection last_;
    CounterState counters_;  // the collector thread's own
    std::map<std::pair<std::string, std::string>, long> errors_;
    std::thread thread_;
};

std::string exposition(const Collection &c, Exposition dialect) {
    std::vector<ExtraFamily> extra;
    char seconds[40];
    std::snprintf(seconds, sizeof seconds, "%.6f", c.seconds);
    extra.push_back({"qdcli_scrape_duration_seconds", false, "Time the collection of this scrape took", {{{}, seconds}}});
    ExtraFamily errors{"qdcli_collection_errors", true, "Errors the configured commands reported, by kind, since the exporter started", {}};
    for (const auto &[at, n] : c.errors) errors.samples.push_back({{{"command", at.first}, {"kind", at.second}}, std::to_string(n)});
    ExtraFamily success{"qdcli_scrape_command_success", false, "Whether a configured command succeeded (1) or not (0) in this scrape", {}};
    ExtraFamily unsupported{"qdcli_scrape_unsupported_subjects", false, "Subjects a configured command does not support on this switch (not errors)", {}};
    for (const auto &[command, health] : c.commands) {
        success.samples.push_back({{{"command", command}}, health.ok ? "1" : "0"});
        unsupported.samples.push_back({{{"command", command}}, std::to_string(health.unsupported)});
    }
    extra.push_back(std::move(errors));
    extra.push_back(std::move(success));
    extra.push_back(std::move(unsupported));
    return write_exposition(c.samples, extra, dialect);
}

}  // namespace

bool parse_serve_arguments(const std::vector<std::string> &words, ServeOptions &o, std::string &error) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string &w = words[i];
        if (i + 1 >= words.size() && (w == "--listen" || w == "--config" || w == "--timeout")) {
            error = "serve: " + w + " needs a value";
            return false;
        }
        if (w == "--listen") {
            const std::string v = words[++i];
            const std::size_t colon = v.rfind(':');
            std::string host = colon == std::string::npos ? v : v.substr(0, colon);
            if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
            const std::string port = colon == std::string::npos ? "" : v.substr(colon + 1);
            char *end = nullptr;
            const long p = std::strtol(port.c_str(), &end, 10);
            if (port.empty() || *end != '\0' || p < 0 || p > 65535) {
                error = "serve: --listen \"" + v + "\" is not HOST:PORT with a port from 0 to 65535";
                return false;
            }
            if (!is_loopback(host)) {
                error = "serve: --listen \"" + v + "\": only loopback addresses (127.0.0.0/8, ::1, localhost) are served";
                return false;
            }
            o.host = host == "localhost" ? "127.0.0.1" : host;
            o.port = static_cast<int>(p);
        } else if (w == "--config") {
            if (!load_serve_config(words[++i], o, error)) return false;
        } else if (w == "--timeout") {
            const std::string v = words[++i];
            const std::optional<double> d = seconds_in(v, 0.1, 3600);
            if (!d) {
                error = "serve: --timeout \"" + v + "\" is not a number of seconds from 0.1 to 3600";
                return false;
            }
            o.timeout = *d;
        } else if (w == "--nonzero") {
            o.nonzero = true;
        } else {
            error = "serve: unknown argument \"" + w + "\" (expected --listen HOST:PORT, --config FILE, --timeout S, --nonzero)";
            return false;
        }
    }
    return true;
}

bool load_serve_config(const std::string &path, ServeOptions &o, std::string &error) {
    std::ifstream in(path);
    if (!in) {
        error = "serve: cannot read the configuration " + path;
        return false;
    }
    Document config;
    try {
        config = Document::parse(in);
    } catch (const std::exception &e) {
        error = "serve: " + path + " is not JSON: " + e.what();
        return false;
    }
    if (!config.is_object()) {
        error = "serve: " + path + ": expected a JSON object";
        return false;
    }
    for (auto it = config.begin(); it != config.end(); ++it) {
        const std::string &key = it.key();
        const Document &v = it.value();
        if (key == "commands") {
            if (!v.is_array() || v.empty()) {
                error = "serve: " + path + ": \"commands\" must be a non-empty array of command lines";
                return false;
            }
            o.commands.clear();
            for (const Document &c : v) {
                if (!c.is_string() || c.get<std::string>().find_first_not_of(" \t") == std::string::npos) {
                    error = "serve: " + path + ": every entry of \"commands\" must be a command line, got " + c.dump();
                    return false;
                }
                o.commands.push_back(c.get<std::string>());
            }
        } else if (key == "timeout_seconds") {
            if (!v.is_number() || !(v.get<double>() >= 0.1 && v.get<double>() <= 3600)) {
                error = "serve: " + path + ": \"timeout_seconds\" must be a number from 0.1 to 3600";
                return false;
            }
            o.timeout = v.get<double>();
        } else if (key == "nonzero") {
            if (!v.is_boolean()) {
                error = "serve: " + path + ": \"nonzero\" must be true or false";
                return false;
            }
            o.nonzero = v.get<bool>();
        } else {
            error = "serve: " + path + ": unknown member \"" + key + "\" (expected commands, timeout_seconds, nonzero)";
            return false;
        }
    }
    return true;
}

Exposition dialect_for(const std::string &accept) {
    return accept.find("application/openmetrics-text") != std::string::npos ? Exposition::openmetrics
                                                                             : Exposition::prometheus;
}

int run_serve(Shell &shell, AttributeLookup attrs, NameLookup names, const ServeOptions &options) {
    if (attrs == nullptr || names == nullptr) {
        report_error("serve: the handler library has no attribute catalogue (qdcli_attr_find_name): no metrics");
        return 2;
    }
    // SIGTERM and SIGINT are taken by one thread that stops the server; the
    // others (the server's workers, the collector) never see them.
    sigset_t stop_signals;
    sigemptyset(&stop_signals);
    sigaddset(&stop_signals, SIGTERM);
    sigaddset(&stop_signals, SIGINT);
    sigset_t saved;
    pthread_sigmask(SIG_BLOCK, &stop_signals, &saved);

    httplib::Server server;
    const int port = options.port == 0 ? server.bind_to_any_port(options.host) : options.port;
    if (port < 0 || (options.port != 0 && !server.bind_to_port(options.host, options.port))) {
        pthread_sigmask(SIG_SETMASK, &saved, nullptr);
        report_error("serve: cannot listen on " + options.host + ":" + std::to_string(options.port));
        return 2;
    }

    // Counters grow with real time while serving, so rates are per second.
    qdsim::set_clock_mode(qdsim::ClockMode::real_time);
    int exit_status = 0;
    {
        Collector collector(shell, attrs, names, options);
        server.set_read_timeout(5, 0);
        server.set_write_timeout(5, 0);
        server.Get("/metrics", [&](const httplib::Request &request, httplib::Response &response) {
            Collection c;
            if (!collector.collect(c)) {
                response.status = 503;
                response.set_content("collection did not finish within " + std::to_string(options.timeout) + " s\n",
                                     "text/plain; charset=utf-8");
                return;
            }
            const Exposition dialect = dialect_for(request.get_header_value("Accept"));
            response.set_content(exposition(c, dialect), dialect == Exposition::openmetrics
                                                             ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                                                             : "text/plain; version=0.0.4; charset=utf-8");
        });
        server.Get("/", [](const httplib::Request &, httplib::Response &response) {
            response.set_content("qdsh metrics exporter: the metrics are at /metrics\n", "text/plain; charset=utf-8");
        });

        std::mutex stop_mutex;
        bool signalled = false;
        std::thread stopper([&] {
            int signal_number = 0;
            sigwait(&stop_signals, &signal_number);
            {
                std::lock_guard<std::mutex> lock(stop_mutex);
                signalled = true;
            }
            server.stop();
        });
        std::fprintf(stderr, "qdsh: serving http://%s%s%s:%d/metrics\n", options.host.find(':') != std::string::npos ? "[" : "",
                     options.host.c_str(), options.host.find(':') != std::string::npos ? "]" : "", port);
        std::fflush(stderr);
        if (!server.listen_after_bind()) exit_status = 1;
        {
            std::lock_guard<std::mutex> lock(stop_mutex);
            if (!signalled) pthread_kill(stopper.native_handle(), SIGTERM);
        }
        stopper.join();
    }
    qdsim::set_clock_mode(qdsim::ClockMode::per_command);
    pthread_sigmask(SIG_SETMASK, &saved, nullptr);
    return exit_status;
}

}  // namespace qdsh
