// SPDX-License-Identifier: MIT
#include "merge.hpp"

#include <vector>

namespace qdsim {
namespace {

void merge_at(Json &base, const Json &overlay, const std::string &pointer, std::vector<std::string> *replaced) {
    if (base.is_object() && overlay.is_object()) {
        for (auto it = overlay.begin(); it != overlay.end(); ++it) {
            const std::string child = pointer + pointer_token(it.key());
            if (base.contains(it.key())) {
                merge_at(base[it.key()], it.value(), child, replaced);
            } else {
                base[it.key()] = it.value();
            }
        }
        return;
    }
    if (replaced) replaced->push_back(pointer);
    base = overlay;
}

bool under(const std::string &pointer, const std::string &prefix) {
    return pointer.size() > prefix.size() && pointer.compare(0, prefix.size(), prefix) == 0 &&
           pointer[prefix.size()] == '/';
}

}  // namespace

void deep_merge(Json &base, const Json &overlay) { merge_at(base, overlay, "", nullptr); }

void deep_merge(Json &base, PositionMap &base_positions, const Json &overlay, const PositionMap &overlay_positions) {
    std::vector<std::string> replaced;
    merge_at(base, overlay, "", &replaced);
    for (auto it = base_positions.begin(); it != base_positions.end();) {
        bool stale = false;
        for (const std::string &r : replaced) stale = stale || under(it->first, r);
        it = stale ? base_positions.erase(it) : std::next(it);
    }
    for (const auto &[pointer, entry] : overlay_positions) base_positions[pointer] = entry;
}

}  // namespace qdsim
