// Doubly linked list of data pointers. The empty list is null; operations
// that may change the list return the list to use from then on.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/assert.hpp"
#include "core/log.hpp"
#include "fbcompose/list.h"

namespace fbc {
namespace {

constexpr const char *kModule = "xglist";

xg_list_item *new_item(void *data) {
    auto *item = static_cast<xg_list_item *>(std::calloc(1, sizeof(xg_list_item)));
    item->data = data;
    return item;
}

xg_list_item *find_item(xg_list *list, void *data) {
    xg_list_item *item = list ? list->first : nullptr;
    while (item && item->data != data) item = item->next;
    return item;
}

void link_after(xg_list *list, xg_list_item *item, xg_list_item *anchor) {
    item->prev = anchor;
    item->next = anchor->next;
    if (anchor->next) anchor->next->prev = item;
    else list->last = item;
    anchor->next = item;
    ++list->count;
}

void link_before(xg_list *list, xg_list_item *item, xg_list_item *anchor) {
    item->next = anchor;
    item->prev = anchor->prev;
    if (anchor->prev) anchor->prev->next = item;
    else list->first = item;
    anchor->prev = item;
    ++list->count;
}

// The first item holding data and its 1-based position, or null.
xg_list_item *find_position(xg_list *list, void *data, int32_t *position) {
    int32_t p = 1;
    for (xg_list_item *item = list ? list->first : nullptr; item; item = item->next, ++p) {
        if (item->data == data) {
            *position = p;
            return item;
        }
    }
    return nullptr;
}

}  // namespace
}  // namespace fbc

using fbc::kModule;

