// SPDX-License-Identifier: MIT
// Typed events for a host that asked for them (qdcli/observer.h). Each call
// asks the host's optional qdcli_observer_get() and tells the answer, if any;
// nothing is kept between calls. Without an observer each call is one test of
// a weak symbol.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstring>

#include "qdcli/observer.h"

namespace qdcli::observe {

// Whether the host offers an observer now (for work done only to tell it).
bool active();

qdcli_subject interface(std::uint32_t if_index, const char *if_name = nullptr);
qdcli_subject extender(std::uint32_t vaq);
qdcli_subject asic(std::uint32_t vaq, std::uint32_t asic);

void subject_begin(const qdcli_subject &subject);
void subject_end(const qdcli_subject &subject);
void row_begin(const char *table);
void row_end(const char *table);
void value(std::uint32_t attr, const void *bytes, std::uint32_t length);
inline void u32(std::uint32_t attr, std::uint32_t v) { value(attr, &v, 4); }
inline void u64(std::uint32_t attr, std::uint64_t v) { value(attr, &v, 8); }
inline void text(std::uint32_t attr, const char *t) {
    if (t == nullptr) t = "";
    value(attr, t, static_cast<std::uint32_t>(std::strlen(t) + 1));
}
// `message` is the text as printed; null when nothing was printed.
void failure(qdcli_failure_kind kind, const char *message, std::int32_t code = 0,
             const qdcli_subject *subject = nullptr);

// A failure or refusal printed to standard output: the formatted text is
// written as printf would write it and told with that text.
void fail_on_stdout(qdcli_failure_kind kind, std::int32_t code, const char *format, ...)
    __attribute__((format(printf, 3, 4)));
void fail_on_stdout_v(qdcli_failure_kind kind, std::int32_t code, const char *format, va_list args)
    __attribute__((format(printf, 3, 0)));

// The subject of a handler's work, from its construction to its end.
class Subject {
public:
    explicit Subject(const qdcli_subject &subject) : subject_(subject) { subject_begin(subject_); }
    ~Subject() { subject_end(subject_); }
    Subject(const Subject &) = delete;
    Subject &operator=(const Subject &) = delete;
    const qdcli_subject *get() const { return &subject_; }

private:
    qdcli_subject subject_;
};

// One row of `table`, from its construction to its end.
class Row {
public:
    explicit Row(const char *table) : table_(table) { row_begin(table_); }
    ~Row() { row_end(table_); }
    Row(const Row &) = delete;
    Row &operator=(const Row &) = delete;

private:
    const char *table_;
};

}  // namespace qdcli::observe
