// Even-odd scanline fill of a polygon with edges in 14.18 fixed point.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "core/stack_buffer.hpp"
#include "draw/shape_target.hpp"
#include "fbcompose/draw.h"
#include "fbcompose/pixel.h"

namespace fbc {
namespace {

constexpr int32_t kOne = 0x40000;  // one pixel in 14.18

struct Edge {
    int32_t top;     // first scanline
    int32_t bottom;  // last scanline
    int32_t x;       // current x, 14.18
    int32_t slope;   // x change per scanline, 14.18
    int32_t extra;   // run on one scanline beyond one pixel, 14.18
    Edge *prev;
    Edge *next;
};

// Points beyond the 14.18 range wrap instead of overflowing.
int32_t wrap(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

// A list of edges linked through prev/next.
struct EdgeList {
    Edge *first = nullptr;

    void insert_before(Edge *e, Edge *at) {
        e->next = at;
        e->prev = at ? at->prev : last();
        if (at) at->prev = e;
        (e->prev ? e->prev->next : first) = e;
    }
    void remove(Edge *e) {
        (e->prev ? e->prev->next : first) = e->next;
        if (e->next) e->next->prev = e->prev;
    }
    Edge *last() const {
        Edge *e = first;
        while (e && e->next) e = e->next;
        return e;
    }
    // Before the first edge whose key is not smaller than e's.
    template <typename Key>
    void insert_sorted(Edge *e, Key key) {
        Edge *at = first;
        while (at && key(at) < key(e)) at = at->next;
        insert_before(e, at);
    }
};

// The key for entering the active list: x + (extra + slope) / 2.
int64_t entry_key(const Edge *e) { return int64_t{e->x} + (int64_t{e->extra} + e->slope) / 2; }
// The key for keeping it sorted while stepping: x + extra / 2.
int64_t step_key(const Edge *e) { return int64_t{e->x} + e->extra / 2; }

struct Scan {
    EdgeList pending;  // by top, ascending; later edges first among equal tops
    EdgeList active;   // by x
    int32_t top = INT32_MAX;
    int32_t bottom = INT32_MIN;
};

void add_edge(Scan &scan, Edge *e, const xg_point &a, const xg_point &b, int32_t x_offset,
              int32_t y_offset) {
    const xg_point &t = a.y < b.y ? a : b;
    const xg_point &u = a.y < b.y ? b : a;
    e->top = wrap(int64_t{t.y} + y_offset);
    e->bottom = wrap(int64_t{u.y} + y_offset - 1);
    e->slope = wrap((int64_t{u.x} - t.x) * kOne / (int64_t{u.y} - t.y));
    e->x = wrap(int64_t{t.x} * kOne + x_offset + 0x1FFFF);
    // A run longer than a pixel starts at its left end.
    if (e->slope < -kOne) e->x = wrap(int64_t{e->x} + e->slope + kOne);
    const int64_t run = std::llabs(int64_t{e->slope});
    e->extra = run > kOne ? wrap(run - kOne) : 0;
    scan.pending.insert_sorted(e, [](const Edge *x) { return int64_t{x->top}; });
    scan.top = std::min(scan.top, e->top);
    scan.bottom = std::max(scan.bottom, e->bottom);
}

// Edges for (last, first), (first, second), ...; horizontal ones are skipped.
int32_t build_edges(Scan &scan, Edge *edges, xg_list *points, int32_t x_offset, int32_t y_offset) {
    int32_t count = 0;
    const auto *prev = static_cast<const xg_point *>(points->last->data);
    for (xg_list_item *item = points->first; item; item = item->next) {
        const auto *p = static_cast<const xg_point *>(item->data);
        if (p->y != prev->y) add_edge(scan, &edges[count++], *prev, *p, x_offset, y_offset);
        prev = p;
    }
    return count;
}

void fill_spans(const Scan &scan, const xc_image *image, const xg_area &box, int32_t y,
                xc_fill_func fill, uint32_t color) {
    for (const Edge *l = scan.active.first; l && l->next; l = l->next->next) {
        const Edge *r = l->next;
        const int32_t x1 = std::max(l->x >> 18, box.x1);
        const int32_t x2 = std::min(wrap(int64_t{r->x} + r->extra) >> 18, box.x2);
        if (x2 - x1 >= 1) fill(color, shape_pixel(image, x1, y), x2 - x1);
    }
}

// Drops edges that end on y, advances the rest and keeps them in order.
void step_active(Scan &scan, int32_t y) {
    Edge *e = scan.active.first;
    while (e) {
        Edge *next = e->next;
        if (e->bottom == y) {
            scan.active.remove(e);
        } else {
            e->x = wrap(int64_t{e->x} + e->slope);
            while (e->prev && step_key(e) < step_key(e->prev)) {
                Edge *before = e->prev;
                scan.active.remove(e);
                scan.active.insert_before(e, before);
            }
        }
        e = next;
    }
}

// x + k x slope, wrapping as k single steps do.
int32_t stepped(const Edge *e, int64_t k) {
    return static_cast<int32_t>(static_cast<uint32_t>(e->x) +
                                static_cast<uint32_t>(k) * static_cast<uint32_t>(e->slope));
}

// How many scanlines from y on may be stepped at once, without drawing:
// up to the clip's first row, the next edge to enter, or the step that
// drops an edge, whichever comes first.
int64_t quiet_run(const Scan &scan, int64_t y, int64_t first_drawn) {
    int64_t until = first_drawn;
    if (scan.pending.first) until = std::min<int64_t>(until, scan.pending.first->top);
    for (const Edge *e = scan.active.first; e; e = e->next)
        if (e->bottom >= y) until = std::min<int64_t>(until, e->bottom);
    return until - y;
}

// The state after k >= 2 single steps of an unchanging active list. Each
// step leaves the list sorted by the stepped key, keeping the order of
// ties; two edges whose keys tie on two steps running share slope and x,
// and so keep their order throughout. The list after the last step is
// therefore sorted by the last key, ties broken by the key one step
// earlier, then by the order before.
void step_many(Scan &scan, int64_t k, int32_t count) {
    struct Place {
        Edge *edge;
        int64_t key, earlier;
        int32_t index;
        bool operator<(const Place &o) const {
            if (key != o.key) return key < o.key;
            return earlier != o.earlier ? earlier < o.earlier : index < o.index;
        }
    };
    StackBuffer<Place, 64> places(count);
    int32_t n = 0;
    for (Edge *e = scan.active.first; e; e = e->next, ++n)
        places[static_cast<size_t>(n)] = {e, int64_t{stepped(e, k)} + e->extra / 2,
                                          int64_t{stepped(e, k - 1)} + e->extra / 2, n};
    std::sort(places.data(), places.data() + n);
    Edge *prev = nullptr;
    for (int32_t i = 0; i < n; ++i) {
        Edge *e = places[static_cast<size_t>(i)].edge;
        e->x = stepped(e, k);
        e->prev = prev;
        e->next = nullptr;
        (prev ? prev->next : scan.active.first) = e;
        prev = e;
    }
}

// Scanlines above the clip draw nothing; they are stepped in runs between
// the edges' ends rather than one by one, so a vertex far above the clip
// costs no more than one near it.
void scan_polygon(Scan &scan, int32_t edges, xc_image *image, const xg_area &box, uint32_t color) {
    const xc_fill_func fill = xc_get_fill_func(color, image);
    const int32_t last = std::min(scan.bottom, box.y2 - 1);
    if (box.y1 > last) return;
    for (int64_t y = scan.top; y <= last;) {
        while (scan.pending.first && scan.pending.first->top == y) {
            Edge *e = scan.pending.first;
            scan.pending.remove(e);
            scan.active.insert_sorted(e, entry_key);
        }
        if (y >= box.y1) {
            fill_spans(scan, image, box, static_cast<int32_t>(y), fill, color);
        } else if (const int64_t k = quiet_run(scan, y, box.y1); k >= 2) {
            step_many(scan, k, edges);
            y += k;
            continue;
        }
        step_active(scan, static_cast<int32_t>(y));
        ++y;
    }
}

}  // namespace
}  // namespace fbc

extern "C" {

void xc_polygon_draw(xc_image *image, const xg_area *clip, int32_t x_offset, int32_t y_offset,
                     xg_list *points, uint32_t color) {
    if (!points || !points->first || !fbc::words_addressable(image)) return;
    const xg_area box = fbc::clip_to_image(image, *clip);
    if (box.x2 <= box.x1 || box.y2 <= box.y1) return;
    // One edge record per point, on the stack for any ordinary polygon; a
    // huge point count moves the array to the heap rather than overflow the
    // stack.
    fbc::StackBuffer<fbc::Edge, 64> edges(points->count);
    fbc::Scan scan;
    const int32_t count = fbc::build_edges(scan, edges.data(), points, x_offset, y_offset);
    if (count == 0) return;
    xg_color_premultiply(&color);
    fbc::scan_polygon(scan, count, image, box, color);
}

}  // extern "C"
