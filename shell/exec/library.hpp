// SPDX-License-Identifier: MIT
// The handler library, loaded at run time and searched by exported name.
#pragma once

#include <string>

namespace qdsh {

class Library {
public:
    Library() = default;
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;
    ~Library();

    // Loads `path`; on failure `error` tells why.
    bool open(const std::string &path, std::string &error);
    bool is_open() const { return handle_ != nullptr; }
    const std::string &path() const { return path_; }

    // The exported symbol `name`, or null.
    void *symbol(const std::string &name) const;

private:
    void *handle_ = nullptr;
    std::string path_;
};

// Where the handler library is taken from: --lib, else $QDSH_LIBQDCLI, else
// the installed layout next to the executable, else the build tree.
std::string find_library(const std::string &from_option);

}  // namespace qdsh
