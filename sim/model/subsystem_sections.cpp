// SPDX-License-Identifier: MIT
// Names of the sections that the services of the reports keep in the
// model, reserved here so that a scenario may already hold their data.
// Each service registers its checker for its section in its own file
// (register_section or SectionRegistrar with the same scope and name); the
// layouts recommended for them are in sim/README.md ("Section layouts").
#include "model/sections.hpp"

namespace qdsim {
namespace {

const SectionRegistrar ethernet_queuing{Scope::ethernet, "queuing"};    // daemon command 17
const SectionRegistrar ethernet_extended{Scope::ethernet, "extended"};  // daemon command 23
const SectionRegistrar ethernet_pause{Scope::ethernet, "pause"};        // onboard pause-event log
const SectionRegistrar host_queuing{Scope::host, "hif_queuing"};        // agent sub-command 16
const SectionRegistrar extender_ports{Scope::extender, "internal_ports"};  // agent sub-command 23
const SectionRegistrar extender_drops{Scope::extender, "vaq_drops"};       // agent sub-command 27
const SectionRegistrar onboard_log{Scope::root, "onboard_log"};            // onboard log service (sse_call2 1128)

}  // namespace
}  // namespace qdsim
