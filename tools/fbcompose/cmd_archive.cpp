// fbcompose archive: the per-directory image archive img.ar.
//
// Layout (little-endian 32-bit integers): "IMGARCH0", entry count, then per
// entry its data offset, name length and name (no terminator), then the
// stored files back to back. The index records no sizes; list and extract
// take each file to run up to the next stored file (or the archive's end),
// which is exactly what pack writes. The library reads archives only by
// name (ar_img_lookup, for a folder's img.ar), so listing and extracting
// read the index here.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli.hpp"
#include "commands.hpp"
#include "outputs.hpp"
#include "progress.hpp"

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

void skipping(const fs::path &path, const std::string &why) {
    std::fprintf(stderr, "fbcompose archive: skipping '%s': %s\n", path.c_str(), why.c_str());
}

// Why a folder entry is not packed, or empty when it is.
std::string reason_to_skip(const fs::directory_entry &item, const fs::path &out) {
    std::error_code error;
    if (item.is_directory(error)) return "a folder (archives hold the files of one folder)";
    if (!item.is_regular_file(error)) return "not a regular file";
    if (fs::equivalent(item.path(), out, error)) return "it is the archive being written";
    if (item.path().filename() == kReservedName)
        return "the name is reserved (the library keeps the archive's path under it)";
    if (std::ifstream(item.path(), std::ios::binary).fail()) return std::strerror(errno);
    return {};
}

// Regular, readable files of the folder, by name; every other entry is
// named on standard error.
std::vector<entry> files_to_pack(const fs::path &dir, const fs::path &out) {
    std::vector<entry> files;
    for (const fs::directory_entry &item : fs::directory_iterator(dir)) {
        const std::string why = reason_to_skip(item, out);
        if (!why.empty()) skipping(item.path(), why);
        else
            files.push_back(
                {item.path().filename().string(), 0, static_cast<int64_t>(item.file_size())});
    }
    std::sort(files.begin(), files.end(),
              [](const entry &a, const entry &b) { return a.name < b.name; });
    return files;
}

// The index, with each file's data offset after it; false when the files
// hold more than an archive's 32-bit offsets can address.
bool make_index(std::vector<entry> &files, std::string &index, int64_t &total) {
    total = 12;
    for (const entry &file : files) total += 8 + static_cast<int64_t>(file.name.size());
    for (entry &file : files) {
        file.offset = total;
        total += file.size;
    }
    if (total > kMaxArchiveBytes) return false;
    index.assign(kMagic, sizeof kMagic);
    put_int32(index, static_cast<int64_t>(files.size()));
    for (const entry &file : files) {
        put_int32(index, file.offset);
        put_int32(index, static_cast<int64_t>(file.name.size()));
        index += file.name;
    }
    return true;
}

