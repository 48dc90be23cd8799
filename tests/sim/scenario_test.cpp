// SPDX-License-Identifier: MIT
// Loading scenarios: the embedded default, templates, and refusals that
// name the file, the line and the column.
#include <fstream>

#include "model/model.hpp"
#include "model/sections.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

using qdsim::ScenarioError;

class ScenarioTest : public SimTest {
protected:
    // Loads `text`; expects a refusal and returns it.
    ScenarioError refused(const std::string &text) {
        ScenarioError error;
        EXPECT_FALSE(qdsim::load_scenario_text(text, "test.json", error)) << text;
        return error;
    }
    bool loads(const std::string &text) {
        ScenarioError error;
        const bool ok = qdsim::load_scenario_text(text, "test.json", error);
        EXPECT_TRUE(ok) << error.message();
        return ok;
    }
    std::size_t count(std::uint8_t type) {
        std::size_t n = 0;
        for (const auto &i : qdsim::interfaces()) n += i.type == type && !i.sub_intf ? 1 : 0;
        return n;
    }
};

TEST_F(ScenarioTest, TheEmbeddedDefaultIsASmallChassis) {
    EXPECT_EQ(count(26), 96u);
    EXPECT_EQ(count(31), 96u);
    EXPECT_EQ(qdsim::interfaces().size(), 192u);
    qdsim::Model &m = qdsim::current_model();
    EXPECT_EQ(m.platform_type(), 2);
    EXPECT_EQ(m.vdc(), 1u);
    ASSERT_EQ(m.extenders().size(), 2u);
    EXPECT_EQ(m.extenders()[0].number, 101);
    EXPECT_EQ(m.extenders()[1].number, 102);
    EXPECT_EQ(m.line_cards().size(), 2u);
    EXPECT_EQ(m.extender(101)->ports.size(), 48u);
    EXPECT_EQ(m.interface(m.extender(101)->uplinks[0])->name, "Ethernet1/48");
    EXPECT_NE(qdsim::default_scenario_text().find("\"extenders\""), std::string::npos);
}

TEST_F(ScenarioTest, SyntaxErrorsNameTheLineAndColumn) {
    const ScenarioError e = refused("{\n  \"platform\": {\"type\": 2,}\n}\n");
    EXPECT_EQ(e.file, "test.json");
    EXPECT_EQ(e.line, 2u);
    EXPECT_EQ(e.column, 26u);  // the stray }
    EXPECT_NE(e.message().find("test.json:2:26: "), std::string::npos) << e.message();
}

TEST_F(ScenarioTest, DuplicateMembersAreRefusedAtTheSecondName) {
    const ScenarioError e = refused("{\"cos_map\": [0,0,0,0,0,0,0,0],\n \"cos_map\": []}");
    EXPECT_EQ(e.line, 2u);
    EXPECT_EQ(e.column, 2u);
    EXPECT_NE(e.reason.find("duplicate member \"cos_map\""), std::string::npos);
}

