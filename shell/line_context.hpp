// SPDX-License-Identifier: MIT
// Where the next word of a line typed so far belongs, for "?" help and Tab
// completion: qdsh takes "watch" and its options before a command, and
// output filters after a "|", before the command grammar sees the line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qdsh {

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

// `before` is the text in front of the word under way.
LineContext line_context(std::string_view before);

// Watch's options that begin with `partial`.
std::vector<std::string> watch_option_completions(std::string_view partial);

}  // namespace qdsh
