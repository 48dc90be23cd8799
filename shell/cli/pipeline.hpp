// SPDX-License-Identifier: MIT
// The line around a command, in one place: "watch" and its options before
// it, and after it the filters in the router convention ("| include REGEX",
// "| exclude REGEX", "| begin REGEX", "| count", chained in any number) and
// "| json" / "| xml", which render the typed output as structured text.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <re2/re2.h>

#include "cli/options.hpp"

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
    // The format a "| json" or "| xml" asks for, else `given`.
    Format format(Format given) const;
};

// Splits a line at every "|" outside double quotes. A pattern may be quoted
// ("| include \"a|b\"") to hold a "|" or leading/trailing blanks; unquoted,
// it is the rest of the segment with the blanks around it trimmed. Filter
// names may be shortened while they stay unique ("| inc", "| ex").
Pipeline split_pipeline(std::string_view line);

// The filter names that begin with `partial` (Tab).
std::vector<std::string> filter_completions(std::string_view partial);

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

// Where the next word of a line typed so far belongs, for "?" help and Tab
// completion (`before` is the text in front of the word under way).
struct LineContext {
    enum class Part {
        command,         // a word of the command (the grammar's candidates)
        watch_option,    // after "watch": an option, or the command's first word
        watch_value,     // the value of -n, --interval or --count
        filter_name,     // after a "|": include, exclude, begin, count, json, xml
        filter_pattern,  // the regular expression of include, exclude or begin
        filter_end,      // a filter is complete: the line may end or go on with "|"
    };
    Part part = Part::command;
    std::size_t command_begin = 0;  // where the command starts (after watch and its options)
    bool line_start = false;        // nothing typed yet: "watch" may come first
};
LineContext line_context(std::string_view before);

// Splits a command line into words at blanks; "..." groups words.
std::vector<std::string> split_words(const std::string &line);

// Whether the line is a watch ("watch ...").
bool is_watch_line(const std::string &line);

}  // namespace qdsh
