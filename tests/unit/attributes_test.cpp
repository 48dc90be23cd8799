// SPDX-License-Identifier: MIT
// The attribute catalogue's own consistency; that it covers what the
// handlers print, in both directions, is checked end to end
// (tests/structured).
#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <set>
#include <string>

#include "qdcli/attributes.h"

namespace {

TEST(AttributeCatalogue, EntriesAreUniqueAndAgreeWithTheirTypeByte) {
    std::size_t count = 0;
    const qdcli_attr_info *all = qdcli_attr_catalogue(&count);
    ASSERT_GT(count, 190u);
    std::set<std::string> names, tables;
    std::set<std::uint32_t> ids;
    for (std::size_t i = 0; i < count; ++i)
        if (all[i].table != nullptr) tables.insert(all[i].table);
    for (std::size_t i = 0; i < count; ++i) {
        const qdcli_attr_info &a = all[i];
        SCOPED_TRACE(a.name);
        EXPECT_TRUE(names.insert(a.name).second);
        EXPECT_TRUE(ids.insert(a.id).second);
        for (const char *p = a.name; *p; ++p) EXPECT_TRUE(std::islower(static_cast<unsigned char>(*p)) || std::isdigit(static_cast<unsigned char>(*p)) || *p == '_');
        EXPECT_TRUE(a.help != nullptr && std::strlen(a.help) > 8);
        EXPECT_EQ(qdcli_attr_find(a.id), &a);
        EXPECT_EQ(qdcli_attr_find_name(a.name), &a);
        switch (a.id >> 24) {
        case 0x30: EXPECT_EQ(a.type, QDCLI_ATTR_TEXT); break;
        case 0x15: EXPECT_EQ(a.type, QDCLI_ATTR_U64); break;
        case 0x11: EXPECT_EQ(a.type, QDCLI_ATTR_I32); break;
        case 0x0c: EXPECT_EQ(a.type, QDCLI_ATTR_IF_INDEX); break;
        default: break;
        }
        const bool sized = a.type != QDCLI_ATTR_TEXT && a.type != QDCLI_ATTR_MARKER;
        EXPECT_EQ(a.width_bits != 0, sized);
        if (a.role == QDCLI_ROLE_COUNTER) {
            EXPECT_NE(a.unit, nullptr);
        }
        if (a.table != nullptr) {
            // The row key is a column of the same table.
            ASSERT_NE(a.row_key, nullptr);
            const qdcli_attr_info *key = qdcli_attr_find_name(a.row_key);
            ASSERT_NE(key, nullptr);
            EXPECT_STREQ(key->table, a.table);
        }
        if (a.parent_table != nullptr) {
            EXPECT_TRUE(tables.count(a.parent_table));
        }
    }
    // The two texts under the unsigned type byte, and a wrapping counter.
    EXPECT_EQ(qdcli_attr_find(0x14ff00aa)->type, QDCLI_ATTR_TEXT);
    EXPECT_EQ(qdcli_attr_find(0x14ff00ae)->type, QDCLI_ATTR_TEXT);
    EXPECT_EQ(qdcli_attr_find(0x14ff004c)->width_bits, 32u);
    EXPECT_EQ(qdcli_attr_find(0x14ff1234), nullptr);
    EXPECT_EQ(qdcli_attr_find_name(nullptr), nullptr);
    EXPECT_EQ(qdcli_attr_find_name("no_such_attribute"), nullptr);
}

}  // namespace
