// SPDX-License-Identifier: MIT
// The library's onboard pause-log reports against the switch's log service,
// with a real shared-memory segment. Each test runs in a directory of its
// own and ends with qdsim::shutdown, after which no segment is left under
// the key and no key file or directory is left in that directory.
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>

#include "platform/keyed_segment.hpp"
#include "qdcli/handlers.h"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

constexpr char kCountsHeader[] =
    "\n\nNumber of Pause Events per Port\n----------------------------\n"
    "Ethernet      Number of\nInterface     Pause Events\n----------------------------\n";
constexpr char kEventsHeader[] =
    "\n\nList of Pause Events\n----------------------------------------------------\n"
    "Ethernet         Timestamp\nInterface\n----------------------------------------------------\n";

bool exists(const char *path) {
    struct stat st {};
    return stat(path, &st) == 0;
}

class PauseLogTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        char pattern[] = "/tmp/qdsim-pause-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
        char here[4096];
        ASSERT_NE(getcwd(here, sizeof here), nullptr);
        home_ = here;
        ASSERT_EQ(chdir(dir_.c_str()), 0);
    }
    void TearDown() override {
        const key_t published = key_;
        qdsim::shutdown();
        if (published != -1) {
            EXPECT_LT(shmget(published, 0, 0), 0) << "a segment is left under the key";
        }
        if (keep_user_file_) {
            EXPECT_TRUE(exists(PAUSE_LOG_FTOK_PATH)) << "the user's key file is gone";
            unlink(PAUSE_LOG_FTOK_PATH);
            rmdir("vrid");
        }
        EXPECT_FALSE(exists("vrid")) << "the key directory is left";
        EXPECT_EQ(chdir(home_.c_str()), 0);
        EXPECT_EQ(rmdir(dir_.c_str()), 0) << "something is left in " << dir_;
        SimTest::TearDown();
    }

    void load(const std::string &scenario) {
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(scenario, "pause.json", e)) << e.message();
    }

    // Runs one of the two reports; remembers the key the events report published.
    std::int32_t report(std::int32_t (*handler)(), std::string &out) {
        testing::internal::CaptureStdout();
        const std::int32_t rc = handler();
        out = testing::internal::GetCapturedStdout();
        if (exists(PAUSE_LOG_FTOK_PATH)) key_ = ftok(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID);
        return rc;
    }
    std::int32_t counts(std::string &out) { return report(qd_cli_show_logging_onboard_flow_control_td, out); }
    std::int32_t events(std::string &out) { return report(qd_cli_show_logging_onboard_flow_control_pe, out); }
    // Size of the segment under the key now, 0 when there is none.
    std::size_t segment_size() const {
        const int id = shmget(key_, 0, 0);
        shmid_ds info{};
        return id >= 0 && shmctl(id, IPC_STAT, &info) == 0 ? info.shm_segsz : 0;
    }
    // Makes the key file by hand, with the given contents.
    static void make_key_file(const char *text) {
        ASSERT_EQ(mkdir("vrid", 0755), 0);
        std::ofstream(PAUSE_LOG_FTOK_PATH) << text;
    }
    // A segment under the key made by a child process, which then ends
    // (a crashed run) or waits until `release` is written to (a live one).
    static pid_t segment_of_child(std::size_t size, int *release = nullptr) {
        int fds[2];
        if (release != nullptr && pipe(fds) != 0) return -1;
        const pid_t pid = fork();
        if (pid == 0) {
            shmget(ftok(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID), size, IPC_CREAT | 0666);
            if (release != nullptr) {
                char c;
                close(fds[1]);
                (void)!read(fds[0], &c, 1);
            }
            _exit(0);
        }
        if (release != nullptr) {
            close(fds[0]);
            *release = fds[1];
            for (int waited = 0; waited < 5000 && shmget(ftok(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID), 0, 0) < 0; ++waited)
                usleep(1000);
        } else {
            waitpid(pid, nullptr, 0);
        }
        return pid;
    }

    std::string dir_, home_;
    key_t key_ = -1;
    bool keep_user_file_ = false;
};

TEST_F(PauseLogTest, NoEventsStillLeaveASegmentToFind) {
    load(R"({"ethernet": [{"slot": 1, "ports": "1-4"}]})");
    std::string out;
    EXPECT_EQ(counts(out), 0);
    EXPECT_EQ(out, std::string(kCountsHeader) + "No Pause Events have occurred on the switch.\n");
    EXPECT_EQ(events(out), 0);
    EXPECT_EQ(out, kEventsHeader);
    EXPECT_EQ(segment_size(), PAUSE_EVENT_REC_SIZE);
}

