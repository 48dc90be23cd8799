// SPDX-License-Identifier: MIT
// The pure parts of watch: its arguments, its text screen and its
// per-sample document.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "cli.hpp"
#include "watch.hpp"

namespace qdsh {

namespace {

std::string format_number(double v) {
    char text[40];
    std::snprintf(text, sizeof text, "%.2f", v);
    return text;
}

std::string interface_of(const Sample &s) {
    for (const auto &[name, value] : s.labels)
        if (name == "interface") return value;
    return "-";
}

std::string row_of(const Sample &s) {
    std::string out;
    for (const auto &[name, value] : s.labels) {
        if (name == "interface") continue;
        if (!out.empty()) out += ' ';
        out += name + "=" + value;
    }
    return out.empty() ? "-" : out;
}

}  // namespace

const char kWatchUsage[] =
    "watch [--interval S | -n S] [--count N] [--nonzero] COMMAND\n"
    "  Runs COMMAND every S seconds (default 2), N times or until q or Ctrl-C, and\n"
    "  shows every counter with its delta since the last sample and its rate per\n"
    "  second. It is never paged: on a terminal it refreshes the screen in place.\n"
    "  --nonzero leaves out the rows whose counters are all zero.\n";

std::vector<std::string> split_words(const std::string &line) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false, any = false;
    for (char c : line) {
        if (c == '"') {
            quoted = !quoted;
            any = true;
        } else if (!quoted && (c == ' ' || c == '\t')) {
            if (any) words.push_back(word);
            word.clear();
            any = false;
        } else {
            word += c;
            any = true;
        }
    }
    if (any) words.push_back(word);
    return words;
}

std::optional<double> seconds_in(const std::string &text, double low, double high) {
    char *end = nullptr;
    const double d = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(d >= low && d <= high)) return std::nullopt;
    return d;
}

bool parse_watch_arguments(const std::vector<std::string> &words, WatchOptions &o, std::string &error) {
    std::size_t i = 0;
    for (; i < words.size(); ++i) {
        const std::string &w = words[i];
        auto value = [&](std::string &into) {
            if (i + 1 >= words.size()) {
                error = "watch: " + w + " needs a value";
                return false;
            }
            into = words[++i];
            return true;
        };
        if (w == "--") {
            ++i;
            break;
        }
        const cli::Option *option = cli::find_option(cli::Scope::watch, w);
        if (option == nullptr && !w.empty() && w[0] == '-') {
            error = "watch: unknown option " + w + " (expected --interval S, --count N, --nonzero, -c COMMAND)";
            return false;
        }
        if (option == nullptr) break;  // the command's first word
        std::string v;
        if (option->value != cli::Value::none && !value(v)) return false;
        const std::string_view id = option->long_name;
        if (id == "--interval") {
            const std::optional<double> d = seconds_in(v, 0.1, 86400);
            if (!d) {
                error = "watch: interval \"" + v + "\" is not a number of seconds from 0.1 to 86400";
                return false;
            }
            o.interval = *d;
        } else if (id == "--count") {
            char *end = nullptr;
            const long n = std::strtol(v.c_str(), &end, 10);
            if (v.empty() || *end != '\0' || n < 1 || n > 1000000000) {
                error = "watch: count \"" + v + "\" is not a number of samples from 1 to 1000000000";
                return false;
            }
            o.count = n;
        } else if (id == "--nonzero") {
            o.nonzero = true;
        } else if (id == "--command") {
            o.command = v;
            if (i + 1 < words.size()) {
                error = "watch: nothing may follow " + w + " COMMAND, got \"" + words[i + 1] + "\"";
                return false;
            }
            ++i;
            break;
        }
    }
    for (; i < words.size(); ++i) o.command += (o.command.empty() ? "" : " ") + words[i];
    if (o.command.empty()) {
        error = "watch: which command? (watch [--interval S] [--count N] [--nonzero] COMMAND)";
        return false;
    }
    const std::vector<std::string> inner = split_words(o.command);
    if (!inner.empty() && inner[0] == "watch") {
        error = "watch: a watch cannot watch a watch";
        return false;
    }
    return true;
}

std::string render_watch_text(const std::string &header, const std::vector<Sample> &samples,
                              const std::vector<DeltaTracker::Reading> &readings, bool highlight) {
    struct Row {
        std::string cells[6];
        bool changed = false;
    };
    std::vector<Row> rows;
    rows.push_back({{"Interface", "Row", "Counter", "Value", "Delta", "Rate/s"}, false});
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Sample &s = samples[i];
        if (s.info == nullptr || s.info->role != QDCLI_ROLE_COUNTER) continue;
        const DeltaTracker::Reading &r = readings.at(i);
        Row row;
        row.cells[0] = interface_of(s);
        row.cells[1] = row_of(s);
        row.cells[2] = s.info->name;
        row.cells[3] = std::to_string(s.value);
        row.cells[4] = r.known ? std::to_string(r.delta.delta) : "-";
        row.cells[5] = r.known ? format_number(r.rate) : "-";
        row.changed = r.known && r.delta.delta != 0;
        if (r.delta.wrapped) row.cells[5] += " (wrapped)";
        if (r.delta.restarted) row.cells[5] += " (cleared)";
        rows.push_back(std::move(row));
    }
    std::size_t width[6] = {};
    for (const Row &row : rows)
        for (int c = 0; c < 6; ++c) width[c] = std::max(width[c], row.cells[c].size());
    std::string out = header + "\n";
    for (const Row &row : rows) {
        std::string line = row.changed ? "* " : "  ";
        for (int c = 0; c < 6; ++c) {
            const std::string &cell = row.cells[c];
            const std::string pad(width[c] - cell.size(), ' ');
            // Names left, numbers right.
            line += c < 3 ? cell + pad : pad + cell;
            if (c < 5) line += "  ";
        }
        while (!line.empty() && line.back() == ' ') line.pop_back();
        out += row.changed && highlight ? "\033[1m" + line + "\033[0m\n" : line + "\n";
    }
    if (rows.size() == 1) out += "  (no counters)\n";
    return out;
}

Document watch_document(const Document &document, const std::vector<Sample> &samples,
                        const std::vector<DeltaTracker::Reading> &readings, const std::string &timestamp,
                        double interval, long sample) {
    Document out = Document::object();
    out["timestamp"] = timestamp;
    out["interval"] = interval;
    out["sample"] = sample;
    for (auto it = document.begin(); it != document.end(); ++it) out[it.key()] = it.value();
    for (std::size_t i = 0; i < samples.size() && i < readings.size(); ++i) {
        const DeltaTracker::Reading &r = readings[i];
        if (!r.known) continue;
        const Sample &s = samples[i];
        Document &row = out.at(Document::json_pointer(s.row));
        row["deltas"][s.info->name] = r.delta.delta;
        row["rates"][s.info->name] = r.rate;
        if (r.delta.restarted) row["restarted"].push_back(s.info->name);
    }
    return out;
}

}  // namespace qdsh
