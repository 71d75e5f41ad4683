#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/pvregistry.h"

namespace {

struct Item {
    char name = '?';
    Item* previous = nullptr;
    Item* next = nullptr;
    static Item* first;
};
Item* Item::first = nullptr;

using Registry = PVREGISTRY<Item, &Item::first, &Item::previous, &Item::next>;

// The registry's names walked from the head, then back from the last one.
std::string forwardThenBackward()
{
    std::string names;
    Item* last = nullptr;
    for (Item* item = Item::first; item; last = item, item = item->next)
        names += item->name;
    names += '|';
    for (Item* item = last; item; item = item->previous)
        names += item->name;
    return names;
}

}  // namespace

// Each step "+x" appends item x, "-x" removes it.
TEST(Registry, AppendsAtTheTailWhateverWasRemovedBefore)
{
    const std::pair<const char*, const char*> cases[] = {
        {"+a+b+c", "abc|cba"}, {"+a+b+c-c+d", "abd|dba"},     {"+a+b-b-a+c+d", "cd|dc"},
        {"+a-a+b", "b|b"},     {"+a+b+c-b+d-d+e", "ace|eca"}, {"+a+b+c-a-c+d", "bd|db"},
    };
    for (const auto& [steps, expected] : cases) {
        std::vector<Item> items(26);
        for (const char* step = steps; *step; step += 2) {
            items[step[1] - 'a'].name = step[1];
            (step[0] == '+' ? Registry::append : Registry::remove)(&items[step[1] - 'a']);
        }
        EXPECT_EQ(forwardThenBackward(), expected) << steps;
        while (Item::first)
            Registry::remove(Item::first);
    }
}
