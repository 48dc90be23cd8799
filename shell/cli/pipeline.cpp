// SPDX-License-Identifier: MIT
#include "cli/pipeline.hpp"

#include "cli/grammar.hpp"

#include <array>
#include <cctype>
#include <cstdint>
#include <deque>

namespace qdsh {

namespace {

struct FilterName {
    const char *name;
    PipeSegment::Kind kind;
    bool takes_pattern;
};

constexpr std::array<FilterName, 6> kFilters{{
    {"include", PipeSegment::Kind::include, true},
    {"exclude", PipeSegment::Kind::exclude, true},
    {"begin", PipeSegment::Kind::begin, true},
    {"count", PipeSegment::Kind::count, false},
    {"json", PipeSegment::Kind::json, false},
    {"xml", PipeSegment::Kind::xml, false},
}};

// A typed pattern is short; these bound what a compiled one may take.
constexpr std::size_t kMaxPatternBytes = 4096;
constexpr std::size_t kMaxSegments = 32;
constexpr std::int64_t kMaxPatternMemory = std::int64_t{8} << 20;

// Splits at "|" outside double quotes; a backslash inside quotes keeps the
// next character as it is.
std::vector<std::string> split_bars(std::string_view line, bool &unterminated) {
    std::vector<std::string> parts(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted && c == '\\' && i + 1 < line.size()) {
            parts.back() += c;
            parts.back() += line[++i];
            continue;
        }
        if (c == '"') quoted = !quoted;
        if (c == '|' && !quoted) {
            parts.emplace_back();
            continue;
        }
        parts.back() += c;
    }
    unterminated = quoted;
    return parts;
}

// The pattern of a segment: a quoted pattern loses its quotes (a backslash
// before " or \\ inside keeps that character); an unquoted one is taken as written.
bool unquote(std::string_view text, std::string &pattern) {
    if (text.size() < 2 || text.front() != '"') {
        pattern = std::string(text);
        return true;
    }
    if (text.back() != '"') return false;
    pattern.clear();
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] == '\\' && i + 2 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\')) ++i;
        pattern += text[i];
    }
    return true;
}

// The filter a name stands for: the one it names, or the only one it
// begins. `candidates` is how many it could stand for (1 when found).
const FilterName *find_filter(std::string_view word, int &candidates) {
    const FilterName *found = nullptr;
    candidates = 0;
    for (const FilterName &f : kFilters) {
        const std::string_view name(f.name);
        if (name == word) {
            candidates = 1;
            return &f;
        }
        if (name.starts_with(word)) {
            found = &f;
            ++candidates;
        }
    }
    return found;
}

std::optional<std::string> after_last_bar(std::string_view line) {
    bool unterminated = false;
    std::vector<std::string> parts = split_bars(line, unterminated);
    if (parts.size() == 1) return std::nullopt;
    return std::move(parts.back());
}

bool filter_takes_pattern(std::string_view word) {
    int candidates = 0;
    const FilterName *f = find_filter(word, candidates);
    return candidates == 1 && f->takes_pattern;
}

}  // namespace

std::vector<std::string> filter_completions(std::string_view partial) {
    std::vector<std::string> names;
    for (const FilterName &f : kFilters)
        if (std::string_view(f.name).starts_with(partial)) names.emplace_back(f.name);
    return names;
}

Format Pipeline::format(Format given) const {
    for (const PipeSegment &s : segments) {
        if (s.kind == PipeSegment::Kind::json) given = Format::json;
        if (s.kind == PipeSegment::Kind::xml) given = Format::xml;
    }
    return given;
}

bool Pipeline::has_text_filters() const {
    for (const PipeSegment &s : segments)
        if (s.kind != PipeSegment::Kind::json && s.kind != PipeSegment::Kind::xml) return true;
    return false;
}

