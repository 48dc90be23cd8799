// SPDX-License-Identifier: MIT
// Output filters in the router convention: a command line may end in
// "| include REGEX", "| exclude REGEX", "| begin REGEX" and "| count",
// chained in any number, and in "| json" / "| xml" to render the typed
// output as structured text before the text filters see it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <re2/re2.h>

namespace qdsh {

struct PipeSegment {
    enum class Kind { include, exclude, begin, count, json, xml };
    Kind kind = Kind::count;
    std::string pattern;  // the regular expression as written (include, exclude, begin)
    std::shared_ptr<const re2::RE2> regex;  // compiled once; shared by copies of the segment
};

struct Pipeline {
    std::string command;  // the line before the first "|", trimmed
    std::vector<PipeSegment> segments;
    std::string error;    // empty when the line parsed
    bool help = false;    // the line ends in "| ?": list the filters instead
    bool ok() const { return error.empty(); }
    bool has_text_filters() const;
};

// Splits a line at every "|" outside double quotes. A pattern may be quoted
// ("| include \"a|b\"") to hold a "|" or leading/trailing blanks; unquoted,
// it is the rest of the segment with the blanks around it trimmed. Filter
// names may be shortened while they stay unique ("| inc", "| ex").
Pipeline split_pipeline(std::string_view line);

// For "?" help and Tab completion of a line typed so far: the text after
// its last "|" outside double quotes (nullopt when it has none), the filter
// names that begin with `partial`, and whether the filter a (shortened)
// name stands for takes a regular expression.
std::optional<std::string> after_last_bar(std::string_view line);
std::vector<std::string> filter_completions(std::string_view partial);
bool filter_takes_pattern(std::string_view word);

// What may follow a "|" ("| ?"), one line each.
std::string filter_help();

// Applies the text filters of `segments` in order to `text`, line by line
// (a last line without "\n" counts as a line and is given one).
//
// Patterns come from whoever types the line, so they run on an engine made
// for untrusted patterns (RE2 syntax: no backreferences, no lookaround): a
// match takes time linear in the line whatever the pattern, with no
// recursion and bounded memory. `stop` is asked between lines; when it says
// yes (Ctrl-C, a termination signal) the filtering ends with what it has.
std::string apply_filters(std::string_view text, const std::vector<PipeSegment> &segments, bool (*stop)() = nullptr);

}  // namespace qdsh
