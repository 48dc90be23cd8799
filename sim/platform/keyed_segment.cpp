// SPDX-License-Identifier: MIT
#include "platform/keyed_segment.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <thread>

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

// A process that still runs (one we may not signal runs too).
bool alive(pid_t pid) { return pid > 0 && (kill(pid, 0) == 0 || errno == EPERM); }

// Whether the open key file holds exactly `text` (read through the open
// descriptor: opening and closing the file again would drop this process's
// fcntl locks on it).
bool holds_exactly(int fd, const std::string &text) {
    std::string content(text.size() + 1, '\0');
    const ssize_t n = pread(fd, content.data(), content.size(), 0);
    return n == static_cast<ssize_t>(text.size()) && content.compare(0, text.size(), text) == 0;
}

// Whether process `pid` holds a lock on the file open at `fd` (a simulator
// sharing the key file), as the kernel lists locks in /proc/locks.
bool locks_same_file(pid_t pid, int fd) {
    struct stat st {};
    if (fstat(fd, &st) != 0) return false;
    char file_id[64];
    std::snprintf(file_id, sizeof file_id, "%02x:%02x:%lu", major(st.st_dev), minor(st.st_dev),
                  static_cast<unsigned long>(st.st_ino));
    std::ifstream locks("/proc/locks");
    std::string line;
    std::string who = " ";
    who += std::to_string(pid);
    who += ' ';
    who += file_id;
    who += ' ';
    while (std::getline(locks, line))
        if (line.find(who) != std::string::npos) return true;
    return false;
}

// The key file and its directory must be this user's (or root's), and the
// directory writable by nobody else unless sticky: otherwise another user
// could make the key (and so choose the segment) this process publishes to.
bool trusted_place(int fd, const std::string &dir, std::string &error) {
    const uid_t me = geteuid();
    struct stat file {};
    if (fstat(fd, &file) != 0 || (file.st_uid != me && file.st_uid != 0)) {
        error = "belongs to another user (uid " + std::to_string(file.st_uid) + "): not used";
        return false;
    }
    struct stat place {};
    if (!dir.empty() && (lstat(dir.c_str(), &place) != 0 || !S_ISDIR(place.st_mode) ||
                         (place.st_uid != me && place.st_uid != 0) ||
                         ((place.st_mode & (S_IWGRP | S_IWOTH)) != 0 && (place.st_mode & S_ISVTX) == 0))) {
        error = "is in " + dir + ", which is not a directory of this user that only they may change: not used";
        return false;
    }
    return true;
}

// A segment only this user made and owns is written to.
bool own_segment(const shmid_ds &info) {
    return info.shm_perm.uid == geteuid() && info.shm_perm.cuid == geteuid();
}

bool same_file(int fd, const std::string &path) {
    struct stat open_one {}, named {};
    return fstat(fd, &open_one) == 0 && stat(path.c_str(), &named) == 0 && open_one.st_dev == named.st_dev &&
           open_one.st_ino == named.st_ino;
}

}  // namespace

const char KeyedSegment::kKeyFileText[] =
    "Key file of a shared-memory segment of the simulated switch; removed when the simulator shuts down.\n";

KeyedSegment::KeyedSegment(std::string key_file, int project_id, std::string what)
    : key_file_(std::move(key_file)), project_id_(project_id), what_(std::move(what)) {}

void KeyedSegment::forget() {
    // What a parent held before a fork stays the parent's: the descriptor is
    // closed without touching its locks (the parent's copy keeps them).
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
    in_use_ = false;
    path_.clear();
    owner_ = getpid();
}

