// The loader registry: module loaders in the order CANVAS_IMAGE_LOADER names
// them, then the built-in ones. Built once, never rebuilt or freed; modules
// once opened stay open, since the registry points into them.
#include "loaders/loader_registry.hpp"

#include <dlfcn.h>
#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/log.hpp"

namespace fbc {
namespace {

xc_image_loader *const kBuiltIn[] = {&jpeg_loader, &png_loader, &bmp_loader,
                                     &wbmp_loader, &gif_loader, nullptr};

xc_image_loader **registry = nullptr;
// The split copy of CANVAS_IMAGE_LOADER; kept for the life of the process.
char *module_list = nullptr;

// Appends the records of the modules the environment names; returns how
// many there are.
int load_modules() {
    const char *value = std::getenv("CANVAS_IMAGE_LOADER");
    if (!value) return 0;
    module_list = strdup(value);
    fbc::log_out("loading dyn image loader:%s\n", value);
    int count = 0;
    for (char *token = std::strtok(module_list, ","); token; token = std::strtok(nullptr, ",")) {
        fbc::log_out("loader = %s\n", token);
        void *module = dlopen(token, RTLD_NOW);
        if (!module) {
            fbc::log_out("module(%s) open failed:%s\n", token, dlerror());
            continue;
        }
        void *record = dlsym(module, "image_loader");
        if (!record) {
            fbc::log_out("symbol('image_loader') loading failed in %s:%s\n", token, dlerror());
            dlclose(module);
            continue;
        }
        registry = static_cast<xc_image_loader **>(
            std::realloc(registry, sizeof(*registry) * static_cast<size_t>(count + 1)));
        registry[count++] = static_cast<xc_image_loader *>(record);
    }
    return count;
}

void build_registry() {
    const int modules = load_modules();
    const size_t built_in = sizeof(kBuiltIn) / sizeof(kBuiltIn[0]);  // with the null
    registry = static_cast<xc_image_loader **>(
        std::realloc(registry, sizeof(*registry) * (static_cast<size_t>(modules) + built_in)));
    std::memcpy(registry + modules, kBuiltIn, sizeof(kBuiltIn));
    for (int i = 0; registry[i]; ++i)
        fbc::log_out("loaders[%d] ext = %s\n", i, registry[i]->ext[0]);
}

}  // namespace

xc_image_loader *const *loader_registry() {
    if (!registry) build_registry();
    return registry;
}

const char *loader_matching_suffix(const xc_image_loader *loader, const char *suffix) {
    for (const char *const *ext = loader->ext; *ext; ++ext)
        if (strcasecmp(*ext, suffix) == 0) return *ext;
    return nullptr;
}

}  // namespace fbc
