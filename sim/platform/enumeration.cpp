// SPDX-License-Identifier: MIT
// Interface enumeration.
//
// The range record, the argument record and the parameter-info copy are
// the platform's; populate_param_arg stores the pass's type mask in the
// argument record, and invoke_enumeration_function finds it through the
// copy. Each bit of the mask selects a kind of interface:
//
//   0x0000000000000001  interfaces of other kinds (types other than 26, 1, 31)
//   0x4000000000000000  Ethernet interfaces of type 1
//   0x0000000000800000  Ethernet interfaces of type 26
//   0x0000000010000000  host interfaces (type 31)
//
// Sub-interfaces are never enumerated, so the four passes of the library
// report every Ethernet and host interface once. The indexes of a pass are
// in ascending order (slot then port; extender then port). Other bits
// select nothing. The array is allocated with malloc, also for no index,
// and belongs to the caller.
#include <cstdlib>
#include <cstring>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"
#include "model/model.hpp"
#include "qdcli/platform.h"

using namespace qdsim;

namespace {

constexpr std::uint32_t kRangeMagic = 0x52414e47u;  // word 0 of a range record we filled
constexpr std::uint32_t kArgMagic = 0x45415247u;    // in an argument record we filled
constexpr std::uint32_t kEnumParamType = 2060;
constexpr std::uint32_t kEnumParamId = 0x40200002u;

constexpr std::uint64_t kOtherKinds = 0x0000000000000001ull;
constexpr std::uint64_t kEthernetType1 = 0x4000000000000000ull;
constexpr std::uint64_t kEthernetType26 = 0x0000000000800000ull;
constexpr std::uint64_t kHostInterfaces = 0x0000000010000000ull;

// Layout of our fields in the argument record's platform bytes.
struct ArgFields {
    std::uint32_t a;
    std::uint32_t magic;      // platform0
    std::uint32_t mask_low;   // platform1 from here
    std::uint32_t mask_high;
    if_range *range;
};

bool selected(const Interface &i, std::uint64_t mask) {
    if (i.sub_intf) return false;
    switch (i.kind) {
    case InterfaceKind::other: return mask & kOtherKinds;
    case InterfaceKind::host: return mask & kHostInterfaces;
    case InterfaceKind::ethernet: return mask & (i.type == 1 ? kEthernetType1 : kEthernetType26);
    }
    return false;
}

bool read_arg(const cmd_param_arg *arg, ArgFields &fields) {
    if (arg == nullptr || arg->param_type != kEnumParamType || arg->param_id != kEnumParamId) return false;
    std::memcpy(&fields.a, arg->platform0, 4);
    std::memcpy(&fields.magic, arg->platform0 + 4, 4);
    std::memcpy(&fields.mask_low, arg->platform1, 4);
    std::memcpy(&fields.mask_high, arg->platform1 + 4, 4);
    std::memcpy(&fields.range, arg->platform1 + 8, sizeof fields.range);
    return fields.magic == kArgMagic;
}

}  // namespace

extern "C" {

std::int32_t populate_intf_range(if_range *range, std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    SwitchLock lock(switch_mutex());
    if (range == nullptr) return kErrBadArgument;
    std::memset(range, 0, sizeof *range);
    range->word0 = kRangeMagic;
    range->word1 = static_cast<std::uint32_t>(current_model().interfaces().size());
    std::memcpy(range->platform, &a, 4);
    std::memcpy(range->platform + 4, &b, 4);
    std::memcpy(range->platform + 8, &c, 4);
    return 0;
}

std::int32_t pinfo_basic_copy(cmd_paraminfo *copy, const cmd_paraminfo *source) {
    if (copy == nullptr || source == nullptr) return kErrBadArgument;
    std::memcpy(copy, source, sizeof *copy);
    copy->argc = 0;
    std::memset(copy->args, 0, sizeof copy->args);
    return 0;
}

std::int32_t pinfo_insert_arg(cmd_paraminfo *copy, cmd_param_arg *arg) {
    if (copy == nullptr || arg == nullptr) return kErrBadArgument;
    if (copy->argc == 255) return kErrBadArgument;
    copy->args[++copy->argc] = arg;
    return 0;
}

std::int32_t populate_param_arg(cmd_param_arg *arg, std::uint32_t param_type, std::uint32_t param_id, std::uint32_t a,
                                std::uint32_t mask_low, std::uint32_t mask_high, if_range *range) {
    if (arg == nullptr) return kErrBadArgument;
    std::memset(arg, 0, sizeof *arg);
    arg->param_type = param_type;
    arg->param_id = param_id;
    arg->value = range;
    std::memcpy(arg->platform0, &a, 4);
    std::memcpy(arg->platform0 + 4, &kArgMagic, 4);
    std::memcpy(arg->platform1, &mask_low, 4);
    std::memcpy(arg->platform1 + 4, &mask_high, 4);
    std::memcpy(arg->platform1 + 8, &range, sizeof range);
    return 0;
}

std::int32_t invoke_enumeration_function(const char *lib_name, const char *enum_func, cmd_paraminfo *copy,
                                         enum_result *result, std::int32_t *status) {
    SwitchLock lock(switch_mutex());
    auto refuse = [&](const std::string &why) {
        diagnostic("invoke_enumeration_function: " + why);
        if (status) *status = -1;
        return -1;
    };
    if (copy == nullptr || result == nullptr || status == nullptr || lib_name == nullptr || enum_func == nullptr)
        return refuse("a null argument");
    if (std::strcmp(lib_name, "pmcli") != 0 && std::strcmp(lib_name, "pmcli_eth") != 0)
        return refuse(std::string("no enumeration library \"") + lib_name + "\"");
    if (std::strcmp(enum_func, "pm_cli_if_index_enum_func") != 0)
        return refuse(std::string("no enumeration function \"") + enum_func + "\" in " + lib_name);
    ArgFields fields{};
    bool found = false;
    for (unsigned i = 1; i <= copy->argc && !found; ++i) found = read_arg(copy->args[i], fields);
    if (!found) return refuse("the parameter-info copy has no argument filled by populate_param_arg");
    if (fields.range == nullptr || fields.range->word0 != kRangeMagic)
        diagnostic("invoke_enumeration_function: the argument's range record was not filled by populate_intf_range");

    const std::uint64_t mask = (std::uint64_t{fields.mask_high} << 32) | fields.mask_low;
    Model &model = current_model();
    if (auto fault = model.take_fault({FaultTarget::enumeration, std::nullopt, std::nullopt, std::nullopt, std::nullopt, mask})) {
        if (fault->kind == FaultKind::bad_status) {
            *status = -1;
            return 0;
        }
        *status = 0;
        return -1;
    }
    std::vector<std::uint32_t> indexes;
    for (const Interface &i : model.interfaces())
        if (selected(i, mask)) indexes.push_back(i.if_index);
    auto *array = static_cast<std::uint32_t *>(std::malloc(sizeof(std::uint32_t) * (indexes.empty() ? 1 : indexes.size())));
    if (array == nullptr) return refuse("out of memory");
    if (!indexes.empty()) std::memcpy(array, indexes.data(), sizeof(std::uint32_t) * indexes.size());
    result->count = static_cast<std::int32_t>(indexes.size());
    result->indexes = array;
    *status = 0;
    return 0;
}

}  // extern "C"
