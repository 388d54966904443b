// The per-directory image archive img.ar: "IMGARCH0", a 32-bit entry count,
// then entries (data offset, name length, name), all little-endian. Each
// directory is examined once per process; its index is then answered from
// memory and the stored files are read in place by the caller.
#include "loaders/image_archive.hpp"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>

#include "core/log.hpp"
#include "fbcompose/loader.h"

namespace fbc {
namespace {

// What one directory offers: its archive's path (empty without one) and the
// data offset of each stored file.
struct DirectoryArchive {
    std::string archive_path;
    std::unordered_map<std::string, int32_t> offsets;
};

// Kept for the life of the process; only forget_image_archives empties it.
std::unordered_map<std::string, DirectoryArchive> &directories() {
    static auto *table = new std::unordered_map<std::string, DirectoryArchive>();
    return *table;
}

bool read_s32(FILE *file, int32_t *value) {
    uint8_t b[4];
    if (std::fread(b, 1, 4, file) != 4) return false;
    *value =
        static_cast<int32_t>(static_cast<uint32_t>(b[0]) | static_cast<uint32_t>(b[1]) << 8 |
                             static_cast<uint32_t>(b[2]) << 16 | static_cast<uint32_t>(b[3]) << 24);
    return true;
}

long file_size(FILE *file) {
    if (std::fseek(file, 0, SEEK_END) != 0) return -1;
    const long size = std::ftell(file);
    return std::fseek(file, 0, SEEK_SET) == 0 ? size : -1;
}

// Reads the index after the magic. A short read or a name longer than the
// file ends the index: the entries read so far stay usable.
void read_index(FILE *file, long size, DirectoryArchive &archive) {
    int32_t count = 0;
    if (!read_s32(file, &count)) return;
    std::string name;
    for (int32_t i = 0; i < count; ++i) {
        int32_t offset = 0, length = 0;
        if (!read_s32(file, &offset) || !read_s32(file, &length)) return;
        if (length < 0 || length > size - std::ftell(file)) return;
        name.resize(static_cast<size_t>(length));
        if (std::fread(name.data(), 1, name.size(), file) != name.size()) return;
        // The later of two equal names wins.
        archive.offsets.insert_or_assign(name, offset);
    }
}

// First lookup in a directory: reads its archive, if it has a usable one.
void examine_directory(const std::string &prefix, DirectoryArchive &archive) {
    fbc::log_out("add dir = %s\n", prefix.c_str());
    const std::string path = prefix + "img.ar";
    FILE *file = std::fopen(path.c_str(), "rb");
    if (!file) {
        fbc::log_out("this dir %s has not img.ar\n", prefix.c_str());
        return;
    }
    fbc::log_out("dir = %s\n", prefix.c_str());
    const long size = file_size(file);
    char magic[8];
    if (size < 0 || std::fread(magic, 1, 8, file) != 8 || std::memcmp(magic, "IMGARCH0", 8) != 0) {
        fbc::log_out("not our archive");
        std::fclose(file);
        return;
    }
    read_index(file, size, archive);
    std::fclose(file);
    archive.archive_path = path;
}

}  // namespace

void forget_image_archives() { directories().clear(); }

}  // namespace fbc

extern "C" const char *ar_img_lookup(const char *path, int32_t *offset_out) {
    const char *slash = std::strrchr(path, '/');
    const std::string prefix(path, slash ? static_cast<size_t>(slash - path + 1) : 0);
    const char *base = slash ? slash + 1 : path;
    auto &table = fbc::directories();
    auto known = table.find(prefix);
    if (known == table.end()) {
        known = table.emplace(prefix, fbc::DirectoryArchive{}).first;
        fbc::examine_directory(prefix, known->second);
        if (known->second.archive_path.empty()) return nullptr;
    }
    const auto &archive = known->second;
    const auto entry = archive.offsets.find(base);
    *offset_out = entry == archive.offsets.end() ? 0 : entry->second;
    // Offset 0 is the magic, never a stored file.
    return *offset_out != 0 ? archive.archive_path.c_str() : nullptr;
}
