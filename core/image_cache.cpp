// The image cache: the table of live file images by name, and the list of
// released ones kept within a byte budget, most recently released first.
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>

#include "core/assert.hpp"
#include "core/image_internal.hpp"
#include "core/log.hpp"
#include "fbcompose/image.h"
#include "fbcompose/list.h"

namespace fbc {
namespace {

constexpr const char *kModule = "image_func";

// The tables live for the whole process and are never torn down, so they
// are allocated once and never destroyed (no exit-time ordering issues).
std::unordered_map<std::string, xc_image *> &active_table() {
    static auto *table = new std::unordered_map<std::string, xc_image *>();
    return *table;
}

std::unordered_map<std::string, xg_image_info> &info_table() {
    static auto *table = new std::unordered_map<std::string, xg_image_info>();
    return *table;
}

xg_list *inactive = nullptr;  // front: released most recently
int32_t inactive_bytes = 0;
int32_t cache_limit = 0;

// Destroys the images released longest ago. Eviction starts when the total
// reaches the limit (>=) and ends once it is within it (<=): a total equal
// to the limit costs one eviction. compat: both comparisons are deliberate.
void evict() {
    while (inactive) {
        auto *image = static_cast<xc_image *>(inactive->last->data);
        inactive = xg_list_remove_list(inactive, inactive->last);
        inactive_bytes -= image_cache_bytes(image);
        image_destroy(image);
        if (inactive_bytes <= cache_limit) break;
    }
}

}  // namespace

void xc_image_add_active(xc_image *im) {
    FBC_ASSERT(kModule, im->is_ani == 0);
    active_table()[im->filename] = im;
}

void image_add_cache(xc_image *im) {
    active_table().erase(im->filename);
    FBC_ASSERT(kModule, im->ref == 0);
    FBC_ASSERT(kModule, im->is_ani == 0);
    inactive = xg_list_prepend(inactive, im);
    inactive_bytes += image_cache_bytes(im);
    if (inactive_bytes < cache_limit) return;
    evict();
}

}  // namespace fbc

extern "C" {

void xc_image_init(void) { fbc::active_table(); }

xc_image *xc_image_lookup_in_cache(const char *filename) {
    if (!filename) return nullptr;
    auto &active = fbc::active_table();
    if (auto it = active.find(filename); it != active.end()) {
        ++it->second->ref;
        return it->second;
    }
    xg_list_item *item = fbc::inactive ? fbc::inactive->first : nullptr;
    while (item && std::strcmp(static_cast<xc_image *>(item->data)->filename, filename) != 0)
        item = item->next;
    if (!item) return nullptr;
    auto *image = static_cast<xc_image *>(item->data);
    fbc::inactive = xg_list_remove_list(fbc::inactive, item);
    fbc::inactive_bytes -= fbc::image_cache_bytes(image);
    if (image->no_cache) {
        fbc::log_out(
            "%s: bad filename(%s) is set no-cache but it is in cache "
            "!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!\n",
            "xc_image_lookup_in_cache", filename);
    }
    if (++image->ref == 1 && image->filename) fbc::xc_image_add_active(image);
    return image;
}

void xc_set_image_cache_size(int32_t bytes) {
    if (bytes == fbc::cache_limit) return;
    fbc::cache_limit = bytes;
    if (fbc::inactive_bytes < fbc::cache_limit) return;
    fbc::evict();
}

int32_t xc_get_image_cache_size(void) { return fbc::cache_limit; }

void xc_image_invalidate(xc_image *image) {
    if (image->filename) fbc::active_table().erase(image->filename);
    if (image->ref != 0) {
        image->no_cache = 1;
        return;
    }
    // Inactive: it leaves the cache's ownership but stays allocated for
    // whoever still holds the pointer.
    if (xg_list_item *item = xg_list_find(fbc::inactive, image)) {
        fbc::inactive = xg_list_remove_list(fbc::inactive, item);
        fbc::inactive_bytes -= fbc::image_cache_bytes(image);
    }
    image->no_cache = 1;
}

void xg_image_set_info(const char *filename, int32_t width, int32_t height, uint32_t has_alpha,
                       const char *type) {
    xg_image_info info{width, height, has_alpha, nullptr};
    if (type && std::strcmp(type, "png") == 0) info.type_name = "png";
    else if (type && std::strcmp(type, "jpg") == 0) info.type_name = "jpg";
    fbc::info_table()[filename] = info;
}

int xc_image_load_cached_info(xc_image *image, const char *filename) {
    auto &table = fbc::info_table();
    auto it = filename ? table.find(filename) : table.end();
    if (it == table.end()) return -1;
    image->width = it->second.width;
    image->rowstride = it->second.width * 4;
    image->height = it->second.height;
    image->type_name = it->second.type_name;
    image->has_alpha = it->second.has_alpha & 1u;
    return 0;
}

}  // extern "C"
