#include "app/desktop/hosts/LastText.h"

#include "core/output/TextOutput.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/core/storage/history/HistoryFixture.h"
#include "tests/support/FakeClock.h"
#include "tests/support/RecordedNotices.h"

using namespace vocalith;
using namespace vocalith::test;
using Lines = std::vector<std::string>;

namespace {

class Printed final : public TextOutput {
public:
    Task<Result<TextDestination, TextOutputError>> deliver(std::string text, ActionMode) override
    {
        delivered.push_back(std::move(text));
        if (error)
            co_return failure(*error);
        co_return TextDestination::application;
    }

    std::optional<TextOutputError> error;
    Lines delivered;
};

class LastTextTest : public HistoryFixture {
public:
    ~LastTextTest() override
    {
        await(lastText.shutDown());
        await(history.shutDown());
    }

protected:
    void keep(const HistoryEntry& entry) { EXPECT_TRUE(await(history.upsert(entry))); }
    void expectThere(bool isThere)
    {
        lastText.look();
        EXPECT_TRUE(runUntil([&] { return lastText.isThere.get() == isThere; }));
    }
    Lines insertedAgain()
    {
        output.delivered.clear();
        lastText.insertAgain();
        runUntil([&] { return !output.delivered.empty() || !notices.shown.empty(); });
        return output.delivered;
    }

    FakeClock clock;
    PersistentAppStorage storage{m_folder / "settings.json", clock, m_log.logger()};
    HistoryService history{m_places, storage, clock, m_log.logger()};
    Printed output;
    RecordedNotices notices;
    LastText lastText{history, output, notices};
};

TEST_F(LastTextTest, IsTheNewestThatHasWords)
{
    EXPECT_EQ(insertedAgain(), Lines{});
    EXPECT_EQ(notices.shown, Lines{"There is no text in the history yet."});
    notices.shown.clear();

    const auto old = dictation("an old one", kNoon);
    keep(old);
    for (int i = 1; i <= 40; ++i) // more than a page of them
        keep(failed("The microphone was disconnected.", kNoon + std::chrono::minutes(i)));
    expectThere(true);
    EXPECT_EQ(insertedAgain(), Lines{"an old one"});

    output.error = TextOutputError{"The window has gone.", "The text is on the clipboard."};
    insertedAgain();
    runUntil([&] { return !notices.shown.empty(); });
    EXPECT_EQ(notices.shown, Lines{"The window has gone. The text is on the clipboard."});

    EXPECT_TRUE(await(history.remove({old.id})));
    expectThere(false);
}

TEST_F(LastTextTest, FollowsWhatOthersDoToTheHistory)
{
    const auto entry = dictation("of an earlier day");
    const auto file = "2026-03-01/" + entry.id.toString() + ".json";
    writeByHand(file, entry);
    history.start();
    lastText.start();
    EXPECT_TRUE(runUntil([&] { return lastText.isThere.get(); })) << "it is known once all files were looked at";
    std::filesystem::remove(m_places.rootURL / file);
    EXPECT_TRUE(runUntil([&] {
        clock.advance(std::chrono::seconds(1));
        return !lastText.isThere.get();
    }));
}

} // namespace
