// SPDX-License-Identifier: MIT
#include "render/metrics.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>
#include <string_view>

namespace qdsh {

namespace {

bool is_value(const qdcli_attr_info *info) {
    return info != nullptr && info->metric != nullptr &&
           (info->metric_type == QDCLI_METRIC_COUNTER || info->metric_type == QDCLI_METRIC_GAUGE);
}

void set_label(Labels &labels, const std::string &name, const std::string &value) {
    for (auto &l : labels)
        if (l.first == name) {
            l.second = value;
            return;
        }
    labels.emplace_back(name, value);
}

// A label value: a text as it is, a number in decimal, a list of them
// joined by commas ("0,1,2": the CoS values of a queue, in an _info
// series); empty when the value is none of these.
std::string label_value(const Document &v) {
    if (v.is_string()) return v.get<std::string>();
    if (v.is_number()) return v.dump();
    std::string out;
    if (!v.is_array()) return out;
    for (const Document &e : v) {
        if (!e.is_string() && !e.is_number()) return {};
        if (!out.empty()) out += ',';
        out += e.is_string() ? e.get<std::string>() : e.dump();
    }
    return out;
}

// The constant labels of a catalogue entry, "direction=n2h,channel=0".
void add_constants(const char *text, Labels &labels) {
    if (text == nullptr) return;
    std::string_view rest(text);
    while (!rest.empty()) {
        const std::string_view item = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(rest.size(), item.size() + 1));
        const std::size_t eq = item.find('=');
        if (eq != std::string_view::npos) set_label(labels, std::string(item.substr(0, eq)), std::string(item.substr(eq + 1)));
    }
}

// Adds what identifies `object` to `labels`: the members the catalogue
// gives an identity label.
void add_identity(const Document &object, NameLookup lookup, Labels &labels) {
    for (auto it = object.begin(); it != object.end(); ++it) {
        const qdcli_attr_info *info = lookup(it.key().c_str());
        if (info == nullptr || info->metric_type != QDCLI_METRIC_NONE || info->label == nullptr) continue;
        // A row named by a list (the qos-groups sharing an input buffer) is
        // named by its first element: the list is configuration.
        const Document &v = it.value();
        const std::string value = label_value(v.is_array() && !v.empty() ? v.front() : v);
        if (!value.empty()) set_label(labels, info->label, value);
    }
}

// One _info sample per configuration family of `object`, its values as labels.
void add_configuration(const Document &object, NameLookup lookup, const Labels &identity, const std::string &row,
                       std::vector<Sample> &out) {
    const std::size_t first = out.size();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const qdcli_attr_info *info = lookup(it.key().c_str());
        if (info == nullptr || info->metric_type != QDCLI_METRIC_INFO || info->metric == nullptr || info->label == nullptr)
            continue;
        const std::string value = label_value(it.value());
        if (value.empty()) continue;
        std::size_t i = first;
        while (i < out.size() && std::string_view(out[i].info->metric) != info->metric) ++i;
        if (i == out.size()) {
            Sample s;
            s.info = info;
            s.labels = identity;
            s.value = 1;
            s.row = row;
            out.push_back(std::move(s));
        }
        set_label(out[i].labels, info->label, value);
    }
}

