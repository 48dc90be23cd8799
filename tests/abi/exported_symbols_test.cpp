// SPDX-License-Identifier: MIT
// The binary interface of the built libqdcli.so, read from its ELF dynamic
// section: exactly the handler names are exported, every platform operation
// is left for the host to provide, and no platform library is needed.
#include <elf.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "elf_dynamic.hpp"

namespace {

// The exported handlers and callbacks, as the shell knows them, the two
// functions of the internal statistics report and the attribute catalogue.
const std::set<std::string> kHandlers = {
    "qd_cli_conf_wrrqueue_cosmap",
    "qd_cli_no_wrrqueue_cosmap",
    "qd_cli_show_wrrqueue_cosmap",
    "qdcli_interface_qoslimit_help_get",
    "qdcli_interface_qoslimit_range_get",
    "qdcli_pdcli_cmd_qd_def_get",
    "qd_cli_show_queuing_if",
    "qd_cli_show_queuing_intf_extend",
    "qd_cli_show_queuing_ifindex_extend",
    "qd_cli_show_queuing_if_extend",
    "qd_cli_show_queuing_interface",
    "qd_cli_show_queuing_ifindex",
    "qd_cli_show_queuing_intf_all",
    "qd_cli_show_queuing_hif",
    "qd_cli_show_queuing_hif_xmlized",
    "qd_cli_show_queuing_intf_switch",
    "qd_cli_show_queuing_intf_switch_hif",
    "qd_cli_show_internal_stats",
    "qd_count_ports",
    "qd_process_internal_stats",
    "qd_cli_clear_queuing_interface",
    "qd_cli_clear_queuing_all",
    "qd_cli_clear_qos_stats_ifindex",
    "qd_cli_clear_qos_stats_all",
    "qd_cli_show_logging_onboard_flow_control_td",
    "qd_cli_show_logging_onboard_flow_control_pe",
    "process_qd_cli_show_vaq_drops_all",
    "qd_cli_show_memstats",
    "qd_cli_debug_show_intf",
    "qd_cli_debug_show_all",
    "qdcli_attr_catalogue",
    "qdcli_attr_find",
    "qdcli_attr_find_name",
};

// Handlers whose families are not in this build yet. Each is listed here
// explicitly so that a missing export is never silent; an entry that the
// library does export is reported as stale. Empty once every family is in.
const std::set<std::string> kPendingHandlers = {};

// Platform operations that only the pending handlers call: until they are in,
// the library has no reference to these at all. Same rules as above.
const std::set<std::string> kPendingPlatformOps = {};

// Libraries the handlers may need: the C and C++ runtimes, and the runtimes
// of a sanitizer build.
bool allowed_dependency(const std::string &name) {
    for (const char *prefix : {"libc.so", "libm.so", "libstdc++.so", "libgcc_s.so", "ld-linux", "libasan.so",
                               "libubsan.so", "liblsan.so", "libtsan.so"})
        if (name.rfind(prefix, 0) == 0) return true;
    return false;
}

std::string join(const std::set<std::string> &names) {
    std::string out;
    for (const std::string &name : names) out += (out.empty() ? "" : ", ") + name;
    return out.empty() ? "(none)" : out;
}

std::set<std::string> minus(const std::set<std::string> &a, const std::set<std::string> &b) {
    std::set<std::string> out;
    for (const std::string &name : a)
        if (!b.count(name)) out.insert(name);
    return out;
}

std::set<std::string> both(const std::set<std::string> &a, const std::set<std::string> &b) {
    std::set<std::string> out;
    for (const std::string &name : a)
        if (b.count(name)) out.insert(name);
    return out;
}

class LibraryAbi : public ::testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(qdabi::read_dynamic_info(QDCLI_LIBRARY_PATH, info, error)) << error;
        ASSERT_TRUE(qdabi::read_version_script(QDCLI_VERSION_SCRIPT, script, error)) << error;
        ASSERT_TRUE(qdabi::read_declared_functions(QDCLI_PLATFORM_HEADER, platform_ops, error)) << error;
        exported = qdabi::exported_names(info);
        undefined = qdabi::undefined_names(info);
    }
    qdabi::DynamicInfo info;
    std::set<std::string> script, platform_ops, exported, undefined;
};

TEST_F(LibraryAbi, VersionScriptListsExactlyTheHandlers) {
    EXPECT_EQ(script, kHandlers) << "only in the script: " << join(minus(script, kHandlers))
                                 << "\nmissing from the script: " << join(minus(kHandlers, script));
    EXPECT_TRUE(minus(kPendingHandlers, kHandlers).empty())
        << "pending names that are no handlers: " << join(minus(kPendingHandlers, kHandlers));
}

TEST_F(LibraryAbi, DefinesTheVersionNodeOfTheScript) {
    EXPECT_EQ(qdabi::version_nodes(info), std::set<std::string>{"QDCLI_0.1"});
}

TEST_F(LibraryAbi, ExportsExactlyTheWrittenHandlers) {
    const std::set<std::string> expected = minus(script, kPendingHandlers);
    EXPECT_TRUE(minus(exported, script).empty()) << "exported beyond the script: " << join(minus(exported, script));
    EXPECT_TRUE(minus(expected, exported).empty()) << "not exported: " << join(minus(expected, exported));
    EXPECT_TRUE(both(exported, kPendingHandlers).empty())
        << "now exported, remove from the pending list: " << join(both(exported, kPendingHandlers));
    for (const qdabi::DynamicSymbol &sym : info.symbols) {
        if (sym.defined && script.count(sym.name)) {
            EXPECT_EQ(sym.type, unsigned{STT_FUNC}) << sym.name;
        }
    }
}

TEST_F(LibraryAbi, EveryPlatformOperationIsLeftToTheHost) {
    ASSERT_TRUE(platform_ops.count("mts_send") && platform_ops.count("invoke_enumeration_function") &&
                platform_ops.count("syserr2str") && platform_ops.count("mts_payload_get"))
        << "the platform header was not read as expected: " << join(platform_ops);
    std::set<std::string> defined;
    for (const qdabi::DynamicSymbol &sym : info.symbols)
        if (sym.defined) defined.insert(sym.name);
    EXPECT_TRUE(both(defined, platform_ops).empty())
        << "platform operations defined by the library: " << join(both(defined, platform_ops));
    const std::set<std::string> expected = minus(platform_ops, kPendingPlatformOps);
    EXPECT_TRUE(minus(expected, undefined).empty())
        << "platform operations not referenced: " << join(minus(expected, undefined));
    EXPECT_TRUE(both(undefined, kPendingPlatformOps).empty())
        << "now referenced, remove from the pending list: " << join(both(undefined, kPendingPlatformOps));
    EXPECT_TRUE(minus(kPendingPlatformOps, platform_ops).empty())
        << "pending names that are no platform operations: " << join(minus(kPendingPlatformOps, platform_ops));
}

TEST_F(LibraryAbi, NeedsNoPlatformLibraryAndBindsNothingInternally) {
    EXPECT_FALSE(info.needed.empty());
    for (const std::string &name : info.needed) EXPECT_TRUE(allowed_dependency(name)) << "DT_NEEDED " << name;
    EXPECT_FALSE(info.symbolic) << "the library binds its own symbols (-Bsymbolic)";
}

}  // namespace
