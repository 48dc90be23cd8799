// SPDX-License-Identifier: MIT
// qdsh_docgen: writes the qdsh man page and bash completion from the command
// table of the grammar and the option table of shell/cli/options.hpp, and checks the
// command table of a README against the grammar.
//
//   qdsh_docgen man VERSION OUTPUT          man page (roff)
//   qdsh_docgen bash VERSION OUTPUT FUNCTIONS  bash completion script: the
//                                           tables, then FUNCTIONS (the
//                                           script's functions) after its header
//   qdsh_docgen check-readme README         exit 1 when the README's command
//                                           table and the grammar differ
#include <algorithm>
#include <cctype>
#include <optional>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cli/grammar.hpp"
#include "cli/options.hpp"

namespace {

// Text for roff: backslashes and hyphens escaped, no line starting a request.
std::string roff(const std::string &s) {
    std::string out;
    for (char c : s) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
    }
    if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out.insert(0, "\\&");
    return out;
}

// A form of the command line for the SYNOPSIS: literal words and options
// bold, placeholders (upper case) italic, brackets and bars plain.
std::string synopsis_words(std::string_view words) {
    std::string out;
    std::size_t i = 0;
    while (i < words.size()) {
        const std::size_t end = words.find_first_of(" []|", i);
        if (end == i) {
            out += words[i++];
            continue;
        }
        const std::string_view token = words.substr(i, end == std::string_view::npos ? std::string_view::npos : end - i);
        i += token.size();
        std::string_view dots;
        std::string_view core = token;
        if (core.ends_with("...")) {
            dots = "...";
            core.remove_suffix(3);
        }
        const bool placeholder = std::any_of(core.begin(), core.end(), [](char c) { return std::isupper(static_cast<unsigned char>(c)); }) &&
                                 std::none_of(core.begin(), core.end(), [](char c) { return std::islower(static_cast<unsigned char>(c)); });
        out += (placeholder ? "\\fI" : "\\fB") + roff(std::string(core)) + "\\fR" + std::string(dots);
    }
    return out;
}

void write_options(std::ostream &out, qdsh::cli::Scope scope) {
    for (const qdsh::cli::Option &o : qdsh::cli::options())
        if (o.scope == scope) out << ".TP\n.B " << roff(o.names()) << "\n" << roff(std::string(o.help)) << "\n";
}

void write_man(std::ostream &out, const std::string &version) {
    using qdsh::cli::Scope;
    out << ".\\\" Written by qdsh_docgen from the qdsh command and option tables; do not edit.\n"
        << ".TH QDSH 1 \"\" \"qdsh " << roff(version) << "\" \"User Commands\"\n"
        << ".SH NAME\nqdsh \\- command shell for the queuing daemon's command handlers\n"
        << ".SH SYNOPSIS\n";
    bool first = true;
    for (const qdsh::cli::Form &f : qdsh::cli::forms()) {
        out << (first ? "" : ".br\n") << ".B qdsh\n" << synopsis_words(f.words) << "\n";
        first = false;
    }
    out << ".SH DESCRIPTION\n" << roff(std::string(qdsh::cli::kDescription)) << "\n.PP\n"
        << roff(std::string(qdsh::cli::kPromptHelp)) << "\n.PP\nThe forms of the command line:\n";
    for (const qdsh::cli::Form &f : qdsh::cli::forms())
        out << ".TP\n\\fBqdsh\\fR " << synopsis_words(f.words) << "\n" << roff(std::string(f.help)) << "\n";
    out << ".SH OPTIONS\n";
    write_options(out, Scope::main);
    out << ".SS Options of watch\nThey follow the word \\fBwatch\\fR, on the command line or at the prompt. "
           "On a terminal watch takes the screen and refreshes it in place; \\fBq\\fR or Ctrl\\-C ends it.\n";
    write_options(out, Scope::watch);
    out << ".SS Options of serve\n";
    write_options(out, Scope::serve);
    out << ".SH COMMANDS\n";
    std::vector<std::string> params;
    for (const qdsh::Command &c : qdsh::commands()) {
        out << ".TP\n.B " << roff(std::string(c.pattern)) << "\n" << roff(std::string(c.help)) << "\n";
        for (const qdsh::Element &e : c.elements) {
            const std::string name(e.text);
            if (!e.is_word && std::find(params.begin(), params.end(), name) == params.end()) params.push_back(name);
        }
    }
    for (const qdsh::LineForm &f : qdsh::line_forms())
        out << ".TP\n.B " << roff(std::string(f.pattern)) << "\n" << roff(std::string(f.help)) << "\n";
    out << ".SH PARAMETERS\n";
    for (const std::string &p : params)
        out << ".TP\n.I " << roff(p) << "\n" << roff(std::string(qdsh::param_help(p))) << "\n";
    out << ".SH EXIT STATUS\n";
    for (const qdsh::cli::ExitStatus &e : qdsh::cli::exit_statuses())
        out << ".TP\n.B " << e.code << "\n" << roff(std::string(e.meaning)) << "\n";
    out << ".SH ENVIRONMENT\n"
        << ".TP\n.B QDSH_LIBQDCLI\nThe handler library to load when \\fB\\-\\-lib\\fR is not given.\n"
        << ".TP\n.B PAGER\nThe pager for long output on a terminal (default \\fBless \\-FRX\\fR when "
           "less is installed); empty or \\fBcat\\fR turns paging off. Watch is never paged.\n"
        << ".SH FILES\n.TP\n.I ~/.qdsh_history\nHistory of the interactive prompt.\n"
        << ".SH EXAMPLES\n.nf\n"
        << "qdsh \\-c \"show wrr\\-queue cos\\-map\" \\-c \"sim interfaces\"\n"
        << "qdsh \\-\\-output json \\-c \"show queuing interface ethernet1/1\"\n"
        << "qdsh watch \\-n 5 \\-\\-nonzero show queuing interface eth1/1\\-48\n"
        << "echo \"show vaq no\\-credit\\-drops\" | qdsh\n.fi\n";
}

