#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fbcompose/list.h"

namespace {

void *p(uintptr_t v) { return reinterpret_cast<void *>(v); }

// Data in order, checking both directions and the record's invariants.
std::vector<uintptr_t> contents(xg_list *list) {
    std::vector<uintptr_t> forward;
    if (!list) return forward;
    EXPECT_EQ(list->first->prev, nullptr);
    EXPECT_EQ(list->last->next, nullptr);
    for (xg_list_item *item = list->first; item; item = item->next)
        forward.push_back(reinterpret_cast<uintptr_t>(item->data));
    std::vector<uintptr_t> backward;
    for (xg_list_item *item = list->last; item; item = item->prev)
        backward.insert(backward.begin(), reinterpret_cast<uintptr_t>(item->data));
    EXPECT_EQ(forward, backward);
    EXPECT_EQ(list->count, static_cast<int32_t>(forward.size()));
    return forward;
}

xg_list *make(std::initializer_list<uintptr_t> values) {
    xg_list *list = nullptr;
    for (uintptr_t v : values) list = xg_list_append(list, p(v));
    return list;
}

using V = std::vector<uintptr_t>;

TEST(List, AppendAndPrependBuildFromNull) {
    xg_list *list = xg_list_append(nullptr, p(1));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->count, 1);
    EXPECT_EQ(list->first, list->last);
    list = xg_list_prepend(list, p(0));
    list = xg_list_append(list, p(2));
    EXPECT_EQ(contents(list), (V{0, 1, 2}));
    xg_list_free(list);

    xg_list *single = xg_list_prepend(nullptr, p(5));
    EXPECT_EQ(contents(single), (V{5}));
    xg_list_free(single);
}

TEST(List, InsertRelativeToDataWithTheAbsentSiblingAsymmetry) {
    xg_list *list = make({1, 2, 3});
    list = xg_list_insert_after(list, p(10), p(1));
    list = xg_list_insert_before(list, p(20), p(3));
    list = xg_list_insert_after(list, p(30), p(3));  // after the last
    list = xg_list_insert_before(list, p(40), p(1));  // before the first
    EXPECT_EQ(contents(list), (V{40, 1, 10, 2, 20, 3, 30}));
    list = xg_list_insert_after(list, p(50), p(99));   // absent: appends
    list = xg_list_insert_before(list, p(60), p(99));  // absent: prepends
    EXPECT_EQ(contents(list), (V{60, 40, 1, 10, 2, 20, 3, 30, 50}));
    list = xg_list_insert_before(list, p(70), nullptr);  // null sibling appends
    list = xg_list_insert_after(list, p(80), nullptr);
    EXPECT_EQ(contents(list).back(), 80u);
    xg_list_free(list);

    xg_list *fresh = xg_list_insert_before(nullptr, p(1), p(2));
    EXPECT_EQ(contents(fresh), (V{1}));
    xg_list_free(fresh);
}

TEST(List, InsertRelativeToItemsAndNullItemsAppend) {
    xg_list *list = make({1, 2});
    list = xg_list_insert_after_item(list, p(3), list->last);
    list = xg_list_insert_before_item(list, p(0), list->first);
    list = xg_list_insert_before_item(list, p(9), nullptr);  // appends, not prepends
    list = xg_list_insert_after_item(list, p(8), nullptr);
    EXPECT_EQ(contents(list), (V{0, 1, 2, 3, 9, 8}));
    list = xg_list_insert_after_item(list, p(5), list->first->next);
    EXPECT_EQ(contents(list), (V{0, 1, 5, 2, 3, 9, 8}));
    xg_list_free(list);
}

TEST(List, MergeJoinsAndFreesTheSecondRecord) {
    xg_list *a = make({1, 2});
    xg_list *b = make({3, 4, 5});
    xg_list *merged = xg_list_merge(a, b);
    EXPECT_EQ(merged, a);
    EXPECT_EQ(contents(merged), (V{1, 2, 3, 4, 5}));
    EXPECT_EQ(xg_list_merge(nullptr, merged), merged);
    EXPECT_EQ(xg_list_merge(merged, nullptr), merged);
    xg_list_free(merged);
}