// Events go to a segment of their size that everyone may read.
TEST_F(PauseLogTest, TheSegmentFollowsTheLogsSize) {
    std::string out, error;
    ASSERT_EQ(events(out), 0);
    EXPECT_EQ(segment_size(), 11u * PAUSE_EVENT_REC_SIZE);
    const int first = shmget(key_, 0, 0);
    shmid_ds info{};
    ASSERT_EQ(shmctl(first, IPC_STAT, &info), 0);
    EXPECT_EQ(info.shm_perm.mode & 0777, 0666u);
    ASSERT_EQ(events(out), 0);
    EXPECT_EQ(shmget(key_, 0, 0), first);  // same size: the same segment
    ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~12/pause", R"({"events": [{"time": "2026-11-23 08:00:00.000001"}]})", error)) << error;
    ASSERT_EQ(events(out), 0);
    EXPECT_NE(out.find(" 1/2             2026-11-23 08:00:00.000001 \n 1/1 "), std::string::npos) << out;
    EXPECT_EQ(segment_size(), 12u * PAUSE_EVENT_REC_SIZE);
    EXPECT_NE(shmctl(first, IPC_STAT, &info), 0);  // the old one is gone
}

TEST_F(PauseLogTest, TheLogKeepsItsNewestEventsAndTheTableItsPorts) {
    load(R"({"ethernet": [{"slot": 1, "ports": "110-113"}, {"slot": 5, "ports": 1}],
             "onboard_log": {"capacity": 2},
             "interfaces": {
               "Ethernet1/112": {"pause": {"counters": {"events": 2147483648}, "events": [{"time": "b"}, {"time": "d"}]}},
               "Ethernet1/113": {"pause": {"counters": {"events": 7}}},
               "Ethernet5/1": {"pause": {"counters": {"events": 9}, "events": [{"time": "c"}]}}}})");
    std::string out;
    ASSERT_EQ(counts(out), 0);
    EXPECT_EQ(out, std::string(kCountsHeader) + " 1/112            -2147483648 \n");
    ASSERT_EQ(events(out), 0);
    const std::string pad(25, ' ');
    EXPECT_EQ(out, std::string(kEventsHeader) + " 5/1             c" + pad + " \n 1/112             d" + pad + " \n");
    qdsim::ScenarioError e;
    EXPECT_FALSE(qdsim::load_scenario_text(R"({"onboard_log": {"capacity": 0}})", "c.json", e));
    EXPECT_NE(e.reason.find("at least 1 event"), std::string::npos) << e.reason;
}

TEST_F(PauseLogTest, AStaleSegmentAndKeyFileOfACrashedRunAreReplacedAndRemoved) {
    make_key_file(qdsim::platform::KeyedSegment::kKeyFileText);
    segment_of_child(100);
    std::string out;
    ASSERT_EQ(events(out), 0);
    EXPECT_NE(out.find(" 1/1             2026-11-23 08:14:02.318734 \n"), std::string::npos);
    EXPECT_EQ(segment_size(), 11u * PAUSE_EVENT_REC_SIZE);
}

TEST_F(PauseLogTest, AKeyFileOfTheUsersIsKept) {
    make_key_file("kept\n");
    keep_user_file_ = true;
    std::string out;
    ASSERT_EQ(events(out), 0);
}

TEST_F(PauseLogTest, ASegmentOfALiveProcessIsNotTaken) {
    make_key_file("theirs\n");
    keep_user_file_ = true;
    int release = -1;
    const pid_t child = segment_of_child(100, &release);
    ASSERT_GT(child, 0);
    std::string out;
    EXPECT_EQ(events(out), -1);
    EXPECT_EQ(out, "The command failed.");
    EXPECT_TRUE(diagnosed(qdsim::take_diagnostics(), "which still runs"));
    const int theirs = shmget(key_, 0, 0);
    EXPECT_GE(theirs, 0);
    close(release);
    waitpid(child, nullptr, 0);
    shmctl(theirs, IPC_RMID, nullptr);
}

