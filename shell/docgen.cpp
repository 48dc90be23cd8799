// SPDX-License-Identifier: MIT
// qdsh_docgen: writes the qdsh man page and bash completion from the command
// table of the grammar and the option text of `qdsh --help`, and checks the
// command table of a README against the grammar.
//
//   qdsh_docgen man VERSION QDSH OUTPUT     man page (roff)
//   qdsh_docgen bash VERSION QDSH OUTPUT    bash completion script
//   qdsh_docgen check-readme README         exit 1 when the README's command
//                                           table and the grammar differ
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "grammar.hpp"

namespace {

struct Option {
    std::string names;  // "-c, --command COMMAND"
    std::string text;
};

struct Usage {
    std::string description;
    std::vector<Option> options;
    std::string exit_status;
};

bool read_command_output(const std::string &program, std::string &out) {
    const std::string command = "'" + program + "' --help";
    std::FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return false;
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
    return pclose(pipe) == 0;
}

std::string trim(const std::string &s) {
    const std::size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos) return {};
    return s.substr(b, s.find_last_not_of(" \t") - b + 1);
}

// Reads the sections of the --help text: the paragraph after the usage line,
// the option list ("  -x, --name ARG   text", continued by deeper-indented
// lines) and the paragraph that starts with "Exit status:".
Usage parse_usage(const std::string &text) {
    Usage u;
    std::istringstream in(text);
    std::string line;
    enum { start, description, options, other } state = start;
    bool in_exit = false;
    while (std::getline(in, line)) {
        if (line.starts_with("Usage:")) {
            state = description;
            continue;
        }
        if (line == "Options:") {
            state = options;
            continue;
        }
        if (line.starts_with("Exit status:")) {
            state = other;
            in_exit = true;
        }
        if (trim(line).empty()) {
            if (state == options || in_exit) {
                state = other;
                in_exit = false;
            }
            continue;
        }
        if (in_exit) {
            u.exit_status += (u.exit_status.empty() ? "" : " ") + trim(line.substr(line.starts_with("Exit status:") ? 12 : 0));
        } else if (state == description) {
            u.description += (u.description.empty() ? "" : " ") + trim(line);
        } else if (state == options) {
            if (line.starts_with("  -")) {
                const std::size_t gap = line.find("  ", 2);
                Option o;
                o.names = trim(line.substr(0, gap));
                if (gap != std::string::npos) o.text = trim(line.substr(gap));
                u.options.push_back(o);
            } else if (!u.options.empty()) {
                u.options.back().text += " " + trim(line);
            }
        }
    }
    return u;
}

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

// The long and short option names of an option line ("-c, --command COMMAND").
std::vector<std::string> option_names(const Option &o) {
    std::vector<std::string> names;
    std::istringstream in(o.names);
    std::string word;
    while (in >> word) {
        if (word.back() == ',') word.pop_back();
        if (word.starts_with("-")) names.push_back(word.substr(0, word.find('=')));
    }
    return names;
}

bool option_takes_value(const Option &o) {
    std::istringstream in(o.names);
    std::string word, last;
    while (in >> word) last = word;
    return !last.starts_with("-");
}

