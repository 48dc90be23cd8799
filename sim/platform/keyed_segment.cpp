// SPDX-License-Identifier: MIT
#include "platform/keyed_segment.hpp"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>

#include "core/cleanup.hpp"

namespace qdsim::platform {
namespace {

std::string why(const std::string &what) { return what + ": " + std::strerror(errno); }

std::string current_directory() {
    std::string buffer(256, '\0');
    while (getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE || buffer.size() > 65536) return {};
        buffer.resize(buffer.size() * 2);
    }
    buffer.resize(std::strlen(buffer.c_str()));
    return buffer;
}

std::string parent_of(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos || slash == 0 ? std::string() : path.substr(0, slash);
}

bool exists(const std::string &path) {
    struct stat st {};
    return lstat(path.c_str(), &st) == 0;
}

bool holds_exactly(const std::string &path, const std::string &text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream content;
    content << in.rdbuf();
    return content.str() == text;
}

// A process that still runs (one we may not signal runs too).
bool alive(pid_t pid) { return pid > 0 && (kill(pid, 0) == 0 || errno == EPERM); }

}  // namespace

const char KeyedSegment::kKeyFileText[] =
    "Key file of a shared-memory segment of the simulated switch; removed when the simulator shuts down.\n";

KeyedSegment::KeyedSegment(std::string key_file, int project_id, std::string what)
    : key_file_(std::move(key_file)), project_id_(project_id), what_(std::move(what)) {}

bool KeyedSegment::prepare_key_file(std::string &error) {
    if (owner_ != getpid()) release();  // what a parent made before a fork stays the parent's
    owner_ = getpid();
    const std::string cwd = current_directory();
    if (cwd.empty()) {
        error = why("cannot tell the current directory");
        return false;
    }
    const std::string path = cwd + "/" + key_file_;
    if (path != path_) {
        // The key is the current directory's: what was published under
        // another directory's key is given back first.
        release();
        path_ = path;
    }
    const std::string dir = parent_of(path);
    if (!dir.empty() && !exists(dir)) {
        if (mkdir(dir.c_str(), 0755) != 0) {
            error = why("cannot make " + dir);
            return false;
        }
        made_dir_ = dir;
    }
    if (!exists(path)) {
        const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        if (fd < 0) {
            error = why("cannot make the key file " + path);
            return false;
        }
        const std::size_t length = sizeof kKeyFileText - 1;
        const bool written = write(fd, kKeyFileText, length) == static_cast<ssize_t>(length);
        close(fd);
        made_file_ = path;
        if (!written) {
            error = why("cannot write the key file " + path);
            return false;
        }
    } else if (made_file_ != path && holds_exactly(path, kKeyFileText)) {
        // Left by a run that never shut down: this run gives it back.
        made_file_ = path;
        if (made_dir_.empty()) made_dir_ = dir;  // removed only if nothing else is in it
    }
    return true;
}

bool KeyedSegment::remove_stale(key_t key, std::string &error) {
    const int found = shmget(key, 0, 0);
    if (found < 0) return true;  // nothing under the key
    shmid_ds info{};
    if (shmctl(found, IPC_STAT, &info) != 0) {
        error = why("cannot inspect the segment already under the key of " + path_);
        return false;
    }
    if (info.shm_cpid != getpid() && alive(info.shm_cpid)) {
        error = "the key of " + path_ + " is taken by a segment of process " + std::to_string(info.shm_cpid) +
                ", which still runs";
        return false;
    }
    if (shmctl(found, IPC_RMID, nullptr) != 0) {
        error = why("cannot remove the stale segment under the key of " + path_);
        return false;
    }
    return true;
}

bool KeyedSegment::publish(const std::uint8_t *bytes, std::size_t length, std::size_t size, std::string &error) {
    if (size == 0 || length > size) {
        error = "a segment of " + std::to_string(size) + " bytes cannot hold " + std::to_string(length);
        return false;
    }
    if (!cleanup_registered_) {
        // Before anything is made: a key directory made by a publish that
        // then fails is given back too.
        cleanup_registered_ = true;
        register_cleanup(what_, [this] {
            cleanup_registered_ = false;
            release();
        });
    }
    if (!prepare_key_file(error)) return false;
    const key_t key = ftok(path_.c_str(), project_id_);
    if (key == static_cast<key_t>(-1)) {
        error = why("no key from " + path_);
        return false;
    }
    if (shmid_ >= 0) {
        shmid_ds info{};
        const bool still_there = shmctl(shmid_, IPC_STAT, &info) == 0 && !(info.shm_perm.mode & SHM_DEST);
        if (!still_there || key != key_ || size != size_) remove_segment();
    }
    if (shmid_ < 0) {
        if (!remove_stale(key, error)) return false;
        const int id = shmget(key, size, IPC_CREAT | IPC_EXCL | 0666);
        if (id < 0) {
            error = why("cannot create a segment of " + std::to_string(size) + " bytes under the key of " + path_);
            return false;
        }
        shmid_ = id;
        key_ = key;
        size_ = size;
    }
    void *base = shmat(shmid_, nullptr, 0);
    if (base == reinterpret_cast<void *>(-1)) {
        error = why("cannot attach the segment");
        return false;
    }
    auto *out = static_cast<std::uint8_t *>(base);
    if (length != 0) std::memcpy(out, bytes, length);
    std::memset(out + length, 0, size - length);
    shmdt(base);
    return true;
}

void KeyedSegment::remove_segment() {
    if (shmid_ >= 0 && owner_ == getpid()) shmctl(shmid_, IPC_RMID, nullptr);
    shmid_ = -1;
    key_ = -1;
    size_ = 0;
}

void KeyedSegment::remove_key_file() {
    if (owner_ == getpid()) {
        if (!made_file_.empty()) unlink(made_file_.c_str());
        if (!made_dir_.empty()) rmdir(made_dir_.c_str());  // only when empty: what others put there stays
    }
    made_file_.clear();
    made_dir_.clear();
}

void KeyedSegment::release() {
    remove_segment();
    remove_key_file();
    path_.clear();
}

}  // namespace qdsim::platform
