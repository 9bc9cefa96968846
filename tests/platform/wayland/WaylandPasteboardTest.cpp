#include "tests/platform/wayland/WaylandStage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TimeLimit.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <csignal>

namespace vocalith {
namespace {

using namespace vocalith::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class WaylandPasteboardTest : public testing::Test {
protected:
    /// Lets another program own the clipboard; it ends when it loses it.
    void copy(const std::string& type, const std::string& content)
    {
        writeFile(stage.compositor.folder() / "copied", content);
        await(stage.connection->synchronized());
        const auto before = pasteboard.changeCount();
        owner = stage.compositor.start(
            {"sh", "-c",
             fmt::format("exec wl-copy -f -t {} <{}", type, (stage.compositor.folder() / "copied").string())});
        runUntil([&] { return pasteboard.changeCount() > before; });
    }

    std::string paste(const std::string& type) const { return stage.compositor.run("wl-paste -n -t " + type); }

    PasteboardSnapshot snapshot() { return await(pasteboard.snapshot()).value(); }

    WaylandStage stage;
    WaylandPasteboard& pasteboard = stage.pasteboard;
    ChildProcess owner;
};

std::string bytes(std::size_t size)
{
    std::string content(size, '\0');
    for (std::size_t place = 0; place < size; ++place)
        content[place] = static_cast<char>(place * 2654435761U >> 13U);
    return content;
}

TEST_F(WaylandPasteboardTest, WhatTheUserHadIsBackAfterAText)
{
    const auto image = bytes(300'000);
    copy("image/png", image);
    const auto saved = snapshot();
    ASSERT_EQ(saved.items.size(), 1U);
    EXPECT_TRUE(saved.isComplete);

    ASSERT_TRUE(await(pasteboard.writeText("Grüße, 世界", true)));
    const auto ours = pasteboard.changeCount();
    EXPECT_EQ(paste("text/plain"), "Grüße, 世界");
    EXPECT_EQ(paste("x-kde-passwordManagerHint"), "secret");
    EXPECT_EQ(pasteboard.changeCount(), ours) << "reading is no change";

    ASSERT_TRUE(await(pasteboard.restore(saved)));
    EXPECT_GT(pasteboard.changeCount(), ours);
    EXPECT_EQ(paste("image/png"), image);
    EXPECT_EQ(stage.compositor.run("wl-paste -l"), "image/png\n");

    ASSERT_TRUE(await(pasteboard.writeText("for good", false)));
    EXPECT_THAT(stage.compositor.run("wl-paste -l"), Not(HasSubstr("Hint")));
}

TEST_F(WaylandPasteboardTest, ItsOwnContentAndTheSameTextUnderManyNamesAreKeptOnce)
{
    copy("text/plain", "one text");
    const auto saved = snapshot();
    ASSERT_GT(saved.items.at(0).representations.size(), 1U);
    for (const auto& representation : saved.items[0].representations)
        EXPECT_EQ(representation.payload, saved.items[0].representations[0].payload);
    ASSERT_TRUE(await(pasteboard.restore(saved)));
    const auto again = snapshot();
    EXPECT_EQ(again.items.at(0).representations.size(), saved.items[0].representations.size());
}

TEST_F(WaylandPasteboardTest, NothingIsRestoredAsNothing)
{
    const auto empty = snapshot();
    EXPECT_TRUE(empty.items.empty());
    EXPECT_TRUE(empty.isComplete);
    ASSERT_TRUE(await(pasteboard.writeText("text", true)));
    ASSERT_TRUE(await(pasteboard.restore(empty)));
    EXPECT_EQ(stage.compositor.run("wl-paste -l || echo empty"), "empty\n");
}

TEST_F(WaylandPasteboardTest, FiftyMegabytesPassThroughThePipes)
{
    const auto content = bytes(50'000'000);
    FakeClock clock; // its patience with the owner does not end on a busy machine
    WaylandPasteboard patient(*stage.connection, clock);
    copy("application/octet-stream", content);
    runUntil([&] { return patient.changeCount() > 0; });
    const auto start = stage.clock.instant();
    const auto saved = await(patient.snapshot()).value();
    const auto seconds = toSeconds(stage.clock.instant() - start);
    RecordProperty("snapshot seconds", fmt::format("{:.3f}", seconds));
    ASSERT_EQ(saved.items.size(), 1U);
    EXPECT_EQ(*saved.items[0].representations.at(0).payload, content);
    ASSERT_TRUE(await(pasteboard.writeText("text", true)));
    ASSERT_TRUE(await(patient.restore(saved)));
    EXPECT_EQ(paste("application/octet-stream"), content);
}

TEST_F(WaylandPasteboardTest, AnOwnerThatNeverAnswersCostsHalfASecond)
{
    copy("text/plain", "never given");
    owner.signal(SIGSTOP);
    EXPECT_TRUE(keepsLimit(std::chrono::milliseconds(700), [&] {
        const auto saved = snapshot();
        EXPECT_FALSE(saved.isComplete);
        EXPECT_TRUE(saved.items.empty());
    }));
}

TEST_F(WaylandPasteboardTest, AStopEndsASnapshot)
{
    copy("text/plain", "never given");
    owner.signal(SIGSTOP);
    TaskScope scope;
    std::optional<Result<PasteboardSnapshot, PasteboardError>> result;
    scope.start(storeResult(pasteboard.snapshot(), result));
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    ASSERT_FALSE(result.value());
    EXPECT_EQ(result->error().kind, PasteboardError::Kind::cancelled);
}

TEST_F(WaylandPasteboardTest, AReadIsToldOnceItIsWholeAndOnlyOfATextOfOurs)
{
    std::vector<std::string> types;
    const auto subscription = pasteboard.fetched.subscribe([&](const PasteboardFetch& fetch) {
        EXPECT_EQ(fetch.reader, PasteboardFetch::Reader::unknown);
        types.push_back(fetch.type);
    });
    ASSERT_TRUE(await(pasteboard.writeText(std::string(1'000'000, 'x'), true)));
    stage.compositor.run("wl-paste -l; wl-paste -t x-kde-passwordManagerHint; wl-paste -t UTF8_STRING | head -c 10");
    EXPECT_TRUE(types.empty());
    paste("UTF8_STRING");
    EXPECT_THAT(types, ElementsAre("UTF8_STRING"));
    ASSERT_TRUE(await(pasteboard.restore(snapshot())));
    paste("UTF8_STRING");
    EXPECT_EQ(types.size(), 1U);
}

TEST_F(WaylandPasteboardTest, SomebodyElsesCopyIsSeen)
{
    ASSERT_TRUE(await(pasteboard.writeText("ours", true)));
    copy("text/plain", "theirs"); // waits for the change
    EXPECT_EQ(*snapshot().items.at(0).representations.at(0).payload, "theirs");
}

TEST_F(WaylandPasteboardTest, WithoutTheCompositorEverythingFailsAtOnce)
{
    bool isLost = false;
    const auto subscription = stage.connection->lost.subscribe([&] { isLost = true; });
    stage.compositor.kill();
    runUntil([&] { return isLost; });
    const auto saved = await(pasteboard.snapshot());
    ASSERT_FALSE(saved);
    EXPECT_EQ(userMessage(saved.error()),
              "Vocalith cannot reach the clipboard of this desktop. The compositor does not let programs use it.");
    EXPECT_FALSE(await(pasteboard.writeText("text", true)));
    EXPECT_EQ(stage.keyEvents.createSource(KeyEvents::SourceState::privateState), nullptr);
    EXPECT_EQ(stage.focusedIdentifier(), "");
    const auto unreachable = WaylandConnection::open(stage.compositor.display());
    ASSERT_FALSE(unreachable);
    EXPECT_THAT(unreachable.error(), HasSubstr("No Wayland compositor can be reached"));
}

} // namespace
} // namespace vocalith
