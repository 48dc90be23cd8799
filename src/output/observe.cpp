// SPDX-License-Identifier: MIT
#include "output/observe.hpp"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

// The host's optional operation: a weak reference, null when no host defines it.
extern "C" const qdcli_observer *qdcli_observer_get(void) __attribute__((weak));

namespace qdcli::observe {
namespace {

// The host's observer when it has one of this version; null otherwise.
const qdcli_observer *current() {
    if (qdcli_observer_get == nullptr) return nullptr;
    const qdcli_observer *o = qdcli_observer_get();
    if (o == nullptr || o->version != QDCLI_OBSERVER_VERSION) return nullptr;
    return o;
}

// Whether the observer, by its stated size, has the callback at `offset`.
template <class Callback>
Callback callback(const qdcli_observer *o, Callback qdcli_observer::*member, std::size_t end_offset) {
    if (o == nullptr || o->size < end_offset) return nullptr;
    return o->*member;
}

#define QDCLI_CALLBACK(o, name) \
    callback(o, &qdcli_observer::name, offsetof(qdcli_observer, name) + sizeof(qdcli_observer::name))

}  // namespace

bool active() { return current() != nullptr; }

qdcli_subject interface(std::uint32_t if_index, const char *if_name) {
    qdcli_subject s{};
    s.kind = QDCLI_SUBJECT_INTERFACE;
    s.fields = QDCLI_SUBJECT_HAS_IF_INDEX;
    s.if_index = if_index;
    if (if_name != nullptr) {
        s.fields |= QDCLI_SUBJECT_HAS_IF_NAME;
        s.if_name = if_name;
    }
    return s;
}

qdcli_subject extender(std::uint32_t vaq) {
    qdcli_subject s{};
    s.kind = QDCLI_SUBJECT_EXTENDER;
    s.fields = QDCLI_SUBJECT_HAS_VAQ;
    s.vaq = vaq;
    return s;
}

qdcli_subject asic(std::uint32_t vaq, std::uint32_t asic_index) {
    qdcli_subject s = extender(vaq);
    s.kind = QDCLI_SUBJECT_ASIC;
    s.fields |= QDCLI_SUBJECT_HAS_ASIC;
    s.asic = asic_index;
    return s;
}

void subject_begin(const qdcli_subject &subject) {
    const qdcli_observer *o = current();
    if (const auto f = QDCLI_CALLBACK(o, subject_begin)) f(o->context, &subject);
}

void subject_end(const qdcli_subject &subject) {
    const qdcli_observer *o = current();
    if (const auto f = QDCLI_CALLBACK(o, subject_end)) f(o->context, &subject);
}

void row_begin(const char *table) {
    const qdcli_observer *o = current();
    if (const auto f = QDCLI_CALLBACK(o, row_begin)) f(o->context, table);
}

void row_end(const char *table) {
    const qdcli_observer *o = current();
    if (const auto f = QDCLI_CALLBACK(o, row_end)) f(o->context, table);
}

void value(std::uint32_t attr, const void *bytes, std::uint32_t length) {
    const qdcli_observer *o = current();
    if (const auto f = QDCLI_CALLBACK(o, value)) f(o->context, attr, bytes, length);
}

void failure(qdcli_failure_kind kind, const char *message, std::int32_t code, const qdcli_subject *subject) {
    const qdcli_observer *o = current();
    if (const auto f = QDCLI_CALLBACK(o, failure)) {
        const qdcli_failure record{kind, subject, message, code};
        f(o->context, &record);
    }
}

void fail_on_stdout_v(qdcli_failure_kind kind, std::int32_t code, const char *format, va_list args) {
    va_list again;
    va_copy(again, args);
    const int size = std::vsnprintf(nullptr, 0, format, args);
    std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
    if (size > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    std::fputs(text.c_str(), stdout);
    failure(kind, text.c_str(), code);
}

void fail_on_stdout(qdcli_failure_kind kind, std::int32_t code, const char *format, ...) {
    va_list args;
    va_start(args, format);
    fail_on_stdout_v(kind, code, format, args);
    va_end(args);
}

}  // namespace qdcli::observe
