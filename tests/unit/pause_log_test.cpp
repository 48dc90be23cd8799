// SPDX-License-Identifier: MIT
// Onboard pause-event logs: the count table from the logging service, and
// the event list from a real System V shared-memory segment that each test
// creates under the service's key and removes again.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <utility>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

// Failure injection for the two segment operations whose failure cannot be
// provoked by the segment itself (as root every permission is granted).
// Everything else goes straight to the kernel.
namespace {
bool fail_next_attach = false;
bool fail_next_detach = false;
int detach_calls = 0;
}  // namespace

extern "C" void *shmat(int id, const void *address, int flags) noexcept {
    if (fail_next_attach) {
        fail_next_attach = false;
        errno = ENOMEM;
        return reinterpret_cast<void *>(-1);
    }
    return reinterpret_cast<void *>(syscall(SYS_shmat, id, address, flags));
}

extern "C" int shmdt(const void *address) noexcept {
    ++detach_calls;
    const int rc = static_cast<int>(syscall(SYS_shmdt, address));
    if (fail_next_detach) {  // detached all the same, only reported as failed
        fail_next_detach = false;
        errno = EINVAL;
        return -1;
    }
    return rc;
}

namespace {

const std::string kCountsHeader =
    "\n\nNumber of Pause Events per Port\n"
    "----------------------------\n"
    "Ethernet      Number of\n"
    "Interface     Pause Events\n"
    "----------------------------\n";
const std::string kEventsHeader =
    "\n\nList of Pause Events\n"
    "----------------------------------------------------\n"
    "Ethernet         Timestamp\n"
    "Interface\n"
    "----------------------------------------------------\n";

std::string run(std::int32_t (*handler)(), std::int32_t &rc) {
    return qdtest::capture_stdout([&] { rc = handler(); });
}

// ---------------------------------------------------------------- counts

class PauseCountsTest : public qdtest::PlatformTest {
protected:
    // Answers the count query with `counts` (module 1-4, port 1-112).
    void answer(std::map<std::pair<int, int>, std::uint32_t> counts, std::int32_t rc = 0) {
        pf().sse_call2_handler = [counts, rc](std::uint32_t op, void *buffer, std::uint32_t length) {
            EXPECT_EQ(op, 1128u);
            EXPECT_EQ(length, 1796u);
            auto *words = static_cast<std::uint32_t *>(buffer);
            for (const auto &[where, count] : counts) words[1 + 112 * (where.first - 1) + (where.second - 1)] = count;
            return rc;
        };
    }
};

TEST_F(PauseCountsTest, PrintsEveryNonZeroCountInModuleAndPortOrder) {
    answer({{{4, 112}, 9}, {{1, 1}, 5}, {{2, 42}, 0x80000000u}, {{3, 7}, 0xffffffffu}}, 12345);
    std::int32_t rc = 1;
    const std::string out = run(qd_cli_show_logging_onboard_flow_control_td, rc);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(out, kCountsHeader +
                       " 1/1            5 \n"
                       " 2/42            -2147483648 \n"
                       " 3/7            -1 \n"
                       " 4/112            9 \n");
    ASSERT_EQ(pf().sse_call2_requests.size(), 1u);
    const qdtest::Bytes &request = pf().sse_call2_requests[0];
    ASSERT_EQ(request.size(), 1796u);
    EXPECT_EQ(qdtest::get_host32(request, 0), 7u);
    // The rest of the table goes out cleared: stack contents never show as counts.
    for (std::size_t i = 4; i < request.size(); ++i) ASSERT_EQ(request[i], 0) << "byte " << i;
}

TEST_F(PauseCountsTest, NoCountsSaysSoAndAFailureIsToldWithoutNewline) {
    answer({});
    std::int32_t rc = 1;
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_td, rc),
              kCountsHeader + "No Pause Events have occurred on the switch.\n");
    EXPECT_EQ(rc, 0);
    answer({{{1, 1}, 5}}, -1);
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_td, rc), "There was a problem processing the request.");
    EXPECT_EQ(rc, -1);
}

// ---------------------------------------------------------------- events

