// SPDX-License-Identifier: MIT
#include "operator/serve.hpp"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_set>

#include <microhttpd.h>

#include "cli/options.hpp"
#include "exec/command.hpp"
#include "json_input.hpp"
#include "qdsim/sim.h"
#include "term/signals.hpp"

namespace qdsh {

namespace {

constexpr std::size_t kMaxConfiguredCommands = 64;
constexpr std::size_t kMaxCommandLine = 4096;

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
    Collector(Executor &executor, AttributeLookup attrs, NameLookup names, const ServeOptions &options)
        : executor_(executor), attrs_(attrs), names_(names), options_(options), thread_([this] { loop(); }) {}
    ~Collector() {
        stop();
        thread_.join();
    }
    // Ends every wait in collect() (false) and the loop after its collection.
    void stop() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_all();
        done_.notify_all();
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
            const CommandOutcome outcome = run_command(executor_, command, attrs_, quiet);
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

    Executor &executor_;
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
        const cli::Option *option = cli::find_option(cli::Scope::serve, w);
        if (option == nullptr) {
            error = "serve: unknown argument \"" + w + "\" (expected --listen HOST:PORT, --config FILE, --timeout S, --nonzero)";
            return false;
        }
        if (option->value != cli::Value::none && i + 1 >= words.size()) {
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
            const std::optional<double> d = cli::seconds_in(v, 0.1, 3600);
            if (!d) {
                error = "serve: --timeout \"" + v + "\" is not a number of seconds from 0.1 to 3600";
                return false;
            }
            o.timeout = *d;
        } else {
            o.nonzero = true;  // --nonzero
        }
    }
    return true;
}

