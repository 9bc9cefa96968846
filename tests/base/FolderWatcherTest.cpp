#include "base/FolderWatcher.h"

#include "base/AtomicFile.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;

class FolderWatcherTest : public testing::Test {
protected:
    FolderWatcherTest()
    {
        fs::create_directories(a);
        fs::create_directories(b);
    }

    TemporaryFolder m_folder;
    const fs::path a = m_folder / "a";
    const fs::path b = m_folder / "b ü";
    std::vector<fs::path> told;
    FolderWatcher watcher;
    Subscription subscription = watcher.changed.subscribe([this](const fs::path& folder) { told.push_back(folder); });
};

TEST_F(FolderWatcherTest, TellsOfEveryWayInWhichAFileComesChangesAndGoes)
{
    writeFile(a / "file", "as it was");
    writeFile(m_folder / "outside", "");
    ASSERT_TRUE(watcher.watch(a));
    ASSERT_TRUE(watcher.watch(b));
    const struct {
        const char* what;
        std::function<void()> change;
    } changes[] = {
        {"made", [&] { writeFile(a / "new", "x"); }},
        {"replaced", [&] { ASSERT_TRUE(writeFileAtomically(a / "file", "replaced")); }},
        {"rewritten in place, as editors do", [&] { writeFile(a / "file", "rewritten"); }},
        {"moved in", [&] { fs::rename(m_folder / "outside", a / "inside"); }},
        {"deleted", [&] { fs::remove(a / "file"); }},
        {"a folder made", [&] { fs::create_directory(a / "inner"); }},
    };
    for (const auto& [what, change] : changes) {
        told.clear();
        change();
        EXPECT_TRUE(runUntil([&] { return !told.empty(); })) << what;
        drainMainThread();
        for (const auto& folder : told)
            EXPECT_EQ(folder, a) << what;
    }
}

TEST_F(FolderWatcherTest, AFolderThatGoesIsToldAndCanBeWatchedAgain)
{
    EXPECT_FALSE(watcher.watch(m_folder / "absent"));
    ASSERT_TRUE(watcher.watch(a));
    fs::remove_all(a);
    EXPECT_TRUE(runUntil([&] { return !told.empty() && !watcher.isWatching(a); }));
    fs::create_directory(a);
    EXPECT_TRUE(watcher.watch(a));
    told.clear();
    writeFile(a / "file", "");
    EXPECT_TRUE(runUntil([&] { return told == std::vector{a}; }));

    // What is made in a folder that was moved is no news of the name that it had.
    fs::rename(a, b / "moved");
    EXPECT_TRUE(runUntil([&] { return !watcher.isWatching(a); }));
}

TEST_F(FolderWatcherTest, WhatIsNotWatchedAnyMoreIsNotTold)
{
    ASSERT_TRUE(watcher.watch(a));
    ASSERT_TRUE(watcher.watch(b));
    watcher.unwatch(a);
    writeFile(a / "file", "");
    writeFile(b / "file", "");
    EXPECT_TRUE(runUntil([&] { return !told.empty(); }));
    EXPECT_EQ(told.front(), b);
    EXPECT_FALSE(watcher.isWatching(a));
}

} // namespace