std::string bash_quote(std::string_view s) {
    std::string out = "'";
    for (char c : s) {
        if (c == '\'')
            out += "'\\''";
        else
            out += c;
    }
    return out + "'";
}

// The names of the options of `scope`, blank-separated; with `kind`, only
// those whose value is of that kind.
std::string option_names(qdsh::cli::Scope scope, std::optional<qdsh::cli::Value> kind = std::nullopt,
                         std::string_view separator = " ") {
    std::string out;
    for (const qdsh::cli::Option &o : qdsh::cli::options()) {
        if (o.scope != scope || (kind && o.value != *kind)) continue;
        for (const std::string_view n : {o.short_name, o.long_name})
            if (!n.empty()) out += (out.empty() ? "" : std::string(separator)) + std::string(n);
    }
    return out;
}

void write_bash(std::ostream &out, const std::string &version, const std::string &functions) {
    using qdsh::cli::Scope;
    using qdsh::cli::Value;
    out << "# bash completion of qdsh " << version << ", written by qdsh_docgen from its command and option tables.\n"
        << "# Completes the options and their values, watch and serve, and the command words of a\n"
        << "# -c argument (inside its quotes too) or of a watched command.\n";
    for (const auto &[scope, name] : {std::pair{Scope::main, "main"}, std::pair{Scope::watch, "watch"}, std::pair{Scope::serve, "serve"}}) {
        out << "_qdsh_" << name << "_options=" << bash_quote(option_names(scope)) << "\n"
            << "_qdsh_" << name << "_flags=" << bash_quote(" " + option_names(scope, Value::none) + " ") << "\n";
    }
    out << "_qdsh_commands=(\n";
    for (const qdsh::Command &c : qdsh::commands()) {
        std::string pattern;
        for (const qdsh::Element &e : c.elements) {
            if (!pattern.empty()) pattern += ' ';
            // A parameter that takes the rest of the line ends in "*".
            pattern += std::string(e.text) + (e.greedy() ? "*" : "");
        }
        out << "  " << bash_quote(pattern) << "\n";
    }
    out << ")\n"
        << "\n# The reply for the value of option $1 ($2: the value typed so far).\n"
        << "_qdsh_value() {\n"
        << "  case $1 in\n";
    // Values, from the table: choices, files, commands; numbers and
    // addresses have nothing to offer.
    for (const qdsh::cli::Option &o : qdsh::cli::options()) {
        if (o.value != Value::choice) continue;
        std::string names;
        for (const std::string_view n : {o.short_name, o.long_name})
            if (!n.empty()) names += (names.empty() ? "" : "|") + std::string(n);
        out << "    " << names << ") mapfile -t COMPREPLY < <(compgen -W " << bash_quote(o.choices)
            << " -- \"$2\") ;;\n";
    }
    std::string files;
    for (const Scope scope : {Scope::main, Scope::watch, Scope::serve}) {
        const std::string f = option_names(scope, Value::file, "|");
        if (!f.empty()) files += (files.empty() ? "" : "|") + f;
    }
    out << "    " << files << ")\n"
        << "      compopt -o filenames 2>/dev/null\n"
        << "      mapfile -t COMPREPLY < <(compgen -f -- \"$2\") ;;\n"
        << "    " << option_names(Scope::main, Value::command, "|") << ") _qdsh_complete_command \"$2\" \"${COMP_WORDS[COMP_CWORD]}\" ;;\n"
        << "    *) COMPREPLY=() ;;\n"
        << "  esac\n"
        << "}\n"
        << functions;
}

