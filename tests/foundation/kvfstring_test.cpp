#include <gtest/gtest.h>

#include "foundation/kvfstring.h"

TEST(CopyIfFits, CopiesWholeStringsOnlyAndNeverReadsPastTheCapacity)
{
    struct Case {
        const char* source;
        size_t capacity;
        bool copied;
        const char* result;
    };
    const Case cases[] = {
        {"abc", 8, true, "abc"}, {"abcdefg", 8, true, "abcdefg"}, {"abcdefgh", 8, false, "old"},
        {"", 8, true, ""},       {nullptr, 8, false, "old"},      {"a", 1, false, "old"},
        {"", 1, true, ""},
    };
    for (const Case& c : cases) {
        char buffer[16] = "old";
        EXPECT_EQ(kvfCopyIfFits(buffer, c.capacity, c.source), c.copied) << (c.source ? c.source : "null");
        EXPECT_STREQ(buffer, c.result) << (c.source ? c.source : "null");
    }
    // An unterminated source is measured within the capacity only.
    char unterminated[4] = {'w', 'x', 'y', 'z'};
    char buffer[4] = "old";
    EXPECT_FALSE(kvfCopyIfFits(buffer, sizeof buffer, unterminated));
    EXPECT_FALSE(kvfCopyIfFits(nullptr, sizeof buffer, "a"));
}

TEST(CopyIfFits, SourceInsideTheDestination)
{
    char name[16] = "node name";
    EXPECT_TRUE(kvfCopyIfFits(name, sizeof name, name + 5));
    EXPECT_STREQ(name, "name");
}
