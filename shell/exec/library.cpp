// SPDX-License-Identifier: MIT
#include "exec/library.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#ifndef QDSH_INSTALLED_LIBQDCLI
#define QDSH_INSTALLED_LIBQDCLI "../lib/libqdcli.so"
#endif
#ifndef QDSH_BUILD_LIBQDCLI
#define QDSH_BUILD_LIBQDCLI ""
#endif

namespace qdsh {

Library::~Library() {
    // Not unloaded: qdsh ends soon after, and a library that stays mapped
    // keeps its frames readable in the sanitizers' reports at exit.
}

bool Library::open(const std::string &path, std::string &error) {
    // RTLD_NOW: a platform operation that the host does not provide is told
    // here, not as a crash in the middle of a command.
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char *why = dlerror();
        error = why != nullptr ? why : "unknown error";
        return false;
    }
    path_ = path;
    return true;
}

void *Library::symbol(const std::string &name) const {
    if (handle_ == nullptr) return nullptr;
    dlerror();
    return dlsym(handle_, name.c_str());
}

std::string find_library(const std::string &from_option) {
    if (!from_option.empty()) return from_option;
    if (const char *env = std::getenv("QDSH_LIBQDCLI"); env != nullptr && *env != '\0') return env;
    std::error_code ec;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        const std::filesystem::path installed = self.parent_path() / QDSH_INSTALLED_LIBQDCLI;
        if (std::filesystem::exists(installed, ec)) return installed.lexically_normal().string();
    }
    return QDSH_BUILD_LIBQDCLI;
}

}  // namespace qdsh