// The forms a README cell stands for: "[no] x [y Z]" is "x", "no x", "x y Z"
// and "no x y Z"; "x {a,b C}" is "x a" and "x b C". "\|" is a "|" (escaped
// in a Markdown table).
std::vector<std::string> expand(const std::string &text) {
    std::vector<std::string> forms = {""};
    std::size_t i = 0;
    auto append = [](std::string base, const std::string &piece) {
        if (piece.empty()) return base;
        return base.empty() ? piece : base + " " + piece;
    };
    while (i < text.size()) {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        std::vector<std::string> next;
        if (text[i] == '{') {
            // {a,b c}: one of the alternatives.
            const std::size_t close = text.find('}', i);
            const std::string inner = text.substr(i + 1, close - i - 1);
            std::size_t from = 0;
            while (from <= inner.size()) {
                std::size_t comma = inner.find(',', from);
                if (comma == std::string::npos) comma = inner.size();
                const std::string alternative = qdsh::trim(inner.substr(from, comma - from));
                for (const std::string &f : forms) next.push_back(append(f, alternative));
                from = comma + 1;
            }
            i = close == std::string::npos ? text.size() : close + 1;
        } else if (text[i] == '[') {
            const std::size_t close = text.find(']', i);
            const std::string inner = qdsh::trim(text.substr(i + 1, close - i - 1));
            for (const std::string &f : forms) {
                next.push_back(f);
                next.push_back(append(f, inner));
            }
            i = close == std::string::npos ? text.size() : close + 1;
        } else {
            std::size_t end = text.find_first_of(" [{", i);
            if (end == std::string::npos) end = text.size();
            const std::string word = text.substr(i, end - i);
            for (const std::string &f : forms) next.push_back(append(f, word));
            i = end;
        }
        forms = next;
    }
    return forms;
}

// Reads the first cells of the table whose header starts "| Command |".
int check_readme(const std::string &path) {
    std::ifstream in(path);
    if (!in) {
        std::cerr << "qdsh_docgen: cannot read " << path << "\n";
        return 2;
    }
    std::set<std::string> grammar;
    for (const qdsh::Command &c : qdsh::commands()) grammar.insert(std::string(c.pattern));
    std::set<std::string> listed;
    std::string line;
    bool in_table = false;
    int faults = 0;
    while (std::getline(in, line)) {
        if (line.starts_with("| Command |")) {
            in_table = true;
            continue;
        }
        if (!in_table) continue;
        if (!line.starts_with("|")) break;
        if (line.starts_with("|---")) continue;
        std::string cell;
        for (std::size_t k = 1; k < line.size() && line[k] != '|'; ++k) {
            if (line[k] == '\\' && k + 1 < line.size() && line[k + 1] == '|') ++k;
            cell += line[k];
        }
        for (std::size_t b = cell.find('`'); b != std::string::npos; b = cell.find('`', b)) {
            const std::size_t e = cell.find('`', b + 1);
            if (e == std::string::npos) break;
            for (const std::string &form : expand(cell.substr(b + 1, e - b - 1))) {
                if (!grammar.count(form)) {
                    std::cerr << path << ": `" << form << "` is not a command of qdsh\n";
                    ++faults;
                }
                listed.insert(form);
            }
            b = e + 1;
        }
    }
    if (listed.empty()) {
        std::cerr << path << ": no \"| Command |\" table\n";
        return 1;
    }
    for (const std::string &p : grammar)
        if (!listed.count(p)) {
            std::cerr << path << ": the command `" << p << "` is missing from the table\n";
            ++faults;
        }
    return faults == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    if (what == "check-readme" && argc == 3) return check_readme(argv[2]);
    if ((what == "man" && argc == 4) || (what == "bash" && argc == 5)) {
        std::string functions;
        if (what == "bash") {
            std::ifstream in(argv[4]);
            std::stringstream text;
            text << in.rdbuf();
            functions = text.str();
            functions.erase(0, functions.find("\n\n") + 1);  // its header
            if (!in || functions.empty()) {
                std::cerr << "qdsh_docgen: cannot read " << argv[4] << "\n";
                return 1;
            }
        }
        std::ofstream out(argv[3]);
        if (what == "man")
            write_man(out, argv[2]);
        else
            write_bash(out, argv[2], functions);
        out.close();
        if (!out) {
            std::cerr << "qdsh_docgen: cannot write " << argv[3] << "\n";
            return 1;
        }
        return 0;
    }
    std::cerr << "usage: qdsh_docgen man VERSION OUTPUT | bash VERSION OUTPUT FUNCTIONS | check-readme README\n";
    return 2;
}
