// SPDX-License-Identifier: MIT
// Output of the host-interface queuing report.
//
// The report is one sequence of pieces, walked once (hif_report.cpp) and
// rendered by one of two backends:
//   - TextOutput: plain text on standard output (qd_cli_show_queuing_hif);
//   - TypedOutput: the shell's printer with typed arguments
//     (qd_cli_show_queuing_hif_xmlized).
// A piece is written in the text report's own printf form, one Field per
// conversion; the typed backend turns each conversion into the printer's
// %[-][width]s and hands the field over under its attribute ID. Everything in
// which the two reports differ is a method of this interface, so outside of
// it they cannot drift apart.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "output/printer.hpp"
#include "qdcli/observer.h"

namespace qdcli::hif {

// One value of a piece: its attribute ID for the typed report and its value.
struct Field {
    enum class Kind {
        word,     // a 32-bit value; 4 bytes in the typed report
        counter,  // a 64-bit counter of the reply: whole in the text report,
                  // its less significant 32 bits (4 bytes) in the typed report
        wide,     // a 64-bit value kept whole in both reports (8 bytes)
        text,
    };
    std::uint32_t attr = 0;
    Kind kind = Kind::word;
    std::uint64_t number = 0;
    const char *text = nullptr;
};

inline Field word(std::uint32_t attr, std::uint32_t value) { return {attr, Field::Kind::word, value, nullptr}; }
inline Field counter(std::uint32_t attr, std::uint64_t value) { return {attr, Field::Kind::counter, value, nullptr}; }
inline Field wide(std::uint32_t attr, std::uint64_t value) { return {attr, Field::Kind::wide, value, nullptr}; }
inline Field label(std::uint32_t attr, const char *value) { return {attr, Field::Kind::text, 0, value}; }

class HifOutput {
public:
    virtual ~HifOutput() = default;

    // A piece with a fixed format: conversions %[-][width][l|ll|L](d|u|x|s)
    // and %%, one field per conversion, in order.
    virtual void put(const char *format, std::initializer_list<Field> fields = {}) = 0;

    // A text formatted here with values that are not report fields (the
    // interface name, error texts, fixed labels). The text report prints it
    // whole; the typed report formats it into its 80-byte line buffer (at
    // most 79 characters kept) and prints the result as it stands.
    virtual void formatted(const char *format, ...) __attribute__((format(printf, 2, 3))) = 0;

    // A failure or refusal, formatted as formatted() formats it, printed and
    // told to the host's observer with the text printed.
    virtual void fail(qdcli_failure_kind kind, std::int32_t code, const char *format, ...)
        __attribute__((format(printf, 4, 5))) = 0;

    // Tells the host's observer a value that the line does not carry as a
    // field (the control queues' names, the kind of a statistics row).
    static void tell(const Field &field);

    // The overflow word of the five-column port statistics ("  %8s").
    // The typed report pads the word into its argument before printing it
    // with the same padding again.
    virtual void overflow_column(const Field &word) = 0;

    // Hands over what has been printed so far (a flush of the shell's
    // printer); the text report has nothing to hand over.
    virtual void deliver() = 0;
};

class TextOutput final : public HifOutput {
public:
    void put(const char *format, std::initializer_list<Field> fields = {}) override;
    void formatted(const char *format, ...) override __attribute__((format(printf, 2, 3)));
    void fail(qdcli_failure_kind kind, std::int32_t code, const char *format, ...) override
        __attribute__((format(printf, 4, 5)));
    void overflow_column(const Field &word) override;
    void deliver() override {}
};

class TypedOutput final : public HifOutput {
public:
    explicit TypedOutput(cmd_paraminfo *pinfo) : printer_(pinfo) {}
    void put(const char *format, std::initializer_list<Field> fields = {}) override;
    void formatted(const char *format, ...) override __attribute__((format(printf, 2, 3)));
    void fail(qdcli_failure_kind kind, std::int32_t code, const char *format, ...) override
        __attribute__((format(printf, 4, 5)));
    void overflow_column(const Field &word) override;
    void deliver() override { printer_.flush(); }

private:
    Printer printer_;
};

}  // namespace qdcli::hif
