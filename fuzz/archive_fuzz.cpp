// The image archive: the input is a folder's img.ar. The first names of its
// index (and one it lacks) are looked up and loaded as images of that folder,
// which sends PNG names to the archive's stored data at their offsets.
#include <cstring>
#include <string>
#include <vector>

#include "file_support.hpp"
#include "loaders/image_archive.hpp"

namespace {

// Up to `most` names from the index as the archive lays it out: "IMGARCH0",
// a count, then (offset, length, name) entries. Names that would leave the
// folder or end early are skipped.
std::vector<std::string> index_names(const uint8_t *data, size_t size, size_t most) {
    std::vector<std::string> names;
    fuzz::Input in(data, size);
    in.take<uint64_t>();  // magic
    for (auto count = in.take<int32_t>(); count > 0 && names.size() < most && in.rest_size() >= 8;
         --count) {
        in.take<int32_t>();  // offset
        const auto length = static_cast<size_t>(in.take<uint32_t>());
        if (length > in.rest_size()) break;
        std::string name(reinterpret_cast<const char *>(in.rest()), length);
        for (size_t i = 0; i < length; ++i) in.take<uint8_t>();
        if (!name.empty() && name.find_first_of(std::string("/\0", 2)) == std::string::npos)
            names.push_back(name);
    }
    names.push_back("absent.png");
    return names;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::write_scratch("img.ar", data, size);
    for (const std::string &name : index_names(data, size, 4)) {
        const std::string path = fuzz::scratch_dir() + "/" + name;
        int32_t offset = 0;
        ar_img_lookup(path.c_str(), &offset);
        fuzz::load_every_frame(path);
    }
    // The next input is a new archive in the same folder.
    fbc::forget_image_archives();
    return 0;
}
