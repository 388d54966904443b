#include <gtest/gtest.h>

#include <vector>

#include "fbcompose/list.h"

namespace {

using V = std::vector<long>;

// Links 1, 2 and 3 form the list under test; 0, 4 and 5 stand outside it.
xg_elist links[6];
xg_elist *L(int i) { return &links[i]; }

xg_elist *fresh() {
    for (xg_elist &link : links) link = {};
    return xg_elist_append(xg_elist_append(xg_elist_append(nullptr, L(1)), L(2)), L(3));
}

// The link numbers in order, once the back links and the head's tail are checked.
V numbers(xg_elist *head) {
    V out;
    xg_elist *previous = nullptr;
    for (xg_elist *item = head; item; previous = item, item = item->next) {
        EXPECT_EQ(item->prev, previous);
        out.push_back(item - links);
    }
    EXPECT_EQ(head ? head->last : nullptr, previous);
    return out;
}

TEST(EList, EveryEditOfTheListOneTwoThree) {
    EXPECT_EQ(numbers(xg_elist_append(fresh(), L(4))), (V{1, 2, 3, 4}));
    EXPECT_EQ(numbers(xg_elist_prepend(fresh(), L(0))), (V{0, 1, 2, 3}));
    EXPECT_EQ(numbers(xg_elist_append_relative(fresh(), L(4), L(1))), (V{1, 4, 2, 3}));
    EXPECT_EQ(numbers(xg_elist_append_relative(fresh(), L(4), L(3))), (V{1, 2, 3, 4}));
    EXPECT_EQ(numbers(xg_elist_prepend_relative(fresh(), L(4), L(2))), (V{1, 4, 2, 3}));
    EXPECT_EQ(numbers(xg_elist_prepend_relative(fresh(), L(0), L(1))), (V{0, 1, 2, 3}));
    // An absent sibling appends after, and prepends before.
    EXPECT_EQ(numbers(xg_elist_append_relative(fresh(), L(4), L(5))), (V{1, 2, 3, 4}));
    EXPECT_EQ(numbers(xg_elist_prepend_relative(fresh(), L(4), L(5))), (V{4, 1, 2, 3}));
    EXPECT_EQ(numbers(xg_elist_merge(nullptr, xg_elist_merge(fresh(), nullptr))), (V{1, 2, 3}));
    xg_elist *head = fresh();
    // Only the head keeps the tail.
    EXPECT_EQ(L(2)->last, nullptr);
    EXPECT_EQ(L(3)->last, nullptr);
    EXPECT_EQ(numbers(xg_elist_merge(head, xg_elist_append(nullptr, L(4)))), (V{1, 2, 3, 4}));
    EXPECT_EQ(numbers(xg_elist_remove(fresh(), L(2))), (V{1, 3}));
    EXPECT_EQ(numbers(xg_elist_remove(fresh(), L(3))), (V{1, 2}));
    EXPECT_EQ(numbers(xg_elist_remove(fresh(), L(1))), (V{2, 3}));  // the next one is the head
    EXPECT_EQ(numbers(xg_elist_remove(fresh(), nullptr)), (V{1, 2, 3}));
    EXPECT_EQ(xg_elist_remove(nullptr, L(1)), nullptr);
    EXPECT_EQ(xg_elist_remove(xg_elist_append(nullptr, L(4)), L(4)), nullptr);  // the only one
}

}  // namespace
