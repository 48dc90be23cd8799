// SPDX-License-Identifier: MIT
// The qdsh grammar on its own: the command table, the matcher, "?" help and
// interface lists.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "cli/grammar.hpp"
#include "cli/iflist.hpp"

namespace {

using qdsh::Call;
using qdsh::Command;
using qdsh::match_line;
using qdsh::ParamKind;

const Command &matched(const std::string &line) {
    const qdsh::MatchResult r = match_line(line);
    EXPECT_TRUE(r.ok) << line << ": " << r.error;
    static const Command none{};
    return r.ok ? *r.match.command : none;
}

std::string error_of(const std::string &line) {
    const qdsh::MatchResult r = match_line(line);
    EXPECT_FALSE(r.ok) << line << " matched " << (r.ok ? r.match.command->pattern : "");
    return r.error;
}

std::vector<std::string> texts(const std::string &line) {
    std::vector<std::string> out;
    for (const qdsh::Candidate &c : qdsh::candidates(line)) out.push_back(c.text);
    return out;
}

// ---- The table ----

TEST(CommandTable, EveryHandlerIsExportedByTheLibrary) {
    std::ifstream map(QDSH_TEST_LIBQDCLI_MAP);
    ASSERT_TRUE(map) << QDSH_TEST_LIBQDCLI_MAP;
    std::stringstream text;
    text << map.rdbuf();
    std::set<std::string> exported;
    std::string word;
    while (text >> word)
        if (word.back() == ';') exported.insert(word.substr(0, word.size() - 1));
    for (const Command &c : qdsh::commands()) {
        if (c.call == Call::builtin) continue;
        EXPECT_TRUE(exported.count(std::string(c.handler))) << c.pattern << " -> " << c.handler;
    }
}

TEST(CommandTable, ListParametersComeLast) {
    for (const Command &c : qdsh::commands())
        for (std::size_t i = 0; i + 1 < c.elements.size(); ++i)
            EXPECT_FALSE(c.elements[i].greedy()) << c.pattern;
}

// What each debug view sends is in tests/e2e/cases/debug-views; other
// commands keep clear of the identifiers the debug dump turns into a view.
TEST(CommandTable, DebugViewsCoverEveryIdentifierTheDumpKnows) {
    std::set<std::uint32_t> views;
    for (const Command &c : qdsh::commands())
        if (c.handler == "qd_cli_debug_show_all") views.insert(c.cmd_id);
    EXPECT_EQ(views.size(), 22u);
    for (const Command &c : qdsh::commands()) {
        if (c.handler != "qd_cli_debug_show_all" && c.call != Call::builtin) {
            EXPECT_EQ(views.count(c.cmd_id), 0u) << c.pattern << " uses debug identifier " << c.cmd_id;
        }
    }
}

TEST(CommandTable, EveryPatternMatchesItself) {
    const std::map<std::string, std::string> sample = {
        {"QUEUE", "1"}, {"COS...", "3"}, {"IF", "eth1/1"}, {"IF-LIST", "eth1/1"}, {"NUMBER", "5"},
        {"IF|NUMBER", "5"}, {"BYTES", "100"}, {"JSON-POINTER", "/a"}, {"JSON-VALUE", "1"}, {"FILE", "f"}};
    for (const Command &c : qdsh::commands()) {
        std::string line;
        for (const qdsh::Element &e : c.elements) line += (e.is_word ? std::string(e.text) : sample.at(std::string(e.text))) + " ";
        const qdsh::MatchResult r = match_line(line);
        ASSERT_TRUE(r.ok) << line << ": " << r.error;
        EXPECT_EQ(r.match.command, &c) << line << " matched " << r.match.command->pattern;
    }
}

// ---- Matching ----

// The numbers a line gives, as the grammar checked them (one list per
// parameter); what the handlers get of the common forms and the no forms
// is in the goldens of tests/e2e/cases (debug-views, cosmap-*).
TEST(Match, NumbersAsChecked) {
    const std::pair<const char *, std::vector<std::vector<std::uint32_t>>> cases[] = {
        {"wrr-queue cos-map 2 3 5,7", {{2}, {3, 5, 7}}},
        {"debug qd show port-info 4294967295", {{4294967295u}}},
        {"debug qd show port-info eth1/1", {{}}},
        {"qos queue-limit 99999999999", {{}}},  // too large for 32 bits: the executor tells the range
    };
    for (const auto &[line, numbers] : cases) {
        const qdsh::MatchResult r = match_line(line);
        ASSERT_TRUE(r.ok) << line << ": " << r.error;
        std::vector<std::vector<std::uint32_t>> got;
        for (const qdsh::Match::Param &p : r.match.params) got.push_back(p.numbers);
        EXPECT_EQ(got, numbers) << line;
    }
}

TEST(Match, AbbreviationsAndFullWords) {
    const std::pair<const char *, const char *> cases[] = {
        {"sh wrr cos", "show wrr-queue cos-map"},
        {"sh q", "show queuing"},
        // Later words settle an abbreviation that alone could be two words.
        {"cl q st", "clear qos statistics"},
        {"cl q co", "clear queuing counters"},
    };
    for (const auto &[line, pattern] : cases) EXPECT_EQ(matched(line).pattern, pattern) << line;
}
// The entry a line matches and the text each parameter took, beyond the
// forms the goldens of tests/e2e/cases run.
TEST(Match, EntriesAndParameterTexts) {
    using Texts = std::vector<std::vector<std::string>>;
    const struct {
        const char *line, *pattern;
        Texts texts;
    } cases[] = {
        {"show queuing interface ethernet 1/1 extended", "show queuing interface IF extended", {{"ethernet1/1"}}},
        {"show queuing interface eth1/1 ext", "show queuing interface IF extended", {{"eth1/1"}}},
        // A type word written apart from its numbers is still an interface.
        {"show queuing interface eth1/1-3, e1/5 ethernet 1/7", "show queuing interface IF-LIST",
         {{"eth1/1-3,", "e1/5", "ethernet", "1/7"}}},
        {"sim set /interfaces/0/counters  {\"rx\": 1,  \"tx\": 2}  ", "sim set JSON-POINTER JSON-VALUE",
         {{"/interfaces/0/counters"}, {"{\"rx\": 1,  \"tx\": 2}"}}},
    };
    for (const auto &c : cases) {
        const qdsh::MatchResult r = match_line(c.line);
        ASSERT_TRUE(r.ok) << c.line << ": " << r.error;
        EXPECT_EQ(r.match.command->pattern, c.pattern) << c.line;
        Texts texts;
        for (const qdsh::Match::Param &p : r.match.params) texts.push_back(p.values);
        EXPECT_EQ(texts, c.texts) << c.line;
    }
}

// Beside those of tests/e2e/cases/unknown-command and unknown-interface.
TEST(Match, ErrorsNameWhatWasWrong) {
    const std::pair<const char *, const char *> cases[] = {
        {"wrr-queue cos-map 1 2 x", "invalid CoS value \"x\": expected 0 to 7"},
        {"wrr-queue cos-map 1", "incomplete command \"wrr-queue cos-map 1\": expected COS..."},
        {"debug qd show port 4294967296", "number \"4294967296\" is out of range: expected 0 to 4294967295"},
        {"debug qd show port 0x1ffffffff", "number \"0x1ffffffff\" is out of range: expected 0 to 4294967295"},
        {"debug qd show port 12ab", "invalid number \"12ab\""},
        {"show queuing interface extended", "expected an interface, not the command word \"extended\""},
        {"sim show interfaces", "invalid JSON pointer \"interfaces\": it starts with /"},
    };
    for (const auto &[line, error] : cases) EXPECT_EQ(error_of(line), error) << line;
}

// ---- "?" and completion ----

TEST(Candidates, NextWordsParametersAndEnd) {
    EXPECT_EQ(texts("show wrr-queue "), std::vector<std::string>{"cos-map"});
    EXPECT_EQ(texts("show q"), std::vector<std::string>{"queuing"});
    EXPECT_EQ(texts("show queuing "), (std::vector<std::string>{"<cr>", "interface", "host-interface"}));
    EXPECT_EQ(texts("wrr-queue cos-map "), std::vector<std::string>{"QUEUE"});
    EXPECT_EQ(texts("wrr-queue cos-map 1 2 "), (std::vector<std::string>{"COS...", "<cr>"}));
    EXPECT_EQ(texts("show queuing interface eth1/1 "), (std::vector<std::string>{"IF-LIST", "<cr>", "extended"}));
    EXPECT_TRUE(texts("show bogus ").empty());
    const std::vector<std::string> top = texts("");
    EXPECT_NE(std::find(top.begin(), top.end(), "show"), top.end());
    EXPECT_NE(std::find(top.begin(), top.end(), "sim"), top.end());
}

// ---- Interface lists ----

std::optional<std::uint32_t> fake_resolve(const std::string &name) {
    static const std::map<std::string, std::uint32_t> known = {
        {"eth1/1", 0x1a000000}, {"eth1/2", 0x1a001000}, {"eth1/3", 0x1a002000}, {"eth1/4", 0x1a003000},
        {"ethernet1/1", 0x1a000000}, {"ethernet1/2", 0x1a001000}, {"e101/1/1", 0x1f000001},
        {"e101/1/2", 0x1f000002}, {"port-channel1", 0x16000000}};
    auto it = known.find(name);
    return it == known.end() ? std::nullopt : std::optional<std::uint32_t>(it->second);
}

// What a list resolves to, in order and without repeats, or why it does not.
TEST(InterfaceList, ResolvedInOrderOrRefusedByName) {
    const struct {
        std::vector<std::string> words;
        std::vector<std::uint32_t> indexes;
        const char *error;
    } cases[] = {
        // ethernet1/1 is eth1/1 again: reported once, first place kept.
        {{"eth1/1-2,e101/1/1-2", "ethernet", "1/1"}, {0x1a000000, 0x1a001000, 0x1f000001, 0x1f000002}, ""},
        {{"eth1/4", ",", "eth1/3,"}, {0x1a003000, 0x1a002000}, ""},
        {{"port-channel1"}, {0x16000000}, ""},  // a dash of its own: a name, not a range
        {{"eth1/4-2"}, {}, "invalid interface range \"eth1/4-2\": 4 is above 2"},
        {{"eth1/1-99999"}, {}, "interface range \"eth1/1-99999\" is too large (at most 4096)"},
        {{","}, {}, "missing interface"},
    };
    for (const auto &c : cases) {
        const qdsh::InterfaceListResult r = qdsh::resolve_interface_list(c.words, fake_resolve);
        std::vector<std::uint32_t> indexes;
        for (const auto &i : r.interfaces) indexes.push_back(i.if_index);
        EXPECT_EQ(indexes, c.indexes) << c.words[0];
        EXPECT_EQ(r.error, c.error) << c.words[0];
    }
}

}  // namespace
