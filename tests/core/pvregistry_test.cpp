#include <gtest/gtest.h>

#include <string>
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
    std::string forward, backward;
    Item* last = nullptr;
    for (Item* item = Item::first; item; item = item->next) {
        forward += item->name;
        last = item;
    }
    for (Item* item = last; item; item = item->previous)
        backward += item->name;
    return forward + "|" + backward;
}

struct Case {
    const char* steps;  // "+x" appends item x, "-x" removes it
    const char* expected;
};

}  // namespace

TEST(Registry, AppendsAtTheTailWhateverWasRemovedBefore)
{
    const Case cases[] = {
        {"+a+b+c", "abc|cba"}, {"+a+b+c-c+d", "abd|dba"},     {"+a+b-b-a+c+d", "cd|dc"},
        {"+a-a+b", "b|b"},     {"+a+b+c-b+d-d+e", "ace|eca"}, {"+a+b+c-a-c+d", "bd|db"},
    };
    for (const Case& c : cases) {
        std::vector<Item> items(26);
        const std::string steps = c.steps;
        for (size_t i = 0; i + 1 < steps.size(); i += 2) {
            Item& item = items[steps[i + 1] - 'a'];
            item.name = steps[i + 1];
            if (steps[i] == '+')
                Registry::append(&item);
            else
                Registry::remove(&item);
        }
        EXPECT_EQ(forwardThenBackward(), c.expected) << c.steps;
        while (Item::first)
            Registry::remove(Item::first);
    }
}
