// SPDX-License-Identifier: MIT
// Help, range and default callbacks of the queue-limit parameter.
//
// The range and the default depend on one list of card identifiers, the
// large-queue cards. The callbacks neither talk to the daemon nor print.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/guard.hpp"
#include "qdcli/handlers.h"

namespace qdcli {
namespace {

constexpr std::uint32_t QOSLIMIT_MIN = 7;
constexpr std::uint32_t QOSLIMIT_MIN_LARGE = 24;
constexpr std::uint32_t QOSLIMIT_MAX = 3582;

// Cards with the large queues: a higher lowest limit and a default of 0.
// Kept in ascending order for the binary search.
constexpr std::array<std::uint16_t, 26> kLargeQueueCards = {
    176, 182, 183, 206, 222, 223, 237, 248, 249, 267, 268, 269, 271,
    272, 282, 283, 300, 302, 314, 315, 316, 317, 318, 319, 333, 337,
};
static_assert(std::is_sorted(kLargeQueueCards.begin(), kLargeQueueCards.end()));

bool is_large_queue_card(std::uint16_t card_id) {
    return std::binary_search(kLargeQueueCards.begin(), kLargeQueueCards.end(), card_id);
}

constexpr char kHelpText[] = "Size of tcam";
static_assert(sizeof kHelpText == 13);

}  // namespace
}  // namespace qdcli

extern "C" {

// A fresh copy of the help text on every call; the shell frees it. Null when
// the allocation fails.
QDCLI_EXPORT char *qdcli_interface_qoslimit_help_get(void *, void *) {
    return qdcli::guarded(
        []() -> char * {
            auto *text = static_cast<char *>(std::malloc(sizeof qdcli::kHelpText));
            if (text != nullptr) std::memcpy(text, qdcli::kHelpText, sizeof qdcli::kHelpText);
            return text;
        },
        static_cast<char *>(nullptr));
}

// range[0] = lowest, range[1] = highest allowed value. A card that cannot be
// identified keeps the ordinary range. A null range record is left alone.
QDCLI_EXPORT int32_t qdcli_interface_qoslimit_range_get(void *, void *, uint32_t *range) {
    return qdcli::guarded(
        [&]() -> std::int32_t {
            if (range == nullptr) return 1;
            range[0] = qdcli::QOSLIMIT_MIN;
            range[1] = qdcli::QOSLIMIT_MAX;
            std::uint8_t card_record[QDCLI_CARD_RECORD_SIZE] = {};
            if (get_card_module_info(card_record) != 0) return 1;
            std::uint16_t card_id = 0;
            std::memcpy(&card_id, card_record + 2, sizeof card_id);  // host order, bytes 2-3
            if (qdcli::is_large_queue_card(card_id)) range[0] = qdcli::QOSLIMIT_MIN_LARGE;
            return 1;
        },
        1);
}

// record[1] receives the default (0 on the large-queue cards, else 1);
// record[0] is the shell's and left as it is. A null record is left alone.
QDCLI_EXPORT int32_t qdcli_pdcli_cmd_qd_def_get(void *, void *, uint32_t *record) {
    return qdcli::guarded(
        [&]() -> std::int32_t {
            if (record == nullptr) return 1;
            const auto card_id = static_cast<std::uint16_t>(pfm_get_sw_card_id_from_module() & 0xffffu);
            record[1] = qdcli::is_large_queue_card(card_id) ? 0 : 1;
            return 1;
        },
        1);
}

}  // extern "C"
