// SPDX-License-Identifier: MIT
// The qdsh command grammar: the input is one command line, matched against
// the command table, asked for help candidates ("?") and, for its interface
// words, resolved as interface lists against a small name table. Nothing of
// the platform runs; a finding is a crash, a sanitizer report, or a match
// that claims success without its command.
#include <cstdlib>
#include <string>
#include <string_view>

#include "cli/grammar.hpp"
#include "harness/harness.hpp"
#include "cli/iflist.hpp"

namespace {

std::optional<std::uint32_t> resolve(const std::string &name) {
    if (name == "Ethernet1/1") return 0x1a000000u;
    if (name == "Ethernet1/2") return 0x1a000100u;
    if (name == "Ethernet101/1/1") return 0x1f010000u;
    return std::nullopt;
}

}  // namespace

QDFUZZ_ENTRY(shell_grammar) {
    const std::string_view line(reinterpret_cast<const char *>(data), size);
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
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_shell_grammar() {
    std::vector<qdfuzz::Bytes> seeds;
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