bool load_serve_config(const std::string &path, ServeOptions &o, std::string &error) {
    // The one gate every JSON file passes (the scenario loader's): regular
    // files of bounded size, bounded nesting, no duplicate member names, and
    // messages that never repeat the file's text.
    qdsim::Json config;
    std::string why;
    if (!qdsim::read_json_document(path, config, why)) {
        error = "serve: the configuration " + path + ": " + why;
        return false;
    }
    if (!config.is_object()) {
        error = "serve: " + path + ": expected a JSON object";
        return false;
    }
    for (auto it = config.begin(); it != config.end(); ++it) {
        const std::string &key = it.key();
        const qdsim::Json &v = it.value();
        if (key == "commands") {
            if (!v.is_array() || v.empty() || v.size() > kMaxConfiguredCommands) {
                error = "serve: " + path + ": \"commands\" must be an array of 1 to " + std::to_string(kMaxConfiguredCommands) +
                        " command lines";
                return false;
            }
            o.commands.clear();
            for (std::size_t i = 0; i < v.size(); ++i) {
                const qdsim::Json &c = v[i];
                if (!c.is_string() || c.get<std::string>().find_first_not_of(" \t") == std::string::npos ||
                    c.get<std::string>().size() > kMaxCommandLine) {
                    error = "serve: " + path + ": \"commands\" entry " + std::to_string(i + 1) + " must be a command line (text of 1 to " +
                            std::to_string(kMaxCommandLine) + " bytes)";
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
            error = "serve: " + path + ": unknown member " + qdsim::quoted_excerpt(key) +
                    " (expected commands, timeout_seconds, nonzero)";
            return false;
        }
    }
    return true;
}

Exposition dialect_for(const std::string &accept) {
    return accept.find("application/openmetrics-text") != std::string::npos ? Exposition::openmetrics
                                                                             : Exposition::prometheus;
}

namespace {

// The exporter's limits (docs/ROBUSTNESS.md lists them with what they hold
// off). A scrape is one short GET: anything much bigger is not one.
constexpr unsigned kMaxConnections = 256;
constexpr unsigned kMaxConnectionsPerClient = 128;
constexpr std::size_t kConnectionMemory = 16 * 1024;  // request line and headers; the answer's head
constexpr unsigned kMaxHeaders = 64;
constexpr unsigned kIdleSeconds = 10;  // no byte either way for this long: closed
using Clock = std::chrono::steady_clock;
// From connecting (or from the last answer, on a kept-alive connection) to a
// whole request head: a deadline that no trickle of bytes moves.
constexpr auto kRequestDeadline = std::chrono::seconds(5);
// For taking an answer once it is ready.
constexpr auto kAnswerDeadline = std::chrono::seconds(30);

// One per connection.
struct Link {
    enum class Phase { request, collecting, answering };
    int fd = -1;
    Phase phase = Phase::request;
    Clock::time_point since = Clock::now();
    bool cut = false;
};

// One per request. Answers are queued once the whole request is in (the
// daemon keeps a connection alive only then); a refusal of a body is queued
// at once, which closes the connection with the body unread.
struct Scrape {
    MHD_Connection *connection = nullptr;
    Link *link = nullptr;
    unsigned status = 0;          // not /metrics: the answer decided from the head
    std::string text;
    const char *allow = nullptr;
    Exposition dialect = Exposition::prometheus;
    bool waiting = false;         // handed to the collector
    bool done = false;            // the collector is through with it
    std::shared_ptr<const std::string> body;  // null: no collection in time
};

MHD_Result answer(MHD_Connection *connection, unsigned status, std::string_view text,
                  const char *allow = nullptr) {
    MHD_Response *response =
        MHD_create_response_from_buffer(text.size(), const_cast<char *>(text.data()), MHD_RESPMEM_MUST_COPY);
    if (response == nullptr) return MHD_NO;
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, "text/plain; charset=utf-8");
    if (allow != nullptr) MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, allow);
    const MHD_Result result = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return result;
}

MHD_Result answer_body(MHD_Connection *connection, const std::shared_ptr<const std::string> &body, Exposition dialect) {
    // The body is shared by every scrape of one collection; the response
    // holds its own reference until it is sent.
    auto *hold = new std::shared_ptr<const std::string>(body);
    MHD_Response *response = MHD_create_response_from_buffer_with_free_callback_cls(
        body->size(), const_cast<char *>(body->data()),
        [](void *p) { delete static_cast<std::shared_ptr<const std::string> *>(p); }, hold);
    if (response == nullptr) {
        delete hold;
        return MHD_NO;
    }
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE,
                            dialect == Exposition::openmetrics ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                                                               : "text/plain; version=0.0.4; charset=utf-8");
    const MHD_Result result = MHD_queue_response(connection, MHD_HTTP_OK, response);
    MHD_destroy_response(response);
    return result;
}

// The HTTP side: one event-driven thread serves every connection, so a slow
// or idle client holds a connection slot and nothing else. A /metrics
// request is suspended while the collector works; all requests that wait
// together are answered by one collection.
class Exporter {
public:
    Exporter(Collector &collector, const ServeOptions &options) : collector_(collector), options_(options) {}
    Exporter(const Exporter &) = delete;
    Exporter &operator=(const Exporter &) = delete;
    ~Exporter() { stop(); }

    // Serves on the listening socket `fd` (the daemon takes it).
    bool start(int fd) {
        daemon_ = MHD_start_daemon(
            MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr,
            &Exporter::on_request, this,
            MHD_OPTION_LISTEN_SOCKET, fd,
            MHD_OPTION_CONNECTION_LIMIT, kMaxConnections,
            MHD_OPTION_PER_IP_CONNECTION_LIMIT, kMaxConnectionsPerClient,
            MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds,
            MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory,
            MHD_OPTION_STRICT_FOR_CLIENT, 1,
            MHD_OPTION_NOTIFY_CONNECTION, &Exporter::on_link, this,
            MHD_OPTION_NOTIFY_COMPLETED, &Exporter::on_completed, this,
            MHD_OPTION_END);
        if (daemon_ == nullptr) return false;
        scraper_ = std::thread([this] { scrape_loop(); });
        reaper_ = std::thread([this] { reap_loop(); });
        return true;
    }

