#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <tuple>
#include <vector>

#include "fbcompose/list.h"

namespace {

using V = std::vector<uintptr_t>;

void *p(uintptr_t v) { return reinterpret_cast<void *>(v); }

// The data in order, once the links are checked both ways and the count.
V contents(xg_list *list) {
    V forward, backward;
    for (xg_list_item *item = xg_list_first(list); item; item = item->next)
        forward.push_back(reinterpret_cast<uintptr_t>(item->data));
    for (xg_list_item *item = xg_list_last(list); item; item = item->prev)
        backward.insert(backward.begin(), reinterpret_cast<uintptr_t>(item->data));
    EXPECT_EQ(forward, backward);
    EXPECT_EQ(xg_list_count(list), static_cast<int32_t>(forward.size()));
    return forward;
}

xg_list *make(std::initializer_list<uintptr_t> values) {
    xg_list *list = nullptr;
    for (uintptr_t v : values) list = xg_list_append(list, p(v));
    return list;
}

// The data after an edit, the list freed.
V edited(xg_list *list) {
    const V out = contents(list);
    xg_list_free(list);
    return out;
}

TEST(List, EveryEditOfTheListOneTwoThree) {
    EXPECT_EQ(edited(xg_list_merge(xg_list_prepend(nullptr, p(0)), make({1, 2}))), (V{0, 1, 2}));
    EXPECT_EQ(edited(xg_list_insert_after(make({1, 2, 3}), p(9), p(1))), (V{1, 9, 2, 3}));
    EXPECT_EQ(edited(xg_list_insert_after(make({1, 2, 3}), p(9), p(3))), (V{1, 2, 3, 9}));
    EXPECT_EQ(edited(xg_list_insert_before(make({1, 2, 3}), p(9), p(1))), (V{9, 1, 2, 3}));
    EXPECT_EQ(edited(xg_list_insert_before(make({1, 2, 3}), p(9), p(3))), (V{1, 2, 9, 3}));
    // An absent sibling appends after, but prepends before; no sibling appends.
    EXPECT_EQ(edited(xg_list_insert_after(make({1, 2, 3}), p(9), p(7))), (V{1, 2, 3, 9}));
    EXPECT_EQ(edited(xg_list_insert_before(make({1, 2, 3}), p(9), p(7))), (V{9, 1, 2, 3}));
    EXPECT_EQ(edited(xg_list_insert_before(make({1, 2, 3}), p(9), nullptr)), (V{1, 2, 3, 9}));
    // A null item appends, whichever side was asked for.
    EXPECT_EQ(edited(xg_list_insert_before_item(make({1, 2, 3}), p(9), nullptr)), (V{1, 2, 3, 9}));
    EXPECT_EQ(edited(xg_list_insert_after_item(make({1, 2, 3}), p(9), nullptr)), (V{1, 2, 3, 9}));
    xg_list *lists[] = {make({1, 2, 3}), make({1, 2, 3}), make({1, 2, 3})};
    EXPECT_EQ(edited(xg_list_insert_after_item(lists[0], p(9), lists[0]->first)), (V{1, 9, 2, 3}));
    EXPECT_EQ(edited(xg_list_insert_before_item(lists[1], p(9), lists[1]->last)), (V{1, 2, 9, 3}));
    EXPECT_EQ(edited(xg_list_remove_list(lists[2], lists[2]->last)), (V{1, 2}));
    EXPECT_EQ(edited(xg_list_merge(xg_list_merge(nullptr, make({1})), make({2}))), (V{1, 2}));
    EXPECT_EQ(edited(xg_list_merge(make({1}), nullptr)), (V{1}));
    EXPECT_EQ(edited(xg_list_remove(make({2, 1, 2}), p(2))), (V{1, 2}));  // the first match
    EXPECT_EQ(edited(xg_list_remove(make({1, 2}), p(7))), (V{1, 2}));
    EXPECT_EQ(xg_list_remove(make({1}), p(1)), nullptr);  // the record goes with the last item
}

TEST(List, SplitBeforeAndAfterIncludingAtTheEnds) {
    xg_list *rest = nullptr, *tail = nullptr;
    xg_list *front = xg_list_split_before(make({1, 2, 3, 4}), p(3), &rest);
    EXPECT_EQ(contents(front), (V{1, 2}));
    EXPECT_EQ(contents(rest), (V{3, 4}));
    front = xg_list_split_after(front, p(1), &tail);
    EXPECT_EQ(edited(front), (V{1}));
    EXPECT_EQ(edited(tail), (V{2}));
    // Before the first item: nothing stays in front and the whole list moves.
    EXPECT_EQ(xg_list_split_before(rest, p(3), &tail), nullptr);
    EXPECT_EQ(tail, rest);
    // After the last item: the list stays whole and the rest is set to null.
    EXPECT_EQ(xg_list_split_after(rest, p(4), &tail), rest);
    EXPECT_EQ(tail, nullptr);
    EXPECT_EQ(edited(rest), (V{3, 4}));
}

TEST(ListDeathTest, SplitContractViolationsAbortNamingTheCheck) {
    xg_list *list = make({1, 2});
    xg_list *rest = nullptr;
    EXPECT_DEATH(xg_list_split_before(list, p(7), &rest),
                 "xglist:[0-9]+: xg_list_split_before: Assertion `0' failed");
    EXPECT_DEATH(xg_list_split_after(list, p(7), &rest),
                 "xglist:[0-9]+: xg_list_split_after: Assertion `0' failed");
    EXPECT_DEATH(xg_list_split_before(list, p(2), nullptr),
                 "xg_list_split_before: Assertion `nlist' failed");
    EXPECT_DEATH(xg_list_split_after(list, nullptr, &rest),
                 "xg_list_split_after: Assertion `data' failed");
    xg_list_free(list);
}

TEST(List, QueriesWithTheirQuirks) {
    xg_list *list = make({4, 1, 4, 2});
    EXPECT_EQ(std::tuple(xg_list_nth(list, 3), xg_list_nth(list, 4), xg_list_nth(list, -1)),
              std::tuple(p(2), nullptr, nullptr));
    // A missing item's index is the count, not -1, except in no list at all.
    EXPECT_EQ(std::tuple(xg_list_get_index(list, p(2)), xg_list_get_index(list, p(9)),
                         xg_list_get_index(nullptr, p(9))),
              std::tuple(3, 4, -1));
    // The first item is never compared, so the later 4 is the one found.
    EXPECT_EQ(std::tuple(xg_list_data_after(list, p(4)), xg_list_data_after(list, p(2)),
                         xg_list_data_before(list, p(4)), xg_list_dup(list)),
              std::tuple(p(1), nullptr, p(1), nullptr));
    xg_list_free(list);
}

TEST(List, SortMovesDataNotItemsAndPrintShowsThePointers) {
    xg_list *list = make({0x3000, 0x1000, 0x2000});
    xg_list_item *first = list->first;
    xg_list_sort(list, [](const void *a, const void *b) {
        const auto x = *static_cast<void *const *>(a), y = *static_cast<void *const *>(b);
        return std::less<void *>()(x, y) ? -1 : x != y;
    });
    EXPECT_EQ(contents(list), (V{0x1000, 0x2000, 0x3000}));
    EXPECT_EQ(list->first, first);
    char expected[64];
    std::snprintf(expected, sizeof expected, "(%p,%p,%p)\n", p(0x1000), p(0x2000), p(0x3000));
    testing::internal::CaptureStdout();
    xg_list_print(list);
    xg_list_print(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected + std::string("(null list)\n"));
    xg_list_free(list);
}

}  // namespace