TEST_F(ScenarioTest, SemanticErrorsPointAtTheOffendingValue) {
    struct Case {
        const char *text;
        std::size_t line, column;
        const char *reason;
    } cases[] = {
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": \"1-48\"},\n               {\"slot\": 1, \"ports\": \"40-50\"}]}", 2, 37,
         "interface Ethernet1/40 declared twice"},
        {"{\"ethernet\": [{\"slot\": 300, \"ports\": 1}]}", 1, 24, "300 is out of range 1-255"},
        {"{\"ethernet\": [{\"slot\": \"one\", \"ports\": 1}]}", 1, 24, "expected an unsigned integer"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": \"9-3\"}]}", 1, 36, "not within 1-256 in ascending order"},
        {"{\"defaults\": {\"ethernet\": {}, \"fibre\": {}}}", 1, 31, "unknown interface kind \"fibre\""},
        {"{\"cos_map\": [0, 1, 2, 3, 4, 0, 0, 0]}", 1, 26, "4 is out of range 0-3"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1, \"type\": 31}]}", 1, 47, "type 26 or 1"},
        {"{\"frobnicate\": 1}", 1, 2, "unknown section \"frobnicate\""},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n \"interfaces\": {\"Ethernet1/2\": {}}}", 2, 17,
         "no interface named \"Ethernet1/2\""},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1, \"queueing\": {}}]}", 1, 39, "unknown section \"queueing\""},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n \"extenders\": [{\"number\": 101, \"slot\": 1, \"uplink\": \"Ethernet1/1\"}]}",
         2, 40, "slot 1 holds a line card"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n \"extenders\": [{\"number\": 101, \"slot\": 9, \"uplink\": \"Ethernet1/2\"}]}",
         2, 53, "no Ethernet interface named \"Ethernet1/2\""},
    };
    for (const Case &c : cases) {
        const ScenarioError e = refused(c.text);
        EXPECT_EQ(e.line, c.line) << c.text << "\n" << e.message();
        EXPECT_EQ(e.column, c.column) << c.text << "\n" << e.message();
        EXPECT_NE(e.reason.find(c.reason), std::string::npos) << e.message();
    }
}

TEST_F(ScenarioTest, DeepNestingIsRefusedNotRecursedInto) {
    const ScenarioError e = refused("{\"description\": " + std::string(100, '[') + std::string(100, ']') + "}");
    EXPECT_EQ(e.line, 1u);
    EXPECT_EQ(e.column, 80u);
    EXPECT_NE(e.reason.find("nest deeper than 64"), std::string::npos) << e.message();
}

TEST_F(ScenarioTest, ARefusedScenarioKeepsTheCurrentSwitch) {
    refused("{\"ethernet\": [{\"slot\": 0, \"ports\": 1}]}");
    EXPECT_EQ(qdsim::interfaces().size(), 192u);
}

TEST_F(ScenarioTest, DataMergesFromDefaultsThenDeclarationThenInterface) {
    ASSERT_TRUE(loads(R"({
      "defaults": {"host": {"qos_counters": {"tx_queue_drops": 1, "other": 5}}},
      "ethernet": [{"slot": 1, "ports": "1-2"}],
      "extenders": [{"number": 150, "slot": 20, "uplink": "Ethernet1/1", "ports": "1-3"}],
      "interfaces": {"Ethernet150/1/2": {"qos_counters": {"tx_queue_drops": 9}}}
    })"));
    qdsim::Model &m = qdsim::current_model();
    const auto *plain = m.find_interface("Ethernet150/1/1");
    const auto *special = m.find_interface("Ethernet150/1/2");
    ASSERT_TRUE(plain && special);
    EXPECT_EQ(qdsim::get_u64(*plain->data, "/qos_counters/tx_queue_drops"), 1u);
    EXPECT_EQ(qdsim::get_u64(*special->data, "/qos_counters/tx_queue_drops"), 9u);
    EXPECT_EQ(qdsim::get_u64(*special->data, "/qos_counters/other"), 5u);  // deep merge keeps the rest
}

TEST_F(ScenarioTest, SectionErrorsInsideTemplatesPointAtTheTemplate) {
    const ScenarioError e = refused(R"({
  "defaults": {"host": {"qos_counters": {"tx_queue_drops": -4}}},
  "ethernet": [{"slot": 1, "ports": 1}],
  "extenders": [{"number": 150, "slot": 20, "uplink": "Ethernet1/1", "ports": 1}]
})");
    EXPECT_EQ(e.line, 2u);
    EXPECT_EQ(e.column, 60u);
    EXPECT_NE(e.reason.find("/defaults/host/qos_counters/tx_queue_drops"), std::string::npos) << e.message();
}

