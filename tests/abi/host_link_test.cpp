// SPDX-License-Identifier: MIT
// A host program that defines the platform operations (here: the scripted
// test double) links the shared libqdcli.so and runs a handler through it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "double/platform_double.hpp"
#include "qdcli/handlers.h"

namespace {

TEST(HostLink, CosMapShowRunsThroughTheSharedLibrary) {
    void *library = dlopen("libqdcli.so.0", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << "libqdcli.so is not loaded into the host";
    EXPECT_EQ(dlsym(library, "qd_cli_platform_type_get"), nullptr) << "an internal function is exported";
    dlclose(library);

    qdtest::reset();
    qdtest::platform().platform_type = 2;
    // CoS 0-2 on queue 0, CoS 3 on queue 1, none on queue 2, CoS 4-7 on queue 3.
    qdtest::platform().replies.push_back(qdtest::Reply::bytes({0, 0, 0, 0, 0, 0, 0, 1, 3, 3, 3, 3}));
    qdtest::Command command;
    std::int32_t status = -1;
    const std::string out = qdtest::capture_stdout([&] { status = qd_cli_show_wrrqueue_cosmap(command.info()); });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out,
              "MCAST Queue ID\t\t Cos Map\n"
              "0\t\t\t0 1 2 \n"
              "1\t\t\t3 \n"
              "2\t\t\t\n"
              "3\t\t\t4 5 6 7 \n");
    ASSERT_EQ(qdtest::platform().sent.size(), 1u);
    EXPECT_EQ(qdtest::platform().sent[0].payload, (qdtest::Bytes{20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    for (const std::string &error : qdtest::ledger_errors()) ADD_FAILURE() << "message ledger: " << error;
}

}  // namespace
