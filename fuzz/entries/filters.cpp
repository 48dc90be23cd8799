// SPDX-License-Identifier: MIT
// The output filters: the first line of the input is a command line with
// its "| include/exclude/begin/count" segments, the rest is the text they
// filter. Patterns are whatever the fuzzer makes of them, so a finding is
// also a match that does not end (the engine must stay linear in the text),
// as well as a crash, a sanitizer report, or include and exclude of one
// pattern not splitting the lines between them.
#include <cstdlib>
#include <string>
#include <string_view>

#include "cli/pipeline.hpp"
#include "harness/harness.hpp"

QDFUZZ_ENTRY(filters) {
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const std::size_t nl = input.find('\n');
    const std::string_view line = input.substr(0, nl);
    const std::string_view text = nl == std::string_view::npos ? std::string_view{} : input.substr(nl + 1);
    const qdsh::Pipeline p = qdsh::split_pipeline(line);
    if (!p.ok()) {
        if (p.error.empty()) std::abort();
        return 0;
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
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_filters() {
    std::vector<qdfuzz::Bytes> seeds;
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
