// SPDX-License-Identifier: MIT
// Interfaces of a range share their data until one of them changes, and
// counters with a rate are derived from the clock when read: the clock moves
// with every command, or only when the host says so.
#include "model/model.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

class SharedDataTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(R"({
          "ethernet": [{"slot": 1, "ports": "1-2"}],
          "extenders": [{"number": 101, "slot": 9, "uplink": "Ethernet1/1", "ports": "1-4"}],
          "defaults": {"host": {"qos_counters": {"tx_queue_drops": 10, "rx": [1, 2, 3], "q": [{"n": 0}, {"n": 10}],
                       "rates": {"tx_queue_drops": 2, "rx": [0, 5, 1], "q": {"n": 2}}}}},
          "interfaces": {"Ethernet101/1/4": {"qos_counters": {"tx_queue_drops": 18446744073709551615}}}
        })", "shared.json", e)) << e.message();
    }
    static const qdsim::Interface &host(int port) {
        return *qdsim::current_model().interface_named("Ethernet101/1/" + std::to_string(port));
    }
    static std::uint64_t counter(int port, const std::string &name) {
        return qdsim::get_u64(*host(port).data, "/qos_counters/" + name, 999999);
    }
    static std::uint64_t drops(int port) { return counter(port, "tx_queue_drops"); }
    static std::uint64_t dumped(int port) {
        std::string value, error;
        EXPECT_TRUE(qdsim::get_state_value("/interfaces/Ethernet101~11~1" + std::to_string(port) +
                                               "/qos_counters/tx_queue_drops", value, error)) << error;
        return std::stoull(value);
    }
};

TEST_F(SharedDataTest, AChangeCopiesOnlyTheChangedInterfaceAndTheClockDrivesEveryCopy) {
    EXPECT_EQ(host(1).data.block(), host(2).data.block());
    EXPECT_TRUE(host(1).data.shares());
    EXPECT_FALSE(host(4).data.shares());  // data of its own

    qdsim::advance_clock(1000);
    qos_counter_block block{};
    ASSERT_EQ(statscl_clear_qos_counters(0, host(2).if_index, 0, nullptr), 0);
    EXPECT_NE(host(1).data.block(), host(2).data.block());
    EXPECT_EQ(host(1).data.block(), host(3).data.block());
    qdsim::advance_clock(5);

    struct Case {
        int port;
        std::uint64_t expected;
    };
    for (const Case &c : {Case{1, 10 + 2 * 1005}, Case{2, 2 * 5}, Case{3, 10 + 2 * 1005},
                          Case{4, 18446744073709551615ull + 2 * 1005}}) {  // wraps like the hardware
        SCOPED_TRACE(c.port);
        EXPECT_EQ(drops(c.port), c.expected);
        EXPECT_EQ(dumped(c.port), c.expected);
        ASSERT_EQ(statscl_get_qos_counters(0, host(c.port).if_index, 0, &block), 0);
        EXPECT_EQ(block.tx_queue_drops, c.expected);
    }
}

TEST_F(SharedDataTest, TheStateLoadsBackWithItsRates) {
    qdsim::advance_clock(3);
    const std::string before = qdsim::dump_state_json();
    qdsim::ScenarioError e;
    ASSERT_TRUE(qdsim::load_scenario_text(before, "dump.json", e)) << e.message();
    EXPECT_EQ(qdsim::dump_state_json(), before);
    EXPECT_EQ(drops(1), 16u);
}

TEST_F(SharedDataTest, InHostModeOnlyTheHostMovesTheClock) {
    qdsim::set_clock_mode(qdsim::ClockMode::host);
    finish();
    handle = qdsim::open_command();
    EXPECT_EQ(drops(1), 10u);
    qdsim::advance_clock(2);
    EXPECT_EQ(drops(1), 14u);
    qdsim::set_clock_mode(qdsim::ClockMode::per_command);
    finish();
    EXPECT_EQ(drops(1), 16u);
}

TEST_F(SharedDataTest, RatesMirrorTheirCountersThroughObjectsAndArrays) {
    qdsim::advance_clock(2);
    const std::pair<const char *, std::uint64_t> cases[] = {
        {"tx_queue_drops", 14}, {"rx/0", 1}, {"rx/1", 12}, {"rx/2", 5}, {"q/0/n", 4}, {"q/1/n", 14}};
    for (const auto &[name, expected] : cases) EXPECT_EQ(counter(2, name), expected) << name;
}

TEST_F(SharedDataTest, AServiceThatReplacesASectionKeepsTheRatesWorking) {
    host(1).data.edit()["qos_counters"] = {{"tx_queue_drops", 100}, {"rates", {{"tx_queue_drops", 3}}}};
    qdsim::advance_clock(1);
    EXPECT_EQ(drops(1), 103u);
    EXPECT_EQ(drops(2), 12u);  // its neighbour keeps the shared data
    host(1).data.edit().erase("qos_counters");
    qdsim::advance_clock(1);  // the counter is gone: nothing to advance, nothing breaks
}

}  // namespace
}  // namespace simtest