void gather(const Document &node, const Document::json_pointer &pointer, NameLookup lookup, Labels labels,
          std::vector<Sample> &out) {
    if (node.is_array()) {
        for (std::size_t i = 0; i < node.size(); ++i)
            if (node[i].is_object() || node[i].is_array())
                gather(node[i], pointer / i, lookup, labels, out);
        return;
    }
    if (!node.is_object()) return;
    add_identity(node, lookup, labels);
    add_configuration(node, lookup, labels, pointer.to_string(), out);
    for (auto it = node.begin(); it != node.end(); ++it) {
        const Document &v = it.value();
        if (v.is_object() || v.is_array()) {
            if (it.key() != "errors" && it.key() != "unsupported") gather(v, pointer / it.key(), lookup, labels, out);
            continue;
        }
        if (!v.is_number_unsigned() && !(v.is_number_integer() && v.get<std::int64_t>() >= 0)) continue;
        const qdcli_attr_info *info = lookup(it.key().c_str());
        if (!is_value(info)) continue;
        Sample s;
        s.info = info;
        s.labels = labels;
        add_constants(info->metric_labels, s.labels);
        s.value = v.get<std::uint64_t>();
        s.width_bits = info->width_bits;
        // A value read from fields of two widths tells which one it came from.
        const auto bits = node.find(it.key() + "_bits");
        if (bits != node.end() && bits->is_number_unsigned() && bits->get<std::uint64_t>() <= 64)
            s.width_bits = bits->get<unsigned>();
        s.row = pointer.to_string();
        out.push_back(std::move(s));
    }
}

bool has_nonzero_counter(const Document &row, NameLookup lookup, bool &has_counter) {
    has_counter = false;
    for (auto it = row.begin(); it != row.end(); ++it) {
        if (!it.value().is_number_integer()) continue;
        const qdcli_attr_info *info = lookup(it.key().c_str());
        if (info == nullptr || info->role != QDCLI_ROLE_COUNTER) continue;
        has_counter = true;
        if (it.value().get<std::int64_t>() != 0) return true;
    }
    return false;
}

std::string family_of(const qdcli_attr_info &info) {
    std::string out = "qdcli_";
    for (const char *p = info.metric != nullptr ? info.metric : info.name; *p != '\0'; ++p) {
        const char c = *p;
        const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        out += ok ? c : '_';
    }
    return out;
}

// What a family's samples are called: "_total" on a counter, "_info" on
// configuration.
std::string sample_name(const std::string &family, enum qdcli_metric_type type) {
    if (type == QDCLI_METRIC_COUNTER) return family + "_total";
    if (type == QDCLI_METRIC_INFO) return family + "_info";
    return family;
}

std::string help_of(const qdcli_attr_info &info) {
    if (info.metric_type == QDCLI_METRIC_INFO) {
        std::string what = info.metric != nullptr ? info.metric : info.name;
        std::replace(what.begin(), what.end(), '_', ' ');
        return "Configuration of each " + what + ", as labels (value 1)";
    }
    const char *help = info.metric_help != nullptr ? info.metric_help : info.help;
    return help != nullptr ? help : info.name;
}

// A value as the exposition writes it: divided down to its base unit.
std::string value_text(const qdcli_attr_info &info, std::uint64_t value) {
    if (info.metric_divisor <= 1) return std::to_string(value);
    char text[64];
    std::snprintf(text, sizeof text, "%.10g", static_cast<double>(value) / info.metric_divisor);
    return text;
}

// HELP text and (`quotes`) label values: backslash, newline and double quote escaped.
std::string escaped(std::string_view s, bool quotes) {
    std::string out;
    for (char c : s) {
        if (c == '\\' || (c == '"' && quotes)) out += '\\';
        out += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return out;
}

std::string label_text(const Labels &labels) {
    if (labels.empty()) return {};
    std::string out = "{";
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (i > 0) out += ',';
        out += labels[i].first + "=\"" + escaped(labels[i].second, true) + "\"";
    }
    return out + "}";
}

// HELP, TYPE and (OpenMetrics) UNIT of a family. In OpenMetrics a family
// is named without the "_total" or "_info" of its samples; Prometheus' text
// format names the samples' name and has no info type.
void family_header(std::string &out, const std::string &family, enum qdcli_metric_type type, const char *unit,
                   const std::string &help, Exposition dialect) {
    const bool om = dialect == Exposition::openmetrics;
    const std::string named = om ? family : sample_name(family, type);
    const char *type_name = type == QDCLI_METRIC_COUNTER ? "counter" : type == QDCLI_METRIC_INFO && om ? "info" : "gauge";
    out += "# HELP " + named + " " + escaped(help, false) + "\n";
    out += "# TYPE " + named + " " + type_name + "\n";
    if (om && unit != nullptr) out += "# UNIT " + named + " " + unit + "\n";
}

