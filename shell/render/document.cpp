// SPDX-License-Identifier: MIT
#include "render/document.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>

#include "cli/grammar.hpp"

namespace qdsh {
namespace {

using json = Document;

// ---- values -----------------------------------------------------------------

std::uint64_t unsigned_value(const std::uint8_t *b, std::uint32_t n) {
    if (n >= 8) {
        std::uint64_t v = 0;
        std::memcpy(&v, b, 8);
        return v;
    }
    if (n >= 4) {
        std::uint32_t v = 0;
        std::memcpy(&v, b, 4);
        return v;
    }
    if (n >= 2) {
        std::uint16_t v = 0;
        std::memcpy(&v, b, 2);
        return v;
    }
    return n == 0 ? 0 : b[0];
}

std::string text_value(const std::uint8_t *b, std::uint32_t n) {
    std::uint32_t k = 0;
    while (k < n && b[k] != 0) ++k;
    return std::string(reinterpret_cast<const char *>(b), k);
}

std::string lower(std::string s) {
    for (char &c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// The JSON value of a told value; null when it carries none (a marker, a
// signed value of -1).
json value_of(const qdcli_attr_info *info, std::uint32_t attr, const std::uint8_t *bytes, std::uint32_t length) {
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
        std::string t = text_value(bytes, length);
        if (info != nullptr && (info->flags & QDCLI_ATTR_FLAG_STATE)) return lower(trim(t));
        return info != nullptr && info->role == QDCLI_ROLE_IDENTIFIER ? trim(t) : t;
    }
    case QDCLI_ATTR_I32: {
        if (length < 4) return nullptr;
        std::int32_t v = 0;
        std::memcpy(&v, bytes, 4);
        return v == -1 ? json(nullptr) : json(v);
    }
    case QDCLI_ATTR_FLAGS8:
        return std::any_of(bytes, bytes + length, [](std::uint8_t b) { return b != 0; });
    case QDCLI_ATTR_MARKER: return nullptr;
    default: return unsigned_value(bytes, length);
    }
}

std::string attr_name(const qdcli_attr_info *info, std::uint32_t attr) {
    if (info != nullptr) return info->name;
    char buf[24];
    std::snprintf(buf, sizeof buf, "attr_0x%08x", attr);
    return buf;
}

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

// The keys of a subject, as members of its object or of a failure entry.
void put_keys(json &object, const SubjectKeys &s) {
    if (!s.if_name.empty()) object["if_name"] = s.if_name;
    if (s.vaq) object["vaq"] = *s.vaq;
    if (s.asic) object["asic"] = *s.asic;
}

}  // namespace

std::string SubjectKeys::label() const {
    switch (kind) {
    case QDCLI_SUBJECT_INTERFACE:
        if (!if_name.empty()) return if_name;
        if (if_index) {
            char text[32];
            std::snprintf(text, sizeof text, "interface 0x%x", *if_index);
            return text;
        }
        return {};
    case QDCLI_SUBJECT_EXTENDER: return vaq ? "vaq " + std::to_string(*vaq) : std::string();
    case QDCLI_SUBJECT_ASIC:
        return (vaq ? "vaq " + std::to_string(*vaq) : std::string()) + (asic ? " asic " + std::to_string(*asic) : "");
    }
    return {};
}

DocumentBuilder::DocumentBuilder(std::string_view command, AttributeLookup lookup) : lookup_(lookup) {
    root_ = json::object();
    root_["command"] = trim(command);
    root_["interfaces"] = json::array();
}

json &DocumentBuilder::container() {
    if (!rows_.empty()) return *rows_.back();
    if (!subjects_.empty()) return *subjects_.back().object;
    return root_;
}

json &DocumentBuilder::subject_object(const SubjectKeys &s) {
    const bool interface = s.kind == QDCLI_SUBJECT_INTERFACE;
    const std::string key = interface ? s.label() : std::to_string(s.vaq.value_or(0));
    std::deque<json> &list = interface ? interfaces_ : extenders_;
    std::map<std::string, std::size_t> &index = interface ? interface_index_ : extender_index_;
    if (const auto it = index.find(key); it != index.end()) return list[it->second];
    index.emplace(key, list.size());
    json &o = list.emplace_back(json::object());
    if (interface)
        o["if_name"] = key;
    else
        o["vaq"] = s.vaq.value_or(0);
    return o;
}

void DocumentBuilder::subject_begin(const SubjectKeys &s) {
    // An extender's ASIC is told within the extender's object; an interface
    // told again (the internal statistics within its report) is the same one.
    subjects_.push_back({&subject_object(s), std::move(rows_), s.kind == QDCLI_SUBJECT_INTERFACE});
    rows_.clear();
}

void DocumentBuilder::subject_end() {
    if (subjects_.empty()) return;
    json *done = subjects_.back().object;
    const bool interface = subjects_.back().interface;
    rows_ = std::move(subjects_.back().outer_rows);
    subjects_.pop_back();
    // An interface the handlers are done with leaves the document at once
    // when it is streamed (its place stays, empty: told again, it is
    // written again).
    if (subjects_.empty() && interface && interface_done_) {
        interface_done_(*done);
        *done = json::object();
    }
}

void DocumentBuilder::row_begin(const char *table) {
    json &list = container()[table != nullptr ? table : "rows"];
    if (!list.is_array()) list = json::array();
    list.push_back(json::object());
    rows_.push_back(&list.back());
}

void DocumentBuilder::row_end() {
    if (!rows_.empty()) rows_.pop_back();
}

void DocumentBuilder::value(std::uint32_t attr, const std::uint8_t *bytes, std::uint32_t length) {
    const qdcli_attr_info *info = lookup_ != nullptr ? lookup_(attr) : nullptr;
    if (info != nullptr && info->type == QDCLI_ATTR_MARKER) return;
    json v = value_of(info, attr, bytes, length);
    if (v.is_null()) return;
    typed_ = true;
    json &slot = container()[attr_name(info, attr)];
    if (info != nullptr && (info->flags & QDCLI_ATTR_FLAG_LIST)) {
        if (!slot.is_array()) slot = json::array();
        slot.push_back(std::move(v));
    } else {
        slot = std::move(v);
    }
}

void DocumentBuilder::failure(const Failure &f) {
    json e = json::object();
    e["kind"] = f.kind;
    if (f.subject) put_keys(e, *f.subject);
    e["message"] = f.message;
    (f.unsupported ? unsupported_ : errors_).push_back(std::move(e));
    told_messages_.push_back(f.message);
}

Document DocumentBuilder::finish(std::string_view printed, bool ok) {
    json lines = json::array();
    for (const std::string &line : split_lines(printed)) {
        const std::string t = trim(line);
        // Blank lines between the reports of a walk are no content of a
        // typed document, and a failure's text is in its entry.
        if (typed_ && t.empty()) continue;
        if (!t.empty() && std::find(told_messages_.begin(), told_messages_.end(), t) != told_messages_.end()) continue;
        lines.push_back(line);
    }
    for (json &o : interfaces_)
        if (!o.empty()) root_["interfaces"].push_back(std::move(o));
    if (!extenders_.empty()) {
        json list = json::array();
        for (json &o : extenders_) list.push_back(std::move(o));
        // Right after the interfaces, before the values about neither.
        json reordered = json::object();
        for (auto &[k, v] : root_.items()) {
            reordered[k] = std::move(v);
            if (k == "interfaces") reordered["extenders"] = std::move(list);
        }
        root_ = std::move(reordered);
    }
    ok = ok && errors_.empty();
    root_["lines"] = std::move(lines);
    root_["unsupported"] = std::move(unsupported_);
    root_["errors"] = std::move(errors_);
    root_["status"] = ok ? "ok" : "failed";
    root_["text_only"] = !typed_ && root_["lines"].size() > 0;
    interfaces_.clear();
    extenders_.clear();
    subjects_.clear();
    rows_.clear();
    return std::move(root_);
}

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
    if (array_name == "unsupported") return "entry";
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

// ---- written as built ---------------------------------------------------------

namespace {

// `text` with every line after the first indented by `by` blanks.
std::string indented(const std::string &text, std::size_t by) {
    std::string out;
    for (const char c : text) {
        out += c;
        if (c == '\n') out.append(by, ' ');
    }
    return out;
}

std::string json_text(const json &value, bool pretty) {
    return value.dump(pretty ? 2 : -1, ' ', false, json::error_handler_t::replace);
}

}  // namespace

void DocumentStream::begin(std::string_view command) {
    command_ = trim(command);
    interfaces_ = 0;
    begun_ = false;
}

// The document's start, written with the first thing written of it.
void DocumentStream::write_start() {
    if (begun_) return;
    begun_ = true;
    if (format_ == Format::json) {
        write_(pretty_ ? "{\n  \"command\": " + json_text(command_, true) : "{\"command\":" + json_text(command_, false));
    } else {
        std::string out;
        const int depth = pretty_ ? 1 : 0;
        out += (pretty_ ? std::string(2, ' ') : "") + "<document>" + (pretty_ ? "\n" : "");
        xml_element(out, "command", command_, pretty_, depth + 1);
        write_(out);
    }
}

void DocumentStream::interface(const Document &object) {
    write_start();
    std::string out;
    if (format_ == Format::json) {
        if (interfaces_ == 0) out += pretty_ ? ",\n  \"interfaces\": [" : ",\"interfaces\":[";
        out += interfaces_ == 0 ? "" : ",";
        out += pretty_ ? "\n    " + indented(json_text(object, true), 4) : json_text(object, false);
    } else {
        if (interfaces_ == 0) out += pretty_ ? "    <interfaces>\n" : "<interfaces>";
        xml_element(out, "interface", object, pretty_, pretty_ ? 3 : 0);
    }
    ++interfaces_;
    write_(out);
}

void DocumentStream::finish(const Document &document) {
    write_start();
    std::string out;
    if (format_ == Format::json) {
        if (interfaces_ == 0)
            out += pretty_ ? ",\n  \"interfaces\": []" : ",\"interfaces\":[]";
        else
            out += pretty_ ? "\n  ]" : "]";
        for (auto it = document.begin(); it != document.end(); ++it) {
            if (it.key() == "command" || it.key() == "interfaces") continue;
            out += pretty_ ? ",\n  " + json_text(it.key(), true) + ": " + indented(json_text(it.value(), true), 2)
                           : "," + json_text(it.key(), false) + ":" + json_text(it.value(), false);
        }
        out += pretty_ ? "\n}\n" : "}\n";
    } else {
        const int depth = pretty_ ? 1 : 0;
        if (interfaces_ == 0)
            out += pretty_ ? "    <interfaces/>\n" : "<interfaces/>";
        else
            out += pretty_ ? "    </interfaces>\n" : "</interfaces>";
        for (auto it = document.begin(); it != document.end(); ++it)
            if (it.key() != "command" && it.key() != "interfaces") xml_element(out, it.key(), it.value(), pretty_, depth + 1);
        out += (pretty_ ? std::string(2, ' ') : "") + "</document>\n";
    }
    write_(out);
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
