#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "fbcompose/list.h"

namespace {

struct Node {
    xg_elist link;  // first, as the list requires
    int value;
};

Node *node(int value) {
    auto *n = static_cast<Node *>(std::calloc(1, sizeof(Node)));
    n->value = value;
    return n;
}

xg_elist *L(Node *n) { return &n->link; }

std::vector<int> values(xg_elist *head) {
    std::vector<int> out;
    xg_elist *last = nullptr;
    for (xg_elist *item = head; item; item = item->next) {
        EXPECT_EQ(item->prev, last);
        out.push_back(reinterpret_cast<Node *>(item)->value);
        last = item;
    }
    if (head) {
        EXPECT_EQ(head->last, last);
    }
    return out;
}

using V = std::vector<int>;

TEST(EList, AppendKeepsTailInTheHeadOnly) {
    Node *a = node(1), *b = node(2), *c = node(3);
    b->link.last = c->link.last = reinterpret_cast<xg_elist *>(0x1);  // untouched markers
    xg_elist *head = xg_elist_append(nullptr, L(a));
    EXPECT_EQ(head, L(a));
    EXPECT_EQ(head->last, L(a));
    head = xg_elist_append(head, L(b));
    head = xg_elist_append(head, L(c));
    EXPECT_EQ(head->last, L(c));
    EXPECT_EQ(b->link.last, reinterpret_cast<xg_elist *>(0x1));
    EXPECT_EQ(c->link.last, reinterpret_cast<xg_elist *>(0x1));
    EXPECT_EQ(values(head), (V{1, 2, 3}));
    xg_elist_free(head);
}

TEST(EList, PrependMakesANewHeadCarryingLast) {
    Node *a = node(1), *b = node(0);
    xg_elist *head = xg_elist_append(nullptr, L(a));
    head = xg_elist_prepend(head, L(b));
    EXPECT_EQ(head, L(b));
    EXPECT_EQ(head->last, L(a));
    EXPECT_EQ(values(head), (V{0, 1}));
    xg_elist_free(head);
}

TEST(EList, RelativeInsertsAndAbsentSiblings) {
    Node *a = node(1), *c = node(3), *b = node(2), *z = node(9), *s = node(0), *q = node(7);
    xg_elist *head = xg_elist_append(nullptr, L(a));
    head = xg_elist_append(head, L(c));
    head = xg_elist_append_relative(head, L(b), L(a));
    EXPECT_EQ(values(head), (V{1, 2, 3}));
    head = xg_elist_append_relative(head, L(z), L(q));  // q is absent: appends
    EXPECT_EQ(values(head), (V{1, 2, 3, 9}));
    head = xg_elist_prepend_relative(head, L(s), L(a));  // before the head
    EXPECT_EQ(head, L(s));
    EXPECT_EQ(values(head), (V{0, 1, 2, 3, 9}));
    head = xg_elist_prepend_relative(head, L(q), L(c));
    EXPECT_EQ(values(head), (V{0, 1, 2, 7, 3, 9}));
    Node *t = node(8), *u = node(-1);
    head = xg_elist_append_relative(head, L(t), L(z));  // after the tail
    EXPECT_EQ(head->last, L(t));
    head = xg_elist_prepend_relative(head, L(u), L(u));  // absent: prepends
    EXPECT_EQ(values(head), (V{-1, 0, 1, 2, 7, 3, 9, 8}));
    xg_elist_free(head);
}

TEST(EList, MergeAndRemove) {
    Node *a = node(1), *b = node(2), *c = node(3), *d = node(4);
    xg_elist *first = xg_elist_append(xg_elist_append(nullptr, L(a)), L(b));
    xg_elist *second = xg_elist_append(xg_elist_append(nullptr, L(c)), L(d));
    EXPECT_EQ(xg_elist_merge(nullptr, second), second);
    EXPECT_EQ(xg_elist_merge(first, nullptr), first);
    xg_elist *head = xg_elist_merge(first, second);
    EXPECT_EQ(values(head), (V{1, 2, 3, 4}));

    head = xg_elist_remove(head, L(b));  // middle
    EXPECT_EQ(values(head), (V{1, 3, 4}));
    head = xg_elist_remove(head, L(d));  // tail
    EXPECT_EQ(values(head), (V{1, 3}));
    head = xg_elist_remove(head, L(a));  // head: the next one takes over
    EXPECT_EQ(head, L(c));
    EXPECT_EQ(head->prev, nullptr);
    EXPECT_EQ(head->last, L(c));
    EXPECT_EQ(xg_elist_remove(head, nullptr), head);
    EXPECT_EQ(xg_elist_remove(nullptr, L(c)), nullptr);
    EXPECT_EQ(xg_elist_remove(head, L(c)), nullptr);  // the only member
    std::free(a);
    std::free(b);
    std::free(c);
    std::free(d);
}

}  // namespace
