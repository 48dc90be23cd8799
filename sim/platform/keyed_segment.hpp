// SPDX-License-Identifier: MIT
// A System V shared-memory segment that a service publishes under a key
// made with ftok from a file relative to the current directory, the way the
// switch's services and their readers agree on a segment.
//
// Several simulated switches (several qdsh, say) may run in one directory:
// the key file, and so the key and the segment, are then theirs together.
//
// - Each process that publishes holds a shared lock (flock) on the key file
//   for as long as it uses it. The last one to give it back (the one that
//   gets the lock exclusively) removes the segment, and the key file and its
//   directory when a simulator made them (the file holds kKeyFileText; the
//   directory goes only when empty). A process that dies holds nothing, so
//   what it left is reclaimed by the next one that leaves.
// - Publishing takes a write lock (fcntl) on the key file, held until the
//   command ends (end_use, run when the command closes), so that no other
//   process rewrites or resizes the segment between this process writing it
//   and its reader reading it. A wait for it ends after kLockWait.
// - A segment under the key that the size does not fit is removed and made
//   again, when its maker is gone, is this process, or shares the key file;
//   a segment of any other live process is never touched.
//
// The segment is created with permissions 0666 and exactly the size asked
// for. release(), which qdsim::shutdown runs (and again at exit if a host
// never shut down), gives this process's share back.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace qdsim::platform {

class KeyedSegment {
public:
    KeyedSegment(std::string key_file, int project_id, std::string what);
    KeyedSegment(const KeyedSegment &) = delete;
    KeyedSegment &operator=(const KeyedSegment &) = delete;

    // Makes the segment `size` bytes (at least 1) holding `length` bytes of
    // `bytes`, the rest 0, and keeps other processes from changing it until
    // end_use. On failure `error` says why.
    bool publish(const std::uint8_t *bytes, std::size_t length, std::size_t size, std::string &error);

    // Lets other processes publish again (the reader has read).
    void end_use();

    // Gives this process's share back (see above). Safe to call at any
    // time, repeatedly; a process forked from one that held a share only
    // forgets it.
    void release();

    // What a key file that a simulator made contains; one with exactly this
    // text was made by a simulator, and is removed by the last one to leave.
    static const char kKeyFileText[];

    static constexpr std::chrono::milliseconds kLockWait{3000};

private:
    bool join(const std::string &path, std::string &error);
    bool lock_for_use(std::string &error);
    bool replace_unfit(key_t key, std::size_t size, std::string &error);
    void forget();

    std::string key_file_;
    int project_id_;
    std::string what_;

    std::string path_;  // absolute path of the key file in use
    int fd_ = -1;       // open on it, holding the shared flock
    bool in_use_ = false;
    pid_t owner_ = -1;  // the process that holds fd_
    bool cleanup_registered_ = false;
};

}  // namespace qdsim::platform
