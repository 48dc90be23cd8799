// SPDX-License-Identifier: MIT
// Filters, counters, deltas and the metrics exposition of qdsh, on
// hand-written text and documents.
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "cli/pipeline.hpp"

#include "render/metrics.hpp"
#include "cli/options.hpp"

namespace {

using qdsh::Document;

// A small catalogue of the shape the library's has, metric columns included.
constexpr auto N = QDCLI_METRIC_NONE, C = QDCLI_METRIC_COUNTER, G = QDCLI_METRIC_GAUGE, I = QDCLI_METRIC_INFO;
const qdcli_attr_info kCatalogue[] = {
    {1, "if_name", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Interface name", nullptr, 0, nullptr, N, nullptr, 0, "interface", nullptr, nullptr},
    {2, "rx_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "rx_queues", "rx_qos_group", "Receive qos-group", nullptr, 0, nullptr, N, nullptr, 0, "qos_group", nullptr, nullptr},
    {3, "rx_port_pkts", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Packets received \\ over the port", nullptr, 0, "rx_port_pkts", C, nullptr, 0, nullptr, nullptr, nullptr},
    {4, "ingress_discards", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Discards", nullptr, 0, "ingress_discards", C, nullptr, 0, nullptr, nullptr, nullptr},
    {5, "q_size", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "rx_queues", "rx_qos_group", "Queue size", nullptr, 0, "q_size_bytes", G, "bytes", 0, nullptr, nullptr, nullptr},
    {6, "drop_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "rx_queues", "rx_qos_group", "Drop type", nullptr, 0, "rx_queue", I, nullptr, 0, "drop_type", nullptr, nullptr},
    {7, "vaq", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "extenders", "vaq", "Extender", nullptr, 0, nullptr, N, nullptr, 0, "extender", nullptr, nullptr},
    {8, "no_credit_drops", QDCLI_ATTR_U32, 8, QDCLI_ROLE_GAUGE, "packets", "ss", "ss", "No-credit drops", "extenders", 0, "no_credit_drops", G, nullptr, 0, nullptr, nullptr, nullptr},
    {9, "ss", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "ss", "ss", "SS", "extenders", 0, nullptr, N, nullptr, 0, "ss", nullptr, nullptr},
    {10, "queue_name", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "queues", "queue_name", "Name", nullptr, QDCLI_ATTR_FLAG_ROW_START, nullptr, N, nullptr, 0, "queue", nullptr, nullptr},
    {11, "queue_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "queues", "queue_name", "CoS", nullptr, QDCLI_ATTR_FLAG_LIST, "queue", I, nullptr, 0, "cos", nullptr, nullptr},
    {12, "bandwidth", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "percent", "queues", "queue_name", "Bandwidth", nullptr, 0, "bandwidth_ratio", G, "ratio", 100, nullptr, nullptr, nullptr},
    {13, "pass_ch0", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "queues", "queue_name", "Passed, channel 0", nullptr, 0, "passed", C, nullptr, 0, nullptr, "channel=0", "Packets passed on a channel"},
    {15, "n2h_idx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "n2h", "n2h_idx", "Port", nullptr, QDCLI_ATTR_FLAG_ROW_START, nullptr, N, nullptr, 0, "port", nullptr, nullptr},
    {16, "n2h_rcvd", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h", "n2h_idx", "Received", nullptr, 0, "hif_rcvd", C, nullptr, 0, nullptr, "direction=n2h", nullptr},
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

// The line grammar's edges (tests/e2e/cases/filters runs the common forms):
// what a pipeline gives, or the start of its error.
TEST(Filters, EdgesOfTheLineGrammar) {
    const std::string text = "alpha 1\nbeta 2\ngamma 3\ndelta 4\nlast";
    const struct {
        const char *line, *out, *error;
    } cases[] = {
        {"show x | begin nothing", "", ""},
        {"show x | count | count", "1\n", ""},
        {"show x | in \"  \"", "", ""},
        {"sim set /a \"x|y\"", "alpha 1\nbeta 2\ngamma 3\ndelta 4\nlast\n", ""},
        {"show x | json | include a", "alpha 1\nbeta 2\ngamma 3\ndelta 4\nlast\n", ""},
        {"show x | include", "", "\"| include\" needs a regular expression"},
        {"show x | count 3", "", "\"| count\" takes nothing after it"},
        {"| count", "", "nothing before \"|\""},
        {"show x | include \"abc", "", "a double quote is not closed"},
        {"show x || count", "", "a \"|\" with no filter after it"},
        {"show x | include a 1|", "", "a \"|\" with no filter after it"},
    };
    for (const auto &c : cases) {
        const qdsh::Pipeline p = qdsh::split_pipeline(c.line);
        if (*c.error != '\0') {
            EXPECT_TRUE(p.error.starts_with(c.error)) << c.line << " -> " << p.error;
            continue;
        }
        ASSERT_TRUE(p.ok()) << c.line << ": " << p.error;
        EXPECT_EQ(qdsh::apply_filters(text, p.segments), c.out) << c.line;
    }
    const qdsh::Pipeline p = qdsh::split_pipeline("show x | xml | json");
    EXPECT_EQ(p.format(qdsh::Format::text), qdsh::Format::json);
    EXPECT_FALSE(p.has_text_filters());
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
    EXPECT_EQ(qdsh::cli::option_completions(qdsh::cli::Scope::watch, "--n"), (std::vector<std::string>{"--nonzero"}));
}

// ---- Deltas and counts ----

// The exporter's counts: monotonic across wraps, a reset where the switch
// cleared, and forgotten after the series is gone for `keep` rounds.
TEST(CounterState, CountsCarryOnAcrossWraps) {
    struct Case {
        const char *what;
        unsigned width;
        std::vector<std::uint64_t> raw, count;
    } cases[] = {
        {"32-bit, two wraps", 32, {4294967000u, 200, 4294967000u, 5}, {4294967000u, 4294967496u, 8589934296u, 8589934597u}},
        {"16-bit wrap then clear", 16, {65000, 100, 3}, {65000, 65636, 3}},
        {"64-bit passes through", 64, {1, 18446744073709551615ull, 2}, {1, 18446744073709551615ull, 2}},
        {"32-bit, too far to be a wrap: a clear", 32, {1000000000u, 5, 7}, {1000000000u, 5, 7}},
        {"above 32 bits: no 32-bit wrap", 32, {5000000000ull, 7}, {5000000000ull, 7}},
    };
    for (const Case &c : cases) {
        qdsh::CounterState state;
        for (std::size_t i = 0; i < c.raw.size(); ++i) {
            EXPECT_EQ(state.observe("x", c.raw[i], c.width).count, c.count[i]) << c.what << " reading " << i;
            state.end_round(2);
        }
    }
    qdsh::CounterState state;  // a series not read in the last `keep` rounds is forgotten
    state.observe("gone", 4294967000u, 32);
    state.end_round(1);
    state.end_round(1);
    EXPECT_EQ(state.size(), 0u);
}

// ---- Samples, health and exposition ----

TEST(Samples, IdentityLabelsConstantsAndConfiguration) {
    const Document d = Document::parse(R"({"extenders": [{"vaq": 101, "ss": [{"ss": 2, "no_credit_drops": 3}]}],
        "interfaces": [{"if_name": "E1/1", "q_size": -1, "rx_port_pkts": "12", "unknown_pkts": 4,
                        "queues": [{"queue_name": "ctrl-hi", "queue_cos": [6, 7], "drop_type": "drop", "q_size": 5,
                                    "pass_ch0": 1}]}],
        "n2h": [{"if_name": "E1/48", "vaq": 101, "n2h_idx": 0, "n2h_rcvd": 5}, {"if_name": "E2/48", "vaq": 102, "n2h_idx": 0, "n2h_rcvd": 6}],
        "errors": [{"if_name": "E1/2", "kind": "send", "q_size": 4}], "unsupported": [{"if_name": "E1/3", "q_size": 9}]})");
    const std::vector<qdsh::Sample> samples = qdsh::collect_samples(d, find);
    std::vector<std::string> keys;
    for (const qdsh::Sample &s : samples) keys.push_back(s.key() + " " + std::to_string(s.value));
    EXPECT_EQ(keys, (std::vector<std::string>{
                        "qdcli_no_credit_drops{extender=\"101\",ss=\"2\"} 3",
                        // The CoS list is configuration: an _info series, not a label of the values.
                        "qdcli_queue{interface=\"E1/1\",queue=\"ctrl-hi\",cos=\"6,7\"} 1",
                        "qdcli_rx_queue{interface=\"E1/1\",queue=\"ctrl-hi\",drop_type=\"drop\"} 1",
                        "qdcli_q_size_bytes{interface=\"E1/1\",queue=\"ctrl-hi\"} 5",
                        "qdcli_passed{interface=\"E1/1\",queue=\"ctrl-hi\",channel=\"0\"} 1",
                        // Extender statistics rows that name their subject are told apart.
                        "qdcli_hif_rcvd{interface=\"E1/48\",extender=\"101\",port=\"0\",direction=\"n2h\"} 5",
                        "qdcli_hif_rcvd{interface=\"E2/48\",extender=\"102\",port=\"0\",direction=\"n2h\"} 6",
                    }));
    EXPECT_TRUE(qdsh::repeated_series(samples).empty());
    EXPECT_EQ(qdsh::repeated_series({samples[0], samples[1], samples[0], samples[0]}), std::vector<std::string>{samples[0].key()});
}

TEST(Health, ErrorsByKindAndUnsupportedSubjects) {
    qdsh::CommandHealth h = qdsh::command_health(Document::parse(R"({"errors": [], "unsupported": [{"if_name": "E1/1"}, {"if_name": "E1/2"}]})"), true);
    EXPECT_TRUE(h.ok && h.errors.empty() && h.unsupported == 2);
    h = qdsh::command_health(Document::parse(R"({"errors": [{"kind": "send"}, {"kind": "send"}, {"message": "no kind"}]})"), false);
    EXPECT_EQ(h.errors, (std::map<std::string, long>{{"send", 2}, {"unknown", 1}}));
    h = qdsh::command_health(Document::parse(R"({"errors": []})"), false);  // failed, saying nothing
    EXPECT_EQ(h.errors, (std::map<std::string, long>{{"failed", 1}}));
    EXPECT_FALSE(qdsh::command_health(Document::parse(R"({"errors": [{"kind": "refused"}]})"), true).ok);
}

TEST(Exposition, BothDialects) {
    std::vector<qdsh::Sample> s = qdsh::collect_samples(queues(7, 0, 9), find);
    const std::vector<qdsh::Sample> queue = qdsh::collect_samples(
        Document::parse(R"({"queues": [{"queue_name": "q", "bandwidth": 25, "pass_ch0": 3}]})"), find);
    s.insert(s.end(), queue.begin(), queue.end());
    const std::vector<qdsh::ExtraFamily> extra{{"qdcli_scrape_duration_seconds", false, "Time", {{{}, "0.5"}}},
                                               {"qdcli_x", true, "X", {{{{"command", "a\"b\\c\nd"}}, "1"}}}};
    const std::string om = qdsh::write_exposition(s, extra, qdsh::Exposition::openmetrics);
    for (const char *part : {
             "# HELP qdcli_rx_queue Configuration of each rx queue, as labels (value 1)\n"
             "# TYPE qdcli_rx_queue info\n"
             "qdcli_rx_queue_info{interface=\"Ethernet1/1\",qos_group=\"0\",drop_type=\"drop\"} 1\n"
             "qdcli_rx_queue_info{interface=\"Ethernet1/1\",qos_group=\"1\",drop_type=\"no-drop\"} 1\n"
             "# HELP qdcli_q_size_bytes Queue size\n# TYPE qdcli_q_size_bytes gauge\n# UNIT qdcli_q_size_bytes bytes\n"
             "qdcli_q_size_bytes{interface=\"Ethernet1/1\",qos_group=\"0\"} 100\n",
             "# HELP qdcli_rx_port_pkts Packets received \\\\ over the port\n# TYPE qdcli_rx_port_pkts counter\n"
             "qdcli_rx_port_pkts_total{interface=\"Ethernet1/1\",qos_group=\"0\"} 7\n",
             "# UNIT qdcli_bandwidth_ratio ratio\nqdcli_bandwidth_ratio{queue=\"q\"} 0.25\n",
             "# TYPE qdcli_scrape_duration_seconds gauge\n# UNIT qdcli_scrape_duration_seconds seconds\n",
             "qdcli_x_total{command=\"a\\\"b\\\\c\\nd\"} 1\n# EOF\n",
         })
        EXPECT_NE(om.find(part), std::string::npos) << part << "\nin\n" << om;
    const std::string prom = qdsh::write_exposition(s, {}, qdsh::Exposition::prometheus);
    EXPECT_TRUE(prom.find("# TYPE qdcli_ingress_discards_total counter\n") != prom.npos && prom.find("# TYPE qdcli_rx_queue_info gauge\n") != prom.npos);
    EXPECT_EQ(prom.find("# EOF"), prom.find("# UNIT"));  // neither
    // The same series twice (two commands): the first wins.
    std::vector<qdsh::Sample> twice = s;
    twice.insert(twice.end(), s.begin(), s.end());
    EXPECT_EQ(qdsh::write_exposition(twice, {}, qdsh::Exposition::prometheus), prom);
    // The exporter's counts: a row that says its counter is 16 bits wide wraps there.
    const auto narrow = [&](int v) {
        return qdsh::collect_samples(Document::parse(R"({"rx_queues": [{"rx_qos_group": 0, "ingress_discards_bits": 16,
                                                         "ingress_discards": )" + std::to_string(v) + "}]}"), find);
    };
    qdsh::CounterState state;
    std::vector<qdsh::Sample> before = narrow(65530), after = narrow(4);
    qdsh::carry_counters(before, state);
    qdsh::carry_counters(after, state);
    EXPECT_EQ(after[0].value, 65540u);
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
    const struct {
        const char *line;
        const char *error;    // empty: accepted, watching `command`
        const char *command;
    } cases[] = {
        {"--interval 0.5 --count 3 show queuing interface e1/1", "", "show queuing interface e1/1"},
        {"-n 2 --nonzero -- show queuing", "", "show queuing"},
        {"--count 2 -c \"show x\"", "", "show x"},
        {"--interval 0 show x", "interval \"0\" is not a number of seconds"},
        {"--count -1 show x", "count \"-1\" is not a number of samples"},
        {"--count", "--count needs a value"},
        {"--bogus show x", "unknown option --bogus"},
        {"--count 2", "which command?"},
        {"watch show x", "cannot watch a watch"},
        {"-c \"show x\" --count 2", "nothing may follow -c COMMAND"},
    };
    for (const auto &c : cases) {
        qdsh::cli::WatchOptions o;
        std::string error;
        const bool ok = qdsh::cli::parse_watch_arguments(qdsh::split_words(c.line), o, error);
        EXPECT_EQ(ok, *c.error == '\0') << c.line << ": " << error;
        if (ok) EXPECT_EQ(o.command, c.command) << c.line;
        else EXPECT_NE(error.find(c.error), std::string::npos) << c.line << " -> " << error;
    }
    qdsh::cli::WatchOptions o;
    std::string error;
    ASSERT_TRUE(qdsh::cli::parse_watch_arguments(qdsh::split_words(cases[0].line), o, error));
    EXPECT_EQ(o.count, 3);
    EXPECT_DOUBLE_EQ(o.interval, 0.5);
}

}  // namespace