// A fresh working directory holding vrid/tessikusd_intf.h, the file whose key
// names the event segment, and the segment itself once created. Both are
// removed, and the previous working directory restored, when the object goes
// away, also after a failed assertion.
class EventLogPlace {
public:
    EventLogPlace() {
        char *saved = getcwd(nullptr, 0);
        if (saved != nullptr) saved_cwd_ = saved;
        std::free(saved);
        char pattern[] = "/tmp/qdcli-pause-XXXXXX";
        if (mkdtemp(pattern) == nullptr) return;
        dir_ = pattern;
        if (chdir(dir_.c_str()) != 0 || mkdir("vrid", 0700) != 0) return;
        ready_ = new_key_file();
    }
    ~EventLogPlace() {
        remove_segment();
        if (!saved_cwd_.empty()) (void)chdir(saved_cwd_.c_str());
        if (dir_.empty()) return;
        unlink((dir_ + "/" + PAUSE_LOG_FTOK_PATH).c_str());
        unlink((dir_ + "/vrid/next").c_str());
        rmdir((dir_ + "/vrid").c_str());
        rmdir(dir_.c_str());
    }
    EventLogPlace(const EventLogPlace &) = delete;
    EventLogPlace &operator=(const EventLogPlace &) = delete;

    bool ready() const { return ready_; }
    key_t key() const { return ftok(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID); }
    int segment() const { return segment_; }

    // Creates the segment with `records` records (plus `extra` bytes) under
    // the key. A key already in use by somebody else's segment is replaced by
    // giving the key file a new inode.
    bool create_segment(std::size_t records, std::size_t extra = 0) {
        const std::size_t size = records * PAUSE_EVENT_REC_SIZE + extra;
        for (int attempt = 0; attempt < 16; ++attempt) {
            segment_ = shmget(key(), size, IPC_CREAT | IPC_EXCL | 0666);
            if (segment_ >= 0) return true;
            if (errno != EEXIST || !new_key_file()) return false;
        }
        return false;
    }

    // Makes sure no segment exists under the key.
    bool key_unused() {
        for (int attempt = 0; attempt < 16; ++attempt) {
            if (shmget(key(), 0, 0) < 0 && errno == ENOENT) return true;
            if (!new_key_file()) return false;
        }
        return false;
    }

    // Writes record i: time stamp field (256 bytes, copied as given and not
    // terminated when it fills the field), port and module, counted from 0.
    void put_record(std::size_t i, const std::string &stamp, std::uint32_t port, std::uint8_t module) {
        void *base = shmat(segment_, nullptr, 0);
        ASSERT_NE(base, reinterpret_cast<void *>(-1));
        auto *record = static_cast<std::uint8_t *>(base) + i * PAUSE_EVENT_REC_SIZE;
        std::memset(record, 0x5a, PAUSE_EVENT_REC_SIZE);  // unread bytes hold garbage
        std::memset(record + 4, 0, 256);
        std::memcpy(record + 4, stamp.data(), std::min<std::size_t>(stamp.size(), 256));
        std::memcpy(record + 260, &port, 4);
        record[264] = module;
        syscall(SYS_shmdt, base);  // not counted as the handler's detach
    }

    // Attach count of the segment, or -1 when it is gone.
    long attached() const {
        shmid_ds info{};
        if (shmctl(segment_, IPC_STAT, &info) != 0) return -1;
        return static_cast<long>(info.shm_nattch);
    }

private:
    bool new_key_file() {
        // Created next to the old one before that is replaced, so the inode,
        // and with it the key, differs.
        const int fd = open("vrid/next", O_CREAT | O_EXCL | O_WRONLY, 0600);
        if (fd < 0) return false;
        close(fd);
        return rename("vrid/next", PAUSE_LOG_FTOK_PATH) == 0;
    }
    void remove_segment() {
        if (segment_ >= 0) shmctl(segment_, IPC_RMID, nullptr);
        segment_ = -1;
    }

    std::string saved_cwd_;
    std::string dir_;
    bool ready_ = false;
    int segment_ = -1;
};

class PauseEventsTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fail_next_attach = fail_next_detach = false;
        detach_calls = 0;
        ASSERT_TRUE(place.ready()) << "cannot prepare a working directory for the event segment";
    }
    // The service answers `count` events with result `rc`.
    void answer(std::int32_t count, std::int32_t rc = 0) {
        pf().sse_call2_handler = [count, rc](std::uint32_t op, void *buffer, std::uint32_t length) {
            EXPECT_EQ(op, 1128u);
            EXPECT_EQ(length, 8u);
            std::memcpy(static_cast<std::uint8_t *>(buffer) + 4, &count, 4);
            return rc;
        };
    }

    EventLogPlace place;
};