void write_man(std::ostream &out, const std::string &version, const Usage &u) {
    out << ".\\\" Written by qdsh_docgen from the qdsh command table; do not edit.\n"
        << ".TH QDSH 1 \"\" \"qdsh " << roff(version) << "\" \"User Commands\"\n"
        << ".SH NAME\nqdsh \\- command shell for the queuing daemon's command handlers\n"
        << ".SH SYNOPSIS\n.B qdsh\n[\\fIOPTIONS\\fR]\n"
        << ".SH DESCRIPTION\n" << roff(u.description) << "\n.PP\n"
        << "Words may be shortened while they stay unique (\\fBsh wrr cos\\fR). "
           "\\fB?\\fR lists what may follow the words typed so far; Tab completes "
           "command words and interface names. A line starting with \\fB#\\fR is a comment.\n"
        << ".SH OPTIONS\n";
    for (const Option &o : u.options) out << ".TP\n.B " << roff(o.names) << "\n" << roff(o.text) << "\n";
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
    if (!u.exit_status.empty()) out << ".SH EXIT STATUS\n" << roff(u.exit_status) << "\n";
    out << ".SH ENVIRONMENT\n"
        << ".TP\n.B QDSH_LIBQDCLI\nThe handler library to load when \\fB\\-\\-lib\\fR is not given.\n"
        << ".TP\n.B PAGER\nThe pager for long output on a terminal (default \\fBless \\-FRX\\fR when "
           "less is installed); empty or \\fBcat\\fR turns paging off.\n"
        << ".SH FILES\n.TP\n.I ~/.qdsh_history\nHistory of the interactive prompt.\n"
        << ".SH EXAMPLES\n.nf\n"
        << "qdsh \\-c \"show wrr\\-queue cos\\-map\" \\-c \"sim interfaces\"\n"
        << "qdsh \\-\\-output json \\-c \"show queuing interface ethernet1/1\"\n"
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

void write_bash(std::ostream &out, const std::string &version, const Usage &u) {
    std::string all_options, value_options;
    for (const Option &o : u.options)
        for (const std::string &n : option_names(o)) {
            all_options += (all_options.empty() ? "" : " ") + n;
            if (option_takes_value(o)) value_options += (value_options.empty() ? "" : "|") + n;
        }
    out << "# bash completion of qdsh " << version << ", written by qdsh_docgen from its command table.\n"
        << "# Completes the options, and the command words of a quoted -c argument.\n"
        << "_qdsh_options=" << bash_quote(all_options) << "\n"
        << "_qdsh_commands=(\n";
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
        << R"BASH(
# The words that may follow the command line $1 (the last word, when not
# followed by a blank, is the one being completed), one per line.
_qdsh_next_words() {
  local typed=$1 last=""
  local -a words
  read -ra words <<< "$typed"
  if [[ -n $typed && $typed != *[[:space:]] ]]; then
    last=${words[${#words[@]}-1]}
    unset 'words[${#words[@]}-1]'
  fi
  local pattern e i ok
  local -a elems
  local -A seen=()
  for pattern in "${_qdsh_commands[@]}"; do
    read -ra elems <<< "$pattern"
    ok=1
    for ((i = 0; i < ${#words[@]}; i++)); do
      (( i < ${#elems[@]} )) || { ok=0; break; }
      e=${elems[i]}
      [[ $e == *'*' ]] && { ok=2; break; }
      [[ $e == [A-Z]* ]] && continue
      [[ $e == "${words[i]}"* ]] || { ok=0; break; }
    done
    (( ok == 1 && ${#words[@]} < ${#elems[@]} )) || continue
    e=${elems[${#words[@]}]}
    [[ $e == [A-Z]* || $e != "$last"* || -n ${seen[$e]:-} ]] && continue
    seen[$e]=1
    printf '%s\n' "$e"
  done
}

_qdsh() {
  local cur=$2 prev=$3
  COMPREPLY=()
  case $prev in
    -c|--command)
      local prefix="" word
      [[ $cur == *[[:space:]]* ]] && prefix="${cur% *} "
      while IFS= read -r word; do
        COMPREPLY+=("$prefix$word")
      done < <(_qdsh_next_words "$cur")
      compopt -o nospace 2>/dev/null
      return 0 ;;
    --output)
      mapfile -t COMPREPLY < <(compgen -W "text json xml" -- "$cur")
      return 0 ;;
)BASH";
    out << "    " << (value_options.empty() ? "--scenario|--lib" : value_options) << ")\n"
        << R"BASH(      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$cur")
      return 0 ;;
  esac
  if [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$_qdsh_options" -- "$cur")
  fi
  return 0
}
complete -F _qdsh qdsh
)BASH";
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
                const std::string alternative = trim(inner.substr(from, comma - from));
                for (const std::string &f : forms) next.push_back(append(f, alternative));
                from = comma + 1;
            }
            i = close == std::string::npos ? text.size() : close + 1;
        } else if (text[i] == '[') {
            const std::size_t close = text.find(']', i);
            const std::string inner = trim(text.substr(i + 1, close - i - 1));
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
    if ((what == "man" || what == "bash") && argc == 5) {
        std::string help;
        if (!read_command_output(argv[3], help)) {
            std::cerr << "qdsh_docgen: " << argv[3] << " --help failed\n";
            return 1;
        }
        const Usage usage = parse_usage(help);
        if (usage.options.empty()) {
            std::cerr << "qdsh_docgen: no options in the output of " << argv[3] << " --help\n";
            return 1;
        }
        std::ofstream out(argv[4]);
        if (what == "man")
            write_man(out, argv[2], usage);
        else
            write_bash(out, argv[2], usage);
        out.close();
        if (!out) {
            std::cerr << "qdsh_docgen: cannot write " << argv[4] << "\n";
            return 1;
        }
        return 0;
    }
    std::cerr << "usage: qdsh_docgen man|bash VERSION QDSH OUTPUT | check-readme README\n";
    return 2;
}
