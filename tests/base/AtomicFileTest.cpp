#include "base/AtomicFile.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include <sys/stat.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;

unsigned modeOf(const fs::path& path)
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

std::size_t entriesIn(const fs::path& folder)
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST(AtomicFile, KeepsEveryByteForTheOwnerAlone)
{
    const TemporaryFolder folder;
    const auto file = folder / "new/deeper/notes.json";
    const std::string content = std::string(3'000'000, 'x') + '\0' + "\r\n\xff";
    const auto previous = ::umask(0);
    ASSERT_TRUE(writeFileAtomically(file, content));
    ::umask(previous);

    EXPECT_EQ(readWholeFile(file), content);
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(folder / "new"), 0700U);
    EXPECT_EQ(modeOf(folder / "new/deeper"), 0700U);

    fs::permissions(file, fs::perms(0644));
    ASSERT_TRUE(writeFileAtomically(file, ""));
    EXPECT_EQ(readWholeFile(file), "");
    EXPECT_EQ(modeOf(file), 0600U) << "a file that others could read stayed so";
    EXPECT_EQ(entriesIn(folder / "new/deeper"), 1U) << "something was left beside the file";
}

TEST(AtomicFile, AReaderNeverSeesAPartOfAWrite)
{
    const TemporaryFolder folder;
    const auto file = folder / "state";
    const std::string contents[] = {std::string(200'000, 'a'), std::string(200'001, 'b')};
    ASSERT_TRUE(writeFileAtomically(file, contents[0]));
    std::atomic<bool> done = false;
    std::jthread writer([&] {
        for (int i = 0; i < 40; ++i)
            EXPECT_TRUE(writeFileAtomically(file, contents[i % 2]));
        done = true;
    });
    while (!done) {
        const auto read = readWholeFile(file);
        ASSERT_TRUE(read);
        ASSERT_TRUE(*read == contents[0] || *read == contents[1]) << read->size();
    }
}

TEST(AtomicFile, ASymbolicLinkStaysAndItsFileIsReplaced)
{
    const TemporaryFolder folder;
    writeFile(folder / "dotfiles/settings.json", "old");
    fs::create_symlink("dotfiles/settings.json", folder / "settings.json");
    ASSERT_TRUE(writeFileAtomically(folder / "settings.json", "new"));
    EXPECT_TRUE(fs::is_symlink(folder / "settings.json"));
    EXPECT_EQ(readFile(folder / "dotfiles/settings.json"), "new");
}

TEST(AtomicFile, OnlyItsOwnLeftoversAreRemoved)
{
    const TemporaryFolder folder;
    for (const auto* name :
         {"real/settings.json", "real/.settings.json.tmp-a1b2c3", "real/.settings.json.swp",
          "real/.settings.json.backup", "real/.settings.json.tmp-a1-2c3", "real/.other.json.tmp-a1b2c3"})
        writeFile(folder / name, "x");
    fs::create_symlink("real/settings.json", folder / "link.json");
    removeLeftovers(folder / "link.json");
    EXPECT_FALSE(fs::exists(folder / "real/.settings.json.tmp-a1b2c3"));
    EXPECT_EQ(entriesIn(folder / "real"), 5U);
}

TEST(AtomicFile, AFailureNamesTheReasonAndLeavesTheOldContent)
{
    const TemporaryFolder folder;
    writeFile(folder / "file", "kept");
    fs::create_directory(folder / "folder");

    const auto below = writeFileAtomically(folder / "file/below", "x");
    ASSERT_FALSE(below);
    EXPECT_EQ(below.error(), (FileError{folder / "file", std::make_error_code(std::errc::file_exists)}));
    EXPECT_EQ(readFile(folder / "file"), "kept");

    const auto over = writeFileAtomically(folder / "folder", "x");
    ASSERT_FALSE(over);
    EXPECT_EQ(over.error().reason, std::errc::is_a_directory);
    EXPECT_EQ(entriesIn(folder.path()), 2U) << "the file that was written aside stayed";

    const auto device = writeFileAtomically("/dev/full/x", "x");
    EXPECT_FALSE(device);

    EXPECT_EQ(readWholeFile(folder / "missing").error().reason, std::errc::no_such_file_or_directory);
    EXPECT_EQ(readWholeFile(folder / "folder").error().reason, std::errc::is_a_directory);
    EXPECT_EQ(toString(readWholeFile(folder / "missing").error()),
              (folder / "missing").string() + ": No such file or directory");
}

TEST(AtomicFile, ANameWithoutFolderMeansTheWorkingFolder)
{
    const TemporaryFolder folder;
    const auto previous = fs::current_path();
    fs::current_path(folder.path());
    const auto written = writeFileAtomically("bare", "content");
    fs::current_path(previous);
    EXPECT_TRUE(written);
    EXPECT_EQ(readFile(folder / "bare"), "content");
}

} // namespace
