#include "core/storage/history/HistoryService.h"

#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/core/storage/history/HistoryFixture.h"
#include "tests/support/FakeClock.h"

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class HistoryServiceTest : public HistoryFixture {
protected:
    void TearDown() override { await(m_history.shutDown()); }

    void keep(const HistoryEntry& entry) { ASSERT_TRUE(await(m_history.upsert(entry))); }
    std::vector<std::string> shown() const { return texts(m_history.filteredEntries().get()); }
    Date now() const { return m_clock.now(); }

    FakeClock m_clock;
    PersistentAppStorage m_storage{m_folder / "settings.json", m_clock, m_log.logger()};
    HistoryService m_history{m_places, m_storage, m_clock, m_log.logger()};
};

TEST_F(HistoryServiceTest, PagesComeOneAfterTheOtherAndNewEntriesTakeTheirPlaces)
{
    std::vector<Uuid> inserted;
    const auto watched = m_history.newEntryInserted.subscribe([&](const Uuid& id) { inserted.push_back(id); });
    const auto twice = dictation("written twice", now() - 1h);
    keep(twice);
    keep(twice);
    EXPECT_EQ(inserted, std::vector<Uuid>{twice.id});
    ASSERT_TRUE(await(m_history.remove({twice.id})));
    for (int i = 0; i < 70; ++i)
        keep(dictation(std::to_string(i), now() - i * 1s));
    EXPECT_TRUE(shown().empty()) << "nothing is shown that nobody asked for";

    ASSERT_TRUE(await(m_history.setFilter({})));
    EXPECT_EQ(shown().size(), HistoryService::pageSize);
    EXPECT_EQ(m_history.pagingCursor()->creationDate, now() - 29s);
    ASSERT_TRUE(await(m_history.loadMore()));
    ASSERT_TRUE(await(m_history.loadMore()));
    ASSERT_TRUE(await(m_history.loadMore()));
    EXPECT_EQ(shown().size(), 70U);
    EXPECT_FALSE(m_history.pagingCursor());

    inserted.clear();
    const auto fresh = dictation("fresh", now() + 1s);
    const auto old = dictation("old", now() - 30s - 1ms);
    keep(fresh);
    keep(old);
    keep(fresh);
    EXPECT_EQ(inserted, (std::vector<Uuid>{fresh.id, old.id}));
    EXPECT_EQ(shown().size(), 72U);
    EXPECT_EQ(shown()[0], "fresh");
    EXPECT_EQ(shown()[32], "old");

    ASSERT_TRUE(await(m_history.remove({old.id})));
    EXPECT_EQ(shown().size(), 71U);
    ASSERT_TRUE(await(m_history.removeAll()));
    EXPECT_TRUE(shown().empty());
    EXPECT_TRUE(m_log.has("Deleted all history entries"));
}

TEST_F(HistoryServiceTest, OfSeveralFiltersTheLastOneIsShown)
{
    keep(dictation("apple"));
    keep(journal("pear"));
    std::vector<bool> searching;
    const auto watched = m_history.isSearching.subscribe([&](bool is) { searching.push_back(is); });
    TaskScope scope;
    std::optional<Result<void, HistoryError>> first;
    std::optional<Result<void, HistoryError>> second;
    scope.start(storeResult(m_history.setFilter({{}, "apple"}), first));
    scope.start(storeResult(m_history.setFilter({{}, "PEAR"}), second));
    ASSERT_TRUE(runUntil([&] { return scope.isEmpty(); }));
    EXPECT_EQ(shown(), std::vector<std::string>{"pear"});
    EXPECT_EQ(searching, (std::vector<bool>{true, false}));

    keep(dictation("grape"));
    keep(dictation("a spear"));
    EXPECT_EQ(shown(), (std::vector<std::string>{"a spear", "pear"})) << "the search holds for what comes in, too";
}

TEST_F(HistoryServiceTest, WhereNoHistoryIsWantedWhatIsThereStays)
{
    keep(dictation("before"));
    m_storage.historyStoragePolicy.set(HistoryStoragePolicy::disabled);
    EXPECT_FALSE(m_history.isEnabled());
    ASSERT_TRUE(await(m_history.setFilter({})));
    ASSERT_TRUE(await(m_history.cleanUp()));
    EXPECT_EQ(shown(), std::vector<std::string>{"before"});
    EXPECT_TRUE(m_log.has("📚 History storage policy set to: disabled"));
}