bool KeyedSegment::join(const std::string &path, std::string &error) {
    const std::string dir = parent_of(path);
    for (int attempt = 0; attempt < 20; ++attempt) {
        if (!dir.empty() && mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) {
            error = why("cannot make " + dir);
            return false;
        }
        int fd = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
        if (fd < 0 && errno == EACCES) fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
        if (fd < 0 && errno == ENOENT) {
            // Made whole under another name, then linked into place: a
            // process that opens the key file never sees it half written.
            const std::string made = dir + "/.qdsim-key-" + std::to_string(getpid());
            // O_EXCL: a name planted in a shared directory (a link to
            // someone's file) is never written through.
            unlink(made.c_str());
            const int out = open(made.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
            if (out < 0) {
                error = why("cannot make the key file " + path);
                return false;
            }
            const std::size_t length = sizeof kKeyFileText - 1;
            const bool written = write(out, kKeyFileText, length) == static_cast<ssize_t>(length);
            close(out);
            const bool linked = written && (link(made.c_str(), path.c_str()) == 0 || errno == EEXIST);
            unlink(made.c_str());
            if (!linked) {
                error = why("cannot make the key file " + path);
                return false;
            }
            continue;  // open what is there now
        }
        if (fd < 0) {
            error = why("cannot open the key file " + path);
            return false;
        }
        if (std::string refused; !trusted_place(fd, dir, refused)) {
            error = "the key file " + path + " " + refused;
            close(fd);
            return false;
        }
        if (flock(fd, LOCK_SH) != 0) {
            error = why("cannot lock the key file " + path);
            close(fd);
            return false;
        }
        // The last user may have removed the file between the open and the
        // lock: then the one now at the path is joined instead.
        if (same_file(fd, path)) {
            fd_ = fd;
            path_ = path;
            return true;
        }
        close(fd);
    }
    error = "the key file " + path + " keeps changing under other processes";
    return false;
}

bool KeyedSegment::lock_for_use(std::string &error) {
    if (in_use_) return true;
    if ((fcntl(fd_, F_GETFL) & O_ACCMODE) == O_RDONLY) return true;  // a read-only key file: no lock to take
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    const auto until = std::chrono::steady_clock::now() + kLockWait;
    while (fcntl(fd_, F_SETLK, &whole) != 0) {
        if (errno != EACCES && errno != EAGAIN && errno != EINTR) {
            error = why("cannot lock the key file " + path_);
            return false;
        }
        if (std::chrono::steady_clock::now() >= until) {
            error = "the segment of " + path_ + " is in use by another process (waited " +
                    std::to_string(kLockWait.count()) + " ms)";
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    in_use_ = true;
    return true;
}

void KeyedSegment::end_use() {
    if (!in_use_ || fd_ < 0 || owner_ != getpid()) return;
    struct flock whole {};
    whole.l_type = F_UNLCK;
    whole.l_whence = SEEK_SET;
    fcntl(fd_, F_SETLK, &whole);
    in_use_ = false;
}

bool KeyedSegment::replace_unfit(key_t key, std::size_t size, std::string &error) {
    const int found = shmget(key, 0, 0);
    if (found < 0) return true;  // nothing under the key
    shmid_ds info{};
    if (shmctl(found, IPC_STAT, &info) != 0) {
        error = why("cannot inspect the segment already under the key of " + path_);
        return false;
    }
    if (!own_segment(info)) {
        error = "the segment under the key of " + path_ + " belongs to another user (uid " +
                std::to_string(info.shm_perm.cuid) + "): not written to";
        return false;
    }
    if (info.shm_segsz == size && !(info.shm_perm.mode & SHM_DEST)) return true;  // fits: written over
    const pid_t maker = info.shm_cpid;
    if (maker != getpid() && alive(maker) && !locks_same_file(maker, fd_)) {
        error = "the key of " + path_ + " is taken by a segment of process " + std::to_string(maker) +
                ", which still runs";
        return false;
    }
    if (shmctl(found, IPC_RMID, nullptr) != 0) {
        error = why("cannot remove the segment of another size under the key of " + path_);
        return false;
    }
    return true;
}

bool KeyedSegment::publish(const std::uint8_t *bytes, std::size_t length, std::size_t size, std::string &error) {
    if (size == 0 || length > size) {
        error = "a segment of " + std::to_string(size) + " bytes cannot hold " + std::to_string(length);
        return false;
    }
    if (owner_ != getpid()) forget();
    if (!cleanup_registered_) {
        // Before anything is made: a key directory made by a publish that
        // then fails is given back too.
        cleanup_registered_ = true;
        register_cleanup(what_, [this] {
            cleanup_registered_ = false;
            release();
        });
    }
    const std::string cwd = current_directory();
    if (cwd.empty()) {
        error = why("cannot tell the current directory");
        return false;
    }
    const std::string path = cwd + "/" + key_file_;
    if (path != path_) release();  // the key is the current directory's
    if (fd_ < 0 && !join(path, error)) return false;
    if (!lock_for_use(error)) return false;

    const key_t key = ftok(path_.c_str(), project_id_);
    if (key == static_cast<key_t>(-1)) {
        error = why("no key from " + path_);
        return false;
    }
    if (!replace_unfit(key, size, error)) return false;
    int id = shmget(key, size, 0);
    if (id < 0) id = shmget(key, size, IPC_CREAT | IPC_EXCL | 0666);
    if (id < 0) {
        error = why("cannot create a segment of " + std::to_string(size) + " bytes under the key of " + path_);
        return false;
    }
    // Checked again on the segment about to be written (one may have been
    // made under the key since): another user's is never written to.
    shmid_ds info{};
    if (shmctl(id, IPC_STAT, &info) != 0 || !own_segment(info)) {
        error = "the segment under the key of " + path_ + " belongs to another user: not written to";
        return false;
    }
    void *base = shmat(id, nullptr, 0);
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

void KeyedSegment::release() {
    if (fd_ < 0) return;
    if (owner_ != getpid()) {
        forget();
        return;
    }
    end_use();
    // Converting the shared lock succeeds only when no other process holds
    // one: this is the last user, and what the users shared goes.
    if (flock(fd_, LOCK_EX | LOCK_NB) == 0) {
        const bool made_by_a_simulator = holds_exactly(fd_, kKeyFileText);
        const key_t key = ftok(path_.c_str(), project_id_);
        const int id = key == static_cast<key_t>(-1) ? -1 : shmget(key, 0, 0);
        shmid_ds info{};
        if (id >= 0 && shmctl(id, IPC_STAT, &info) == 0 &&
            (made_by_a_simulator || info.shm_cpid == getpid() || !alive(info.shm_cpid)))
            shmctl(id, IPC_RMID, nullptr);
        if (made_by_a_simulator) {
            unlink(path_.c_str());
            const std::string dir = parent_of(path_);
            if (!dir.empty()) rmdir(dir.c_str());  // only when empty: what others put there stays
        }
    }
    close(fd_);
    fd_ = -1;
    in_use_ = false;
    path_.clear();
}

}  // namespace qdsim::platform
