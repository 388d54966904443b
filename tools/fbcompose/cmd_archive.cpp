// fbcompose archive: the per-directory image archive img.ar.
//
// Layout (little-endian 32-bit integers): "IMGARCH0", entry count, then per
// entry its data offset, name length and name (no terminator), then the
// stored files back to back. The index records no sizes; list and extract
// take each file to run up to the next stored file (or the archive's end),
// which is exactly what pack writes.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli.hpp"
#include "commands.hpp"

namespace fbctool {
namespace {

namespace fs = std::filesystem;

constexpr char kMagic[8] = {'I', 'M', 'G', 'A', 'R', 'C', 'H', '0'};
constexpr std::string_view kCommand = "archive";
// The library's index keeps the archive's own path under this key.
constexpr std::string_view kReservedName = "name";
constexpr int64_t kMaxArchiveBytes = INT32_MAX;

struct entry {
    std::string name;
    int64_t offset = 0;
    int64_t size = 0;
};

void put_int32(std::string &out, int64_t value) {
    const auto v = static_cast<uint32_t>(value);
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>(v >> shift));
}

int32_t get_int32(const unsigned char *p) {
    return static_cast<int32_t>(static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
                                static_cast<uint32_t>(p[2]) << 16 |
                                static_cast<uint32_t>(p[3]) << 24);
}

bool read_file(const fs::path &path, std::string &bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

// Regular files of the folder, by name, except the archive itself and the
// one name the index reserves.
std::vector<entry> files_to_pack(const fs::path &dir, const fs::path &out) {
    std::vector<entry> files;
    for (const fs::directory_entry &item : fs::directory_iterator(dir)) {
        if (!item.is_regular_file()) continue;
        const std::string name = item.path().filename().string();
        std::error_code same;
        if (fs::equivalent(item.path(), out, same)) continue;
        if (name == kReservedName) {
            std::fprintf(stderr, "fbcompose archive: skipping '%s': the name is reserved\n",
                         item.path().c_str());
            continue;
        }
        files.push_back({name, 0, static_cast<int64_t>(item.file_size())});
    }
    std::sort(files.begin(), files.end(),
              [](const entry &a, const entry &b) { return a.name < b.name; });
    return files;
}

int pack(const fs::path &dir, const fs::path &out) {
    std::error_code error;
    if (!fs::is_directory(dir, error))
        return fail(kCommand, cat({"cannot read folder '", dir.string(), "'"}));
    std::vector<entry> files = files_to_pack(dir, out);

    int64_t offset = 12;
    for (const entry &file : files) offset += 8 + static_cast<int64_t>(file.name.size());
    for (entry &file : files) {
        file.offset = offset;
        offset += file.size;
    }
    if (offset > kMaxArchiveBytes)
        return fail(kCommand, cat({"'", dir.string(), "' holds more than an archive can address (2 GiB)"}));

    std::string index(kMagic, sizeof kMagic);
    put_int32(index, static_cast<int64_t>(files.size()));
    for (const entry &file : files) {
        put_int32(index, file.offset);
        put_int32(index, static_cast<int64_t>(file.name.size()));
        index += file.name;
    }
    std::ofstream archive(out, std::ios::binary | std::ios::trunc);
    if (!archive) return fail(kCommand, cat({"cannot write '", out.string(), "'"}));
    archive.write(index.data(), static_cast<std::streamsize>(index.size()));

    std::string bytes;
    size_t done = 0;
    for (const entry &file : files) {
        const fs::path path = dir / file.name;
        if (!read_file(path, bytes) || static_cast<int64_t>(bytes.size()) != file.size)
            return fail(kCommand, cat({"cannot read '", path.string(), "' (or it changed while packing)"}));
        archive.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (++done % 100 == 0)
            std::fprintf(stderr, "packed %zu of %zu files\n", done, files.size());
    }
    archive.close();
    if (!archive) return fail(kCommand, cat({"writing '", out.string(), "' failed"}));
    std::printf("packed %zu files, %lld bytes, into %s\n", files.size(),
                static_cast<long long>(offset), out.c_str());
    return 0;
}

// Reads and checks the index; sizes run to the next stored file.
bool read_index(const std::string &archive, const std::string &bytes, std::vector<entry> &entries,
                std::string &problem) {
    const auto *data = reinterpret_cast<const unsigned char *>(bytes.data());
    const int64_t length = static_cast<int64_t>(bytes.size());
    if (length < 12 || std::memcmp(data, kMagic, sizeof kMagic) != 0) {
        problem = cat({"'", archive, "' is not an image archive"});
        return false;
    }
    const int32_t count = get_int32(data + 8);
    int64_t at = 12;
    for (int32_t i = 0; i < count; ++i) {
        if (at + 8 > length) {
            problem = cat({"'", archive, "': index cut short at entry ", std::to_string(i)});
            return false;
        }
        const int32_t offset = get_int32(data + at);
        const int32_t name_length = get_int32(data + at + 4);
        at += 8;
        if (name_length < 0 || at + name_length > length || offset <= 0 || offset > length) {
            problem = cat({"'", archive, "': entry ", std::to_string(i), " is damaged"});
            return false;
        }
        entries.push_back({std::string(bytes, static_cast<size_t>(at), static_cast<size_t>(name_length)),
                           offset, 0});
        at += name_length;
    }
    std::vector<int64_t> starts;
    for (const entry &e : entries) starts.push_back(e.offset);
    starts.push_back(length);
    std::sort(starts.begin(), starts.end());
    for (entry &e : entries)
        e.size = *std::upper_bound(starts.begin(), starts.end(), e.offset) - e.offset;
    return true;
}

int list(const fs::path &archive) {
    std::string bytes, problem;
    std::vector<entry> entries;
    if (!read_file(archive, bytes)) return fail(kCommand, cat({"cannot read '", archive.string(), "'"}));
    if (!read_index(archive.string(), bytes, entries, problem)) return fail(kCommand, problem);
    std::printf("%10s %10s  %s\n", "offset", "bytes", "name");
    for (const entry &e : entries)
        std::printf("%10lld %10lld  %s\n", static_cast<long long>(e.offset),
                    static_cast<long long>(e.size), e.name.c_str());
    return 0;
}

// A stored name is a plain file name: anything that would leave the target
// folder is refused.
bool safe_name(const std::string &name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

int extract(const fs::path &archive, const fs::path &dir) {
    std::string bytes, problem;
    std::vector<entry> entries;
    if (!read_file(archive, bytes)) return fail(kCommand, cat({"cannot read '", archive.string(), "'"}));
    if (!read_index(archive.string(), bytes, entries, problem)) return fail(kCommand, problem);
    std::error_code error;
    fs::create_directories(dir, error);
    if (error) return fail(kCommand, cat({"cannot create folder '", dir.string(), "'"}));
    for (const entry &e : entries) {
        if (!safe_name(e.name))
            return fail(kCommand, cat({"'", archive.string(), "' holds an unsafe name '", e.name, "'"}));
        std::ofstream out(dir / e.name, std::ios::binary | std::ios::trunc);
        out.write(bytes.data() + e.offset, static_cast<std::streamsize>(e.size));
        if (!out) return fail(kCommand, cat({"cannot write '", (dir / e.name).string(), "'"}));
    }
    std::printf("extracted %zu files into %s\n", entries.size(), dir.c_str());
    return 0;
}

int help() {
    std::printf(
        "usage: fbcompose archive pack DIR -o img.ar\n"
        "       fbcompose archive list img.ar\n"
        "       fbcompose archive extract img.ar DIR\n\n"
        "An image folder may carry one img.ar holding many small image files;\n"
        "the library reads a PNG from it when the file itself is missing.\n");
    return 0;
}

}  // namespace

int run_archive(int argc, char **argv) {
    args a(argc, argv);
    if (a.wants_help()) return help();
    if (a.empty()) return usage_error(kCommand, "needs pack, list or extract");
    const std::string verb = a.take();
    if (verb == "pack") {
        if (a.empty()) return usage_error(kCommand, "pack needs a folder");
        const std::string dir = a.take();
        std::string out;
        if (!a.take_option("-o", out) || !a.empty())
            return usage_error(kCommand, "pack needs -o ARCHIVE and nothing else");
        return pack(dir, out);
    }
    if (verb == "list") {
        if (a.empty()) return usage_error(kCommand, "list needs an archive");
        const std::string archive = a.take();
        if (!a.empty()) return usage_error(kCommand, "list takes one archive");
        return list(archive);
    }
    if (verb == "extract") {
        if (a.empty()) return usage_error(kCommand, "extract needs an archive and a folder");
        const std::string archive = a.take();
        if (a.empty()) return usage_error(kCommand, "extract needs a folder");
        const std::string dir = a.take();
        if (!a.empty()) return usage_error(kCommand, "extract takes an archive and a folder");
        return extract(archive, dir);
    }
    return usage_error(kCommand, cat({"unknown action '", verb, "'"}));
}

}  // namespace fbctool
