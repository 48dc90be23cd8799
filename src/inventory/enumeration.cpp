// SPDX-License-Identifier: MIT
#include "inventory/enumeration.hpp"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace qdcli {
namespace {

struct PassTable {
    std::uint64_t type_mask;
    const char *lib_name;
    const char *show_func;
    const char *header_func;
    std::uint32_t selector;
};

constexpr PassTable kPasses[kEnumerationPasses] = {
    {0x0000000000000001ull, "pmcli", "pm_cli_show_fc_port_config", "pm_cli_show_fc_header", 0},
    {0x4000000000000000ull, "pmcli", "pm_cli_show_fc_port_config", "pm_cli_show_fc_header", 23},
    {0x0000000000800000ull, "pmcli_eth", "pm_cli_show_ethernet_port_config", "pm_cli_show_ethernet_header", 1},
    {0x0000000010000000ull, "pmcli_eth", "pm_cli_show_ethernet_port_config", "pm_cli_show_ethernet_header", 22},
};

constexpr const char *kEnumFunc = "pm_cli_if_index_enum_func";
constexpr std::uint32_t kEnumParamType = 2060;
constexpr std::uint32_t kEnumParamId = 0x40200002u;

template <std::size_t N>
void copy_name(char (&field)[N], const char *name) {
    static_assert(N > 0);
    std::strncpy(field, name, N - 1);
}

}  // namespace

if_enum_desc enumeration_descriptor(unsigned pass) {
    if_enum_desc desc;
    std::memset(&desc, 0, sizeof desc);
    if (pass >= kEnumerationPasses) return desc;
    const PassTable &row = kPasses[pass];
    desc.type_mask = row.type_mask;
    copy_name(desc.lib_name, row.lib_name);
    copy_name(desc.enum_func, kEnumFunc);
    copy_name(desc.show_func, row.show_func);
    copy_name(desc.aux_func, "NULL");
    copy_name(desc.header_func, row.header_func);
    desc.selector = row.selector;
    return desc;
}

void for_each_enumerated_interface(cmd_paraminfo *pinfo, InterfaceVisitor visit, void *context) {
    if_enum_desc descs[kEnumerationPasses];
    for (unsigned pass = 0; pass < kEnumerationPasses; ++pass) descs[pass] = enumeration_descriptor(pass);

    if_range range;
    std::memset(&range, 0, sizeof range);
    populate_intf_range(&range, 0, 0, 0);
    range.word1 = 0;

    cmd_paraminfo copy;
    std::memset(&copy, 0, sizeof copy);
    cmd_param_arg argument;
    std::memset(&argument, 0, sizeof argument);
    pinfo_basic_copy(&copy, pinfo);
    pinfo_insert_arg(&copy, &argument);

    for (const if_enum_desc &desc : descs) {
        enum_result result{};
        std::int32_t status = 0;
        populate_param_arg(&argument, kEnumParamType, kEnumParamId, 0,
                           static_cast<std::uint32_t>(desc.type_mask),
                           static_cast<std::uint32_t>(desc.type_mask >> 32), &range);
        const std::int32_t rc = invoke_enumeration_function(desc.lib_name, desc.enum_func, &copy, &result, &status);
        if (rc < 0 || status < 0) continue;  // failed pass: its result is not touched
        // The array is the caller's once the call has returned: freed on every path.
        const std::unique_ptr<std::uint32_t, decltype(&std::free)> owned(result.indexes, &std::free);
        for (std::int32_t j = 0; j < result.count && owned; ++j) visit(context, owned.get()[j]);
    }
}

}  // namespace qdcli
