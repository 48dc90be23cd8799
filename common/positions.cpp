// SPDX-License-Identifier: MIT
#include "positions.hpp"

#include "json_input.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <vector>

namespace qdsim {
namespace {

// Input iterator that counts the characters the parser has taken, so the
// handler below knows how far the text has been read at each event.
struct CountingIterator {
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    const char *at = nullptr;
    std::size_t *consumed = nullptr;

    reference operator*() const { return *at; }
    CountingIterator &operator++() {
        ++at;
        ++*consumed;
        return *this;
    }
    CountingIterator operator++(int) {
        CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator &other) const { return at == other.at; }
    bool operator!=(const CountingIterator &other) const { return at != other.at; }
};

class Recorder {
public:
    static constexpr std::size_t kMaxDepth = kMaxJsonDepth;

    Recorder(std::string_view text, const std::string &file, std::size_t &consumed, PositionMap &positions)
        : text_(text), file_(file), consumed_(consumed), positions_(positions) {
        line_starts_.push_back(0);
        for (std::size_t i = 0; i < text.size(); ++i)
            if (text[i] == '\n') line_starts_.push_back(i + 1);
    }

    Json root;
    ParseFailure failure;
    bool duplicate = false;

    bool null() { return value(Json(nullptr)); }
    bool boolean(bool v) { return value(Json(v)); }
    bool number_integer(Json::number_integer_t v) { return value(Json(v)); }
    bool number_unsigned(Json::number_unsigned_t v) { return value(Json(v)); }
    bool number_float(Json::number_float_t v, const std::string &) { return value(Json(v)); }
    bool string(std::string &v) { return value(Json(std::move(v))); }
    bool binary(Json::binary_t &) { return value(Json(nullptr)); }

    bool start_object(std::size_t) { return open(Json::object()); }
    bool start_array(std::size_t) { return open(Json::array()); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }

    bool key(std::string &name) {
        const std::size_t start = token_start();
        Frame &frame = stack_.back();
        if (frame.container->contains(name)) {
            duplicate = true;
            failure.where = at(start);
            failure.reason = "duplicate member " + quoted_excerpt(name);
            return false;
        }
        frame.key = name;
        frame.key_start = start;
        return true;
    }

    bool parse_error(std::size_t, const std::string &, const Json::exception &ex) {
        // The parser's message carries its own line and column ("... at
        // line N, column M: reason"). Read without a regular expression: the
        // reason quotes the text last read, which can be long, and a
        // backtracking match over it would use stack in proportion. That
        // quote is dropped: a message never repeats hostile text.
        const char *what = ex.what();
        unsigned long line = 0;
        unsigned long column = 0;
        int reason_at = 0;
        const char *at_line = std::strstr(what, "at line ");
        if (at_line != nullptr && std::sscanf(at_line, "at line %lu, column %lu: %n", &line, &column, &reason_at) == 2 &&
            reason_at > 0) {
            failure.where = {file_, line, column};
            std::string_view reason(at_line + reason_at);
            reason = reason.substr(0, std::min(reason.find("; last read: "), reason.size()));
            failure.reason = std::string(reason.substr(0, 200));
        } else if (ex.id == 406) {  // 1e800: no JSON number type holds it
            failure.where = at(token_start());
            failure.reason = "a number too large for any JSON number";
        } else {
            failure.where = at(consumed_ > 0 ? consumed_ - 1 : 0);
            failure.reason = "not valid JSON";
        }
        return false;
    }

private:
    struct Frame {
        Json *container;
        std::string pointer;
        std::string key;
        std::size_t key_start = 0;
    };

    // Start of the next token: past blanks and the separators , and :.
    std::size_t token_start() {
        std::size_t i = last_end_;
        while (i < text_.size() &&
               (text_[i] == ' ' || text_[i] == '\t' || text_[i] == '\n' || text_[i] == '\r' || text_[i] == ',' ||
                text_[i] == ':'))
            ++i;
        last_end_ = consumed_;
        return i;
    }

