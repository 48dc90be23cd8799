// SPDX-License-Identifier: MIT
#include "line_context.hpp"

#include <array>
#include <cctype>
#include <optional>

#include "filters.hpp"

namespace qdsh {
namespace {

struct Word {
    std::string_view text;
    std::size_t begin = 0;
};

std::vector<Word> words_of(std::string_view line) {
    std::vector<Word> words;
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && std::isspace(static_cast<unsigned char>(line[i]))) ++i;
        const std::size_t begin = i;
        while (i < line.size() && !std::isspace(static_cast<unsigned char>(line[i]))) ++i;
        if (i > begin) words.push_back({line.substr(begin, i - begin), begin});
    }
    return words;
}

constexpr std::array<std::string_view, 6> kWatchOptions = {"--count", "--interval", "--nonzero", "-c", "--command", "-n"};

bool takes_value(std::string_view option) { return option == "-n" || option == "--interval" || option == "--count"; }

}  // namespace

LineContext line_context(std::string_view before) {
    LineContext c;
    if (const std::optional<std::string> filter = after_last_bar(before)) {
        const std::vector<Word> words = words_of(*filter);
        if (words.empty())
            c.part = LineContext::Part::filter_name;
        else if (words.size() == 1 && filter_takes_pattern(words[0].text))
            c.part = LineContext::Part::filter_pattern;
        else
            c.part = LineContext::Part::filter_end;
        return c;
    }
    const std::vector<Word> words = words_of(before);
    c.line_start = words.empty();
    if (words.empty() || words[0].text != "watch") return c;
    // watch [--interval S | -n S] [--count N] [--nonzero] [-c] COMMAND
    c.command_begin = before.size();
    c.part = LineContext::Part::watch_option;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string_view w = words[i].text;
        if (takes_value(w)) {
            if (++i == words.size()) c.part = LineContext::Part::watch_value;
        } else if (w == "-c" || w == "--command" || w == "--") {
            c.part = LineContext::Part::command;
            // A quoted command ("-c \"show ...\"") begins after its quote.
            c.command_begin = i + 1 < words.size() ? words[i + 1].begin + (words[i + 1].text[0] == '"' ? 1 : 0) : before.size();
            return c;
        } else if (w != "--nonzero") {
            c.part = LineContext::Part::command;
            c.command_begin = words[i].begin;
            return c;
        }
    }
    return c;
}

std::vector<std::string> watch_option_completions(std::string_view partial) {
    std::vector<std::string> options;
    for (const std::string_view o : kWatchOptions)
        if (o.starts_with(partial)) options.emplace_back(o);
    return options;
}

}  // namespace qdsh