extern "C" {

xg_list *xg_list_append(xg_list *list, void *data) {
    xg_list_item *item = fbc::new_item(data);
    if (!list) {
        list = static_cast<xg_list *>(std::calloc(1, sizeof(xg_list)));
        list->first = list->last = item;
        list->count = 1;
        return list;
    }
    fbc::link_after(list, item, list->last);
    return list;
}

xg_list *xg_list_prepend(xg_list *list, void *data) {
    if (!list) return xg_list_append(list, data);
    fbc::link_before(list, fbc::new_item(data), list->first);
    return list;
}

xg_list *xg_list_insert_after(xg_list *list, void *data, void *sibling) {
    xg_list_item *anchor = sibling ? fbc::find_item(list, sibling) : nullptr;
    if (!anchor) return xg_list_append(list, data);
    fbc::link_after(list, fbc::new_item(data), anchor);
    return list;
}

// Unlike insert_after, an absent sibling puts the new item first.
xg_list *xg_list_insert_before(xg_list *list, void *data, void *sibling) {
    if (!list || !sibling) return xg_list_append(list, data);
    xg_list_item *anchor = fbc::find_item(list, sibling);
    if (!anchor) return xg_list_prepend(list, data);
    fbc::link_before(list, fbc::new_item(data), anchor);
    return list;
}

xg_list *xg_list_insert_after_item(xg_list *list, void *data, xg_list_item *item) {
    if (!list || !item) return xg_list_append(list, data);
    fbc::link_after(list, fbc::new_item(data), item);
    return list;
}

// compat: a null list or item appends, rather than prepending.
xg_list *xg_list_insert_before_item(xg_list *list, void *data, xg_list_item *item) {
    if (!list || !item) return xg_list_append(list, data);
    fbc::link_before(list, fbc::new_item(data), item);
    return list;
}

xg_list *xg_list_merge(xg_list *list1, xg_list *list2) {
    if (!list1) return list2;
    if (!list2) return list1;
    list1->last->next = list2->first;
    list2->first->prev = list1->last;
    list1->last = list2->last;
    list1->count += list2->count;
    std::free(list2);
    return list1;
}

xg_list *xg_list_split_before(xg_list *list, void *data, xg_list **nlist) {
    FBC_ASSERT(kModule, nlist);
    FBC_ASSERT(kModule, data);
    int32_t p = 0;
    xg_list_item *item = fbc::find_position(list, data, &p);
    if (!item) FBC_ASSERT(kModule, 0);  // data must be in the list
    if (p == 1) {
        *nlist = list;
        return nullptr;
    }
    FBC_ASSERT(kModule, item->prev);
    auto *rest = static_cast<xg_list *>(std::calloc(1, sizeof(xg_list)));
    rest->first = item;
    rest->last = list->last;
    rest->count = list->count - p + 1;
    list->last = item->prev;
    list->last->next = nullptr;
    list->count = p - 1;
    item->prev = nullptr;
    *nlist = rest;
    return list;
}

xg_list *xg_list_split_after(xg_list *list, void *data, xg_list **nlist) {
    FBC_ASSERT(kModule, nlist);
    FBC_ASSERT(kModule, data);
    int32_t p = 0;
    xg_list_item *item = fbc::find_position(list, data, &p);
    if (!item) FBC_ASSERT(kModule, 0);  // data must be in the list
    if (item == list->last) {
        *nlist = nullptr;
        return list;
    }
    FBC_ASSERT(kModule, item->next);
    auto *rest = static_cast<xg_list *>(std::calloc(1, sizeof(xg_list)));
    rest->first = item->next;
    rest->first->prev = nullptr;
    rest->last = list->last;
    rest->count = list->count - p;
    list->last = item;
    item->next = nullptr;
    list->count = p;
    *nlist = rest;
    return list;
}

xg_list *xg_list_remove_list(xg_list *list, xg_list_item *item) {
    if (item->prev) item->prev->next = item->next;
    else list->first = item->next;
    if (item->next) item->next->prev = item->prev;
    else list->last = item->prev;
    std::free(item);
    if (--list->count == 0) {
        std::free(list);
        return nullptr;
    }
    return list;
}

xg_list *xg_list_remove(xg_list *list, void *data) {
    xg_list_item *item = fbc::find_item(list, data);
    return item ? xg_list_remove_list(list, item) : list;
}

xg_list *xg_list_free(xg_list *list) {
    if (!list) return nullptr;
    for (xg_list_item *item = list->first; item;) {
        xg_list_item *next = item->next;
        std::free(item);
        item = next;
    }
    std::free(list);
    return nullptr;
}

xg_list *xg_list_free_with_data(xg_list *list) {
    if (!list) return nullptr;
    for (xg_list_item *item = list->first; item; item = item->next) std::free(item->data);
    return xg_list_free(list);
}

xg_list_item *xg_list_first(xg_list *list) { return list ? list->first : nullptr; }

xg_list_item *xg_list_last(xg_list *list) { return list ? list->last : nullptr; }

int32_t xg_list_count(xg_list *list) { return list ? list->count : 0; }

xg_list_item *xg_list_nth_item(xg_list *list, int32_t n) {
    if (!list || n < 0) return nullptr;
    xg_list_item *item = list->first;
    while (item && n-- > 0) item = item->next;
    return item;
}

void *xg_list_nth(xg_list *list, int32_t n) {
    xg_list_item *item = xg_list_nth_item(list, n);
    return item ? item->data : nullptr;
}

xg_list_item *xg_list_find(xg_list *list, void *data) { return fbc::find_item(list, data); }

// compat: an absent value gives the item count, not -1.
int32_t xg_list_get_index(xg_list *list, void *data) {
    if (!list) return -1;
    int32_t index = 0;
    for (xg_list_item *item = list->first; item && item->data != data; item = item->next) ++index;
    return index;
}

// The first item's own data is never compared: a value that stands first
// and again later yields the predecessor of the later occurrence.
void *xg_list_data_before(xg_list *list, void *data) {
    if (!list || !list->first) return nullptr;
    for (xg_list_item *item = list->first->next; item; item = item->next)
        if (item->data == data) return item->prev->data;
    return nullptr;
}

void *xg_list_data_after(xg_list *list, void *data) {
    xg_list_item *item = fbc::find_item(list, data);
    return item && item->next ? item->next->data : nullptr;
}

// Sorts the data pointers and writes them back in place: items are never
// relinked, so item pointers held by callers stay valid.
xg_list *xg_list_sort(xg_list *list, int (*compare)(const void *, const void *)) {
    if (!list) return nullptr;
    std::vector<void *> data;
    data.reserve(static_cast<size_t>(list->count));
    for (xg_list_item *item = list->first; item; item = item->next) data.push_back(item->data);
    std::qsort(data.data(), data.size(), sizeof(void *), compare);
    size_t i = 0;
    for (xg_list_item *item = list->first; item; item = item->next) item->data = data[i++];
    return list;
}

void xg_list_for_each(xg_list *list, void (*func)(void *data)) {
    for (xg_list_item *item = list ? list->first : nullptr; item; item = item->next)
        func(item->data);
}

void xg_list_print(xg_list *list) {
    if (!list) {
        fbc::log_out("(null list)\n");
        return;
    }
    // One message for the whole list, so a handler receives it as one line.
    std::string text = "(";
    char pointer[32];
    for (xg_list_item *item = list->first; item; item = item->next) {
        std::snprintf(pointer, sizeof pointer, item == list->first ? "%p" : ",%p", item->data);
        text += pointer;
    }
    fbc::log_out("%s)\n", text.c_str());
}

// compat: never made a copy; callers get null whatever they pass.
xg_list *xg_list_dup(xg_list *) { return nullptr; }

}  // extern "C"
