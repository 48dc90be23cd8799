// SPDX-License-Identifier: MIT
#include "render/schema.hpp"

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "render/document.hpp"

namespace qdsh {
namespace {

using json = nlohmann::ordered_json;

struct Table {
    std::string name;
    std::string parent;
    std::vector<const qdcli_attr_info *> columns;
    std::vector<std::string> children;
};

struct Shape {
    std::vector<const qdcli_attr_info *> scalars;  // values of a report itself
    std::map<std::string, Table> tables;
    std::vector<std::string> order;                // tables in catalogue order
    std::vector<std::string> roots;                // tables without a parent
    StatesLookup states = nullptr;
};

bool printed(const qdcli_attr_info &a) {
    // The request's interface attribute and the stream's markers are never told.
    return a.type != QDCLI_ATTR_MARKER && a.type != QDCLI_ATTR_IF_INDEX;
}

Shape shape_of(const qdcli_attr_info *catalogue, std::size_t count) {
    Shape s;
    for (std::size_t i = 0; i < count; ++i) {
        const qdcli_attr_info &a = catalogue[i];
        // The interface's name is declared on its own, first.
        if (!printed(a) || std::strcmp(a.name, "if_name") == 0) continue;
        if (a.table == nullptr) {
            s.scalars.push_back(&a);
            continue;
        }
        auto [it, added] = s.tables.try_emplace(a.table);
        Table &t = it->second;
        if (added) {
            t.name = a.table;
            t.parent = a.parent_table != nullptr ? a.parent_table : "";
            s.order.push_back(t.name);
        }
        t.columns.push_back(&a);
    }
    for (const std::string &name : s.order) {
        Table &t = s.tables[name];
        if (t.parent.empty())
            s.roots.push_back(name);
        else
            s.tables[t.parent].children.push_back(name);
    }
    return s;
}

std::string wrap_note(const qdcli_attr_info &a) {
    std::string d = a.help;
    if (a.unit != nullptr) d += std::string(" (") + a.unit + ")";
    if (a.role == QDCLI_ROLE_COUNTER && a.width_bits > 0 && a.width_bits < 64)
        d += ". Counter of " + std::to_string(a.width_bits) + " bits: wraps to 0 after " +
             std::to_string(a.width_bits == 32 ? 4294967295ull : (1ull << a.width_bits) - 1);
    else if (a.role == QDCLI_ROLE_COUNTER)
        d += ". Counter of " + std::to_string(a.width_bits) + " bits";
    return d;
}

// Whether every row of its table carries the column: the index and every
// other column that is neither a list (the control input buffer has no
// qos-group) nor optional.
bool always_there(const qdcli_attr_info &a) {
    return !(a.flags & (QDCLI_ATTR_FLAG_LIST | QDCLI_ATTR_FLAG_OPTIONAL));
}

// The words of a state attribute, or none.
std::vector<std::string> states_of(const Shape &s, const qdcli_attr_info &a) {
    std::vector<std::string> words;
    if (s.states == nullptr || !(a.flags & QDCLI_ATTR_FLAG_STATE)) return words;
    if (const char *const *w = s.states(a.id))
        for (; *w != nullptr; ++w) words.emplace_back(*w);
    return words;
}

// ---- JSON Schema ----

json json_type(const Shape &s, const qdcli_attr_info &a) {
    json t = json::object();
    switch (a.type) {
    case QDCLI_ATTR_TEXT:
        t["type"] = "string";
        if (const std::vector<std::string> words = states_of(s, a); !words.empty()) t["enum"] = words;
        break;
    case QDCLI_ATTR_FLAGS8: t["type"] = "boolean"; break;
    case QDCLI_ATTR_I32:
        t["type"] = "integer";
        t["minimum"] = 0;  // -1 ("does not apply") is left out
        t["maximum"] = 2147483647;
        break;
    default:
        t["type"] = "integer";
        t["minimum"] = 0;
        if (a.width_bits == 64)
            t["maximum"] = 18446744073709551615ull;
        else if (a.width_bits > 0)
            t["maximum"] = (1ull << a.width_bits) - 1;
        break;
    }
    if (a.flags & QDCLI_ATTR_FLAG_LIST) {
        json list = json::object();
        list["type"] = "array";
        list["items"] = t;
        t = list;
    }
    t["description"] = wrap_note(a);
    return t;
}

// A sample of watch: in a row or an interface, the change of each counter
// since the last sample, its rate per second, and the counters that went back.
void watch_members(json &props) {
    props["deltas"] = json{{"type", "object"}, {"additionalProperties", json{{"type", "integer"}}}};
    props["rates"] = json{{"type", "object"}, {"additionalProperties", json{{"type", "number"}}}};
    props["restarted"] = json{{"type", "array"}, {"items", json{{"type", "string"}}}};
}

void xsd_watch_members(std::string &out, int d) {
    for (const char *watched : {"deltas", "rates", "restarted"})
        out += std::string(static_cast<std::size_t>(d) * 2, ' ') + "<xs:element name=\"" + watched +
               "\" minOccurs=\"0\"><xs:complexType><xs:sequence><xs:any processContents=\"skip\" minOccurs=\"0\" "
               "maxOccurs=\"unbounded\"/></xs:sequence></xs:complexType></xs:element>\n";
}

json json_table(const Shape &s, const std::string &name) {
    const Table &t = s.tables.at(name);
    json row = json::object();
    row["type"] = "object";
    json props = json::object();
    for (const qdcli_attr_info *a : t.columns) props[a->name] = json_type(s, *a);
    for (const std::string &child : t.children) props[child] = json{{"$ref", "#/$defs/table_" + child}};
    watch_members(props);
    row["properties"] = props;
    // Every row carries its index column, unless the index is a list (the
    // qos-groups of an input buffer: the control buffer has none).
    json required = json::array();
    for (const qdcli_attr_info *a : t.columns)
        if (always_there(*a)) required.push_back(a->name);
    if (!required.empty()) row["required"] = required;
    row["minProperties"] = 1;
    row["additionalProperties"] = false;
    return json{{"type", "array"}, {"description", "Table " + name + ", one object per row"}, {"items", row}};
}

// ---- XML Schema ----

const char *xsd_type(const qdcli_attr_info &a) {
    switch (a.type) {
    case QDCLI_ATTR_TEXT: return "xs:string";
    case QDCLI_ATTR_FLAGS8: return "xs:boolean";
    case QDCLI_ATTR_I32: return "xs:int";
    default:
        switch (a.width_bits) {
        case 8: return "xs:unsignedByte";
        case 16: return "xs:unsignedShort";
        case 32: return "xs:unsignedInt";
        default: return "xs:unsignedLong";
        }
    }
}

std::string indent(int depth) { return std::string(static_cast<std::size_t>(depth) * 2, ' '); }

// An XML simple type: the attribute's, or its words.
std::string xsd_simple(const Shape &s, const qdcli_attr_info &a) {
    const std::vector<std::string> words = states_of(s, a);
    if (words.empty()) return std::string(" type=\"") + xsd_type(a) + "\"";
    return "";
}

std::string xsd_enumeration(const Shape &s, const qdcli_attr_info &a, int d) {
    const std::vector<std::string> words = states_of(s, a);
    if (words.empty()) return "";
    std::string out = indent(d) + "<xs:simpleType><xs:restriction base=\"xs:string\">";
    for (const std::string &w : words) out += "<xs:enumeration value=\"" + xml_escape(w) + "\"/>";
    return out + "</xs:restriction></xs:simpleType>\n";
}

void xsd_value(const Shape &s, std::string &out, const qdcli_attr_info &a, int d, bool required = false) {
    const std::string doc = indent(d + 1) + "<xs:annotation><xs:documentation>" + xml_escape(wrap_note(a)) +
                            "</xs:documentation></xs:annotation>\n";
    if (a.flags & QDCLI_ATTR_FLAG_LIST) {
        out += indent(d) + "<xs:element name=\"" + a.name + "\" minOccurs=\"0\">\n" + doc;
        out += indent(d + 1) + "<xs:complexType><xs:sequence><xs:element name=\"value\" type=\"" + xsd_type(a) +
               "\" minOccurs=\"0\" maxOccurs=\"unbounded\"/></xs:sequence></xs:complexType>\n";
        out += indent(d) + "</xs:element>\n";
        return;
    }
    out += indent(d) + "<xs:element name=\"" + a.name + "\"" + xsd_simple(s, a) + " minOccurs=\"" +
           (required ? "1" : "0") + "\">\n" + doc + xsd_enumeration(s, a, d + 1);
    out += indent(d) + "</xs:element>\n";
}

void xsd_table(std::string &out, const Shape &s, const std::string &name, int d) {
    const Table &t = s.tables.at(name);
    out += indent(d) + "<xs:element name=\"" + name + "\" minOccurs=\"0\">\n";
    out += indent(d + 1) + "<xs:complexType><xs:sequence>\n";
    out += indent(d + 2) + "<xs:element name=\"row\" minOccurs=\"0\" maxOccurs=\"unbounded\">\n";
    out += indent(d + 3) + "<xs:complexType><xs:all>\n";
    for (const qdcli_attr_info *a : t.columns) xsd_value(s, out, *a, d + 4, always_there(*a));
    for (const std::string &child : t.children) xsd_table(out, s, child, d + 4);
    xsd_watch_members(out, d + 4);
    out += indent(d + 3) + "</xs:all></xs:complexType>\n";
    out += indent(d + 2) + "</xs:element>\n";
    out += indent(d + 1) + "</xs:sequence></xs:complexType>\n";
    out += indent(d) + "</xs:element>\n";
}

json failure_kinds() {
    return json::array({"unsupported", "not_supported", "not_allowed", "invalid", "send", "receive", "empty",
                        "truncated", "damaged", "platform", "memory", "internal", "refused"});
}

// The list of failures called `list`, one `item` each.
void xsd_failures(std::string &out, const std::string &list, const std::string &item) {
    std::string kinds;
    for (const auto &k : failure_kinds()) kinds += "<xs:enumeration value=\"" + k.get<std::string>() + "\"/>";
    out += "      <xs:element name=\"" + list + "\">\n        <xs:complexType><xs:sequence>\n          <xs:element name=\"" +
           item + R"(" minOccurs="0" maxOccurs="unbounded">
            <xs:complexType><xs:sequence>
              <xs:element name="kind"><xs:simpleType><xs:restriction base="xs:string">)" + kinds +
           R"(</xs:restriction></xs:simpleType></xs:element>
              <xs:element name="if_name" type="xs:string" minOccurs="0"/>
              <xs:element name="vaq" type="xs:unsignedInt" minOccurs="0"/>
              <xs:element name="asic" type="xs:unsignedInt" minOccurs="0"/>
              <xs:element name="message" type="xs:string"/>
            </xs:sequence></xs:complexType>
          </xs:element>
        </xs:sequence></xs:complexType>
      </xs:element>
)";
}

}  // namespace

