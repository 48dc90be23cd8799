// SPDX-License-Identifier: MIT
// Heap allocations made by the command handlers, told apart from those of
// the scripted platform and of the benchmark itself.
//
// The counter library (libqdbench_alloc.so) defines malloc, calloc,
// realloc, aligned_alloc, posix_memalign and memalign in front of the C
// library, so every allocation of the process passes through it, operator
// new included (it allocates with malloc). While counting is on, each
// allocation's call stack is walked from the inside out, past the C and C++
// runtime libraries, to the first frame that is either in the library under
// test or in the benchmark executable (which holds the scripted platform):
// the allocation is the handlers' in the first case and the platform's in
// the second. Counting is slow (a stack walk per allocation); it runs on
// its own, never inside a timed loop.
#pragma once

#include <cstddef>

namespace qdbench {

struct AllocCount {
    std::size_t library = 0;   // allocations whose nearest owner is the library under test
    std::size_t platform = 0;  // allocations of the scripted platform or the benchmark
    std::size_t bytes = 0;     // bytes asked for by the library's allocations
};

// Names the shared object that holds the library under test: a loaded
// object whose path contains `name`. Returns false when none is loaded.
bool alloc_counter_init(const char *library_name);

void alloc_counter_start();
AllocCount alloc_counter_stop();

}  // namespace qdbench
