// SPDX-License-Identifier: MIT
// The document tree built from the library's events: subjects, rows and
// values as literal bytes (host order, as the observer gets them), failures.
#include <gtest/gtest.h>

#include <functional>

#include "render/document.hpp"

namespace {

using qdsh::Document;
using qdsh::DocumentBuilder;
using qdsh::SubjectKeys;

// The catalogue entries the cases use, as the library declares them.
const qdcli_attr_info kEntries[] = {
    {0x14ff003bu, "tx_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "tx_queues", "tx_qos_group", "g", nullptr, QDCLI_ATTR_FLAG_ROW_START},
    {0x30ff003cu, "sched_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "tx_queues", "tx_qos_group", "s", nullptr, QDCLI_ATTR_FLAG_STATE},
    {0x15ff003eu, "mcast_tail_drops", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "m", nullptr, 0},
    {0x14ff0075u, "ib_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "input_buffers", "ib_qos_group", "q", nullptr, QDCLI_ATTR_FLAG_ROW_START | QDCLI_ATTR_FLAG_LIST},
    {0x14ff0002u, "asic_count", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "extenders", "vaq", "c", nullptr, 0},
    {0x14ff0004u, "asic", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "asics", "asic", "a", "extenders", 0},
    {0x11ff007eu, "queue_qos_group", QDCLI_ATTR_I32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "q", nullptr, 0},
};

const qdcli_attr_info *lookup(std::uint32_t id) {
    for (const qdcli_attr_info &a : kEntries)
        if (a.id == id) return &a;
    return nullptr;
}

void value(DocumentBuilder &b, std::uint32_t id, std::vector<std::uint8_t> bytes) {
    b.value(id, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}
void text(DocumentBuilder &b, std::uint32_t id, const char *s) {
    b.value(id, reinterpret_cast<const std::uint8_t *>(s), static_cast<std::uint32_t>(std::char_traits<char>::length(s) + 1));
}
SubjectKeys interface(const char *name) { return {QDCLI_SUBJECT_INTERFACE, 1, name, {}, {}}; }
SubjectKeys extender(std::uint32_t vaq) { return {QDCLI_SUBJECT_EXTENDER, {}, {}, vaq, {}}; }

struct Case {
    const char *name;
    std::function<void(DocumentBuilder &)> events;
    bool handler_ok;
    const char *expected;  // the compact JSON of everything but the command
};

TEST(Document, SubjectsRowsFailuresAndTypes) {
    const std::vector<Case> cases = {
        {"rows as told, trimmed lower-case states, 64-bit exact; an interface told again is the same one",
         [](DocumentBuilder &b) {
             b.subject_begin(interface("Ethernet1/1"));
             b.row_begin("tx_queues");
             value(b, 0x14ff003b, {0, 0, 0, 0});
             text(b, 0x30ff003c, "WRR     ");
             b.row_end();
             b.row_begin("tx_queues");
             value(b, 0x14ff003b, {1, 0, 0, 0});
             text(b, 0x30ff003c, "priority");
             b.row_end();
             b.subject_begin(interface("Ethernet1/1"));
             value(b, 0x15ff003e, {0x05, 0, 0, 0, 0x01, 0, 0, 0});
             b.subject_end();
             b.subject_end();
         },
         true,
         R"({"interfaces":[{"if_name":"Ethernet1/1","tx_queues":[{"tx_qos_group":0,"sched_type":"wrr"},)"
         R"({"tx_qos_group":1,"sched_type":"priority"}],"mcast_tail_drops":4294967301}],"lines":[],"unsupported":[],"errors":[],"status":"ok","text_only":false})"},
        {"a list is an array; rows outside any subject are the document's; -1 and unknown IDs",
         [](DocumentBuilder &b) {
             b.row_begin("input_buffers");
             value(b, 0x14ff0075, {0, 0, 0, 0});
             value(b, 0x14ff0075, {1, 0, 0, 0});
             value(b, 0x11ff007e, {0xff, 0xff, 0xff, 0xff});
             b.row_end();
             value(b, 0x14ff9999, {3, 0, 0, 0});
         },
         true,
         R"({"interfaces":[],"input_buffers":[{"ib_qos_group":[0,1]}],"attr_0x14ff9999":3,"lines":[],"unsupported":[],"errors":[],"status":"ok","text_only":false})"},
        {"nested rows of an extender; an unsupported ASIC is listed apart, a failing extender is an error",
         [](DocumentBuilder &b) {
             b.subject_begin(extender(101));
             value(b, 0x14ff0002, {2, 0, 0, 0});
             b.row_begin("asics");
             value(b, 0x14ff0004, {0, 0, 0, 0});
             b.row_end();
             b.failure({"not_supported", SubjectKeys{QDCLI_SUBJECT_ASIC, {}, {}, 101, 1}, "no counters", true});
             b.subject_end();
             b.subject_begin(extender(102));
             b.failure({"receive", extender(102), "timeout", false});
             b.subject_end();
         },
         false,
         R"({"interfaces":[],"extenders":[{"vaq":101,"asic_count":2,"asics":[{"asic":0}]},{"vaq":102}],)"
         R"("lines":[],"unsupported":[{"kind":"not_supported","vaq":101,"asic":1,"message":"no counters"}],)"
         R"("errors":[{"kind":"receive","vaq":102,"message":"timeout"}],"status":"failed","text_only":false})"},
        {"a refusal about the command as a whole, a failure about an interface",
         [](DocumentBuilder &b) {
             b.failure({"not_supported", std::nullopt, "Command not supported on this platform", false});
             b.failure({"send", interface("Ethernet1/2"), "no answer", false});
         },
         true,
         R"({"interfaces":[],"lines":[],"unsupported":[],"errors":[{"kind":"not_supported","message":"Command not supported on this platform"},)"
         R"({"kind":"send","if_name":"Ethernet1/2","message":"no answer"}],"status":"failed","text_only":false})"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        DocumentBuilder builder("show it", lookup);
        c.events(builder);
        const Document d = builder.finish("", c.handler_ok);
        Document got = d;
        got.erase("command");
        EXPECT_EQ(got.dump(), c.expected);
    }
}

// Streamed, an interface leaves when the outermost telling of it ends.
TEST(Document, StreamedInterfaceLeavesWhole) {
    DocumentBuilder b("show it", lookup);
    std::vector<std::string> streamed;
    b.stream_interfaces([&](Document &object) { streamed.push_back(object.dump()); });
    b.subject_begin(interface("Ethernet1/1"));
    b.subject_begin(interface("Ethernet1/1"));
    value(b, 0x14ff003b, {1, 0, 0, 0});
    b.subject_end();
    value(b, 0x15ff003e, {2, 0, 0, 0, 0, 0, 0, 0});
    b.subject_end();
    EXPECT_EQ(streamed, std::vector<std::string>{R"({"if_name":"Ethernet1/1","tx_qos_group":1,"mcast_tail_drops":2})"});
    EXPECT_EQ(b.finish("", true)["interfaces"].dump(), "[]");
}

TEST(Document, TextReportsKeepTheirLinesButNotTheirFailures) {
    DocumentBuilder text_report("debug qd show summary", lookup);
    const Document d = text_report.finish("Summary\n\n  ports: 3\n", true);
    EXPECT_EQ(d["text_only"], true);
    EXPECT_EQ(d["lines"].dump(), R"(["Summary","","  ports: 3"])");

    DocumentBuilder refused("show wrr-queue cos-map", lookup);
    refused.failure({"not_supported", std::nullopt, "Command not supported on this platform", false});
    const Document r = refused.finish("Command not supported on this platform\n", true);
    EXPECT_EQ(r["lines"].dump(), "[]");
    EXPECT_EQ(r["status"], "failed");

    EXPECT_EQ(qdsh::to_xml(Document{{"command", "a<b & 100%"}, {"errors", Document::array()}}, false),
              "<document><command>a&lt;b &amp; 100%</command><errors/></document>");
}

}  // namespace