TEST(List, SplitBeforeAndAfter) {
    xg_list *list = make({1, 2, 3, 4});
    xg_list *rest = nullptr;
    xg_list *front = xg_list_split_before(list, p(3), &rest);
    EXPECT_EQ(contents(front), (V{1, 2}));
    EXPECT_EQ(contents(rest), (V{3, 4}));

    xg_list *tail = nullptr;
    front = xg_list_split_after(front, p(1), &tail);
    EXPECT_EQ(contents(front), (V{1}));
    EXPECT_EQ(contents(tail), (V{2}));
    xg_list_free(front);
    xg_list_free(tail);

    xg_list *whole = nullptr;
    EXPECT_EQ(xg_list_split_before(rest, p(3), &whole), nullptr);  // first item
    EXPECT_EQ(whole, rest);
    xg_list *none = rest;  // must be overwritten with null
    EXPECT_EQ(xg_list_split_after(rest, p(4), &none), rest);  // last item
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(contents(rest), (V{3, 4}));
    xg_list_free(rest);
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

TEST(List, RemovingTheLastItemFreesTheRecord) {
    xg_list *list = make({1, 2, 1});
    list = xg_list_remove(list, p(1));  // the first match only
    EXPECT_EQ(contents(list), (V{2, 1}));
    list = xg_list_remove(list, p(42));  // absent: unchanged
    EXPECT_EQ(contents(list), (V{2, 1}));
    list = xg_list_remove_list(list, list->last);
    EXPECT_EQ(contents(list), (V{2}));
    EXPECT_EQ(xg_list_remove(list, p(2)), nullptr);
}

TEST(List, FreeWithDataFreesTheData) {
    xg_list *list = nullptr;
    for (int i = 0; i < 3; ++i) list = xg_list_append(list, std::malloc(8));
    EXPECT_EQ(xg_list_free_with_data(list), nullptr);  // the leak checker verifies
    EXPECT_EQ(xg_list_free_with_data(nullptr), nullptr);
    EXPECT_EQ(xg_list_free(nullptr), nullptr);
}

TEST(List, Queries) {
    xg_list *list = make({5, 6, 7});
    EXPECT_EQ(xg_list_first(nullptr), nullptr);
    EXPECT_EQ(xg_list_last(nullptr), nullptr);
    EXPECT_EQ(xg_list_count(nullptr), 0);
    EXPECT_EQ(xg_list_first(list)->data, p(5));
    EXPECT_EQ(xg_list_last(list)->data, p(7));
    EXPECT_EQ(xg_list_count(list), 3);
    EXPECT_EQ(xg_list_nth(list, 0), p(5));
    EXPECT_EQ(xg_list_nth(list, 2), p(7));
    EXPECT_EQ(xg_list_nth(list, 3), nullptr);
    EXPECT_EQ(xg_list_nth(list, -1), nullptr);
    EXPECT_EQ(xg_list_nth_item(list, 1), list->first->next);
    EXPECT_EQ(xg_list_nth_item(list, 3), nullptr);
    EXPECT_EQ(xg_list_find(list, p(6)), list->first->next);
    EXPECT_EQ(xg_list_find(list, p(8)), nullptr);
    EXPECT_EQ(xg_list_find(nullptr, p(8)), nullptr);
    EXPECT_EQ(xg_list_get_index(list, p(7)), 2);
    EXPECT_EQ(xg_list_get_index(list, p(8)), 3);  // the count, not -1
    EXPECT_EQ(xg_list_get_index(nullptr, p(8)), -1);
    EXPECT_EQ(xg_list_data_after(list, p(5)), p(6));
    EXPECT_EQ(xg_list_data_after(list, p(7)), nullptr);
    EXPECT_EQ(xg_list_data_after(list, p(8)), nullptr);
    EXPECT_EQ(xg_list_data_before(list, p(7)), p(6));
    EXPECT_EQ(xg_list_data_before(list, p(5)), nullptr);
    xg_list_free(list);
}

TEST(List, DataBeforeNeverComparesTheFirstItem) {
    xg_list *list = make({4, 1, 4, 2});
    EXPECT_EQ(xg_list_data_before(list, p(4)), p(1));
    xg_list_free(list);
}

int by_value(const void *a, const void *b) {
    const auto x = reinterpret_cast<uintptr_t>(*static_cast<void *const *>(a));
    const auto y = reinterpret_cast<uintptr_t>(*static_cast<void *const *>(b));
    return x < y ? -1 : x > y;
}

TEST(List, SortMovesDataNotItems) {
    xg_list *list = make({3, 1, 2});
    xg_list_item *first = list->first;
    EXPECT_EQ(xg_list_sort(list, by_value), list);
    EXPECT_EQ(contents(list), (V{1, 2, 3}));
    EXPECT_EQ(list->first, first);
    EXPECT_EQ(first->data, p(1));
    EXPECT_EQ(xg_list_sort(nullptr, by_value), nullptr);
    xg_list_free(list);
}

std::vector<uintptr_t> seen;
void remember(void *data) { seen.push_back(reinterpret_cast<uintptr_t>(data)); }

TEST(List, ForEachVisitsInOrder) {
    xg_list *list = make({1, 2, 3});
    seen.clear();
    xg_list_for_each(list, remember);
    EXPECT_EQ(seen, (V{1, 2, 3}));
    xg_list_for_each(nullptr, remember);
    EXPECT_EQ(seen.size(), 3u);
    xg_list_free(list);
}

TEST(List, PrintShowsPointersOrNullList) {
    testing::internal::CaptureStdout();
    xg_list_print(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "(null list)\n");

    xg_list *list = make({0x1000, 0x2000});
    char expected[64];
    std::snprintf(expected, sizeof expected, "(%p,%p)\n", p(0x1000), p(0x2000));
    testing::internal::CaptureStdout();
    xg_list_print(list);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
    xg_list_free(list);
}

TEST(List, DupNeverCopies) {
    xg_list *list = make({1, 2});
    EXPECT_EQ(xg_list_dup(list), nullptr);
    EXPECT_EQ(xg_list_dup(nullptr), nullptr);
    EXPECT_EQ(contents(list), (V{1, 2}));
    xg_list_free(list);
}

}  // namespace
