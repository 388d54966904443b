// The kernel tables: one per family of span primitives and converters, one
// row per primitive. A row holds the reference, the plain scalar version
// exported under the documented name and kept readable as its equation, and
// the faster variants that may stand in for it, best first. The getters
// hand out each row's pick; the tests run every variant against the
// reference.
#pragma once

#include <cstddef>
#include <span>
#include <type_traits>

#include "fbcompose/pixel.h"
#include "pixel/cpu.hpp"

namespace fbc::px {

template <class Fn>
struct Variant {
    const char *name;  // the kernel's internal name, e.g. "swar::blend_pixels_rgba_to_rgba"
    Isa isa;           // what the CPU must offer to run it
    Fn run;
    // Where it is picked: a portable kernel may beat the reference only on
    // a CPU without a vector unit. kPortable: wherever it runs.
    Isa chosen_on = Isa::kPortable;
};

// Room for a portable, a device and two host variants of one primitive.
inline constexpr size_t kMaxVariants = 4;

template <class Fn>
struct Kernel {
    const char *name;  // the reference's exported name
    Fn reference;
    Variant<Fn> variants[kMaxVariants] = {};  // best first; unused entries have no `run`

    // The first variant meant for this CPU, else the reference.
    Fn pick() const {
        for (const Variant<Fn> &v : variants)
            if (v.run && cpu_has(v.isa) && cpu_has(v.chosen_on)) return v.run;
        return reference;
    }
};

template <class Fn>
struct Family {
    const char *name;
    std::span<const Kernel<Fn>> kernels;
};

extern const Family<xc_fill_func> kFill;
extern const Family<xc_draw_func> kDraw;
extern const Family<xc_draw_func> kMulDraw;
extern const Family<xc_alpha_func> kAlpha;
extern const Family<xc_alpha_texture_func> kAlphaTexture;
extern const Family<xc_convert_func> kConvert;

// Every family, once: the getters resolve through this list and the tests walk it.
template <class Visit>
void for_each_family(Visit &&visit) {
    visit(kFill);
    visit(kDraw);
    visit(kMulDraw);
    visit(kAlpha);
    visit(kAlphaTexture);
    visit(kConvert);
}

// The row whose reference is `reference`, or null.
template <class Fn>
const Kernel<Fn> *find_kernel(Fn reference) {
    const Kernel<Fn> *found = nullptr;
    for_each_family([&](const auto &family) {
        if constexpr (std::is_same_v<decltype(family), const Family<Fn> &>)
            for (const Kernel<Fn> &k : family.kernels)
                if (k.reference == reference) found = &k;
    });
    return found;
}

// What stands in for `reference` on this CPU: its row's pick.
template <class Fn>
Fn chosen(Fn reference) {
    const Kernel<Fn> *k = find_kernel(reference);
    return k ? k->pick() : reference;
}

}  // namespace fbc::px