std::string json_schema(const qdcli_attr_info *catalogue, std::size_t count, StatesLookup states) {
    Shape s = shape_of(catalogue, count);
    s.states = states;
    json defs = json::object();
    for (const std::string &name : s.order) defs["table_" + name] = json_table(s, name);

    json iface_props = json::object();
    iface_props["if_name"] = json{{"type", "string"}, {"description", "Interface name"}};
    for (const qdcli_attr_info *a : s.scalars) iface_props[a->name] = json_type(s, *a);
    for (const std::string &name : s.roots) iface_props[name] = json{{"$ref", "#/$defs/table_" + name}};
    watch_members(iface_props);
    defs["interface"] = json{{"type", "object"},
                             {"description", "One interface reported"},
                             {"properties", iface_props},
                             {"patternProperties", json{{"^attr_0x[0-9a-f]{8}$", json::object()}}},
                             {"required", json::array({"if_name"})},
                             {"additionalProperties", false}};
    defs["error"] = json{
        {"type", "object"},
        {"description", "A failure or refusal: its kind, the subject it is about where it has one, the message as printed"},
        {"properties",
         json{{"kind", json{{"enum", failure_kinds()}}},
              {"if_name", json{{"type", "string"}, {"minLength", 1}}},
              {"vaq", json{{"type", "integer"}, {"minimum", 0}}},
              {"asic", json{{"type", "integer"}, {"minimum", 0}}},
              {"message", json{{"type", "string"}, {"minLength", 1}}}}},
        {"required", json::array({"kind", "message"})},
        {"additionalProperties", false}};

    json props = json::object();
    props["timestamp"] = json{{"type", "string"}, {"description", "watch: when the sample was taken (UTC)"}};
    props["interval"] = json{{"type", "number"}, {"minimum", 0}, {"description", "watch: seconds since the last sample"}};
    props["sample"] = json{{"type", "integer"}, {"minimum", 1}, {"description", "watch: the sample's number"}};
    props["command"] = json{{"type", "string"}, {"description", "The command line as given"}};
    props["status"] = json{{"enum", json::array({"ok", "failed"})},
                           {"description", "failed: refused or failed, with the reasons under errors (exit status 1)"}};
    props["text_only"] = json{{"type", "boolean"},
                              {"description", "The report is text printed to standard output: see lines"}};
    props["interfaces"] = json{{"type", "array"}, {"items", json{{"$ref", "#/$defs/interface"}}}};
    for (const std::string &name : s.roots) props[name] = json{{"$ref", "#/$defs/table_" + name}};
    // Values told about no interface or extender.
    for (const qdcli_attr_info *a : s.scalars) props[a->name] = json_type(s, *a);
    props["lines"] = json{{"type", "array"}, {"items", json{{"type", "string"}}},
                          {"description", "Lines of text outside the typed report"}};
    props["unsupported"] = json{{"type", "array"},
                                {"description", "Subjects not supported here, left out of a command over many"},
                                {"items", json{{"$ref", "#/$defs/error"}}}};
    props["errors"] = json{{"type", "array"}, {"items", json{{"$ref", "#/$defs/error"}}}};

    json schema = json::object();
    schema["$schema"] = "https://json-schema.org/draft/2020-12/schema";
    schema["$id"] = "https://qdcli.invalid/schema/qdcli-document.schema.json";
    schema["title"] = "qdsh structured output: the document of one command";
    schema["type"] = "object";
    schema["properties"] = props;
    schema["required"] = json::array({"command", "status", "text_only", "interfaces", "lines", "unsupported", "errors"});
    schema["additionalProperties"] = false;
    // "failed" exactly when there are errors.
    schema["if"] = json{{"properties", json{{"status", json{{"const", "ok"}}}}}};
    schema["then"] = json{{"properties", json{{"errors", json{{"maxItems", 0}}}}}};
    schema["else"] = json{{"properties", json{{"errors", json{{"minItems", 1}}}}}};
    schema["$defs"] = defs;
    return schema.dump(2) + "\n";
}