TEST_F(HistoryServiceTest, ACleanUpGoesByTheExactPeriods)
{
    using Policy = HistoryStoragePolicy;
    const std::vector<std::pair<Policy, std::chrono::hours>> periods = {
        {Policy::oneYear, 8760h}, {Policy::sixMonths, 4320h}, {Policy::threeMonths, 2160h}, {Policy::oneMonth, 720h},
        {Policy::oneWeek, 168h},  {Policy::threeDays, 72h},   {Policy::oneDay, 24h},        {Policy::twelveHours, 12h}};
    for (const auto& [policy, hours] : periods) {
        keep(dictation("too old", now() - hours - 1ms));
        keep(dictation("still kept", now() - hours));
    }
    m_storage.historyStoragePolicy.set(Policy::forever);
    EXPECT_EQ(await(m_history.cleanUp()).value().entries, 0U);
    std::size_t left = periods.size() * 2;
    for (const auto& [policy, hours] : periods) {
        m_storage.historyStoragePolicy.set(policy);
        const auto gone = await(m_history.cleanUp()).value().entries;
        EXPECT_EQ(gone, left == periods.size() * 2 ? 1U : 2U) << hours.count();
        left -= gone;
    }
    ASSERT_TRUE(await(m_history.setFilter({})));
    EXPECT_EQ(shown(), std::vector<std::string>{"still kept"});
    EXPECT_EQ(m_storage.lastHistoryCleanupDate.get(), now());
    EXPECT_TRUE(m_log.has("🧹 Last history cleanup date updated to: 2026-03-01T12:00:00.000Z"));
}

TEST_F(HistoryServiceTest, AClockThatJumpsCostsNobodyTheirHistory)
{
    m_storage.historyStoragePolicy.set(HistoryStoragePolicy::oneWeek);
    keep(dictation("of today"));
    const auto entryCount = [this] { return files().size(); };
    const auto start = now();
    const auto cleanUpAt = [&](Date date) {
        m_clock.setDate(date);
        await(m_history.cleanUpWhenDue());
        return entryCount();
    };
    EXPECT_EQ(cleanUpAt(start), 1U);
    EXPECT_EQ(cleanUpAt(start + std::chrono::years(10)), 1U) << "wrong for a moment after the start";
    EXPECT_EQ(cleanUpAt(start + 1h), 1U) << "and right again";
    EXPECT_EQ(cleanUpAt(Date()), 1U);
    EXPECT_EQ(cleanUpAt(start + 2h), 1U);
    keep(dictation("dictated with a wrong clock", Date() + 1h));
    EXPECT_EQ(cleanUpAt(start + 2h + 59min), 2U) << "not due yet";
    EXPECT_EQ(cleanUpAt(start + 4h), 1U);
    EXPECT_EQ(cleanUpAt(start + std::chrono::days(20)), 0U);
}

TEST_F(HistoryServiceTest, WhatOthersDoToTheFilesIsShown)
{
    const auto first = dictation("first");
    keep(first);
    m_history.start();
    ASSERT_TRUE(await(m_history.setFilter({})));
    const auto appears = [&](const std::vector<std::string>& expected) {
        return runUntil([&] {
            m_clock.advance(1s);
            return shown() == expected;
        });
    };
    const auto second = dictation("second", kNoon + 1s);
    writeByHand("2026-03-01/" + second.id.toString() + ".json", second);
    EXPECT_TRUE(appears({"second", "first"}));
    const auto otherDay = dictation("other day", kNoon - 48h);
    writeByHand("2026-02-27/" + otherDay.id.toString() + ".json", otherDay);
    EXPECT_TRUE(appears({"second", "first", "other day"}));
    const auto sameDay = dictation("same day", kNoon - 49h);
    writeByHand("2026-02-27/" + sameDay.id.toString() + ".json", sameDay);
    EXPECT_TRUE(appears({"second", "first", "other day", "same day"}));
    fs::remove(fileOf(first));
    EXPECT_TRUE(appears({"second", "other day", "same day"}));

    // An index that is lost while the program runs comes back by itself.
    writeFile(m_places.indexFile, std::string(100'000, 'x'));
    writeFile(m_places.indexFile.string() + "-wal", "");
    for (int i = 0; i < 3; ++i)
        static_cast<void>(await(m_history.setFilter({{}, "second"})));
    EXPECT_TRUE(appears({"second"}));
}

TEST_F(HistoryServiceTest, WithoutAFolderEverythingFailsAndSaysSo)
{
    writeFile(m_folder / "file", "");
    HistoryPlaces nowhere = m_places;
    nowhere.rootURL = m_folder / "file" / "History";
    HistoryService history(nowhere, m_storage, m_clock, m_log.logger());
    EXPECT_EQ(history.store(), nullptr);
    EXPECT_TRUE(m_log.has("Cannot access Application Support directory"));
    const auto entry = dictation("words");
    EXPECT_FALSE(await(history.upsert(entry)));
    EXPECT_TRUE(m_log.has("Cannot upsert entry " + entry.id.toString()));
    EXPECT_FALSE(await(history.setFilter({{}, "words"})));
    EXPECT_FALSE(history.isSearching.get());
    EXPECT_FALSE(await(history.removeAll()));
    EXPECT_FALSE(await(history.cleanUp()));
    EXPECT_TRUE(m_log.has("Cannot load history: "));
    EXPECT_TRUE(m_log.has("Failed to run history cleanup: "));
}

} // namespace