    SourcePosition at(std::size_t offset) const {
        std::size_t line = 0;
        std::size_t lo = 0, hi = line_starts_.size();
        while (lo < hi) {  // last line start <= offset
            const std::size_t mid = (lo + hi) / 2;
            if (line_starts_[mid] <= offset) {
                line = mid;
                lo = mid + 1;
            } else {
                hi = mid;
            }
        }
        return {file_, line + 1, offset - line_starts_[line] + 1};
    }

    // Places a value into its container; returns it and its pointer.
    Json *place(Json v, std::string &pointer) {
        const std::size_t start = token_start();
        if (stack_.empty()) {
            root = std::move(v);
            pointer.clear();
            positions_[pointer].value = at(start);
            return &root;
        }
        Frame &frame = stack_.back();
        Json *slot = nullptr;
        if (frame.container->is_array()) {
            pointer = frame.pointer + "/" + std::to_string(frame.container->size());
            frame.container->push_back(std::move(v));
            slot = &frame.container->back();
        } else {
            pointer = frame.pointer + pointer_token(frame.key);
            slot = &((*frame.container)[frame.key] = std::move(v));
        }
        PositionEntry &entry = positions_[pointer];
        if (!frame.container->is_array()) entry.key = at(frame.key_start);
        entry.value = at(start);
        return slot;
    }

    bool value(Json v) {
        std::string pointer;
        place(std::move(v), pointer);
        return true;
    }

    bool open(Json container) {
        if (stack_.size() >= kMaxDepth) {
            failure.where = at(token_start());
            failure.reason = "values nest deeper than " + std::to_string(kMaxDepth) + " levels";
            return false;
        }
        std::string pointer;
        Json *slot = place(std::move(container), pointer);
        stack_.push_back({slot, pointer, {}, 0});
        return true;
    }

    bool close() {
        last_end_ = consumed_;
        stack_.pop_back();
        return true;
    }

    std::string_view text_;
    std::string file_;
    std::size_t &consumed_;
    PositionMap &positions_;
    std::vector<std::size_t> line_starts_;
    std::vector<Frame> stack_;
    std::size_t last_end_ = 0;
};

}  // namespace

bool parse_with_positions(std::string_view text, const std::string &file, Json &doc, PositionMap &positions,
                          ParseFailure &failure) {
    std::size_t consumed = 0;
    if (std::string error; !check_json_depth(text, error, consumed)) {
        // Where it went over: line and column of that byte.
        std::size_t line = 1, column = 1;
        for (std::size_t i = 0; i < consumed; ++i) {
            column = text[i] == '\n' ? 1 : column + 1;
            line += text[i] == '\n';
        }
        // "nests deeper than ...": the same words as the parse's own check.
        failure = {{file, line, column}, error.starts_with("nests") ? "values nest" + error.substr(5) : "the text " + error};
        return false;
    }
    consumed = 0;
    PositionMap found;
    Recorder recorder(text, file, consumed, found);
    CountingIterator first{text.data(), &consumed};
    CountingIterator last{text.data() + text.size(), &consumed};
    const bool ok = Json::sax_parse(first, last, &recorder);
    if (!ok) {
        failure = recorder.failure;
        if (failure.reason.empty()) {
            failure.where = SourcePosition{file, 1, 1};
            failure.reason = "not a JSON document";
        }
        return false;
    }
    doc = std::move(recorder.root);
    positions = std::move(found);
    return true;
}

SourcePosition position_of(const PositionMap &positions, const std::string &pointer, bool of_key) {
    std::string p = pointer;
    while (true) {
        auto it = positions.find(p);
        if (it != positions.end()) {
            const SourcePosition &where = of_key && it->second.key.line ? it->second.key : it->second.value;
            if (where.line) return where;
        }
        if (p.empty()) return {};
        p.erase(p.rfind('/'));
        of_key = false;
    }
}

}  // namespace qdsim