// The identity labels of the rows of `table`, after those of the tables it sits in.
void table_labels(const qdcli_attr_info *entries, std::size_t count, const char *table, std::vector<std::string> &out,
                  int depth = 0) {
    if (table == nullptr || depth > 8) return;
    for (std::size_t i = 0; i < count; ++i)
        if (entries[i].table != nullptr && std::strcmp(entries[i].table, table) == 0 && entries[i].parent_table != nullptr) {
            table_labels(entries, count, entries[i].parent_table, out, depth + 1);
            break;
        }
    for (std::size_t i = 0; i < count; ++i) {
        const qdcli_attr_info &a = entries[i];
        if (a.table != nullptr && std::strcmp(a.table, table) == 0 && a.metric_type == QDCLI_METRIC_NONE &&
            a.label != nullptr && std::find(out.begin(), out.end(), a.label) == out.end())
            out.push_back(a.label);
    }
}

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

std::string metric_names_table(const qdcli_attr_info *entries, std::size_t count) {
    std::string out = "| Metric | Type | Unit | Labels | Meaning |\n|---|---|---|---|---|\n";
    std::set<std::string> done;
    for (std::size_t i = 0; i < count; ++i) {
        const qdcli_attr_info &a = entries[i];
        if (a.metric == nullptr || a.metric_type == QDCLI_METRIC_NONE) continue;
        const std::string family = family_of(a);
        if (!done.insert(family).second) continue;
        std::vector<std::string> labels;
        table_labels(entries, count, a.table, labels);
        // Constants and configuration: of every entry of the family.
        for (std::size_t j = i; j < count; ++j) {
            const qdcli_attr_info &b = entries[j];
            if (b.metric == nullptr || family_of(b) != family) continue;
            Labels constants;
            add_constants(b.metric_labels, constants);
            for (const auto &c : constants)
                if (std::find(labels.begin(), labels.end(), c.first) == labels.end()) labels.push_back(c.first);
            if (b.metric_type == QDCLI_METRIC_INFO && b.label != nullptr) labels.push_back(b.label);
        }
        std::string label_list;
        for (const std::string &l : labels) label_list += (label_list.empty() ? "`" : ", `") + l + "`";
        std::string help = help_of(a);
        for (std::size_t p = 0; (p = help.find('|', p)) != std::string::npos; p += 2) help.replace(p, 1, "\\|");
        static const char *const kTypes[] = {"", "counter", "gauge", "info"};
        out += "| `" + sample_name(family, a.metric_type) + "` | " + kTypes[a.metric_type] + " | " +
               (a.metric_unit != nullptr ? a.metric_unit : "") + " | " + label_list + " | " + help + " |\n";
    }
    return out;
}

std::string Sample::family() const { return info != nullptr ? family_of(*info) : std::string(); }

std::string Sample::key() const { return family() + label_text(labels); }

std::vector<Sample> collect_samples(const Document &document, NameLookup lookup) {
    std::vector<Sample> out;
    if (lookup != nullptr) gather(document, Document::json_pointer(), lookup, {}, out);
    return out;
}

void drop_zero_rows(Document &document, NameLookup lookup) {
    if (lookup == nullptr) return;
    if (document.is_object()) {
        for (auto it = document.begin(); it != document.end(); ++it)
            if (it.value().is_structured()) drop_zero_rows(it.value(), lookup);
        return;
    }
    if (!document.is_array()) return;
    Document kept = Document::array();
    for (Document &element : document) {
        if (element.is_object()) {
            bool has_counter = false;
            if (!has_nonzero_counter(element, lookup, has_counter) && has_counter) continue;
            drop_zero_rows(element, lookup);
        }
        kept.push_back(std::move(element));
    }
    document = std::move(kept);
}

