// Intrusive doubly linked list: the caller's records start with the links,
// and only the head's `last` is kept up to date.
#include <cstdlib>

#include "fbcompose/list.h"

namespace fbc {
namespace {

bool contains(xg_elist *head, xg_elist *member) {
    for (xg_elist *item = head; item; item = item->next)
        if (item == member) return true;
    return false;
}

}  // namespace
}  // namespace fbc

extern "C" {

xg_elist *xg_elist_append(xg_elist *head, xg_elist *item) {
    item->next = nullptr;
    if (!head) {
        item->prev = nullptr;
        item->last = item;
        return item;
    }
    item->prev = head->last;
    head->last->next = item;
    head->last = item;
    return head;
}

// item->prev is left alone: callers pass an item whose prev is null.
xg_elist *xg_elist_prepend(xg_elist *head, xg_elist *item) {
    if (!head) return xg_elist_append(head, item);
    item->next = head;
    head->prev = item;
    item->last = head->last;
    return item;
}

xg_elist *xg_elist_append_relative(xg_elist *head, xg_elist *item, xg_elist *sibling) {
    if (!head || !fbc::contains(head, sibling)) return xg_elist_append(head, item);
    item->prev = sibling;
    item->next = sibling->next;
    if (sibling->next) sibling->next->prev = item;
    else head->last = item;
    sibling->next = item;
    return head;
}

xg_elist *xg_elist_prepend_relative(xg_elist *head, xg_elist *item, xg_elist *sibling) {
    if (!head || !fbc::contains(head, sibling)) return xg_elist_prepend(head, item);
    item->next = sibling;
    item->prev = sibling->prev;
    sibling->prev = item;
    if (sibling == head) {
        item->last = head->last;
        return item;
    }
    item->prev->next = item;
    return head;
}

xg_elist *xg_elist_merge(xg_elist *head1, xg_elist *head2) {
    if (!head1) return head2;
    if (!head2) return head1;
    head1->last->next = head2;
    head2->prev = head1->last;
    head1->last = head2->last;
    return head1;
}

// The removed item is neither freed nor cleared; membership is not checked.
xg_elist *xg_elist_remove(xg_elist *head, xg_elist *item) {
    if (!head || !item) return head;
    if (item->prev && item->next) {
        item->next->prev = item->prev;
        item->prev->next = item->next;
        return head;
    }
    if (item->next) {  // the head
        item->next->prev = nullptr;
        item->next->last = head->last;
        return item->next;
    }
    if (item->prev) {  // the tail
        head->last = item->prev;
        item->prev->next = nullptr;
        return head;
    }
    return nullptr;
}

xg_elist *xg_elist_free(xg_elist *head) {
    while (head) {
        xg_elist *next = head->next;
        std::free(head);
        head = next;
    }
    return nullptr;
}

}  // extern "C"
