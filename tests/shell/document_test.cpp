// SPDX-License-Identifier: MIT
// The document tree built from what a handler printed: printer flushes given
// as attribute IDs and literal value bytes (host order, as the printer gets
// them), and standard output text.
#include <gtest/gtest.h>

#include "document.hpp"

namespace {

using qdsh::Document;
using qdsh::Segment;

// The catalogue entries the cases use, as the library declares them.
const qdcli_attr_info kEntries[] = {
    {0x30ff003au, "if_name", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "name", nullptr, 0},
    {0x14ff003bu, "tx_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "tx_queues", "tx_qos_group", "g", nullptr, QDCLI_ATTR_FLAG_ROW_START},
    {0x30ff003cu, "sched_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "tx_queues", "tx_qos_group", "s", nullptr, QDCLI_ATTR_FLAG_STATE},
    {0x15ff003eu, "mcast_tail_drops", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "m", nullptr, 0},
    {0x14ff0075u, "ib_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "input_buffers", "ib_qos_group", "q", nullptr, QDCLI_ATTR_FLAG_ROW_START | QDCLI_ATTR_FLAG_LIST},
    {0x14ff0076u, "ib_frh", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "input_buffers", "ib_qos_group", "f", nullptr, 0},
    {0x14ff0001u, "vaq", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "extenders", "vaq", "v", nullptr, QDCLI_ATTR_FLAG_ROW_START},
    {0x14ff0004u, "asic", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "asics", "asic", "a", "extenders", 0},
    {0x11ff007eu, "queue_qos_group", QDCLI_ATTR_I32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "q", nullptr, 0},
};

const qdcli_attr_info *lookup(std::uint32_t id) {
    for (const qdcli_attr_info &a : kEntries)
        if (a.id == id) return &a;
    return nullptr;
}

Segment flush(std::string text, std::vector<Segment::Value> values) {
    return {Segment::Kind::printer, std::move(text), std::move(values)};
}
Segment::Value text(std::uint32_t id, const char *s) {
    std::vector<std::uint8_t> b(s, s + std::char_traits<char>::length(s) + 1);
    return {id, b};
}

struct Case {
    const char *name;
    std::vector<Segment> segments;
    bool handler_ok;
    const char *expected;  // the compact JSON of interfaces, tables and errors
};

TEST(Document, TablesRowsErrorsAndTypes) {
    const std::vector<Case> cases = {
        {"rows keyed by their index, trimmed lower-case states, 64-bit exact",
         {flush("", {text(0x30ff003a, "Ethernet1/1"), {0x14ff003b, {0, 0, 0, 0}}, text(0x30ff003c, "WRR     "),
                     {0x14ff003b, {1, 0, 0, 0}}, text(0x30ff003c, "priority"),
                     {0x15ff003e, {0x05, 0, 0, 0, 0x01, 0, 0, 0}}})},
         true,
         R"({"interfaces":[{"if_name":"Ethernet1/1","tx_queues":[{"tx_qos_group":0,"sched_type":"wrr"},)"
         R"({"tx_qos_group":1,"sched_type":"priority"}],"mcast_tail_drops":4294967301}],"errors":[]})"},
        {"a list index stays one row while printed in a run; one row is still an array; no interface: "
         "the tables are the document's",
         {flush("", {{0x14ff0075, {0, 0, 0, 0}}, {0x14ff0075, {1, 0, 0, 0}}, {0x14ff0076, {7, 0, 0, 0}},
                     {0x14ff0075, {2, 0, 0, 0}}, {0x14ff0076, {8, 0, 0, 0}}})},
         true,
         R"({"interfaces":[],"input_buffers":[{"ib_qos_group":[0,1],"ib_frh":7},{"ib_qos_group":[2],"ib_frh":8}],"errors":[]})"},
        {"nested tables; a failing extender is an error beside the data",
         {flush("\nCmd recv failed for vaq 102 with error code timeout\n",
                {{0x14ff0001, {101, 0, 0, 0}}, {0x14ff0004, {0, 0, 0, 0}}, {0x14ff0004, {1, 0, 0, 0}}})},
         true,
         R"({"interfaces":[],"extenders":[{"vaq":101,"asics":[{"asic":0},{"asic":1}]}],)"
         R"("errors":[{"extender":102,"message":"Cmd recv failed for vaq 102 with error code timeout"}]})"},
        {"-1 does not apply; an unknown attribute keeps its ID",
         {flush("", {{0x11ff007e, {0xff, 0xff, 0xff, 0xff}}, {0x14ff9999, {3, 0, 0, 0}}})},
         true, R"({"interfaces":[{"attr_0x14ff9999":3}],"errors":[]})"},
        {"a failed exchange's own text is an error about the named interface",
         {flush("no reply could be received\n", {})},
         false, R"({"interfaces":[],"errors":[{"interface":"Ethernet1/3","message":"no reply could be received"}]})"},
        {"a refusal on standard output",
         {{Segment::Kind::standard_output, "Command not supported on this platform\n", {}}},
         true, R"({"interfaces":[],"errors":[{"interface":"Ethernet1/3","message":"Command not supported on this platform"}]})"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        bool ok = true;
        const Document d = qdsh::build_document("show it", c.segments, {}, c.handler_ok, lookup, ok, "Ethernet1/3");
        Document got = Document::object();
        for (const auto &[k, v] : d.items())
            if (k != "command" && k != "status" && k != "text_only" && k != "lines") got[k] = v;
        EXPECT_EQ(got.dump(), c.expected);
        EXPECT_EQ(ok, d["errors"].empty());
        EXPECT_EQ(d["status"], ok ? "ok" : "failed");
    }
}

TEST(Document, TextReportsAndSuffixes) {
    bool ok = false;
    const Document d = qdsh::build_document(
        "show wrr-queue cos-map", {{Segment::Kind::standard_output, "MCAST Queue ID\t\t Cos Map\n0\t\t\t0 1 \n", {}}}, {},
        true, lookup, ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(d["text_only"], true);
    EXPECT_EQ(d["lines"].dump(), R"(["MCAST Queue ID\t\t Cos Map","0\t\t\t0 1 "])");

    EXPECT_EQ(qdsh::to_xml(Document{{"command", "a<b & 100%"}, {"errors", Document::array()}}, false),
              "<document><command>a&lt;b &amp; 100%</command><errors/></document>");
}

}  // namespace
