// SPDX-License-Identifier: MIT
// The library's contract with its host, recorded: for every seed and every
// committed corpus input of a handler's fuzz target, everything the handler
// wrote on standard output and every printer call it made (format, attribute
// IDs, lengths and value bytes, in order, with the flushes between them).
// The record is compared with the one committed under tests/contract/; any change
// of a byte or of a call fails the test.
//
//   qdcli_contract TARGET RECORD [DIRECTORY...]           compare
//   qdcli_contract --write TARGET RECORD [DIRECTORY...]   (re)write RECORD
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
#include "support/capture_stdout.hpp"

namespace fs = std::filesystem;

namespace {

const qdfuzz::Target *find_target(const std::string &name) {
    for (std::size_t i = 0; i < qdfuzz::kTargetCount; ++i)
        if (name == qdfuzz::kTargets[i].name) return &qdfuzz::kTargets[i];
    return nullptr;
}

qdfuzz::Bytes read_file(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return qdfuzz::Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

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

std::string record(const qdfuzz::Target &target, int count, char **dirs) {
    std::ostringstream out;
    const std::vector<qdfuzz::Bytes> seeds = target.seeds();
    for (std::size_t i = 0; i < seeds.size(); ++i) record_run(target, seeds[i], "seed " + std::to_string(i), out);
    for (int d = 0; d < count; ++d) {
        const fs::path dir(dirs[d]);
        if (!fs::is_directory(dir)) continue;
        std::vector<fs::path> files;
        for (const auto &entry : fs::directory_iterator(dir))
            if (entry.is_regular_file()) files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        for (const fs::path &file : files) record_run(target, read_file(file), file.filename().string(), out);
    }
    return out.str();
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

int usage() {
    std::fputs("usage: qdcli_contract [--write] TARGET RECORD [DIRECTORY...]\n", stderr);
    return 2;
}

}  // namespace

int main(int argc, char **argv) {
    int at = 1;
    const bool write = at < argc && std::string(argv[at]) == "--write";
    if (write) ++at;
    if (argc - at < 2) return usage();
    const qdfuzz::Target *target = find_target(argv[at]);
    if (target == nullptr) {
        std::fprintf(stderr, "no fuzz target named %s\n", argv[at]);
        return 2;
    }
    const fs::path path(argv[at + 1]);
    setenv("QDFUZZ_SHOW_OUTPUT", "1", 1);  // the harness leaves standard output to us
    const std::string now = record(*target, argc - at - 2, argv + at + 2);
    if (write) {
        std::ofstream(path, std::ios::binary) << now;
        return 0;
    }
    std::ifstream in(path, std::ios::binary);
    const std::string recorded((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (recorded == now) return 0;
    std::fprintf(stderr, "%s: output or printer calls differ from %s at %s\n", target->name, path.c_str(),
                 first_difference(recorded, now).c_str());
    return 1;
}
