// SPDX-License-Identifier: MIT
#include "alloc_counter.hpp"

#include <execinfo.h>
#include <link.h>

#include <cstdint>
#include <cstring>

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *pointer, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void *pointer);
}

namespace qdbench {
namespace {

struct Range {
    std::uintptr_t begin = 0, end = 0;
    bool contains(std::uintptr_t address) const { return address >= begin && address < end; }
};

constexpr int kMaxRanges = 8;
struct Object {
    Range ranges[kMaxRanges];
    int count = 0;
    bool contains(std::uintptr_t address) const {
        for (int i = 0; i < count; ++i)
            if (ranges[i].contains(address)) return true;
        return false;
    }
};

Object library_code;     // the library under test
Object executable_code;  // the benchmark with the scripted platform
Object counter_code;     // this counter

bool counting = false;
thread_local bool inside = false;
AllocCount totals;

void add_executable_segments(const dl_phdr_info *info, Object &object) {
    for (int i = 0; i < info->dlpi_phnum && object.count < kMaxRanges; ++i) {
        const ElfW(Phdr) &segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0) continue;
        const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
        object.ranges[object.count++] = {begin, begin + segment.p_memsz};
    }
}

struct Search {
    const char *library_name;
    std::uintptr_t counter_address;
    bool found_library = false;
};

int visit(dl_phdr_info *info, std::size_t, void *data) {
    auto &search = *static_cast<Search *>(data);
    const char *name = info->dlpi_name != nullptr ? info->dlpi_name : "";
    Object scratch;
    add_executable_segments(info, scratch);
    if (scratch.contains(search.counter_address)) {
        counter_code = scratch;
    } else if (name[0] == '\0' && executable_code.count == 0) {
        executable_code = scratch;  // the first object without a name is the executable
    } else if (std::strstr(name, search.library_name) != nullptr) {
        library_code = scratch;
        search.found_library = true;
    }
    return 0;
}

void classify(std::size_t size) {
    void *frames[48];
    const int depth = backtrace(frames, 48);
    for (int i = 0; i < depth; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(frames[i]);
        if (counter_code.contains(address)) continue;
        if (library_code.contains(address)) {
            ++totals.library;
            totals.bytes += size;
            return;
        }
        if (executable_code.contains(address)) {
            ++totals.platform;
            return;
        }
    }
    ++totals.platform;  // no owner found: never the library's
}

void note(std::size_t size) {
    if (!counting || inside) return;
    inside = true;
    classify(size);
    inside = false;
}

}  // namespace

bool alloc_counter_init(const char *library_name) {
    Search search{library_name, reinterpret_cast<std::uintptr_t>(&classify)};
    dl_iterate_phdr(visit, &search);
    // The first stack walk loads the unwinder; do it before counting.
    void *frames[4];
    inside = true;
    backtrace(frames, 4);
    inside = false;
    return search.found_library;
}

void alloc_counter_start() {
    totals = {};
    counting = true;
}

AllocCount alloc_counter_stop() {
    counting = false;
    return totals;
}

}  // namespace qdbench

extern "C" {

__attribute__((visibility("default"))) void *malloc(std::size_t size) {
    qdbench::note(size);
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void *calloc(std::size_t count, std::size_t size) {
    qdbench::note(count * size);
    return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void *realloc(void *pointer, std::size_t size) {
    qdbench::note(size);
    return __libc_realloc(pointer, size);
}

__attribute__((visibility("default"))) void free(void *pointer) { __libc_free(pointer); }

__attribute__((visibility("default"))) void *memalign(std::size_t alignment, std::size_t size) {
    qdbench::note(size);
    return __libc_memalign(alignment, size);
}

__attribute__((visibility("default"))) void *aligned_alloc(std::size_t alignment, std::size_t size) {
    qdbench::note(size);
    return __libc_memalign(alignment, size);
}

__attribute__((visibility("default"))) int posix_memalign(void **result, std::size_t alignment, std::size_t size) {
    qdbench::note(size);
    void *pointer = __libc_memalign(alignment, size);
    if (pointer == nullptr) return 12;  // ENOMEM
    *result = pointer;
    return 0;
}

}  // extern "C"
