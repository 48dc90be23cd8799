// SPDX-License-Identifier: MIT
// Test fixture: a fresh scripted platform and an empty platform-type cache
// per test; at the end, every message must have been released exactly once.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "double/platform_double.hpp"
#include "inventory/platform_query.hpp"

namespace qdtest {

// An interface the switch of a fixture starts with.
struct InterfaceSpec {
    std::uint32_t if_index;
    std::uint8_t type;
    const char *name;
    std::uint8_t slot = 0;
    bool sub_intf = false;
};

class PlatformTest : public ::testing::Test {
protected:
    PlatformTest() = default;
    explicit PlatformTest(std::vector<InterfaceSpec> interfaces) : interfaces_(std::move(interfaces)) {}
    void SetUp() override {
        reset();
        qdcli::platform_type_cache_reset();
        for (const InterfaceSpec &i : interfaces_) pf().add_interface(i.if_index, i.type, i.name, i.slot, i.sub_intf);
    }
    void TearDown() override {
        for (const std::string &error : ledger_errors()) ADD_FAILURE() << "message ledger: " << error;
    }
    Platform &pf() { return platform(); }

private:
    std::vector<InterfaceSpec> interfaces_;
};

}  // namespace qdtest
