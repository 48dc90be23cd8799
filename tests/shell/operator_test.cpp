// SPDX-License-Identifier: MIT
// Filters, counters, deltas and the metrics exposition of qdsh, on
// hand-written text and documents.
#include <gtest/gtest.h>

#include <cstring>

#include "filters.hpp"
#include "line_context.hpp"
#include "metrics.hpp"
#include "watch.hpp"

namespace {

using qdsh::Document;

// A small catalogue of the shape the library's has.
const qdcli_attr_info kCatalogue[] = {
    {1, "if_name", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Interface name", nullptr, 0},
    {2, "rx_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "rx_queues", "rx_qos_group", "Receive qos-group", nullptr, 0},
    {3, "rx_port_pkts", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Packets received \\ over the port", nullptr, 0},
    {4, "ingress_discards", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Discards", nullptr, 0},
    {5, "q_size", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "rx_queues", "rx_qos_group", "Queue size", nullptr, 0},
    {6, "drop_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "rx_queues", "rx_qos_group", "Drop type", nullptr, 0},
    {7, "vaq", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "extenders", "vaq", "Extender", nullptr, 0},
    {8, "no_credit_drops", QDCLI_ATTR_U32, 8, QDCLI_ROLE_COUNTER, "packets", "ss", "ss", "No-credit drops", nullptr, 0},
    {9, "ss", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "ss", "ss", "SS", nullptr, 0},
    {10, "queue_name", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "queues", "queue_id", "Name", nullptr, QDCLI_ATTR_FLAG_ROW_START},
    {11, "queue_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "queues", "queue_id", "CoS", nullptr, QDCLI_ATTR_FLAG_LIST},
};

const qdcli_attr_info *find(const char *name) {
    for (const qdcli_attr_info &i : kCatalogue)
        if (name != nullptr && std::strcmp(i.name, name) == 0) return &i;
    return nullptr;
}

Document queues(std::uint64_t pkts0, std::uint64_t discards0, std::uint64_t pkts1) {
    return Document::parse(R"({"command": "show", "interfaces": [{"if_name": "Ethernet1/1", "rx_queues": [
        {"rx_qos_group": 0, "q_size": 100, "drop_type": "drop", "rx_port_pkts": )" + std::to_string(pkts0) +
                           R"(, "ingress_discards": )" + std::to_string(discards0) + R"(},
        {"rx_qos_group": 1, "q_size": 200, "drop_type": "no-drop", "rx_port_pkts": )" + std::to_string(pkts1) +
                           R"(, "ingress_discards": 0}]}], "errors": [{"message": "x", "rx_port_pkts": 5}]})");
}

// ---- Filters ----

TEST(Filters, SegmentsApplyInOrder) {
    const std::string text = "alpha 1\nbeta 2\ngamma 3\ndelta 4\nlast";
    struct Case {
        const char *line;
        const char *out;
    } cases[] = {
        {"show x | include a 1|", ""},  // an empty segment is refused below
        {"show x | include [0-9]$", "alpha 1\nbeta 2\ngamma 3\ndelta 4\n"},
        {"show x | exclude \"^(alpha|beta)\"", "gamma 3\ndelta 4\nlast\n"},
        {"show x | begin gamma", "gamma 3\ndelta 4\nlast\n"},
        {"show x | begin nothing", ""},
        {"show x | count", "5\n"},
        {"show x | inc a | ex beta | count", "4\n"},
        {"show x | include \"a 1|b\"", "alpha 1\nbeta 2\n"},
        {"show x | count | count", "1\n"},
        {"show x | in \"  \"", ""},
    };
    for (const Case &c : cases) {
        const qdsh::Pipeline p = qdsh::split_pipeline(c.line);
        if (std::string(c.line).ends_with("|")) {
            EXPECT_FALSE(p.ok()) << c.line;
            continue;
        }
        ASSERT_TRUE(p.ok()) << c.line << ": " << p.error;
        EXPECT_EQ(p.command, "show x");
        EXPECT_EQ(qdsh::apply_filters(text, p.segments), c.out) << c.line;
    }
}

// Patterns a backtracking engine cannot finish (or recurses on until the
// stack is gone) end in time linear in the text; a stop request ends the
// filtering between lines.
TEST(Filters, HostilePatternsEndAndStop) {
    const std::string document = "{\"rows\": \"" + std::string(300000, 'x') + "\", \"if_name\": \"Ethernet2/48\"}";
    const struct {
        const char *line;
        std::string text, out;
    } cases[] = {
        {"x | include if_name.*Ethernet2/48", document, document + "\n"},
        {"x | include (a*)*b", std::string(30, 'a'), ""},
        {"x | exclude (x+x+)+y", std::string(5000, 'x'), std::string(5000, 'x') + "\n"},
        {"x | include \"\\d+ (é|\\x{9b})\"", "7 é\n\xff\xfe 8 \n", "7 é\n"},
    };
    for (const auto &c : cases) {
        const qdsh::Pipeline p = qdsh::split_pipeline(c.line);
        ASSERT_TRUE(p.ok()) << c.line << ": " << p.error;
        EXPECT_EQ(qdsh::apply_filters(c.text, p.segments), c.out) << c.line;
    }
    const qdsh::Pipeline p = qdsh::split_pipeline("x | include a");
    EXPECT_EQ(qdsh::apply_filters("a\na\n", p.segments, [] { return true; }), "");
    EXPECT_NE(qdsh::split_pipeline("x | include (a)\\1").error.find("bad regular expression"), std::string::npos);
    std::string many = "x";
    for (int i = 0; i < 33; ++i) many += " | include a";  // each compiled: a bound on the work of one line
    EXPECT_EQ(qdsh::split_pipeline(many).error, "more than 32 filters after one command");
}

TEST(Filters, FormatsAndQuotedBarsAreNotFilters) {
    qdsh::Pipeline p = qdsh::split_pipeline("sim set /a \"x|y\"");
    ASSERT_TRUE(p.ok());
    EXPECT_EQ(p.command, "sim set /a \"x|y\"");
    EXPECT_TRUE(p.segments.empty());
    p = qdsh::split_pipeline("show x | json | include if_name");
    ASSERT_TRUE(p.ok());
    ASSERT_EQ(p.segments.size(), 2u);
    EXPECT_EQ(p.segments[0].kind, qdsh::PipeSegment::Kind::json);
    EXPECT_TRUE(p.has_text_filters());
    EXPECT_FALSE(qdsh::split_pipeline("show x | xml").has_text_filters());
}

TEST(Filters, BadSegmentsAreNamed) {
    struct Case {
        const char *line;
        const char *error;
    } cases[] = {
        {"show x | grep a", "\"| grep\": unknown filter"},
        {"show x | include", "\"| include\" needs a regular expression"},
        {"show x | include (", "\"| include\": bad regular expression \"(\""},
        {"show x | count 3", "\"| count\" takes nothing after it"},
        {"| count", "nothing before \"|\""},
        {"show x | include \"abc", "a double quote is not closed"},
        {"show x || count", "a \"|\" with no filter after it"},
    };
    for (const Case &c : cases) {
        const qdsh::Pipeline p = qdsh::split_pipeline(c.line);
        EXPECT_NE(p.error.find(c.error), std::string::npos) << c.line << " -> " << p.error;
    }
}

// What "?" and Tab offer next: watch's options, the command after them, the filters.
TEST(LineContext, WatchOptionsCommandAndFilters) {
    using Part = qdsh::LineContext::Part;
    struct Case {
        const char *before;
        Part part;
        std::size_t command_begin;
        bool line_start;
    } cases[] = {
        {"", Part::command, 0, true},
        {"show queuing ", Part::command, 0, false},
        {"watch ", Part::watch_option, 6, false},
        {"watch -n ", Part::watch_value, 9, false},
        {"watch -n 5 --nonzero ", Part::watch_option, 21, false},
        {"watch --count 3 show ", Part::command, 16, false},
        {"watch -c \"show ", Part::command, 10, false},
        {"show x | ", Part::filter_name, 0, false},
        {"show x | inc ", Part::filter_pattern, 0, false},
        {"show x | include a ", Part::filter_end, 0, false},
        {"show x | count ", Part::filter_end, 0, false},
        {"sim set /a \"x|y\" ", Part::command, 0, false},
    };
    for (const Case &c : cases) {
        const qdsh::LineContext context = qdsh::line_context(c.before);
        EXPECT_EQ(context.part, c.part) << c.before;
        EXPECT_EQ(context.command_begin, c.command_begin) << c.before;
        EXPECT_EQ(context.line_start, c.line_start) << c.before;
    }
    EXPECT_EQ(qdsh::filter_completions("e"), (std::vector<std::string>{"exclude"}));
    EXPECT_EQ(qdsh::watch_option_completions("--n"), (std::vector<std::string>{"--nonzero"}));
}

// ---- Deltas ----

TEST(CounterDelta, WrapsAndClears) {
    struct Case {
        std::uint64_t previous, current;
        unsigned width;
        std::uint64_t delta;
        bool wrapped, restarted;
    } cases[] = {
        {100, 150, 32, 50, false, false},
        {4294967290u, 4, 32, 10, true, false},                  // wrapped at 2^32
        {1000000000u, 5, 32, 5, false, true},                  // cleared: wrapping would be 3.3e9
        {100, 5, 32, 5, false, true},                          // cleared
        {18446744073709551610ull, 4, 64, 4, false, true},      // 64-bit: a clear
        {250, 3, 8, 9, true, false},
        {5000000000ull, 7, 32, 7, false, true},                // above 32 bits: not a 32-bit wrap
        {7, 7, 32, 0, false, false},
    };
    for (const Case &c : cases) {
        const qdsh::Delta d = qdsh::counter_delta(c.previous, c.current, c.width);
        EXPECT_EQ(d.delta, c.delta) << c.previous << " -> " << c.current;
        EXPECT_EQ(d.wrapped, c.wrapped) << c.previous << " -> " << c.current;
        EXPECT_EQ(d.restarted, c.restarted) << c.previous << " -> " << c.current;
    }
}

TEST(DeltaTracker, RatesPerSecondAndNewSeriesUnknown) {
    qdsh::DeltaTracker tracker;
    auto first = tracker.update(qdsh::collect_samples(queues(1000, 4294967295u, 0), find), 10);
    for (const auto &r : first) EXPECT_FALSE(r.known);
    const std::vector<qdsh::Sample> s = qdsh::collect_samples(queues(3000, 1, 8), find);
    const auto second = tracker.update(s, 12);
    EXPECT_DOUBLE_EQ(tracker.interval(), 2);
    ASSERT_EQ(s.size(), 6u);  // q_size, rx_port_pkts, ingress_discards per row
    EXPECT_FALSE(second[0].known);  // a gauge
    EXPECT_EQ(second[1].delta.delta, 2000u);
    EXPECT_DOUBLE_EQ(second[1].rate, 1000);
    EXPECT_EQ(second[2].delta.delta, 2u);  // 32-bit wrap
    EXPECT_TRUE(second[2].delta.wrapped);
    EXPECT_EQ(second[4].delta.delta, 8u);
}

// ---- Samples and exposition ----

TEST(Samples, IdentifiersOfEnclosingRowsAreLabels) {
    const Document d = Document::parse(R"({"extenders": [{"vaq": 101, "ss": [{"ss": 2, "no_credit_drops": 3}]}],
        "interfaces": [{"if_name": "E1/1", "q_size": -1, "rx_port_pkts": "12", "unknown_pkts": 4,
                        "queues": [{"queue_name": "ctrl-hi", "queue_cos": [6, 7], "drop_type": "drop", "q_size": 5}]}]})");
    const std::vector<qdsh::Sample> s = qdsh::collect_samples(d, find);
    ASSERT_EQ(s.size(), 2u);
    EXPECT_EQ(s[0].key(), "no_credit_drops{extender=\"101\",ss=\"2\"}");
    EXPECT_EQ(s[0].row, "/extenders/0/ss/0");
    // A state that starts a row names it; a state that does not is no label.
    EXPECT_EQ(s[1].key(), "q_size{interface=\"E1/1\",queue=\"ctrl-hi\",cos=\"6,7\"}");
}

TEST(Exposition, BothDialects) {
    const std::vector<qdsh::Sample> s = qdsh::collect_samples(queues(7, 0, 9), find);
    const std::vector<qdsh::ExtraFamily> extra{{"qdcli_scrape_duration_seconds", false, "Time", {{{}, "0.5"}}},
                                               {"qdcli_x", false, "X", {{{{"command", "a\"b\\c\nd"}}, "1"}}}};
    const std::string rows =
        "qdcli_q_size{interface=\"Ethernet1/1\",qos_group=\"0\",direction=\"rx\"} 100\n"
        "qdcli_q_size{interface=\"Ethernet1/1\",qos_group=\"1\",direction=\"rx\"} 200\n";
    const std::string om = qdsh::write_exposition(s, extra, qdsh::Exposition::openmetrics);
    EXPECT_TRUE(om.starts_with("# HELP qdcli_q_size Queue size\n# TYPE qdcli_q_size gauge\n" + rows)) << om;
    EXPECT_NE(om.find("# HELP qdcli_rx_port_pkts Packets received \\\\ over the port\n"
                      "# TYPE qdcli_rx_port_pkts counter\n"
                      "qdcli_rx_port_pkts_total{interface=\"Ethernet1/1\",qos_group=\"0\",direction=\"rx\"} 7\n"),
              std::string::npos)
        << om;
    EXPECT_NE(om.find("qdcli_x{command=\"a\\\"b\\\\c\\nd\"} 1\n# EOF\n"), std::string::npos) << om;
    const std::string prom = qdsh::write_exposition(s, {}, qdsh::Exposition::prometheus);
    EXPECT_NE(prom.find("# TYPE qdcli_ingress_discards_total counter\n"), std::string::npos) << prom;
    EXPECT_EQ(prom.find("# EOF"), std::string::npos);
    // The same series twice (two commands): the first wins.
    std::vector<qdsh::Sample> twice = s;
    twice.insert(twice.end(), s.begin(), s.end());
    EXPECT_EQ(qdsh::write_exposition(twice, {}, qdsh::Exposition::prometheus), prom);
}

TEST(NonZero, RowsWithOnlyZeroCountersGo) {
    Document d = queues(0, 0, 5);
    qdsh::drop_zero_rows(d, find);
    const Document &rows = d["interfaces"][0]["rx_queues"];
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["rx_qos_group"], 1);
    EXPECT_EQ(d["interfaces"].size(), 1u);  // no counter of its own: kept
}

// ---- Watch ----

TEST(Watch, DocumentCarriesDeltasAndRatesBesideTheValues) {
    qdsh::DeltaTracker tracker;
    tracker.update(qdsh::collect_samples(queues(100, 50, 0), find), 0);
    const Document now = queues(160, 2, 0);
    const std::vector<qdsh::Sample> s = qdsh::collect_samples(now, find);
    const Document d = qdsh::watch_document(now, s, tracker.update(s, 2), "1970-01-01T00:00:02.000Z", 2, 2);
    EXPECT_EQ(d.begin().key(), "timestamp");
    EXPECT_EQ(d["interval"], 2.0);
    EXPECT_EQ(d["sample"], 2);
    const Document &row = d["interfaces"][0]["rx_queues"][0];
    EXPECT_EQ(row["rx_port_pkts"], 160);
    EXPECT_EQ(row["deltas"], Document::parse(R"({"rx_port_pkts": 60, "ingress_discards": 2})"));
    EXPECT_EQ(row["rates"]["rx_port_pkts"], 30.0);
    EXPECT_EQ(row["restarted"], Document::parse(R"(["ingress_discards"])"));
}

TEST(Watch, ArgumentsAreChecked) {
    struct Case {
        const char *line;
        const char *error;  // empty: accepted
    } cases[] = {
        {"--interval 0.5 --count 3 show queuing interface e1/1", ""},
        {"-n 2 --nonzero -- show queuing", ""},
        {"--interval 0 show x", "interval \"0\" is not a number of seconds"},
        {"--count -1 show x", "count \"-1\" is not a number of samples"},
        {"--count", "--count needs a value"},
        {"--bogus show x", "unknown option --bogus"},
        {"--count 2", "which command?"},
        {"watch show x", "cannot watch a watch"},
        {"--count 2 -c \"show x\"", ""},
        {"-c \"show x\" --count 2", "nothing may follow -c COMMAND"},
    };
    for (const Case &c : cases) {
        qdsh::WatchOptions o;
        std::string error;
        const bool ok = qdsh::parse_watch_arguments(qdsh::split_words(c.line), o, error);
        if (*c.error == '\0') {
            EXPECT_TRUE(ok) << c.line << ": " << error;
        } else {
            EXPECT_NE(error.find(c.error), std::string::npos) << c.line << " -> " << error;
        }
    }
    qdsh::WatchOptions o;
    std::string error;
    ASSERT_TRUE(qdsh::parse_watch_arguments(qdsh::split_words("--interval 0.5 --count 3 show queuing interface e1/1"), o, error));
    EXPECT_EQ(o.command, "show queuing interface e1/1");
    EXPECT_EQ(o.count, 3);
    EXPECT_DOUBLE_EQ(o.interval, 0.5);
}

}  // namespace
