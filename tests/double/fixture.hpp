// SPDX-License-Identifier: MIT
// Test fixture: a fresh scripted platform and an empty platform-type cache
// per test; at the end, every message must have been released exactly once.
#pragma once

#include <gtest/gtest.h>

#include "double/platform_double.hpp"
#include "inventory/platform_query.hpp"

namespace qdtest {

class PlatformTest : public ::testing::Test {
protected:
    void SetUp() override {
        reset();
        qdcli::platform_type_cache_reset();
    }
    void TearDown() override {
        for (const std::string &error : ledger_errors()) ADD_FAILURE() << "message ledger: " << error;
    }
    Platform &pf() { return platform(); }
};

}  // namespace qdtest