std::string xml_schema(const qdcli_attr_info *catalogue, std::size_t count, StatesLookup states) {
    Shape s = shape_of(catalogue, count);
    s.states = states;
    std::string out;
    out += R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- qdsh structured output: <document> per command; with -o xml and several commands,
     the documents are the children of one <qdsh> element. Generated from the attribute
     catalogue by qdsh, option schema. -->
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" elementFormDefault="qualified">
  <xs:element name="qdsh">
    <xs:complexType><xs:sequence>
      <xs:element ref="document" minOccurs="0" maxOccurs="unbounded"/>
    </xs:sequence></xs:complexType>
  </xs:element>
  <xs:element name="document">
    <xs:complexType><xs:all>
      <xs:element name="timestamp" type="xs:string" minOccurs="0"/>
      <xs:element name="interval" type="xs:decimal" minOccurs="0"/>
      <xs:element name="sample" type="xs:positiveInteger" minOccurs="0"/>
      <xs:element name="command" type="xs:string"/>
      <xs:element name="status"><xs:simpleType><xs:restriction base="xs:string">)"
           R"(<xs:enumeration value="ok"/><xs:enumeration value="failed"/></xs:restriction></xs:simpleType></xs:element>
      <xs:element name="text_only" type="xs:boolean"/>
      <xs:element name="interfaces">
        <xs:complexType><xs:sequence>
          <xs:element name="interface" minOccurs="0" maxOccurs="unbounded">
            <xs:complexType><xs:all>
              <xs:element name="if_name" type="xs:string"/>
)";
    for (const qdcli_attr_info *a : s.scalars) xsd_value(s, out, *a, 7);
    for (const std::string &name : s.roots) xsd_table(out, s, name, 7);
    xsd_watch_members(out, 7);
    out += "            </xs:all></xs:complexType>\n          </xs:element>\n";
    out += "        </xs:sequence></xs:complexType>\n      </xs:element>\n";
    for (const std::string &name : s.roots) xsd_table(out, s, name, 3);
    out += "      <xs:element name=\"lines\">\n        <xs:complexType><xs:sequence>\n";
    out += "          <xs:element name=\"line\" type=\"xs:string\" minOccurs=\"0\" maxOccurs=\"unbounded\"/>\n";
    out += "        </xs:sequence></xs:complexType>\n      </xs:element>\n";
    for (const qdcli_attr_info *a : s.scalars) xsd_value(s, out, *a, 3);
    xsd_failures(out, "unsupported", "entry");
    xsd_failures(out, "errors", "error");
    out += "    </xs:all></xs:complexType>\n  </xs:element>\n</xs:schema>\n";
    return out;
}

}  // namespace qdsh