int pack(const fs::path &dir, const std::string &out) {
    std::error_code error;
    if (!fs::is_directory(dir, error))
        return fail(cat({"cannot read folder '", dir.string(),
                         "': ", error ? error.message() : "not a folder"}));
    outputs written(kCommand);
    if (int bad = written.check(out, output_kind::bytes)) return bad;
    std::vector<entry> files = files_to_pack(dir, is_stdout(out) ? fs::path() : fs::path(out));
    std::string index, bytes;
    int64_t total = 0;
    if (!make_index(files, index, total))
        return fail(cat({"'", dir.string(), "' holds more than an archive can address (2 GiB)"}));
    FILE *archive = written.open(out);
    if (!archive) return kFailed;
    bool wrote = std::fwrite(index.data(), 1, index.size(), archive) == index.size();
    progress work(kCommand);
    std::string unreadable;
    for (size_t i = 0; wrote && unreadable.empty() && i < files.size(); ++i) {
        work.at("file", static_cast<int64_t>(i + 1), static_cast<int64_t>(files.size()));
        const fs::path path = dir / files[i].name;
        if (read_file(path, bytes) && static_cast<int64_t>(bytes.size()) == files[i].size)
            wrote = std::fwrite(bytes.data(), 1, bytes.size(), archive) == bytes.size();
        else unreadable = path.string();
    }
    if (!written.finish(out, archive, wrote)) return kFailed;
    if (!unreadable.empty())
        return fail(cat({"cannot read '", unreadable, "' (or it changed while packing)"}));
    written.keep();
    std::fprintf(is_stdout(out) ? stderr : stdout, "packed %zu files, %lld bytes, into %s\n",
                 files.size(), static_cast<long long>(total), out.c_str());
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
        entries.push_back(
            {std::string(bytes, static_cast<size_t>(at), static_cast<size_t>(name_length)), offset,
             0});
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

// The archive's bytes and its index; false after a message.
bool open_archive(const fs::path &archive, std::string &bytes, std::vector<entry> &entries) {
    std::string problem;
    if (!read_file(archive, bytes))
        problem = cat({"cannot read '", archive.string(), "': ", std::strerror(errno)});
    else read_index(archive.string(), bytes, entries, problem);
    if (!problem.empty()) fail(problem);
    return problem.empty();
}

int list(const fs::path &archive) {
    std::string bytes;
    std::vector<entry> entries;
    if (!open_archive(archive, bytes, entries)) return kFailed;
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
    std::string bytes;
    std::vector<entry> entries;
    if (!open_archive(archive, bytes, entries)) return kFailed;
    for (const entry &e : entries)
        if (!safe_name(e.name))
            return fail(cat({"'", archive.string(), "' holds an unsafe name '", e.name, "'"}));
    std::error_code error;
    fs::create_directories(dir, error);
    if (error) return fail(cat({"cannot create folder '", dir.string(), "': ", error.message()}));
    outputs written(kCommand);
    progress work(kCommand);
    for (size_t i = 0; i < entries.size(); ++i) {
        work.at("file", static_cast<int64_t>(i + 1), static_cast<int64_t>(entries.size()));
        const std::string path = (dir / entries[i].name).string();
        if (written.check(path, output_kind::bytes) != 0 ||
            !written.write_bytes(path, bytes.data() + entries[i].offset,
                                 static_cast<size_t>(entries[i].size)))
            return kFailed;
    }
    written.keep();
    std::printf("extracted %zu files into %s\n", entries.size(), dir.c_str());
    return 0;
}

constexpr const char *kHelp =
    "usage: fbcompose archive pack DIR -o img.ar\n"
    "       fbcompose archive list img.ar\n"
    "       fbcompose archive extract img.ar DIR\n\n"
    "An image folder may carry one img.ar holding many small image files; the\n"
    "library reads a PNG from it when the file itself is missing. pack stores the\n"
    "regular files of DIR by name and says which entries it skips: sub-folders,\n"
    "other non-regular files, unreadable files, the archive itself, and a file\n"
    "named \"name\" (reserved). -o - writes the archive to standard output.\n"
    "extract refuses names that would leave DIR.\n";
constexpr option_spec kOptions[] = {{"-o", true}};
constexpr command_spec kSpec{kCommand, kOptions, kHelp};

}  // namespace

int run_archive(int argc, char **argv) {
    command_line a;
    int status = 0;
    if (!a.read(kSpec, argc, argv, status)) return status;
    const std::vector<std::string> &args = a.operands;
    const std::string verb = args.empty() ? "" : args[0];
    if (verb == "pack" && args.size() == 2 && a.has("-o")) return pack(args[1], a.value("-o"));
    if (verb == "pack") return usage_error(kCommand, "pack needs a folder and -o ARCHIVE");
    if (a.has("-o")) return usage_error(kCommand, cat({verb, " takes no -o"}));
    if (verb == "list" && args.size() == 2) return list(args[1]);
    if (verb == "list") return usage_error(kCommand, "list needs one archive");
    if (verb == "extract" && args.size() == 3) return extract(args[1], args[2]);
    if (verb == "extract") return usage_error(kCommand, "extract needs an archive and a folder");
    if (verb.empty()) return usage_error(kCommand, "needs pack, list or extract");
    return usage_error(kCommand, cat({"unknown action '", verb, "'"}));
}

}  // namespace fbctool