Pipeline split_pipeline(std::string_view line) {
    Pipeline p;
    bool unterminated = false;
    const std::vector<std::string> parts = split_bars(line, unterminated);
    p.command = trim(parts[0]);
    if (unterminated) {
        p.error = "a double quote is not closed";
        return p;
    }
    if (parts.size() == 1) return p;
    if (parts.size() - 1 > kMaxSegments) {
        p.error = "more than " + std::to_string(kMaxSegments) + " filters after one command";
        return p;
    }
    if (p.command.empty()) {
        p.error = "nothing before \"|\": a filter follows a command";
        return p;
    }
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::string segment = trim(parts[i]);
        if (segment == "?" && i + 1 == parts.size()) {
            p.help = true;
            return p;
        }
        if (segment.empty()) {
            p.error = "a \"|\" with no filter after it: expected include, exclude, begin, count, json or xml";
            return p;
        }
        const std::size_t space = segment.find_first_of(" \t");
        const std::string_view word = std::string_view(segment).substr(0, space);
        const std::string rest = space == std::string::npos ? std::string{} : trim(std::string_view(segment).substr(space));
        int candidates = 0;
        const FilterName *found = find_filter(word, candidates);
        if (candidates != 1) {
            p.error = "\"| " + std::string(word) + "\": " +
                      (candidates == 0 ? "unknown filter" : "ambiguous filter") +
                      ", expected include, exclude, begin, count, json or xml";
            return p;
        }
        PipeSegment s;
        s.kind = found->kind;
        if (!found->takes_pattern) {
            if (!rest.empty()) {
                p.error = "\"| " + std::string(found->name) + "\" takes nothing after it, got \"" + std::string(rest) + "\"";
                return p;
            }
        } else {
            if (rest.empty()) {
                p.error = "\"| " + std::string(found->name) + "\" needs a regular expression";
                return p;
            }
            if (!unquote(rest, s.pattern)) {
                p.error = "\"| " + std::string(found->name) + "\": a quoted pattern must end with its quote: " + std::string(rest);
                return p;
            }
            if (s.pattern.size() > kMaxPatternBytes) {
                p.error = "\"| " + std::string(found->name) + "\": the regular expression is longer than " +
                          std::to_string(kMaxPatternBytes) + " bytes";
                return p;
            }
            RE2::Options options;
            options.set_log_errors(false);  // the error is ours to tell, not written to stderr
            options.set_max_mem(kMaxPatternMemory);
            auto regex = std::make_shared<const re2::RE2>(s.pattern, options);
            if (!regex->ok()) {
                p.error = "\"| " + std::string(found->name) + "\": bad regular expression \"" + s.pattern + "\": " + regex->error();
                return p;
            }
            s.regex = std::move(regex);
        }
        p.segments.push_back(std::move(s));
    }
    return p;
}

std::string filter_help() {
    return "  include REGEX            Lines that match\n"
           "  exclude REGEX            Lines that do not match\n"
           "  begin REGEX              Everything from the first line that matches\n"
           "  count                    The number of lines\n"
           "  json                     The command's document as JSON\n"
           "  xml                      The command's document as XML\n";
}

std::string apply_filters(std::string_view text, const std::vector<PipeSegment> &segments, bool (*stop)()) {
    const auto stopped = [stop] { return stop != nullptr && stop(); };
    const auto found = [](std::string_view line, const PipeSegment &s) {
        return re2::RE2::PartialMatch(re2::StringPiece(line.data(), line.size()), *s.regex);
    };
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t nl = text.find('\n');
        lines.push_back(text.substr(0, nl));
        text = nl == std::string_view::npos ? std::string_view{} : text.substr(nl + 1);
    }
    std::deque<std::string> counted;  // lines made by "| count" (stable addresses)
    for (const PipeSegment &s : segments) {
        std::vector<std::string_view> kept;
        switch (s.kind) {
        case PipeSegment::Kind::include:
        case PipeSegment::Kind::exclude: {
            const bool want = s.kind == PipeSegment::Kind::include;
            for (std::string_view l : lines) {
                if (stopped()) return {};
                if (found(l, s) == want) kept.push_back(l);
            }
            break;
        }
        case PipeSegment::Kind::begin: {
            bool on = false;
            for (std::string_view l : lines) {
                if (!on && stopped()) return {};
                on = on || found(l, s);
                if (on) kept.push_back(l);
            }
            break;
        }
        case PipeSegment::Kind::count:
            counted.push_back(std::to_string(lines.size()));
            kept.push_back(counted.back());
            break;
        case PipeSegment::Kind::json:
        case PipeSegment::Kind::xml:
            kept = lines;  // chosen before the command runs
            break;
        }
        lines = std::move(kept);
    }
    std::string out;
    for (std::string_view l : lines) {
        out += l;
        out += '\n';
    }
    return out;
}

LineContext line_context(std::string_view before) {
    LineContext c;
    if (const std::optional<std::string> filter = after_last_bar(before)) {
        const std::vector<Token> words = tokenize(*filter);
        if (words.empty())
            c.part = LineContext::Part::filter_name;
        else if (words.size() == 1 && filter_takes_pattern(words[0].text))
            c.part = LineContext::Part::filter_pattern;
        else
            c.part = LineContext::Part::filter_end;
        return c;
    }
    const std::vector<Token> words = tokenize(before);
    c.line_start = words.empty();
    if (words.empty() || words[0].text != "watch") return c;
    // watch [--interval S | -n S] [--count N] [--nonzero] [-c] COMMAND
    c.command_begin = before.size();
    c.part = LineContext::Part::watch_option;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string &w = words[i].text;
        if (const cli::Option *o = cli::find_option(cli::Scope::watch, w); o != nullptr && o->value == cli::Value::number) {
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

std::vector<std::string> split_words(const std::string &line) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false, any = false;
    for (char c : line) {
        if (c == '"') {
            quoted = !quoted;
            any = true;
        } else if (!quoted && (c == ' ' || c == '\t')) {
            if (any) words.push_back(word);
            word.clear();
            any = false;
        } else {
            word += c;
            any = true;
        }
    }
    if (any) words.push_back(word);
    return words;
}

bool is_watch_line(const std::string &line) {
    const std::vector<std::string> words = split_words(line);
    return !words.empty() && words[0] == "watch";
}

}  // namespace qdsh
