// SPDX-License-Identifier: MIT
// A System V shared-memory segment that a service publishes under a key
// made with ftok from a file relative to the current directory, the way the
// switch's services and their readers agree on a segment.
//
// publish() makes what the key needs (the key file and its directory, when
// they are missing, remembering what it made), removes a stale segment that
// a run which ended without cleaning up left under the same key, creates
// the segment with permissions 0666 and exactly the size asked for
// (recreating it when the size or the key changes), and writes it. The
// segment, and the file and directory it made, are given back by release(),
// which qdsim::shutdown runs, and again at exit if a host never shut down.
#pragma once

#include <sys/types.h>

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
    // `bytes`, the rest 0. On failure `error` says why; a segment published
    // before under another key or size is gone by then.
    bool publish(const std::uint8_t *bytes, std::size_t length, std::size_t size, std::string &error);

    // Removes the segment and the key file and directory this made (or took
    // over from a run that left them). Safe to call at any time, repeatedly;
    // a process forked from the one that made them only forgets them.
    void release();

    int id() const { return shmid_; }  // -1 when there is none

    // What a key file that this class made contains; a file with exactly
    // this text was left by an earlier run and is taken over.
    static const char kKeyFileText[];

private:
    bool prepare_key_file(std::string &error);
    bool remove_stale(key_t key, std::string &error);
    void remove_segment();
    void remove_key_file();

    std::string key_file_;
    int project_id_;
    std::string what_;

    std::string path_;          // absolute path of the key file in use
    std::string made_file_;     // the key file when this made it, else empty
    std::string made_dir_;      // its directory when this made it, else empty
    int shmid_ = -1;
    key_t key_ = -1;
    std::size_t size_ = 0;
    pid_t owner_ = -1;          // the process that made what is held
    bool cleanup_registered_ = false;
};

}  // namespace qdsim::platform