    void stop() {
        if (daemon_ == nullptr) return;
        collector_.stop();  // a collection being waited for gives up at once
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_all();
        scraper_.join();  // every suspended request is resumed (503) first
        reaper_.join();
        const int fd = MHD_quiesce_daemon(daemon_);
        MHD_stop_daemon(daemon_);
        if (fd >= 0) close(fd);
        daemon_ = nullptr;
    }

private:
    static void on_link(void *cls, MHD_Connection *connection, void **context, MHD_ConnectionNotificationCode code) {
        auto &self = *static_cast<Exporter *>(cls);
        std::lock_guard<std::mutex> lock(self.mutex_);
        if (code == MHD_CONNECTION_NOTIFY_STARTED) {
            auto *link = new Link;
            const MHD_ConnectionInfo *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
            link->fd = info != nullptr ? info->connect_fd : -1;
            self.links_.insert(link);
            *context = link;
        } else if (auto *link = static_cast<Link *>(*context)) {
            // Closed: the descriptor is still open here and is not cut after this.
            self.links_.erase(link);
            delete link;
            *context = nullptr;
        }
    }

    static void on_completed(void *cls, MHD_Connection *connection, void **request, MHD_RequestTerminationCode) {
        auto &self = *static_cast<Exporter *>(cls);
        delete static_cast<Scrape *>(*request);
        *request = nullptr;
        const MHD_ConnectionInfo *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
        if (info == nullptr || info->socket_context == nullptr) return;
        std::lock_guard<std::mutex> lock(self.mutex_);
        auto *link = static_cast<Link *>(info->socket_context);
        link->phase = Link::Phase::request;  // the next request's deadline starts now
        link->since = Clock::now();
    }

    Link *link_of(MHD_Connection *connection) {
        const MHD_ConnectionInfo *info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
        return info != nullptr ? static_cast<Link *>(info->socket_context) : nullptr;
    }

    void set_phase(Link *link, Link::Phase phase) {
        if (link == nullptr) return;
        std::lock_guard<std::mutex> lock(mutex_);
        link->phase = phase;
        link->since = Clock::now();
    }

