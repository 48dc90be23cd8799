// SPDX-License-Identifier: MIT
// The simulated clock: counters with a rate advance with every command.
#include "model/model.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

class ClockTest : public SimTest {
protected:
    std::uint64_t value(const std::string &pointer) {
        return qdsim::get_u64(qdsim::current_model().state(), pointer, 999999);
    }
};

TEST_F(ClockTest, InHostModeOnlyTheHostMovesTheClock) {
    const std::string drops = "/interfaces/Ethernet101~11~11/qos_counters/tx_queue_drops";
    qdsim::set_clock_mode(qdsim::ClockMode::host);
    finish();
    handle = qdsim::open_command();
    EXPECT_EQ(value(drops), 12u);
    qdsim::advance_clock(2);
    EXPECT_EQ(value(drops), 18u);
    qdsim::set_clock_mode(qdsim::ClockMode::per_command);
    finish();
    EXPECT_EQ(value(drops), 21u);
}

TEST_F(ClockTest, RatesMirrorTheirCountersThroughObjectsAndArrays) {
    qdsim::ScenarioError e;
    ASSERT_TRUE(qdsim::load_scenario_text(R"({
      "ethernet": [{"slot": 1, "ports": 1}],
      "extenders": [{"number": 101, "slot": 9, "uplink": "Ethernet1/1", "ports": "1-2"}],
      "defaults": {"host": {"qos_counters": {"tx_queue_drops": 0, "rx": [1, 2, 3], "q": [{"n": 0}, {"n": 10}],
                   "rates": {"tx_queue_drops": 1, "rx": [0, 5, 1], "q": {"n": 2}}}}}
    })", "rates.json", e)) << e.message();
    qdsim::advance_clock(2);
    const std::string base = "/interfaces/Ethernet101~11~12/qos_counters";
    EXPECT_EQ(value(base + "/tx_queue_drops"), 2u);
    EXPECT_EQ(value(base + "/rx/0"), 1u);
    EXPECT_EQ(value(base + "/rx/1"), 12u);
    EXPECT_EQ(value(base + "/rx/2"), 5u);
    EXPECT_EQ(value(base + "/q/0/n"), 4u);
    EXPECT_EQ(value(base + "/q/1/n"), 14u);
}

TEST_F(ClockTest, AServiceThatReplacesASectionKeepsTheRatesWorking) {
    const qdsim::Interface *host = qdsim::current_model().find_interface("Ethernet101/1/1");
    host->data.edit()["qos_counters"] = {{"tx_queue_drops", 100}, {"rates", {{"tx_queue_drops", 3}}}};
    qdsim::advance_clock(1);
    EXPECT_EQ(value("/interfaces/Ethernet101~11~11/qos_counters/tx_queue_drops"), 103u);
    host->data.edit().erase("qos_counters");
    qdsim::advance_clock(1);  // the counter is gone: nothing to advance, nothing breaks
}

}  // namespace
}  // namespace simtest
