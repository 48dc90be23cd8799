// SPDX-License-Identifier: MIT
#include "document.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <regex>


namespace qdsh {
namespace {

using json = Document;

// ---- values -----------------------------------------------------------------

std::uint64_t unsigned_value(const std::vector<std::uint8_t> &b) {
    if (b.size() >= 8) {
        std::uint64_t v = 0;
        std::memcpy(&v, b.data(), 8);
        return v;
    }
    if (b.size() >= 4) {
        std::uint32_t v = 0;
        std::memcpy(&v, b.data(), 4);
        return v;
    }
    if (b.size() >= 2) {
        std::uint16_t v = 0;
        std::memcpy(&v, b.data(), 2);
        return v;
    }
    return b.empty() ? 0 : b[0];
}

std::string text_value(const std::vector<std::uint8_t> &b) {
    std::size_t n = 0;
    while (n < b.size() && b[n] != 0) ++n;
    return std::string(reinterpret_cast<const char *>(b.data()), n);
}

std::string trim(std::string_view s) {
    std::size_t a = 0, e = s.size();
    while (a < e && std::isspace(static_cast<unsigned char>(s[a]))) ++a;
    while (e > a && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
    return std::string(s.substr(a, e - a));
}

std::string lower(std::string s) {
    for (char &c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// The JSON value of a printed value; null when it carries none (a marker,
// a signed value of -1).
json value_of(const qdcli_attr_info *info, std::uint32_t attr, const std::vector<std::uint8_t> &bytes) {
    qdcli_attr_type type = info != nullptr ? info->type : QDCLI_ATTR_U32;
    if (info == nullptr) {
        switch (attr >> 24) {
        case 0x30: type = QDCLI_ATTR_TEXT; break;
        case 0x11: type = QDCLI_ATTR_I32; break;
        default: break;
        }
    }
    switch (type) {
    case QDCLI_ATTR_TEXT: {
        std::string t = text_value(bytes);
        if (info != nullptr && (info->flags & QDCLI_ATTR_FLAG_STATE)) return lower(trim(t));
        return info != nullptr && info->role == QDCLI_ROLE_IDENTIFIER ? trim(t) : t;
    }
    case QDCLI_ATTR_I32: {
        if (bytes.size() < 4) return nullptr;
        std::int32_t v = 0;
        std::memcpy(&v, bytes.data(), 4);
        return v == -1 ? json(nullptr) : json(v);
    }
    case QDCLI_ATTR_FLAGS8:
        return std::any_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b != 0; });
    case QDCLI_ATTR_MARKER: return nullptr;
    default: return unsigned_value(bytes);
    }
}

std::string attr_name(const qdcli_attr_info *info, std::uint32_t attr) {
    if (info != nullptr) return info->name;
    char buf[24];
    std::snprintf(buf, sizeof buf, "attr_0x%08x", attr);
    return buf;
}

// ---- failure messages -------------------------------------------------------

// The failure and refusal messages of the library, as their lines start.
constexpr std::string_view kFailurePrefixes[] = {
    "Unsupported interface", "Cmd send failed", "Cmd recv failed", "Cmd not supported", "Command not supported",
    "Command not allowed", "mts payload is", "Truncated ", "Reply for ", "Invalid interface", "Invalid input",
    "Invalid reply", "Error in MTS", "Error Locating", "Error attaching", "Error retrieving", "Failed to allocate",
    "detach fails", "The command failed", "internal error in command handler", "error: Unexpected",
};

std::vector<std::string> split_lines(std::string_view text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        lines.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

const std::regex &interface_pattern() {
    static const std::regex r(R"((Ethernet|port-channel|Vlan|mgmt)[0-9]+(/[0-9]+)*)", std::regex::icase);
    return r;
}

const std::regex &extender_pattern() {
    static const std::regex r(R"(\bvaq ([0-9]+))");
    return r;
}

// ---- the tree ---------------------------------------------------------------

// Builds the tree from the printed values, by the catalogue's tables: a
// value of a table goes into that table's current row, or starts a row when
// it is the row's index, or when the current row already has its column.
class Builder {
public:
    Builder(json &root, AttributeLookup lookup) : root_(root), lookup_(lookup) {}

    void add(std::uint32_t attr, const std::vector<std::uint8_t> &bytes) {
        const qdcli_attr_info *info = lookup_ != nullptr ? lookup_(attr) : nullptr;
        json value = value_of(info, attr, bytes);
        const std::string name = attr_name(info, attr);
        if (info != nullptr && info->type == QDCLI_ATTR_MARKER) return;
        if (info != nullptr && info->table == nullptr && info->role == QDCLI_ROLE_IDENTIFIER &&
            (name == "if_name" || name == "ext_if_name" || name == "hif_slot")) {
            start_interface(name, std::move(value));
            return;
        }
        if (info == nullptr || info->table == nullptr) {
            json::json_pointer at = interface_or_new();
            set_scalar(root_[at], name, std::move(value), info != nullptr && (info->flags & QDCLI_ATTR_FLAG_LIST));
            last_.clear();
            return;
        }
        add_to_table(*info, name, std::move(value));
    }

private:
    void start_interface(const std::string &name, json value) {
        const bool is_name = name != "hif_slot";
        if (is_name && !interface_.empty() && !root_[interface_].contains("if_name")) {
            // The host-interface report names the slot before the interface.
            json &current = root_[interface_];
            json renamed = json::object();
            renamed["if_name"] = std::move(value);
            for (auto &[k, v] : current.items()) renamed[k] = v;
            current = std::move(renamed);
            if (current["if_name"].is_string()) reported_.push_back(current["if_name"].get<std::string>());
            return;
        }
        if (is_name && value.is_string()) reported_.push_back(value.get<std::string>());
        json &list = root_["interfaces"];
        json object = json::object();
        object[is_name ? "if_name" : name] = std::move(value);
        list.push_back(std::move(object));
        interface_ = json::json_pointer("/interfaces/" + std::to_string(list.size() - 1));
        rows_.clear();
        last_.clear();
    }

    json::json_pointer interface_or_new() {
        if (interface_.empty()) {
            json &list = root_["interfaces"];
            list.push_back(json::object());
            interface_ = json::json_pointer("/interfaces/" + std::to_string(list.size() - 1));
        }
        return interface_;
    }

    static void set_scalar(json &object, const std::string &name, json value, bool list) {
        if (list) {
            json &slot = object[name];
            if (!slot.is_array()) slot = json::array();
            if (!value.is_null()) slot.push_back(std::move(value));
            return;
        }
        if (!value.is_null()) object[name] = std::move(value);
    }

    // Where the rows of `table` go: the parent table's current row, else
    // the interface being reported, else the document itself.
    json::json_pointer container_of(const qdcli_attr_info &info) {
        if (info.parent_table != nullptr) {
            auto it = rows_.find(info.parent_table);
            if (it != rows_.end()) return it->second;
        }
        return interface_.empty() ? json::json_pointer() : interface_;
    }

    void new_row(const qdcli_attr_info &info) {
        const json::json_pointer container = container_of(info);
        json &list = root_[container][info.table];
        if (!list.is_array()) list = json::array();
        list.push_back(json::object());
        rows_[info.table] = container / info.table / std::to_string(list.size() - 1);
        // Rows of nested tables (and theirs) belonged to the previous row.
        std::vector<std::string> ended{info.table};
        while (!ended.empty()) {
            const std::string parent = ended.back();
            ended.pop_back();
            for (const auto &[child, of] : children_)
                if (of == parent && rows_.erase(child) > 0) ended.push_back(child);
        }
    }

    void add_to_table(const qdcli_attr_info &info, const std::string &name, json value) {
        if (info.parent_table != nullptr) children_[info.table] = info.parent_table;
        const bool list = (info.flags & QDCLI_ATTR_FLAG_LIST) != 0;
        const bool starts = (info.flags & QDCLI_ATTR_FLAG_ROW_START) != 0;
        auto it = rows_.find(info.table);
        json *row = it != rows_.end() ? &root_[it->second] : nullptr;
        const bool continues_list = list && row != nullptr && last_ == name;
        bool fresh = row == nullptr;
        if (!fresh && !continues_list) {
            if (starts)
                // The same index printed twice in a row (the extended
                // report's CoS) stays one row.
                fresh = !(info.row_key != nullptr && name == info.row_key && row->contains(name) &&
                          (*row)[name] == value);
            else
                fresh = row->contains(name);
        }
        if (fresh) {
            new_row(info);
            row = &root_[rows_[info.table]];
        }
        if (!(starts && !list && row->contains(name))) set_scalar(*row, name, std::move(value), list);
        last_ = name;
    }

  public:
    // A report that failed after naming its slot (the host-interface
    // report): its object gets the interface's name from the failure.
    void name_unnamed(const std::string &name) {
        if (interface_.empty()) return;
        json &current = root_[interface_];
        if (current.contains("if_name")) return;
        json renamed = json::object();
        renamed["if_name"] = name;
        for (auto &[k, v] : current.items()) renamed[k] = v;
        current = std::move(renamed);
    }

    std::vector<std::string> reported_;  // interface names, in the order reported

  private:
    json &root_;
    AttributeLookup lookup_;
    json::json_pointer interface_;
    std::map<std::string, json::json_pointer> rows_;       // table -> its current row
    std::map<std::string, std::string> children_;          // table -> parent table
    std::string last_;                                      // last column added to a table
};

// Adds an error entry; returns the interface it is about, if one.
template <class About>
std::optional<std::string> add_error(json &errors, const std::string &message, About &&about) {
    json e = json::object();
    std::smatch m;
    const bool extender = std::regex_search(message, m, extender_pattern());
    if (std::regex_search(message, m, interface_pattern())) {
        e["interface"] = m.str(0);
    } else if (!extender) {
        if (const std::optional<std::string> i = about()) e["interface"] = *i;
    }
    if (std::regex_search(message, m, extender_pattern())) e["extender"] = std::stoul(m.str(1));
    e["message"] = message;
    errors.push_back(std::move(e));
    const json &added = errors.back();
    return added.contains("interface") ? std::optional<std::string>(added["interface"].get<std::string>()) : std::nullopt;
}

// ---- XML ----------------------------------------------------------------------

}  // namespace

std::string xml_escape(const std::string &s) {
    std::string out;
    for (char c : s) {
        const unsigned char u = static_cast<unsigned char>(c);
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default:
            // Characters XML 1.0 does not allow become '?'.
            out += (u < 0x20 && c != '\t' && c != '\n' && c != '\r') ? '?' : c;
        }
    }
    return out;
}

namespace {

// The element of one item of an array member.
std::string item_name(const std::string &array_name, const json &item) {
    if (array_name == "interfaces") return "interface";
    if (array_name == "errors") return "error";
    if (array_name == "lines") return "line";
    return item.is_object() ? "row" : "value";
}

void xml_element(std::string &out, const std::string &name, const json &v, bool pretty, int depth) {
    const std::string indent = pretty ? std::string(static_cast<std::size_t>(depth) * 2, ' ') : std::string();
    const char *nl = pretty ? "\n" : "";
    if ((v.is_object() || v.is_array()) && v.empty()) {
        out += indent + "<" + name + "/>" + nl;
    } else if (v.is_object()) {
        out += indent + "<" + name + ">" + nl;
        for (const auto &[k, child] : v.items()) xml_element(out, k, child, pretty, depth + 1);
        out += indent + "</" + name + ">" + nl;
    } else if (v.is_array()) {
        out += indent + "<" + name + ">" + nl;
        for (const json &item : v) xml_element(out, item_name(name, item), item, pretty, depth + 1);
        out += indent + "</" + name + ">" + nl;
    } else if (v.is_string()) {
        out += indent + "<" + name + ">" + xml_escape(v.get<std::string>()) + "</" + name + ">" + nl;
    } else if (!v.is_null()) {
        out += indent + "<" + name + ">" + v.dump() + "</" + name + ">" + nl;
    }
}

}  // namespace

bool is_failure_message(std::string_view line) {
    const std::string t = trim(line);
    for (std::string_view p : kFailurePrefixes)
        if (t.compare(0, p.size(), p) == 0) return true;
    return t.find(": failed to find nif port") != std::string::npos;
}

Document build_document(std::string_view command, const std::vector<Segment> &segments,
                        const std::vector<std::string> &shell_errors, bool handler_ok, AttributeLookup lookup,
                        bool &ok, const std::string &named_interface, const std::vector<std::string> &walk) {
    json doc = json::object();
    doc["command"] = trim(command);
    doc["status"] = "ok";
    doc["text_only"] = false;
    doc["interfaces"] = json::array();
    json lines = json::array();
    json errors = json::array();
    std::vector<std::string> stdout_lines;
    Builder builder(doc, lookup);
    bool typed = false;
    bool failure_seen = false;
    // The interface a message that names none is about: the one the command
    // names; in a walk over every interface, the next one of the walk after
    // the last one reported (a failing interface prints no report of its own).
    std::optional<std::string> named;
    if (!named_interface.empty()) named = named_interface;
    std::size_t walked = 0;  // walk positions up to here are accounted for
    auto about = [&]() -> std::optional<std::string> {
        if (walk.empty()) return named;
        if (!builder.reported_.empty()) {
            auto it = std::find(walk.begin() + static_cast<std::ptrdiff_t>(walked), walk.end(), builder.reported_.back());
            if (it != walk.end()) walked = static_cast<std::size_t>(it - walk.begin()) + 1;
        }
        if (walked >= walk.size()) return std::nullopt;
        return walk[walked++];
    };
    auto note = [&](const std::optional<std::string> &i) {
        if (!i) return;
        builder.reported_.push_back(*i);
        builder.name_unnamed(*i);
    };
    for (const Segment &s : segments) {
        if (s.kind == Segment::Kind::printer) {
            for (const Segment::Value &v : s.values) builder.add(v.attr, v.bytes);
            typed = typed || !s.values.empty();
            for (const std::string &line : split_lines(s.text)) {
                if (is_failure_message(line)) {
                    note(add_error(errors, trim(line), about));
                    failure_seen = true;
                } else if (s.values.empty() && !trim(line).empty()) {
                    // A flush of text alone: a failing exchange's error text
                    // when the handler failed, otherwise a line of the report.
                    if (!handler_ok) {
                        note(add_error(errors, trim(line), about));
                        failure_seen = true;
                    } else {
                        lines.push_back(line);
                    }
                }
            }
        } else {
            for (const std::string &line : split_lines(s.text)) {
                if (is_failure_message(line)) {
                    note(add_error(errors, trim(line), about));
                    failure_seen = true;
                }
                stdout_lines.push_back(line);
            }
        }
    }
    // qdsh's own errors are about the interface the command names, if one.
    for (const std::string &e : shell_errors) add_error(errors, e, [&] { return named; });
    // Blank lines between the reports of a walk are no content of a typed
    // document; a text report keeps its lines as they are.
    for (std::string &l : stdout_lines)
        if (!typed || !trim(l).empty()) lines.push_back(std::move(l));
    ok = handler_ok && !failure_seen;
    doc["status"] = ok ? "ok" : "failed";
    doc["text_only"] = !typed && !lines.empty();
    doc["lines"] = std::move(lines);
    doc["errors"] = std::move(errors);
    return doc;
}

std::string to_json(const Document &document, bool pretty) {
    return document.dump(pretty ? 2 : -1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string to_xml(const Document &document, bool pretty) {
    std::string out;
    xml_element(out, "document", document, pretty, pretty ? 1 : 0);
    return out;
}

}  // namespace qdsh