TEST_F(PauseEventsTest, ListsEveryEventWithItsStampCutOrPaddedTo26) {
    ASSERT_TRUE(place.create_segment(6));
    place.put_record(0, "2024-05-17 08:15:42.123456 extra text", 0, 0);  // longer than 26: cut
    place.put_record(1, "08:15", 6, 1);                                  // shorter: padded
    place.put_record(2, std::string(256, 'A'), 111, 3);                  // fills its field, no NUL
    place.put_record(3, "100% %s %n", 41, 2);                            // printed as it stands
    place.put_record(4, "t", 0x7fffffffu, 255);                          // one higher, in 32 bits
    place.put_record(5, "t", 0xffffffffu, 0);
    answer(6);
    std::int32_t rc = 1;
    const std::string out = run(qd_cli_show_logging_onboard_flow_control_pe, rc);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(out, kEventsHeader +
                       " 1/1             2024-05-17 08:15:42.123456 \n"
                       " 2/7             08:15                      \n"
                       " 4/112             AAAAAAAAAAAAAAAAAAAAAAAAAA \n"
                       " 3/42             100% %s %n                 \n"
                       " 256/-2147483648             t                          \n"
                       " 1/0             t                          \n");
    ASSERT_EQ(pf().sse_call2_requests.size(), 1u);
    EXPECT_EQ(pf().sse_call2_requests[0], (qdtest::Bytes{6, 0, 0, 0, 0, 0, 0, 0}));
    // Detached once, and the segment is still the service's.
    EXPECT_EQ(detach_calls, 1);
    EXPECT_EQ(place.attached(), 0);
}

TEST_F(PauseEventsTest, ControlBytesInAStampAreEscaped) {
    // Anyone may write the segment: terminal controls print as \xNN, within
    // the 26 characters taken; printable text stays as it is.
    ASSERT_TRUE(place.create_segment(3));
    place.put_record(0, "\x1b[2J\x1b]0;pwned\x07", 0, 0);
    place.put_record(1, std::string("a\tb\x7f\x80\xff\\z"), 1, 0);
    place.put_record(2, std::string(25, 'x') + "\x9b" + "hidden", 2, 0);  // the 26th is escaped, the rest cut
    answer(3);
    std::int32_t rc = 1;
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_pe, rc),
              kEventsHeader +
                  " 1/1             \\x1b[2J\\x1b]0;pwned\\x07    \n"
                  " 1/2             a\\x09b\\x7f\\x80\\xff\\z       \n"
                  " 1/3             xxxxxxxxxxxxxxxxxxxxxxxxx\\x9b \n");
    EXPECT_EQ(rc, 0);
}

TEST_F(PauseEventsTest, OnlyWholeRecordsInsideTheSegmentAreRead) {
    // Two whole records and part of a third: a count of 2 reads both.
    ASSERT_TRUE(place.create_segment(2, 100));
    place.put_record(0, "first", 0, 0);
    place.put_record(1, "second", 1, 0);
    answer(2);
    std::int32_t rc = 1;
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_pe, rc),
              kEventsHeader + " 1/1             first                      \n" +
                  " 1/2             second                     \n");
    // A count beyond what the segment holds is never read: the segment of
    // that size is not found.
    for (std::int32_t count : {3, INT_MAX}) {
        SCOPED_TRACE(count);
        answer(count);
        EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_pe, rc), "Error Locating shared memory space!");
        EXPECT_EQ(rc, -1);
    }
}

TEST_F(PauseEventsTest, MissingSegmentOrKeyFileIsToldWithoutNewline) {
    ASSERT_TRUE(place.key_unused());
    answer(1);
    std::int32_t rc = 0;
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_pe, rc), "Error Locating shared memory space!");
    EXPECT_EQ(rc, -1);
    unlink(PAUSE_LOG_FTOK_PATH);
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_pe, rc), "Error Locating shared memory space!");
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(detach_calls, 0);
}

TEST_F(PauseEventsTest, AttachAndDetachFailures) {
    ASSERT_TRUE(place.create_segment(1));
    place.put_record(0, "stamp", 0, 0);
    answer(1);
    std::int32_t rc = 0;
    fail_next_attach = true;
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_pe, rc), "Error attaching to the shared memory space!");
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(detach_calls, 0);

    fail_next_detach = true;
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_pe, rc),
              kEventsHeader + " 1/1             stamp                      \n" + "detach fails!");
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(place.attached(), 0);
}

}  // namespace
