// SPDX-License-Identifier: MIT
// Control interface of the simulated switch platform (libqdsim.so).
//
// libqdsim.so defines every platform operation that libqdcli.so calls; this
// header is what a host (qdsh, tests) uses to load a switch, drive it and
// look inside it. Owned by the simulator; extended additively.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qdcli/observer.h"
#include "qdcli/platform.h"

namespace qdsim {

// A scenario refused while loading: where, and why.
struct ScenarioError {
    std::string file;  // "<default>/FRAGMENT" for the embedded scenario, "state" for set_state_value
    std::size_t line = 0;    // 0 when the fault has no position (a file that cannot be read)
    std::size_t column = 0;
    std::string reason;      // with the JSON pointer of the value at fault, where there is one
    std::string message() const;  // "FILE:LINE:COLUMN: REASON", or "FILE: REASON" without a position
};

// Loads a scenario file, replacing the current switch. On error the current
// switch is kept and `error` says what was wrong.
bool load_scenario_file(const std::string &path, ScenarioError &error);
// Loads a scenario from text (`name` is used in error messages; a relative
// "extends" is read from the current directory).
bool load_scenario_text(const std::string &text, const std::string &name, ScenarioError &error);
// Loads the embedded default chassis.
void load_default_scenario();

// Where printer output and stdout-free text go (default: standard output).
void set_output_sink(std::function<void(const std::string &)> sink);

// One interface of the switch, as the shell sees it.
struct InterfaceInfo {
    std::uint32_t if_index = 0;
    std::uint8_t type = 0;       // 26 Ethernet, 1 front-panel alternate, 31 host interface
    bool sub_intf = false;
    std::string name;            // canonical name, e.g. "Ethernet1/1"
};
std::vector<InterfaceInfo> interfaces();
// Resolves a user's spelling of an interface name ("eth1/1", "Ethernet1/1",
// "E1/1", case-insensitive) to its index.
std::optional<std::uint32_t> find_interface(const std::string &spelling);

// A new transport handle for one command; the shell puts it in
// cmd_paraminfo.mts_handle.
std::uint32_t open_command();
// Ends the command: advances the simulated clock by one tick (counters grow
// by their rates) and checks the handle's message ledger.
void close_command(std::uint32_t mts_handle);

// Messages alive in the router (sent or received and not yet released).
std::size_t live_messages();

// Request attributes for the next handler call (cmd_req_attr_getnext).
struct Attribute {
    std::uint32_t id = 0;
    std::vector<std::uint8_t> value;
};
void set_request_attributes(std::vector<Attribute> attributes);

// One flush of the shell printer as the handler printed it: the text it
// renders to and every typed value in order (attribute and bytes). With a
// flush sink set, each flush goes to it instead of being rendered for the
// output sink; a host builds its own structured output from it. Null
// restores rendering.
struct PrinterFlush {
    std::string text;
    std::vector<Attribute> values;
};
void set_flush_sink(std::function<void(const PrinterFlush &)> sink);

// Text for a terminal: valid UTF-8 passes, every control character (C0
// but newline and tab, DEL, the C1 range U+0080-U+009F) and every byte that
// is not part of valid UTF-8 becomes \xNN, so no input can drive the
// terminal. Printable ASCII is byte for byte as it was.
std::string terminal_safe(std::string_view text);

// The observer that the platform's qdcli_observer_get() hands the handler
// library (qdcli/observer.h): the handlers tell it their subjects, rows,
// values and failures while they print. Null (the default): no events. The
// record must live until it is replaced.
void set_observer(const qdcli_observer *observer);

// Runs a shell command line on behalf of vsh_system2; the shell installs it.
// Returns the command's status.
void set_command_runner(std::function<int(const std::string &)> runner);

// State of the model as JSON (pretty-printed), and changes to it:
// `path` is a JSON pointer into that document, `value` a JSON text.
std::string dump_state_json();
bool set_state_value(const std::string &path, const std::string &value, std::string &error);

// Fills the response record so that cmd_rsp_attr_getnext walks the daemon's
// switch-wide attribute stream, produced from the model at this moment;
// word 8 of the record gets the command's transport handle.
void open_switch_stream(cmd_rsp *rsp, std::uint32_t mts_handle);

// Releases every system resource the simulator created (shared memory).
void shutdown();

// Reads the value at a JSON pointer of the state document (pretty JSON).
bool get_state_value(const std::string &path, std::string &value, std::string &error);

// The simulated clock: close_command advances it by one tick; a host may
// advance it further. Every counter with a rate grows by rate x ticks.
void advance_clock(std::uint64_t ticks = 1);
std::uint64_t clock_ticks();

// How the clock advances. per_command (the default): one tick when a
// command that does not clear counters ends. real_time: one tick per whole
// second of the host's monotonic clock since the mode was chosen, applied
// when a command opens, so a rate reads per second (watch mode). host: only
// advance_clock moves it (a host that drives time itself, tests).
enum class ClockMode { per_command, real_time, host };
void set_clock_mode(ClockMode mode);

// What close_command would report for a handle so far (messages released
// twice, never released, replies never received), without closing it.
std::vector<std::string> check_ledger(std::uint32_t mts_handle);

// The switch's complaints about how it was used (also written to standard
// error as they happen), since the last call.
std::vector<std::string> take_diagnostics();
// Whether diagnostics are also written to standard error (on by default).
void set_diagnostics_echo(bool echo);

// Runs a command line with the platform's own commands (what vsh_system2
// does when no runner is installed); a runner may hand lines it does not
// know to this. Returns the command's status (non-zero when unknown).
int run_platform_command(const std::string &line);

// The platform type of the current model, and the first non-zero type the
// platform-type query answered in this process (0 before any). A handler
// library caches the first non-zero answer for its lifetime, so a host that
// changes the type after it was told should say that the library keeps the
// old one.
std::int32_t platform_type();
std::int32_t platform_type_told();

}  // namespace qdsim