// In a directory every user may write to, another user makes the key file
// (or only a segment under this user's key) first, right-sized and 0666:
// nothing of this switch's log is written into it.
TEST_F(PauseLogTest, AnotherUsersKeyFileOrSegmentIsRefused) {
    if (geteuid() != 0) GTEST_SKIP() << "acting as another user needs root";
    ASSERT_EQ(chmod(".", 01777), 0);
    const std::size_t size = 11u * PAUSE_EVENT_REC_SIZE;
    for (const bool theirs_key_file : {true, false}) {
        if (!theirs_key_file) make_key_file("mine\n");
        const pid_t child = fork();
        if (child == 0) {
            if (setgid(65534) != 0 || setuid(65534) != 0) _exit(1);
            umask(0);
            if (theirs_key_file && mkdir("vrid", 0777) == 0) std::ofstream(PAUSE_LOG_FTOK_PATH) << "theirs\n";
            _exit(shmget(ftok(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID), size, IPC_CREAT | 0666) < 0);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0) << "the other user's setup";
        const int segment = shmget(ftok(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID), 0, 0);
        std::string out;
        EXPECT_EQ(events(out), -1);
        EXPECT_TRUE(diagnosed(qdsim::take_diagnostics(), "belongs to another user")) << theirs_key_file;
        const auto *seen = static_cast<const char *>(shmat(segment, nullptr, SHM_RDONLY));
        EXPECT_EQ(std::string(seen, size), std::string(size, '\0')) << "nothing reached their segment";
        shmdt(seen);
        qdsim::shutdown();
        shmctl(segment, IPC_RMID, nullptr);
        unlink(PAUSE_LOG_FTOK_PATH);
        rmdir("vrid");
    }
}

TEST_F(PauseLogTest, AtExitOnlyTheProcessThatMadeASegmentRemovesIt) {
    std::string out;
    ASSERT_EQ(events(out), 0);
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    const pid_t child = fork();
    if (child == 0) {
        // Forked from a host that published: it publishes in a directory of
        // its own and exits without shutting down.
        key_t key = -1;
        if (mkdir("child", 0755) == 0 && chdir("child") == 0 && freopen("/dev/null", "w", stdout) != nullptr &&
            qd_cli_show_logging_onboard_flow_control_pe() == 0)
            key = ftok(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID);
        (void)!write(fds[1], &key, sizeof key);
        std::exit(0);
    }
    close(fds[1]);
    key_t theirs = -1;
    (void)!read(fds[0], &theirs, sizeof theirs);
    close(fds[0]);
    waitpid(child, nullptr, 0);
    ASSERT_NE(theirs, -1);
    EXPECT_LT(shmget(theirs, 0, 0), 0);
    EXPECT_FALSE(exists("child/vrid"));
    EXPECT_EQ(rmdir("child"), 0);
    EXPECT_EQ(segment_size(), 11u * PAUSE_EVENT_REC_SIZE);  // the parent's is the parent's
    EXPECT_TRUE(exists(PAUSE_LOG_FTOK_PATH));
}

TEST_F(PauseLogTest, TwoSwitchesInOneDirectoryShareTheKeyAndTheLastCleansUp) {
    std::string out;
    ASSERT_EQ(events(out), 0);
    qdsim::close_command(qdsim::open_command());  // the command ends: the other may publish
    const pid_t child = fork();
    if (child == 0) {
        // A second switch in the same directory: it publishes its own log
        // (one event), shuts down while the first still runs, and must leave
        // the first one's key file in place.
        qdsim::ScenarioError e;
        int rc = freopen("/dev/null", "w", stdout) != nullptr &&
                         qdsim::load_scenario_text(R"({"ethernet": [{"slot": 1, "ports": 1}],
                             "interfaces": {"Ethernet1/1": {"pause": {"events": [{"time": "child"}]}}}})", "c.json", e)
                     ? qd_cli_show_logging_onboard_flow_control_pe()
                     : 9;
        qdsim::shutdown();
        _exit(rc == 0 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(exists(PAUSE_LOG_FTOK_PATH)) << "the second switch took the first one's key file";
    ASSERT_EQ(events(out), 0);
    EXPECT_TRUE(out.ends_with(" 1/1             2026-11-23 08:14:02.318734 \n")) << out;
    EXPECT_EQ(segment_size(), 11u * PAUSE_EVENT_REC_SIZE);
}

TEST_F(PauseLogTest, MalformedQueriesAreRefused) {
    load(R"({"ethernet": [{"slot": 1, "ports": 1}]})");
    std::uint32_t buffer[2] = {ONBOARD_LOG_PAUSE_COUNTS, 0};
    EXPECT_EQ(sse_call2(SSE_OP_ONBOARD_LOG, buffer, sizeof buffer), -1);
    buffer[0] = 9;
    EXPECT_EQ(sse_call2(SSE_OP_ONBOARD_LOG, buffer, sizeof buffer), -1);
    const auto diagnostics = qdsim::take_diagnostics();
    EXPECT_TRUE(diagnosed(diagnostics, "needs 1796 bytes, not 8"));
    EXPECT_TRUE(diagnosed(diagnostics, "unknown sub-command 9"));
}

}  // namespace
}  // namespace simtest
