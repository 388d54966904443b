// The per-directory archive img.ar: lookups and their messages. (The tool's
// tests load a whole folder of PNG files packed in one through the library.)
#include <unistd.h>

#include "loader_test_support.hpp"

namespace {

// An archive holding the given files, data placed after the index.
Bytes archive(const std::vector<std::pair<std::string, Bytes>> &files,
              const char *magic = "IMGARCH0") {
    Bytes out(magic, magic + 8), data;
    put_le(out, static_cast<uint32_t>(files.size()));
    size_t offset = 12;
    for (const auto &f : files) offset += 8 + f.first.size();
    for (const auto &[name, bytes] : files) {
        put_le(out, static_cast<uint32_t>(offset + data.size()));
        put_le(out, static_cast<uint32_t>(name.size()));
        out.insert(out.end(), name.begin(), name.end());
        data.insert(data.end(), bytes.begin(), bytes.end());
    }
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

// The archive's answer for `file`: its path ("" for none) and the offset.
std::pair<std::string, int32_t> lookup(const std::string &file) {
    int32_t offset = -1;
    const char *found = ar_img_lookup(file.c_str(), &offset);
    return {found ? found : "", offset};
}

using ImageArchive = ScratchDir;

// A name without a slash looks in the working directory.
TEST_F(ImageArchive, DirectoryIsReadOnceWithItsMessages) {
    write("img.ar", archive({{"a.png", {1}}, {"b.png", {2, 2}}}));
    ASSERT_EQ(chdir(dir_.c_str()), 0);
    EXPECT_EQ(lookup("a.png"), std::make_pair(std::string("img.ar"), 12 + 2 * (8 + 5)));
    EXPECT_EQ(log_.take(), "add dir = \ndir = \n");
    std::filesystem::remove("img.ar");  // answered from memory from now on
    EXPECT_EQ(lookup("b.png"), std::make_pair(std::string("img.ar"), 12 + 2 * (8 + 5) + 1));
    EXPECT_EQ(lookup("c.png"), std::make_pair(std::string(), 0));
    EXPECT_EQ(lookup("name"), std::make_pair(std::string(), 0));  // reserved, not the path
    EXPECT_EQ(log_.take(), "");
}

TEST_F(ImageArchive, LaterNameWinsOffsetZeroIsNeverFoundAndACutIndexKeepsItsEntries) {
    Bytes bytes =
        archive({{"zero.png", {9}}, {"twice.png", {1}}, {"twice.png", {2}}, {"cut.png", {}}});
    std::fill_n(bytes.begin() + 12, 4, 0);    // the first entry's offset
    std::fill_n(bytes.begin() + 8, 3, 0xFF);  // a count far beyond the entries
    bytes.resize(bytes.size() - 6);           // cut inside the last name
    write("img.ar", bytes);
    EXPECT_EQ(lookup(path("zero.png")), std::make_pair(std::string(), 0));
    EXPECT_EQ(lookup(path("twice.png")),
              std::make_pair(path("img.ar"), 12 + 4 * 8 + 8 + 9 + 9 + 7 + 2));
    EXPECT_EQ(lookup(path("cut.png")), std::make_pair(std::string(), 0));
}

TEST_F(ImageArchive, DirectoriesWithoutUsableArchiveFailQuietlyAfterTheFirstLookup) {
    const std::tuple<std::string, Bytes, std::string> rows[] = {
        // no content: no archive
        {"none", {}, " has not img.ar\n"},
        {"wrong", archive({{"a.png", {1}}}, "IMGARCH1"), "\nnot our archive"}};
    for (const auto &[name, content, tail] : rows) {
        const std::string folder = path(name) + "/";
        std::filesystem::create_directory(folder);
        if (!content.empty()) write(name + "/img.ar", content);
        EXPECT_EQ(lookup(folder + "a.png").first, "");
        EXPECT_EQ(log_.take(), "add dir = " + folder + "\n" +
                                   (content.empty() ? "this dir " : "dir = ") + folder + tail);
        EXPECT_EQ(lookup(folder + "a.png"), std::make_pair(std::string(), 0));
        EXPECT_EQ(log_.take(), "");
    }
}

}  // namespace
