/* Doubly linked list of data pointers (xg_list) and the intrusive list for
 * callers' own records (xg_elist).
 *
 * The empty list is NULL. Every operation that may change a list returns the
 * list to use from then on; callers replace their pointer with it. Data are
 * compared by pointer identity and never owned, except by
 * xg_list_free_with_data. */
#ifndef FBCOMPOSE_LIST_H
#define FBCOMPOSE_LIST_H

#include <stdint.h>

#include "export.h"

FBC_BEGIN_DECLS

typedef struct xg_list_item {
    struct xg_list_item *prev;
    struct xg_list_item *next;
    void *data;
} xg_list_item;

typedef struct xg_list {
    xg_list_item *first;
    xg_list_item *last;
    int32_t count;
} xg_list;

/* Building and joining. */
FBC_API xg_list *xg_list_append(xg_list *list, void *data);
FBC_API xg_list *xg_list_prepend(xg_list *list, void *data);
/* An absent sibling appends. */
FBC_API xg_list *xg_list_insert_after(xg_list *list, void *data, void *sibling);
/* An absent sibling prepends; a NULL list or NULL sibling appends. */
FBC_API xg_list *xg_list_insert_before(xg_list *list, void *data,
                                       void *sibling);
FBC_API xg_list *xg_list_insert_after_item(xg_list *list, void *data,
                                           xg_list_item *item);
FBC_API xg_list *xg_list_insert_before_item(xg_list *list, void *data,
                                            xg_list_item *item);
/* Moves list2's items behind list1's and frees list2's record. */
FBC_API xg_list *xg_list_merge(xg_list *list1, xg_list *list2);

/* Splitting at a data value that must be in the list (aborts otherwise).
 * Both return the front part and store the rest in *nlist. */
FBC_API xg_list *xg_list_split_before(xg_list *list, void *data,
                                      xg_list **nlist);
FBC_API xg_list *xg_list_split_after(xg_list *list, void *data,
                                     xg_list **nlist);

/* Removing and freeing. */
FBC_API xg_list *xg_list_remove_list(xg_list *list, xg_list_item *item);
FBC_API xg_list *xg_list_remove(xg_list *list, void *data);
FBC_API xg_list *xg_list_free(xg_list *list);
FBC_API xg_list *xg_list_free_with_data(xg_list *list);

/* Queries. nth, nth_item, data_before and data_after need a non-NULL list. */
FBC_API xg_list_item *xg_list_first(xg_list *list);
FBC_API xg_list_item *xg_list_last(xg_list *list);
FBC_API int32_t xg_list_count(xg_list *list);
FBC_API void *xg_list_nth(xg_list *list, int32_t n);
FBC_API xg_list_item *xg_list_nth_item(xg_list *list, int32_t n);
FBC_API xg_list_item *xg_list_find(xg_list *list, void *data);
/* Returns the item count, not -1, when data is absent. */
FBC_API int32_t xg_list_get_index(xg_list *list, void *data);
FBC_API void *xg_list_data_before(xg_list *list, void *data);
FBC_API void *xg_list_data_after(xg_list *list, void *data);

/* Whole-list operations. sort swaps data between items (items keep their
 * places); compare receives pointers to data pointers, as for qsort. */
FBC_API xg_list *xg_list_sort(xg_list *list,
                              int (*compare)(const void *, const void *));
FBC_API void xg_list_for_each(xg_list *list, void (*func)(void *data));
FBC_API void xg_list_print(xg_list *list);
/* Always returns NULL; kept for callers that still name it. */
FBC_API xg_list *xg_list_dup(xg_list *list);

/* Intrusive list: these three fields start every member record. `last` is
 * kept up to date in the head member only. */
typedef struct xg_elist {
    struct xg_elist *next;
    struct xg_elist *prev;
    struct xg_elist *last;
} xg_elist;

FBC_API xg_elist *xg_elist_append(xg_elist *head, xg_elist *item);
FBC_API xg_elist *xg_elist_prepend(xg_elist *head, xg_elist *item);
FBC_API xg_elist *xg_elist_append_relative(xg_elist *head, xg_elist *item,
                                           xg_elist *sibling);
FBC_API xg_elist *xg_elist_prepend_relative(xg_elist *head, xg_elist *item,
                                            xg_elist *sibling);
FBC_API xg_elist *xg_elist_merge(xg_elist *head1, xg_elist *head2);
FBC_API xg_elist *xg_elist_remove(xg_elist *head, xg_elist *item);
/* Calls free() on every member. */
FBC_API xg_elist *xg_elist_free(xg_elist *head);

FBC_END_DECLS

#endif