    static MHD_Result on_request(void *cls, MHD_Connection *connection, const char *url, const char *method,
                                 const char *, const char *, std::size_t *upload_size, void **request) {
        auto &self = *static_cast<Exporter *>(cls);
        auto *scrape = static_cast<Scrape *>(*request);
        if (scrape == nullptr) {
            // The first call comes with the whole request head, before any body.
            Link *link = self.link_of(connection);
            self.set_phase(link, Link::Phase::answering);
            const char *length = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_CONTENT_LENGTH);
            const bool body = (length != nullptr && std::string_view(length) != "0") ||
                              MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_TRANSFER_ENCODING) != nullptr;
            const std::string_view path(url);
            const std::string_view verb(method);
            const bool readable = verb == MHD_HTTP_METHOD_GET || verb == MHD_HTTP_METHOD_HEAD;
            if (body && (path == "/metrics" || path == "/") && !readable)
                return answer(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "only GET and HEAD are served\n", "GET, HEAD");
            if (body) return answer(connection, MHD_HTTP_CONTENT_TOO_LARGE, "a scrape has no body\n");
            if (MHD_get_connection_values(connection, MHD_HEADER_KIND, nullptr, nullptr) > static_cast<int>(kMaxHeaders))
                return answer(connection, MHD_HTTP_REQUEST_HEADER_FIELDS_TOO_LARGE,
                              "more than " + std::to_string(kMaxHeaders) + " header fields\n");
            auto fresh = std::make_unique<Scrape>();
            fresh->connection = connection;
            fresh->link = link;
            if (path != "/metrics" && path != "/") {
                fresh->status = MHD_HTTP_NOT_FOUND;
                fresh->text = "not found: the metrics are at /metrics\n";
            } else if (!readable) {
                fresh->status = MHD_HTTP_METHOD_NOT_ALLOWED;
                fresh->text = "only GET and HEAD are served\n";
                fresh->allow = "GET, HEAD";
            } else if (path == "/") {
                fresh->status = MHD_HTTP_OK;
                fresh->text = "qdsh metrics exporter: the metrics are at /metrics\n";
            }
            const char *accept = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_ACCEPT);
            fresh->dialect = dialect_for(accept != nullptr ? accept : "");
            *request = fresh.release();
            return MHD_YES;
        }
        if (*upload_size != 0) {  // never: a request with a body was answered from its head
            *upload_size = 0;
            return MHD_YES;
        }
        if (scrape->status != 0) return answer(connection, scrape->status, scrape->text, scrape->allow);
        if (scrape->done) {
            if (!scrape->body)
                return answer(connection, MHD_HTTP_SERVICE_UNAVAILABLE,
                              "collection did not finish within " + std::to_string(self.options_.timeout) + " s\n");
            return answer_body(connection, scrape->body, scrape->dialect);
        }
        if (scrape->waiting) return MHD_YES;
        {
            std::lock_guard<std::mutex> lock(self.mutex_);
            if (self.stopping_) return answer(connection, MHD_HTTP_SERVICE_UNAVAILABLE, "the exporter is stopping\n");
            if (scrape->link != nullptr) scrape->link->phase = Link::Phase::collecting;
            scrape->waiting = true;
            MHD_suspend_connection(connection);
            self.pending_.push_back(scrape);
        }
        self.wake_.notify_all();
        return MHD_YES;
    }

    void scrape_loop() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            wake_.wait(lock, [&] { return stopping_ || !pending_.empty(); });
            if (pending_.empty()) return;  // stopping
            std::deque<Scrape *> batch;
            batch.swap(pending_);
            const bool stopping = stopping_;
            lock.unlock();
            Collection c;
            const bool ok = !stopping && collector_.collect(c);
            std::shared_ptr<const std::string> bodies[2];
            for (Scrape *s : batch) {
                if (ok) {
                    auto &body = bodies[s->dialect == Exposition::openmetrics ? 1 : 0];
                    if (!body) body = std::make_shared<const std::string>(exposition(c, s->dialect));
                    s->body = body;
                }
                s->done = true;
                set_phase(s->link, Link::Phase::answering);
                MHD_resume_connection(s->connection);
            }
            lock.lock();
        }
    }

    // Cuts connections past their deadline: shutting the socket down makes
    // the daemon see its end and close it.
    void reap_loop() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!wake_.wait_for(lock, std::chrono::milliseconds(200), [&] { return stopping_; })) {
            const Clock::time_point now = Clock::now();
            for (Link *link : links_) {
                const bool late = (link->phase == Link::Phase::request && now - link->since > kRequestDeadline) ||
                                  (link->phase == Link::Phase::answering && now - link->since > kAnswerDeadline);
                if (late && !link->cut && link->fd >= 0) {
                    shutdown(link->fd, SHUT_RDWR);
                    link->cut = true;
                }
            }
        }
    }

    Collector &collector_;
    const ServeOptions &options_;
    MHD_Daemon *daemon_ = nullptr;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::deque<Scrape *> pending_;
    std::unordered_set<Link *> links_;
    std::thread scraper_, reaper_;
};

bool loopback_address(const sockaddr *address) {
    if (address->sa_family == AF_INET)
        return (ntohl(reinterpret_cast<const sockaddr_in *>(address)->sin_addr.s_addr) >> 24) == 127;
    if (address->sa_family == AF_INET6) {
        const in6_addr &a = reinterpret_cast<const sockaddr_in6 *>(address)->sin6_addr;
        return IN6_IS_ADDR_LOOPBACK(&a) || (IN6_IS_ADDR_V4MAPPED(&a) && a.s6_addr[12] == 127);
    }
    return false;
}

