// SPDX-License-Identifier: MIT
// Fuzz targets of the onboard pause log and the extender drop report.
#include <sys/ipc.h>
#include <sys/shm.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "entries/targets.hpp"
#include "qdcli/handlers.h"

// Onboard pause-event counts: the input is what the logging service writes
// into the count table (subcommand word, then 4 x 112 counts, host order);
// bit 0 of the first byte makes the service call fail instead.
void qdfuzz_pause_counts(qdfuzz::Session &session, qdfuzz::Input &in) {
    const bool fail = (in.u8() & 1) != 0;
    const qdfuzz::Bytes answer = in.rest();
    session.pf().sse_call2_handler = [&answer, fail](std::uint32_t, void *buffer, std::uint32_t length) {
        if (!answer.empty()) std::memcpy(buffer, answer.data(), answer.size() < length ? answer.size() : length);
        return fail ? -1 : 0;
    };
    qd_cli_show_logging_onboard_flow_control_td();
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_pause_counts() {
    qdfuzz::Bytes table(1 + 4 + 4 * 112 * 4, 0);
    qdfuzz::put_host32(table, 1, 7);
    qdfuzz::put_host32(table, 1 + 4 + 4 * (0 * 112 + 0), 3);
    qdfuzz::put_host32(table, 1 + 4 + 4 * (3 * 112 + 111), 0x80000000u);
    qdfuzz::put_host32(table, 1 + 4 + 4 * (1 * 112 + 5), 12);
    return {table, {0}, {1}};
}

// Onboard pause-event list: the input is
//   [flags: 1][event count: 4, host order, signed][segment bytes...]
// The count is what the logging service answers; the segment bytes are the
// shared-memory segment of 268-byte event records the service keeps.
//   flags bit 0: the service call fails
//   bit 1: the key cannot be made     bit 2: the segment cannot be attached
//   bit 3: the segment size cannot be asked for   bit 4: the detach fails
//
// The segment calls are served here in place of the kernel's: the segment
// ends where an inaccessible page begins (a read past it faults), and it
// must be detached exactly once for every attach.
namespace {

constexpr key_t kKey = 0x51440041;
constexpr int kSegmentId = 7;

struct Segment {
    bool present = false;
    std::uint8_t flags = 0;
    qdtest::GuardedBytes bytes;
    int attached = 0;  // attaches not yet detached
    int detach_errors = 0;

    void place(const qdfuzz::Bytes &content) {
        bytes.place(content);
        present = true;
    }
    void clear() {
        bytes.unmap();
        *this = Segment{};
    }
};

Segment segment;

}  // namespace

extern "C" key_t ftok(const char *, int) noexcept {
    if ((segment.flags & 2) != 0) {
        errno = ENOENT;
        return -1;
    }
    return kKey;
}

extern "C" int shmget(key_t key, size_t size, int) noexcept {
    if (key != kKey || !segment.present || size > segment.bytes.length) {
        errno = segment.present ? EINVAL : ENOENT;
        return -1;
    }
    return kSegmentId;
}

extern "C" void *shmat(int id, const void *, int) noexcept {
    if (id != kSegmentId || (segment.flags & 4) != 0) {
        errno = EINVAL;
        return reinterpret_cast<void *>(-1);
    }
    ++segment.attached;
    return segment.bytes.data;
}

extern "C" int shmctl(int id, int command, struct shmid_ds *info) noexcept {
    if (id != kSegmentId || command != IPC_STAT || info == nullptr || (segment.flags & 8) != 0) {
        errno = EACCES;
        return -1;
    }
    std::memset(info, 0, sizeof *info);
    info->shm_segsz = segment.bytes.length;
    return 0;
}

extern "C" int shmdt(const void *address) noexcept {
    if (address != segment.bytes.data || segment.attached == 0) {
        ++segment.detach_errors;
        errno = EINVAL;
        return -1;
    }
    --segment.attached;
    if ((segment.flags & 16) != 0) {
        errno = EINVAL;
        return -1;
    }
    return 0;
}

void qdfuzz_pause_events(qdfuzz::Session &session, qdfuzz::Input &in) {
    segment.clear();
    segment.flags = in.u8();
    const auto count = static_cast<std::int32_t>(in.le32());
    segment.place(in.rest());
    const bool fail = (segment.flags & 1) != 0;
    session.pf().sse_call2_handler = [count, fail](std::uint32_t, void *buffer, std::uint32_t length) {
        if (length >= 8) std::memcpy(static_cast<std::uint8_t *>(buffer) + 4, &count, 4);
        return fail ? -1 : 0;
    };
    qd_cli_show_logging_onboard_flow_control_pe();
    if (segment.attached != 0 || segment.detach_errors != 0) {
        std::fprintf(stderr, "shared-memory segment: %d attaches left, %d bad detaches\n", segment.attached,
                     segment.detach_errors);
        std::abort();
    }
    segment.clear();
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_pause_events() {
    auto input = [](std::uint8_t flags, std::int32_t count, std::size_t records, std::size_t extra = 0) {
        qdfuzz::Bytes b{flags};
        qdfuzz::put_host32(b, 1, static_cast<std::uint32_t>(count));
        b.resize(5 + 268 * records + extra, 0);
        for (std::size_t r = 0; r < records; ++r) {
            std::uint8_t *rec = &b[5 + 268 * r];
            std::snprintf(reinterpret_cast<char *>(rec + 4), 256, "2026-11-23 09:%02zu:00.123456", r % 60);
            rec[260] = static_cast<std::uint8_t>(r % 112);
            rec[264] = static_cast<std::uint8_t>(r % 4);
        }
        return b;
    };
    qdfuzz::Bytes unterminated = input(0, 1, 1);
    std::memset(&unterminated[5 + 4], 'x', 256);
    return {input(0, 3, 3), input(0, 5, 2, 100), input(1, 0, 0), input(1, 4, 0), input(0, -1, 1),
            input(16, 2, 2), input(8, 2, 3), unterminated, input(2, 1, 1), input(4, 1, 1)};
}

// Extender drop report: the input is a sequence of exchange frames, one per
// extender present (extender 100 + i answers with frame i; at most 100).
namespace {
constexpr std::size_t kExtenders = 100;
constexpr std::uint32_t kFirstVaq = 100;

// A sub-command 27 reply: header, ASIC count, SS count per ASIC, then a row
// of 12 drop counts per ASIC.
qdfuzz::Bytes drops_reply(const std::vector<std::vector<std::uint8_t>> &asics) {
    qdfuzz::Bytes b(37 + 12 * 4, 0);
    b[32] = static_cast<std::uint8_t>(asics.size());
    for (std::size_t a = 0; a < asics.size() && a < 4; ++a) {
        b[33 + a] = static_cast<std::uint8_t>(asics[a].size());
        for (std::size_t s = 0; s < asics[a].size() && s < 12; ++s) b[37 + 12 * a + s] = asics[a][s];
    }
    return b;
}
}  // namespace

void qdfuzz_vaq_drops(qdfuzz::Session &session, qdfuzz::Input &in) {
    const std::size_t present = session.replies(in, kExtenders);
    for (std::size_t i = 0; i < present; ++i) {
        const auto slot = static_cast<std::uint8_t>(i);
        session.pf().slot_of_sat[kFirstVaq + i - 1] = slot;  // asked for k - 1, module 0
        session.pf().module_node[slot] = 0x0100u * (slot + 1u) + 2u;
    }
    process_qd_cli_show_vaq_drops_all(session.command());
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_vaq_drops() {
    const qdfuzz::Bytes one = drops_reply({{3, 15}});
    const qdfuzz::Bytes full = drops_reply({std::vector<std::uint8_t>(12, 15), {}, {1, 2, 3}, {0, 1}});
    qdfuzz::Bytes too_many_asics = drops_reply({{1}});
    too_many_asics[32] = 5;
    qdfuzz::Bytes too_many_ss = drops_reply({{1}, {2}});
    too_many_ss[34] = 13;
    return {
        qdfuzz::Frames().reply(one),
        qdfuzz::Frames().reply(full).reply(drops_reply({})).no_payload().send_failure().recv_failure().reply(one),
        qdfuzz::Frames().reply(too_many_asics).reply(too_many_ss).reply(qdfuzz::cut(full, 40)).reply(
            qdfuzz::cut(one, 32)),
    };
}
