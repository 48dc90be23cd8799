// SPDX-License-Identifier: MIT
// The transport: routing, tokens, the message ledger.
#include "mts/router.hpp"

#include <algorithm>
#include <stdexcept>

#include "core/errors.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

constexpr std::uint32_t kNode = 0x777;
constexpr std::uint32_t kSap = 9000;
constexpr std::uint32_t kOpcode = 1;

// A service at node kNode, opcode kOpcode and the given SAP.
qdsim::mts::Service service_at(const char *name, std::uint32_t sap,
                               std::function<qdsim::mts::Delivery(const qdsim::mts::Request &)> handle) {
    return {name, kNode, sap, kOpcode, 0, std::move(handle)};
}

// A service that answers each request with its bytes in reverse order.
class RouterTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        service = qdsim::mts::register_service(service_at("reverser", kSap, [](const qdsim::mts::Request &r) {
            Bytes reply(r.data, r.data + r.length);
            std::reverse(reply.begin(), reply.end());
            return qdsim::mts::Delivery::reply(reply);
        }));
        ASSERT_NE(service, 0u);
    }
    void TearDown() override {
        qdsim::mts::unregister_service(service);
        SimTest::TearDown();
    }

    std::uint32_t send(const Bytes &payload, mts_msg &sent) {
        EXPECT_EQ(mts_send(handle, kNode, kSap, kOpcode, payload.data(), static_cast<std::uint32_t>(payload.size()), &sent, 0, 0), 0);
        return mts_rr_token_get(&sent);
    }

    Bytes receive(std::uint32_t token) {
        mts_msg reply{};
        const mts_recv_opts opts = options(token, 0);
        EXPECT_EQ(mts_recv(handle, &reply, &opts), 0);
        const auto *p = static_cast<const std::uint8_t *>(mts_payload_get(&reply));
        Bytes out(p, p + mts_payload_length_get(&reply));
        mts_drop(handle, &reply);
        return out;
    }

    qdsim::mts::ServiceId service = 0;
};

TEST_F(RouterTest, EachReplyIsFoundByItsTokenWhateverTheOrder) {
    mts_msg first{}, second{};
    const std::uint32_t t1 = send({1, 2, 3}, first);
    const std::uint32_t t2 = send({7, 8}, second);
    EXPECT_NE(t1, t2);
    EXPECT_EQ(qdsim::live_messages(), 2u);
    mts_drop(handle, &first);
    mts_drop(handle, &second);
    EXPECT_EQ(receive(t2), (Bytes{8, 7}));
    EXPECT_EQ(receive(t1), (Bytes{3, 2, 1}));
    EXPECT_EQ(qdsim::live_messages(), 0u);
    EXPECT_TRUE(qdsim::check_ledger(handle).empty());
}

TEST_F(RouterTest, UnknownDestinationsTokensAndHandlesAreRefused) {
    mts_msg sent{}, reply{};
    const Bytes payload{1};
    const std::int32_t rc = mts_send(handle, kNode + 1, kSap, kOpcode, payload.data(), 1, &sent, 0, 0);
    EXPECT_EQ(rc, qdsim::kErrNoRoute);
    EXPECT_STREQ(syserr2str(rc), "no service at the destination");
    EXPECT_EQ(mts_send(handle, kNode, kSap, kOpcode + 1, payload.data(), 1, &sent, 0, 0), qdsim::kErrNoRoute);
    EXPECT_EQ(mts_send(0x12345, kNode, kSap, kOpcode, payload.data(), 1, &sent, 0, 0), qdsim::kErrBadHandle);
    EXPECT_EQ(mts_send(handle, kNode, kSap, kOpcode, payload.data(), 1, &sent, 1, 0), qdsim::kErrBadArgument);
    const std::uint32_t other = qdsim::open_command();
    qdsim::close_command(other);
    EXPECT_EQ(mts_send(other, kNode, kSap, kOpcode, payload.data(), 1, &sent, 0, 0), qdsim::kErrBadHandle);
    EXPECT_EQ(qdsim::live_messages(), 0u);
    const mts_recv_opts opts = options(0xdead, 0);
    EXPECT_EQ(mts_recv(handle, &reply, &opts), qdsim::kErrNoReply);
    EXPECT_TRUE(diagnosed(qdsim::check_ledger(handle), "which no outstanding request carries"));
}