TEST_F(ScenarioTest, RegisteredSectionsCheckTheirValuesWhereverTheyWereWritten) {
    // A name reserved without a checker takes the checker registered later.
    ASSERT_TRUE(qdsim::register_section(qdsim::Scope::ethernet, "test_limits"));
    ASSERT_TRUE(qdsim::register_section(qdsim::Scope::ethernet, "test_limits", [](const qdsim::Checker &check) {
        check.members_among("", {"limit"});
        check.unsigned_value("/limit", 10);
    }));
    EXPECT_FALSE(qdsim::register_section(qdsim::Scope::ethernet, "test_limits", [](const qdsim::Checker &) {}));
    const std::string head = "{\"ethernet\": [{\"slot\": 1, \"ports\": \"1-2\"}],\n";
    EXPECT_TRUE(loads(head + R"("defaults": {"ethernet": {"test_limits": {"limit": 10}}}})"));
    ScenarioError e = refused(head + R"("interfaces": {"Ethernet1/2": {"test_limits": {"limit": 11}}}})");
    EXPECT_EQ(e.line, 2u);
    EXPECT_EQ(e.column, 57u);
    EXPECT_NE(e.reason.find("11 is above the maximum 10"), std::string::npos) << e.message();
    e = refused(head + R"("defaults": {"ethernet": {"test_limits": {"limt": 1}}}})");
    EXPECT_NE(e.reason.find("unknown member \"limt\""), std::string::npos) << e.message();
    qdsim::unregister_section(qdsim::Scope::ethernet, "test_limits");
    qdsim::take_diagnostics();
}

TEST_F(ScenarioTest, SubInterfacesTypeOneAndOtherKinds) {
    ASSERT_TRUE(loads(R"({
      "ethernet": [{"slot": 3, "ports": "1-4"}, {"slot": 3, "ports": "5-6", "type": 1}],
      "sub_interfaces": ["Ethernet3/2.100", {"name": "eth3/2.7"}],
      "other_interfaces": [{"name": "mgmt0", "type": 40}]
    })"));
    const auto sub = qdsim::find_interface("Ethernet3/2.7");
    ASSERT_TRUE(sub.has_value());
    std::uint8_t type = 0;
    if_index_get_type(*sub, &type);
    EXPECT_EQ(type, 26);
    EXPECT_EQ(if_index_is_sub_intf(*sub), 1);
    if_index_get_type(*qdsim::find_interface("e3/5"), &type);
    EXPECT_EQ(type, 1);
    if_index_get_type(*qdsim::find_interface("MGMT0"), &type);
    EXPECT_EQ(type, 40);
    refused(R"({"ethernet": [{"slot": 3, "ports": 5, "type": 1}], "sub_interfaces": ["Ethernet3/5.1"]})");
}

TEST_F(ScenarioTest, ExtendsBuildsOnTheDefault) {
    ASSERT_TRUE(loads(R"({"extends": "default", "platform": {"type": 3}})"));
    EXPECT_EQ(qdsim::current_model().platform_type(), 3);
    EXPECT_EQ(qdsim::interfaces().size(), 192u);
}

TEST_F(ScenarioTest, FilesAreReadAndTheirErrorsNamed) {
    const std::string path = ::testing::TempDir() + "qdsim_scenario_test.json";
    std::ofstream(path) << "{\n  \"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n  \"cos_map\": [9]\n}\n";
    ScenarioError e;
    EXPECT_FALSE(qdsim::load_scenario_file(path, e));
    EXPECT_EQ(e.file, path);
    EXPECT_EQ(e.line, 3u);
    EXPECT_EQ(e.column, 14u);
    EXPECT_FALSE(qdsim::load_scenario_file(path + ".missing", e));
    EXPECT_NE(e.message().find("cannot be read"), std::string::npos);
}

TEST_F(ScenarioTest, TheShippedExamplesLoad) {
    for (const char *name : {"platform-1.json", "platform-2.json", "platform-3.json"}) {
        ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_file(std::string(QDSIM_SOURCE_DIR) + "/scenarios/" + name, e)) << e.message();
        // Its state loads back as the same switch.
        const std::string state = qdsim::dump_state_json();
        ASSERT_TRUE(qdsim::load_scenario_text(state, name, e)) << e.message();
        EXPECT_EQ(qdsim::dump_state_json(), state) << name;
    }
}

}  // namespace
}  // namespace simtest