std::vector<std::string> repeated_series(const std::vector<Sample> &samples) {
    std::map<std::string, int> seen;
    std::vector<std::string> out;
    for (const Sample &s : samples)
        if (++seen[s.key()] == 2) out.push_back(s.key());
    return out;
}

void carry_counters(std::vector<Sample> &samples, CounterState &state) {
    for (Sample &s : samples)
        if (s.is_counter()) s.value = state.observe(s.key(), s.value, s.width_bits).count;
    // A series missing from a few collections (a command that failed for a
    // while) keeps its count; one gone for longer is forgotten.
    state.end_round(16);
}

CommandHealth command_health(const Document &document, bool outcome_ok) {
    CommandHealth h;
    if (document.is_object()) {
        for (const Document &e : document.value("errors", Document::array())) {
            const bool has_kind = e.is_object() && e.contains("kind") && e["kind"].is_string();
            ++h.errors[has_kind ? e["kind"].get<std::string>() : "unknown"];
        }
        const Document unsupported = document.value("unsupported", Document::array());
        h.unsupported = unsupported.is_array() ? static_cast<long>(unsupported.size()) : 0;
    }
    if (!outcome_ok && h.errors.empty()) h.errors["failed"] = 1;
    h.ok = outcome_ok && h.errors.empty();
    return h;
}

std::vector<DeltaTracker::Reading> DeltaTracker::update(const std::vector<Sample> &samples, double seconds) {
    std::vector<Reading> out(samples.size());
    interval_ = started_ ? seconds - last_ : 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Sample &s = samples[i];
        // Every count that grows, a saturating one included (the exporter
        // calls that a gauge).
        if (s.info == nullptr || s.info->role != QDCLI_ROLE_COUNTER) continue;
        const CounterState::Step step = state_.observe(s.key(), s.value, s.width_bits);
        if (!step.known) continue;
        Reading &r = out[i];
        r.known = true;
        r.delta = step.delta;
        r.rate = interval_ > 0 ? static_cast<double>(r.delta.delta) / interval_ : 0;
    }
    state_.end_round(1);
    last_ = seconds;
    started_ = true;
    return out;
}

std::string write_exposition(const std::vector<Sample> &samples, const std::vector<ExtraFamily> &extra,
                             Exposition dialect) {
    // Families in order of first appearance, each with its samples.
    std::vector<std::string> order;
    std::map<std::string, std::vector<const Sample *>> families;
    std::set<std::string> seen;
    for (const Sample &s : samples) {
        if (s.info == nullptr || s.info->metric == nullptr || s.info->metric_type == QDCLI_METRIC_NONE ||
            !seen.insert(s.key()).second)
            continue;
        auto &list = families[s.family()];
        if (list.empty()) order.push_back(s.family());
        list.push_back(&s);
    }
    std::string out;
    for (const std::string &family : order) {
        const qdcli_attr_info &info = *families[family].front()->info;
        family_header(out, family, info.metric_type, info.metric_unit, help_of(info), dialect);
        const std::string name = sample_name(family, info.metric_type);
        for (const Sample *s : families[family])
            out += name + label_text(s->labels) + " " + value_text(*s->info, s->value) + "\n";
    }
    for (const ExtraFamily &f : extra) {
        const enum qdcli_metric_type type = f.counter ? QDCLI_METRIC_COUNTER : QDCLI_METRIC_GAUGE;
        const char *unit = f.name.ends_with("_seconds") ? "seconds" : nullptr;
        family_header(out, f.name, type, unit, f.help, dialect);
        const std::string name = sample_name(f.name, type);
        for (const auto &[labels, value] : f.samples) out += name + label_text(labels) + " " + value + "\n";
    }
    if (dialect == Exposition::openmetrics) out += "# EOF\n";
    return out;
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