TEST_F(RouterTest, ReceiveOptionsMustFitTheDestination) {
    mts_msg sent{};
    const std::uint32_t token = send({1}, sent);
    mts_drop(handle, &sent);
    mts_msg reply{};
    const mts_recv_opts line_card_opts = options(token, 5);  // this service wants word 2 = 0
    EXPECT_EQ(mts_recv(handle, &reply, &line_card_opts), qdsim::kErrBadOptions);
    EXPECT_TRUE(diagnosed(qdsim::check_ledger(handle), "word 2 = 5"));
    EXPECT_EQ(qdsim::mts::pending_replies(), 0u);  // the reply was discarded
}

TEST_F(RouterTest, LedgerTellsDoubleDropsLeaksAndLateUse) {
    mts_msg sent{};
    const std::uint32_t token = send({1, 2}, sent);
    mts_msg copy = sent;
    mts_drop(handle, &sent);
    EXPECT_EQ(mts_drop(handle, &copy), qdsim::kErrBadMessage);

    mts_msg reply{};
    const mts_recv_opts opts = options(token, 0);
    ASSERT_EQ(mts_recv(handle, &reply, &opts), 0);
    mts_msg kept = reply;
    mts_drop(handle, &reply);
    EXPECT_EQ(mts_payload_get(&kept), nullptr);  // read after its release

    mts_msg leaked{};
    send({9}, leaked);  // neither dropped nor its reply received

    const std::vector<std::string> problems = qdsim::check_ledger(handle);
    EXPECT_TRUE(diagnosed(problems, "released twice"));
    EXPECT_TRUE(diagnosed(problems, "after its release"));
    EXPECT_TRUE(diagnosed(problems, "never released"));
    EXPECT_TRUE(diagnosed(problems, "never received"));

    qdsim::take_diagnostics();
    finish();  // close_command reports them and releases what was left
    EXPECT_TRUE(diagnosed(qdsim::take_diagnostics(), "never released"));
    EXPECT_EQ(qdsim::live_messages(), 0u);
}

TEST_F(RouterTest, SentMessageStillHeldWhileWaitingIsReported) {
    mts_msg sent{};
    const std::uint32_t token = send({1}, sent);
    EXPECT_EQ(receive(token), (Bytes{1}));
    EXPECT_TRUE(diagnosed(qdsim::check_ledger(handle), "still held while its reply was awaited"));
    mts_drop(handle, &sent);
}

TEST_F(RouterTest, AnEmptyReplyHasNoPayloadAndLengthZero) {
    const auto id = qdsim::mts::register_service(
        service_at("silent", kSap + 1, [](const qdsim::mts::Request &) { return qdsim::mts::Delivery::no_payload(); }));
    const Exchange ex = exchange(handle, kNode, kSap + 1, kOpcode, "x", 1, 0);
    EXPECT_EQ(ex.recv_rc, 0);
    EXPECT_FALSE(ex.has_payload);
    qdsim::mts::unregister_service(id);
}

TEST_F(RouterTest, AServiceThatBreaksDownLosesItsReplyNotTheHost) {
    const auto id = qdsim::mts::register_service(service_at("broken", kSap + 2, [](const qdsim::mts::Request &) -> qdsim::mts::Delivery {
        throw std::runtime_error("bad section");
    }));
    const Exchange ex = exchange(handle, kNode, kSap + 2, kOpcode, "x", 1, 0);
    qdsim::mts::unregister_service(id);
    EXPECT_EQ(ex.send_rc, 0);
    EXPECT_EQ(ex.recv_rc, qdsim::kErrTimeout);
    EXPECT_TRUE(diagnosed(qdsim::take_diagnostics(), "service \"broken\" failed on a request: bad section"));
}

TEST_F(RouterTest, AnAddressIsServedOnce) {
    EXPECT_EQ(qdsim::mts::register_service(service_at("second reverser", kSap, [](const qdsim::mts::Request &) {
                  return qdsim::mts::Delivery::no_payload();
              })),
              0u);
}

}  // namespace
}  // namespace simtest
