// SPDX-License-Identifier: MIT
// Fuzz targets of qdsh's own parsers: the command grammar and the output
// filters. Nothing of the platform runs.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "entries/targets.hpp"
#include "cli/grammar.hpp"
#include "cli/iflist.hpp"
#include "cli/pipeline.hpp"

using qdfuzz::Bytes;

// The qdsh command grammar: the input is one command line, matched against
// the command table, asked for help candidates ("?") and, for its interface
// words, resolved as interface lists against a small name table. Nothing of
// the platform runs; a finding is a crash, a sanitizer report, or a match
// that claims success without its command.
namespace {

std::optional<std::uint32_t> resolve(const std::string &name) {
    if (name == "Ethernet1/1") return 0x1a000000u;
    if (name == "Ethernet1/2") return 0x1a000100u;
    if (name == "Ethernet101/1/1") return 0x1f010000u;
    return std::nullopt;
}

}  // namespace

void qdfuzz_shell_grammar(qdfuzz::Session &, qdfuzz::Input &in) {
    const Bytes bytes = in.rest();
    const std::string_view line(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    const qdsh::MatchResult m = qdsh::match_line(line);
    if (m.ok && m.match.command == nullptr) std::abort();
    if (!m.ok && m.error.empty()) std::abort();  // a refusal always says why
    (void)qdsh::candidates(line);
    std::vector<std::string> words;
    std::size_t start = 0;
    while (start < line.size() && words.size() < 64) {
        const std::size_t end = std::min(line.find(' ', start), line.size());
        if (end > start) words.emplace_back(line.substr(start, end - start));
        start = end + 1;
    }
    if (!words.empty()) (void)qdsh::resolve_interface_list(words, resolve);
}

std::vector<Bytes> qdfuzz_seeds_shell_grammar() {
    std::vector<Bytes> seeds;
    for (const char *line : {"show queuing interface eth1/1-4, e2/1", "sh wrr cos", "wrr-queue cos-map 2 3 5",
                             "no wrr-queue cos-map 1 2", "qos queue-limit 3582", "sim set /cos_map/2 3",
                             "show queuing interface Ethernet101/1/1 extended", "debug qd trace-level 4",
                             "clear interface priority-flow-control e1/1", "show system internal qd mem-stats detail",
                             "show ?", "sim set /platform/type 3?", "show queuing interface ethernet1/1-99999999999"}) {
        const std::string_view text(line);
        seeds.emplace_back(text.begin(), text.end());
    }
    return seeds;
}

// The output filters: the first line of the input is a command line with
// its "| include/exclude/begin/count" segments, the rest is the text they
// filter. Patterns are whatever the fuzzer makes of them, so a finding is
// also a match that does not end (the engine must stay linear in the text),
// as well as a crash, a sanitizer report, or include and exclude of one
// pattern not splitting the lines between them.
void qdfuzz_filters(qdfuzz::Session &, qdfuzz::Input &in) {
    const Bytes bytes = in.rest();
    const std::string_view input(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    const std::size_t nl = input.find('\n');
    const std::string_view line = input.substr(0, nl);
    const std::string_view text = nl == std::string_view::npos ? std::string_view{} : input.substr(nl + 1);
    const qdsh::Pipeline p = qdsh::split_pipeline(line);
    if (!p.ok()) {
        if (p.error.empty()) std::abort();
        return;
    }
    (void)qdsh::apply_filters(text, p.segments);
    for (const qdsh::PipeSegment &s : p.segments) {
        if (s.kind != qdsh::PipeSegment::Kind::include) continue;
        qdsh::PipeSegment exclude = s;
        exclude.kind = qdsh::PipeSegment::Kind::exclude;
        const qdsh::PipeSegment count{qdsh::PipeSegment::Kind::count, {}, nullptr};
        const auto lines = [&](const qdsh::PipeSegment &f) { return std::stoul(qdsh::apply_filters(text, {f, count})); };
        if (lines(s) + lines(exclude) != std::stoul(qdsh::apply_filters(text, {count}))) std::abort();
    }
}

std::vector<Bytes> qdfuzz_seeds_filters() {
    std::vector<Bytes> seeds;
    for (const char *input : {"x | include (a*)*b\naaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\nab\n",
                              "x | json | include \"if_name.*Ethernet2/48\"\n{\"if_name\": \"Ethernet2/48\"}",
                              "x | exclude ^(alpha|beta) | begin g | count\nalpha\nbeta\ngamma\ndelta",
                              "x | include \\d+$ | inc (?i)ETH\nEthernet1/1 5\n\xff\xfe bad utf-8 7\n",
                              "x | include (\nanything", "x | begin [[:alpha:]]{2,1000}\nab\n"}) {
        const std::string_view text(input);
        seeds.emplace_back(text.begin(), text.end());
    }
    return seeds;
}