// A listening socket on a numeric loopback address. The address is checked
// after resolution and again once bound; no SO_REUSEPORT, so a port that
// another process (of any user) listens on is refused, not shared.
int open_listener(const std::string &host, int port, int &bound_port, std::string &error) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo *found = nullptr;
    if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0 || found == nullptr) {
        error = "not a numeric loopback address";
        return -1;
    }
    std::unique_ptr<addrinfo, void (*)(addrinfo *)> owner(found, freeaddrinfo);
    if (!loopback_address(found->ai_addr)) {
        error = "not a loopback address";
        return -1;
    }
    const int fd = socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        error = std::strerror(errno);
        return -1;
    }
    const int one = 1;
    // Restarts while old connections linger in TIME_WAIT; never a second listener.
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    if (found->ai_family == AF_INET6) setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &one, sizeof one);
    sockaddr_storage bound{};
    socklen_t bound_size = sizeof bound;
    if (bind(fd, found->ai_addr, found->ai_addrlen) != 0) {
        error = errno == EADDRINUSE ? "the port is in use by another process" : std::strerror(errno);
        close(fd);
        return -1;
    }
    if (getsockname(fd, reinterpret_cast<sockaddr *>(&bound), &bound_size) != 0 ||
        !loopback_address(reinterpret_cast<sockaddr *>(&bound)) || listen(fd, 128) != 0) {
        error = "the bound address is not a loopback address";
        close(fd);
        return -1;
    }
    bound_port = ntohs(bound.ss_family == AF_INET ? reinterpret_cast<sockaddr_in *>(&bound)->sin_port
                                                  : reinterpret_cast<sockaddr_in6 *>(&bound)->sin6_port);
    return fd;
}

}  // namespace

int run_serve(Executor &executor, AttributeLookup attrs, NameLookup names, const ServeOptions &options) {
    if (attrs == nullptr || names == nullptr) {
        report_error("serve: the handler library has no attribute catalogue (qdcli_attr_find_name): no metrics");
        return 2;
    }
    // The stop signals are taken by this thread with sigwait; every thread
    // started below (the daemon's, the collector's) inherits them blocked.
    sigset_t stop_signals;
    sigemptyset(&stop_signals);
    sigaddset(&stop_signals, SIGTERM);
    sigaddset(&stop_signals, SIGINT);
    sigaddset(&stop_signals, SIGHUP);
    sigset_t saved;
    pthread_sigmask(SIG_BLOCK, &stop_signals, &saved);

    std::string error;
    int port = 0;
    const int fd = open_listener(options.host, options.port, port, error);
    if (fd < 0) {
        pthread_sigmask(SIG_SETMASK, &saved, nullptr);
        report_error("serve: cannot listen on " + options.host + ":" + std::to_string(options.port) + ": " + error);
        return 2;
    }

    // Counters grow with real time while serving, so rates are per second.
    qdsim::set_clock_mode(qdsim::ClockMode::real_time);
    int status = 0;
    int signal_number = 0;
    {
        Collector collector(executor, attrs, names, options);
        Exporter exporter(collector, options);
        if (!exporter.start(fd)) {
            close(fd);
            report_error("serve: the HTTP server did not start");
            status = 2;
        } else {
            const bool v6 = options.host.find(':') != std::string::npos;
            std::fprintf(stderr, "qdsh: serving http://%s%s%s:%d/metrics\n", v6 ? "[" : "", options.host.c_str(),
                         v6 ? "]" : "", port);
            std::fflush(stderr);
            while (sigwait(&stop_signals, &signal_number) != 0) {
            }
            exporter.stop();
        }
    }
    qdsim::set_clock_mode(qdsim::ClockMode::per_command);
    pthread_sigmask(SIG_SETMASK, &saved, nullptr);
    // Like the shell: cleaned up, then ended by the signal (main re-raises it).
    if (signal_number != 0) note_termination(signal_number);
    return status;
}

}  // namespace qdsh
