// SPDX-License-Identifier: MIT
// The inputs a replay runs after a target's seeds: every regular file of
// each directory given (missing ones skipped), in name order.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fuzzreplay {

// Calls visit(contents, file name) for each file; returns how many.
template <class Contents, class Visit>
std::size_t for_each_file(int count, char **dirs, Visit &&visit) {
    namespace fs = std::filesystem;
    std::size_t inputs = 0;
    for (int d = 0; d < count; ++d) {
        if (!fs::is_directory(dirs[d])) continue;
        std::vector<fs::path> files;
        for (const auto &entry : fs::directory_iterator(dirs[d]))
            if (entry.is_regular_file()) files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        for (const fs::path &file : files) {
            std::ifstream in(file, std::ios::binary);
            visit(Contents(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()), file.filename().string());
            ++inputs;
        }
    }
    return inputs;
}

}  // namespace fuzzreplay
