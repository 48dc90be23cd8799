// SPDX-License-Identifier: MIT
#include "model/json_access.hpp"

#include <algorithm>
#include <cstdlib>

namespace qdsim {
namespace {

// Walks the pointer's tokens in place (no parsed pointer, no copies): this
// runs for every value a service reads. Same answers as the library's JSON
// pointers: a malformed pointer, a bad "~" escape, an index with a leading
// zero or past the end, or "-", finds nothing.
template <class J>
J *find_in(J &base, std::string_view pointer) {
    if (pointer.empty()) return &base;
    if (pointer.front() != '/') return nullptr;
    J *at = &base;
    std::string unescaped;
    std::size_t start = 1;
    while (true) {
        const std::size_t end = std::min(pointer.find('/', start), pointer.size());
        std::string_view token = pointer.substr(start, end - start);
        if (token.find('~') != std::string_view::npos) {
            unescaped.clear();
            for (std::size_t i = 0; i < token.size(); ++i) {
                if (token[i] != '~') {
                    unescaped += token[i];
                } else if (i + 1 < token.size() && (token[i + 1] == '0' || token[i + 1] == '1')) {
                    unescaped += token[++i] == '0' ? '~' : '/';
                } else {
                    return nullptr;
                }
            }
            token = unescaped;
        }
        if (at->is_object()) {
            auto it = at->find(token);
            if (it == at->end()) return nullptr;
            at = &*it;
        } else if (at->is_array()) {
            if (token.empty() || token.size() > 19 || (token.size() > 1 && token[0] == '0')) return nullptr;
            std::size_t index = 0;
            for (char c : token) {
                if (c < '0' || c > '9') return nullptr;
                index = index * 10 + static_cast<std::size_t>(c - '0');
            }
            if (index >= at->size()) return nullptr;
            at = &(*at)[index];
        } else {
            return nullptr;
        }
        if (end == pointer.size()) return at;
        start = end + 1;
    }
}

}  // namespace

const Json *find(const Json &base, std::string_view pointer) { return find_in(base, pointer); }
Json *find(Json &base, std::string_view pointer) { return find_in(base, pointer); }

bool read_unsigned(const Json &value, std::uint64_t &out) {
    if (value.is_number_unsigned()) {
        out = value.get<std::uint64_t>();
        return true;
    }
    if (value.is_number_integer()) {
        const std::int64_t v = value.get<std::int64_t>();
        if (v < 0) return false;
        out = static_cast<std::uint64_t>(v);
        return true;
    }
    if (value.is_string()) {
        const std::string &s = value.get_ref<const std::string &>();
        if (s.size() < 3 || s.size() > 18 || s[0] != '0' || (s[1] != 'x' && s[1] != 'X')) return false;
        char *end = nullptr;
        const unsigned long long v = std::strtoull(s.c_str() + 2, &end, 16);
        if (end == nullptr || *end != '\0') return false;
        out = v;
        return true;
    }
    return false;
}

std::uint64_t get_u64(const Json &base, std::string_view pointer, std::uint64_t fallback) {
    const Json *v = find(base, pointer);
    std::uint64_t out = 0;
    if (v == nullptr) return fallback;
    if (v->is_boolean()) return v->get<bool>() ? 1 : 0;
    return read_unsigned(*v, out) ? out : fallback;
}

std::uint32_t get_u32(const Json &base, std::string_view pointer, std::uint32_t fallback) {
    return static_cast<std::uint32_t>(get_u64(base, pointer, fallback));
}

bool get_bool(const Json &base, std::string_view pointer, bool fallback) {
    const Json *v = find(base, pointer);
    if (v == nullptr) return fallback;
    if (v->is_boolean()) return v->get<bool>();
    if (v->is_number()) return v->get<double>() != 0;
    return fallback;
}

std::string get_string(const Json &base, std::string_view pointer, const std::string &fallback) {
    const Json *v = find(base, pointer);
    return v != nullptr && v->is_string() ? v->get<std::string>() : fallback;
}

void zero_counters(Json &value) {
    if (value.is_object()) {
        for (auto it = value.begin(); it != value.end(); ++it)
            if (it.key() != "rates") zero_counters(it.value());
    } else if (value.is_array()) {
        for (Json &element : value) zero_counters(element);
    } else if (value.is_number_integer()) {
        value = 0u;
    }
}

void zero_counter_blocks(Json &value) {
    if (value.is_object()) {
        for (auto it = value.begin(); it != value.end(); ++it) {
            if (it.key() == "rates") continue;
            if (it.key() == "counters") zero_counters(it.value());
            else zero_counter_blocks(it.value());
        }
    } else if (value.is_array()) {
        for (Json &element : value) zero_counter_blocks(element);
    }
}

std::string index_token(std::size_t index) {
    std::string out = "/";
    out += std::to_string(index);
    return out;
}


}  // namespace qdsim
