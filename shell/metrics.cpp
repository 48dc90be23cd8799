// SPDX-License-Identifier: MIT
#include "metrics.hpp"

#include <cstdio>
#include <set>
#include <string_view>

namespace qdsh {

namespace {

bool is_metric(const qdcli_attr_info *info) {
    return info != nullptr && (info->role == QDCLI_ROLE_COUNTER || info->role == QDCLI_ROLE_GAUGE);
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
// joined by commas ("0,1,2": the CoS values of a queue); empty when the
// value is none of these.
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

// Adds what identifies `object` to `labels`: its identifiers, and a state
// that starts a row of its table (the name of a control queue, which has
// no number).
void add_identifiers(const Document &object, NameLookup lookup, Labels &labels) {
    for (auto it = object.begin(); it != object.end(); ++it) {
        const Document &v = it.value();
        const qdcli_attr_info *info = lookup(it.key().c_str());
        if (info == nullptr) continue;
        const bool identifies = info->role == QDCLI_ROLE_IDENTIFIER ||
                                (info->role == QDCLI_ROLE_LABEL && (info->flags & QDCLI_ATTR_FLAG_ROW_START) != 0);
        if (!identifies) continue;
        const std::string value = label_value(v);
        if (value.empty()) continue;
        // The interface's name says what its index and slot would.
        if (it.key() == "if_index" || it.key() == "hif_if_index" || it.key() == "hif_slot") continue;
        const auto [name, implied] = label_for(it.key());
        set_label(labels, name, value);
        if (!implied.first.empty()) set_label(labels, implied.first, implied.second);
    }
}

void walk(const Document &node, const Document::json_pointer &pointer, NameLookup lookup, Labels labels,
          std::vector<Sample> &out) {
    if (node.is_array()) {
        for (std::size_t i = 0; i < node.size(); ++i)
            if (node[i].is_object() || node[i].is_array())
                walk(node[i], pointer / i, lookup, labels, out);
        return;
    }
    if (!node.is_object()) return;
    add_identifiers(node, lookup, labels);
    for (auto it = node.begin(); it != node.end(); ++it) {
        const Document &v = it.value();
        if (v.is_object() || v.is_array()) {
            if (it.key() != "errors" && it.key() != "unsupported") walk(v, pointer / it.key(), lookup, labels, out);
            continue;
        }
        if (!v.is_number_unsigned() && !(v.is_number_integer() && v.get<std::int64_t>() >= 0)) continue;
        const qdcli_attr_info *info = lookup(it.key().c_str());
        if (!is_metric(info)) continue;
        Sample s;
        s.info = info;
        s.labels = labels;
        s.value = v.get<std::uint64_t>();
        s.width_bits = info->width_bits;
        if (const auto bits = node.find(it.key() + "_bits"); bits != node.end() && bits->is_number_unsigned())
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

std::string metric_name(const char *name) {
    std::string out = "qdcli_";
    for (const char *p = name; *p != '\0'; ++p) {
        const char c = *p;
        const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        out += ok ? c : '_';
    }
    return out;
}

// The family of a catalogue value: "qdcli_" and its name; a counter whose
// name already ends in "_total" does not get a second one on its samples.
std::string family_name(const qdcli_attr_info &info) {
    std::string name = metric_name(info.name);
    if (info.role == QDCLI_ROLE_COUNTER && name.ends_with("_total")) name.resize(name.size() - 6);
    return name;
}

// HELP text: backslash and newline escaped.
std::string escape_help(std::string_view s) {
    std::string out;
    for (char c : s) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

// A label value: backslash, double quote and newline escaped.
std::string escape_label(std::string_view s) {
    std::string out;
    for (char c : s) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '"')
            out += "\\\"";
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

std::string label_text(const Labels &labels) {
    if (labels.empty()) return {};
    std::string out = "{";
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (i > 0) out += ',';
        out += labels[i].first + "=\"" + escape_label(labels[i].second) + "\"";
    }
    return out + "}";
}

void family_header(std::string &out, const std::string &family, bool counter, const std::string &help,
                   Exposition dialect) {
    const std::string named = dialect == Exposition::prometheus && counter ? family + "_total" : family;
    out += "# HELP " + named + " " + escape_help(help) + "\n";
    out += "# TYPE " + named + (counter ? " counter\n" : " gauge\n");
}

}  // namespace

std::pair<std::string, std::pair<std::string, std::string>> label_for(const std::string &id) {
    using Implied = std::pair<std::string, std::string>;
    auto direction = [&]() -> Implied {
        for (const char *d : {"tx", "rx", "n2h", "h2n"}) {
            const std::string prefix = std::string(d) + "_";
            if (id.starts_with(prefix) || id.starts_with("sw_" + prefix)) return {"direction", d};
        }
        return {};
    };
    if (id == "if_name" || id == "ext_if_name") return {"interface", {}};
    if (id == "vaq" || id == "asic_vaq") return {"extender", {}};
    if (id.ends_with("qos_group") && id.find("unsupported") == std::string::npos) return {"qos_group", direction()};
    if (id.ends_with("_glb_idx")) return {"port", direction()};
    if (id == "queue_id" || id == "stats_queue" || id.ends_with("_row_queue") || id == "ext_pass_queue" ||
        id == "ext_drop_queue")
        return {"queue", direction()};
    if (id == "queue_name") return {"queue", {}};
    if (id == "ext_cos" || id == "pause_cos" || id == "ib_cos" || id == "queue_cos") return {"cos", {}};
    return {id, {}};
}

std::string metric_names_table(const qdcli_attr_info *entries, std::size_t count) {
    std::string out = "| Metric | Type | Unit | Meaning |\n|---|---|---|---|\n";
    for (std::size_t i = 0; i < count; ++i) {
        const qdcli_attr_info &a = entries[i];
        if (!is_metric(&a)) continue;
        const bool counter = a.role == QDCLI_ROLE_COUNTER;
        std::string help = a.help != nullptr ? a.help : "";
        for (std::size_t p = 0; (p = help.find('|', p)) != std::string::npos; p += 2) help.replace(p, 1, "\\|");
        out += "| `" + family_name(a) + (counter ? "_total" : "") + "` | " + (counter ? "counter" : "gauge") +
               " | " + (a.unit != nullptr ? a.unit : "") + " | " + help + " |\n";
    }
    return out;
}

std::string Sample::key() const {
    std::string k = info != nullptr ? info->name : "";
    k += label_text(labels);
    return k;
}

std::vector<Sample> collect_samples(const Document &document, NameLookup lookup) {
    std::vector<Sample> out;
    if (lookup != nullptr) walk(document, Document::json_pointer(), lookup, {}, out);
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

Delta counter_delta(std::uint64_t previous, std::uint64_t current, unsigned width_bits) {
    Delta d;
    if (current >= previous) {
        d.delta = current - previous;
        return d;
    }
    if (width_bits > 0 && width_bits < 64 && previous < (std::uint64_t{1} << width_bits)) {
        const std::uint64_t range = std::uint64_t{1} << width_bits;
        const std::uint64_t through = range - previous + current;
        if (through < range / 2) {
            d.delta = through;
            d.wrapped = true;
            return d;
        }
    }
    d.delta = current;
    d.restarted = true;
    return d;
}

std::vector<DeltaTracker::Reading> DeltaTracker::update(const std::vector<Sample> &samples, double seconds) {
    std::vector<Reading> out(samples.size());
    interval_ = started_ ? seconds - last_ : 0;
    std::map<std::string, std::uint64_t> now;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Sample &s = samples[i];
        if (s.info == nullptr || s.info->role != QDCLI_ROLE_COUNTER) continue;
        const std::string key = s.key();
        now[key] = s.value;
        const auto before = previous_.find(key);
        if (!started_ || before == previous_.end()) continue;
        Reading &r = out[i];
        r.known = true;
        r.delta = counter_delta(before->second, s.value, s.width_bits);
        r.rate = interval_ > 0 ? static_cast<double>(r.delta.delta) / interval_ : 0;
    }
    previous_ = std::move(now);
    last_ = seconds;
    started_ = true;
    return out;
}

std::string write_exposition(const std::vector<Sample> &samples, const std::vector<ExtraFamily> &extra,
                             Exposition dialect) {
    // Families in order of first appearance, each with its samples.
    std::vector<const qdcli_attr_info *> order;
    std::map<const qdcli_attr_info *, std::vector<const Sample *>> families;
    std::set<std::string> seen;
    for (const Sample &s : samples) {
        if (!is_metric(s.info) || !seen.insert(s.key()).second) continue;
        auto &list = families[s.info];
        if (list.empty()) order.push_back(s.info);
        list.push_back(&s);
    }
    std::string out;
    for (const qdcli_attr_info *info : order) {
        const bool counter = info->role == QDCLI_ROLE_COUNTER;
        const std::string family = family_name(*info);
        family_header(out, family, counter, info->help != nullptr ? info->help : info->name, dialect);
        const std::string sample_name = counter ? family + "_total" : family;
        for (const Sample *s : families[info])
            out += sample_name + label_text(s->labels) + " " + std::to_string(s->value) + "\n";
    }
    for (const ExtraFamily &f : extra) {
        family_header(out, f.name, f.counter, f.help, dialect);
        const std::string sample_name = f.counter ? f.name + "_total" : f.name;
        for (const auto &[labels, value] : f.samples) out += sample_name + label_text(labels) + " " + value + "\n";
    }
    if (dialect == Exposition::openmetrics) out += "# EOF\n";
    return out;
}

}  // namespace qdsh
