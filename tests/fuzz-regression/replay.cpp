// Replay of fuzz inputs through the fuzz targets' own entry functions.
//
//   qdcli_fuzz_replay <target> [directory...]  seeds, then every file of each directory
//   qdcli_fuzz_replay --check-dirs <directory> every subdirectory names a target
//   qdcli_fuzz_replay --contract [--write] <target> <record> [directory...]
//
// An input whose run leaves the message ledger unhappy aborts the replay
// with the ledger's findings and the input's name.
//
// The contract is the library's with its host, recorded: for every input of
// a handler's target, everything the handler wrote on standard output and
// every printer call it made (format, attribute IDs, lengths and value
// bytes, in order, with the flushes between them). The record is compared
// with the one committed under tests/contract/; any change of a byte or of a
// call fails the test (--write records anew, after a deliberate change).
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "harness/registry.hpp"
#include "inputs.hpp"
#include "support/capture_stdout.hpp"

namespace fs = std::filesystem;

namespace {

void run(const qdfuzz::Target &target, const qdfuzz::Bytes &input, const std::string &label) {
    qdfuzz::set_input_label(label);
    target.run(input.data(), input.size());
}

// Calls `visit` with each input of a target: its seeds, then the files of
// each directory in name order.
template <class Visit>
std::size_t for_each_input(const qdfuzz::Target &target, int count, char **dirs, Visit &&visit) {
    const std::vector<qdfuzz::Bytes> seeds = target.seeds();
    for (std::size_t i = 0; i < seeds.size(); ++i) visit(seeds[i], "seed " + std::to_string(i));
    return seeds.size() + fuzzreplay::for_each_file<qdfuzz::Bytes>(count, dirs, visit);
}

int replay(const qdfuzz::Target &target, int count, char **dirs) {
    const std::size_t inputs = for_each_input(target, count, dirs, [&](const qdfuzz::Bytes &input, const std::string &name) {
        run(target, input, std::string(target.name) + " " + name);
    });
    std::fprintf(stderr, "%s: %zu inputs replayed\n", target.name, inputs);
    return 0;
}

// ---- the recorded contract ----

// Text with every byte outside printable ASCII (and the backslash and
// quote) written as an escape, so that the record is one line per item.
std::string escaped(const std::string &text) {
    std::string out;
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\\' || c == '"') {
            out += '\\';
            out += ch;
        } else if (c < 0x20 || c >= 0x7f) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", c);
            out += hex;
        } else {
            out += ch;
        }
    }
    return out;
}

std::string hex_bytes(const qdtest::Bytes &bytes) {
    std::string out;
    char hex[3];
    for (const std::uint8_t b : bytes) {
        std::snprintf(hex, sizeof hex, "%02x", b);
        out += hex;
    }
    return out;
}

void record_run(const qdfuzz::Target &target, const qdfuzz::Bytes &input, const std::string &label,
                std::ostringstream &out) {
    qdfuzz::set_input_label(label);
    const std::string printed = testsupport::capture_stdout([&] { target.run(input.data(), input.size()); });
    const qdtest::Platform &pf = qdtest::platform();
    out << "== " << label << '\n';
    if (!printed.empty()) out << "stdout \"" << escaped(printed) << "\"\n";
    std::size_t flushes = 0;
    for (const qdtest::PrinterCall &call : pf.printer_calls) {
        for (; flushes < call.flushes_before; ++flushes) out << "flush\n";
        out << "prt \"" << escaped(call.format) << '"';
        for (const qdtest::PrinterArg &arg : call.args) {
            char id[16];
            std::snprintf(id, sizeof id, "%08x", arg.attr);
            out << ' ' << id << '/' << arg.length << '=' << hex_bytes(arg.value);
        }
        out << '\n';
    }
    for (; flushes < pf.flushes; ++flushes) out << "flush\n";
}


// The first line where two records part, for the failure message.
std::string first_difference(const std::string &expected, const std::string &actual) {
    std::istringstream a(expected), b(actual);
    std::string la, lb;
    for (std::size_t line = 1;; ++line) {
        const bool more_a = static_cast<bool>(std::getline(a, la));
        const bool more_b = static_cast<bool>(std::getline(b, lb));
        if (!more_a && !more_b) return "(none)";
        if (!more_a || !more_b || la != lb)
            return "line " + std::to_string(line) + "\n  recorded: " + (more_a ? la : "(end)") +
                   "\n  now:      " + (more_b ? lb : "(end)");
    }
}

// Records the target's inputs and compares the record with RECORD (or
// writes it there).
int contract(const qdfuzz::Target &target, const fs::path &path, bool write, int count, char **dirs) {
    setenv("QDFUZZ_SHOW_OUTPUT", "1", 1);  // the harness leaves standard output to us
    std::ostringstream record;
    for_each_input(target, count, dirs,
                   [&](const qdfuzz::Bytes &input, const std::string &name) { record_run(target, input, name, record); });
    const std::string now = record.str();
    if (write) {
        std::ofstream(path, std::ios::binary) << now;
        return 0;
    }
    std::ifstream in(path, std::ios::binary);
    const std::string recorded((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (recorded == now) return 0;
    std::fprintf(stderr, "%s: output or printer calls differ from %s at %s\n", target.name, path.c_str(),
                 first_difference(recorded, now).c_str());
    return 1;
}

int check_dirs(const fs::path &root) {
    int unknown = 0;
    for (const auto &entry : fs::directory_iterator(root)) {
        if (!entry.is_directory() || qdfuzz::find_target(entry.path().filename().string()) != nullptr) continue;
        std::fprintf(stderr, "%s: no fuzz target of that name\n", entry.path().string().c_str());
        ++unknown;
    }
    return unknown == 0 ? 0 : 1;
}

int usage() {
    std::fputs("usage: qdcli_fuzz_replay <target> [directory...] | --check-dirs <directory>\n"
               "       qdcli_fuzz_replay --contract [--write] <target> <record> [directory...]\n",
               stderr);
    return 2;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 2) return usage();
    const std::string first = argv[1];
    if (first == "--check-dirs") return argc == 3 ? check_dirs(argv[2]) : usage();
    if (first == "--contract") {
        const bool write = argc > 2 && std::string(argv[2]) == "--write";
        const int at = write ? 3 : 2;
        const qdfuzz::Target *target = argc > at + 1 ? qdfuzz::find_target(argv[at]) : nullptr;
        return target != nullptr ? contract(*target, argv[at + 1], write, argc - at - 2, argv + at + 2) : usage();
    }
    const qdfuzz::Target *target = qdfuzz::find_target(first);
    if (target == nullptr) {
        std::fprintf(stderr, "no fuzz target named %s\n", first.c_str());
        return 2;
    }
    return replay(*target, argc - 2, argv + 2);
}
