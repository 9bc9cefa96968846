// What happens to the history when the machine is against it.

#include "core/storage/history/archive/HistoryArchive.h"
#include "tests/core/storage/history/HistoryFixture.h"
#include "tests/support/Faults.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <map>
#include <random>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;

constexpr int kUpserts = 200;
constexpr int kSlots = 7; // entries that are written over and over, in turn

bool keepIn(HistoryArchive& archive, const HistoryEntry& entry)
{
    if (!archive.write(entry))
        return false;
    archive.noteWritten(entry);
    return true;
}

class HistoryFaultsTest : public HistoryFixture {
protected:
    void refresh(HistoryArchive& archive) const
    {
        auto pass = archive.beginRefresh(std::nullopt).value();
        while (!archive.refreshSome(pass, std::chrono::milliseconds(100))) {
        }
    }
    std::vector<HistoryEntry> all()
    {
        HistoryArchive archive(m_places, m_log.logger());
        refresh(archive);
        HistoryPageRequest request;
        request.size = 10'000;
        return archive.page(request).entries;
    }
    /// Every second write makes an entry, every other one replaces an older one with more text.
    HistoryEntry numbered(int number, const std::array<Uuid, kSlots>& slots) const
    {
        auto entry = dictation(std::to_string(number) + std::string(static_cast<std::size_t>(number) * 20, 'x'),
                               kNoon + std::chrono::minutes(number));
        if (number % 2 == 0) {
            const auto slot = static_cast<std::size_t>(number / 2 % kSlots);
            entry.id = slots.at(slot);
            entry.creationDate = kNoon + std::chrono::hours(20 * slot);
        }
        return entry;
    }
};

/// What a process that writes reports of each entry that it was told is kept.
struct Report {
    int number = 0;
    Uuid id;
};

TEST_F(HistoryFaultsTest, AKillAtAnyMomentLosesNothingThatWasKept)
{
    std::array<Uuid, kSlots> slots;
    std::generate(slots.begin(), slots.end(), [] { return Uuid::random(); });
    std::minstd_rand random(20260301);
    std::map<Uuid, int> kept;
    int last = 0;
    while (last < kUpserts) {
        std::array<int, 2> pipe{};
        ASSERT_EQ(::pipe(pipe.data()), 0);
        const pid_t child = inAnotherProcess([&] {
            HistoryArchive archive(m_places, {});
            for (Report report{last + 1, {}};; ++report.number) {
                const auto entry = numbered(report.number, slots);
                report.id = entry.id;
                if (!keepIn(archive, entry) || ::write(pipe[1], &report, sizeof report) != sizeof report)
                    return 1;
            }
        });
        ::close(pipe[1]);
        const auto readOne = [&] {
            Report report;
            if (::read(pipe[0], &report, sizeof report) != sizeof report)
                return false;
            last = report.number;
            kept[report.id] = report.number;
            return true;
        };
        const auto writes = static_cast<int>(random() % 8) + 1;
        for (int i = 0; i < writes; ++i)
            ASSERT_TRUE(readOne());
        const timespec somewhereInTheNextWrite{0, static_cast<long>(random() % 12'000'000)};
        ::ppoll(nullptr, 0, &somewhereInTheNextWrite, nullptr);
        ::kill(child, SIGKILL);
        EXPECT_TRUE(WIFSIGNALED(statusOf(child)));
        while (readOne()) {
        }
        ::close(pipe[0]);
        last += 1; // it may have been kept, and killed before it could be reported
    }
    std::map<Uuid, int> found;
    for (const auto& entry : all())
        EXPECT_TRUE(found.emplace(entry.id, std::stoi(finalText(entry))).second) << "an entry in two files";
    for (const auto& [id, number] : kept)
        EXPECT_GE(found[id], number) << id.toString();
    HistoryArchive archive(m_places, m_log.logger());
    EXPECT_TRUE(archive.unreadable().empty()) << "no entry is half written";

    // What writes that were cut off have left goes once it is old, and nothing else.
    const auto leftover = m_places.rootURL / "2026-03-01" / ("." + slots[0].toString() + ".json.tmp-AbCdEf");
    writeFile(leftover, "{");
    fs::last_write_time(leftover, fs::file_time_type::clock::now() - std::chrono::hours(25));
    ASSERT_TRUE(keepIn(archive, dictation("one more")));
    writeByHand("2026-03-01/" + slots[0].toString() + ".json", numbered(2, slots));
    refresh(archive);
    EXPECT_FALSE(fs::exists(leftover));
}

TEST_F(HistoryFaultsTest, TwoProcessesKeepTheirEntriesAtTheSameTime)
{
    const auto keepMany = [this](const std::string& whose) {
        HistoryArchive archive(m_places, m_log.logger());
        for (int i = 0; i < kUpserts; ++i) {
            if (!keepIn(archive, dictation(whose + std::to_string(i))))
                return 1;
            if (i % 50 == 0)
                refresh(archive);
        }
        return 0;
    };
    const auto child = inAnotherProcess([&] { return keepMany("theirs "); });
    EXPECT_EQ(keepMany("ours "), 0);
    EXPECT_EQ(statusOf(child), 0);

    HistoryArchive archive(m_places, m_log.logger());
    EXPECT_EQ(archive.count({{}, "theirs"}), static_cast<std::size_t>(kUpserts)) << "also without another look";
    EXPECT_EQ(archive.count({{}, "ours"}), static_cast<std::size_t>(kUpserts));
    EXPECT_TRUE(m_log.lines().empty()) << m_log.lines().front();
    EXPECT_EQ(all().size(), static_cast<std::size_t>(2 * kUpserts));
}

TEST_F(HistoryFaultsTest, ProcessesThatMakeTheIndexAtTheSameTimeShareIt)
{
    constexpr int kRounds = 20;
    constexpr int kProcesses = 6;
    const auto keepOne = [this] {
        HistoryArchive archive(m_places, {});
        return keepIn(archive, dictation("words")) ? 0 : 1;
    };
    for (int round = 0; round < kRounds; ++round) {
        fs::remove_all(m_places.indexFile.parent_path());
        std::array<int, 2> gate{}; // closed, it lets all of them go at once
        ASSERT_EQ(::pipe(gate.data()), 0);
        std::vector<pid_t> all;
        all.reserve(kProcesses);
        for (int i = 0; i < kProcesses; ++i) {
            all.push_back(inAnotherProcess([&] {
                ::close(gate[1]);
                char end = 0;
                return ::read(gate[0], &end, 1) == 0 ? keepOne() : 1;
            }));
        }
        ::close(gate[1]);
        for (const pid_t one : all)
            EXPECT_EQ(statusOf(one), 0);
        ::close(gate[0]);
        HistoryArchive archive(m_places, m_log.logger());
        ASSERT_EQ(archive.count({}), static_cast<std::size_t>(kProcesses)) << "in round " << round;
    }
    EXPECT_TRUE(m_log.lines().empty());
}

int useFullDisk(const fs::path& folder, const HistoryEntry& first, const HistoryEntry& second)
{
    const SmallDisk disk(folder);
    const HistoryPlaces places{folder / "History", folder / "VocalithRecordings", folder / "cache" / "history.index"};
    fs::create_directories(places.rootURL);
    HistoryArchive archive(places, {});
    const bool isKept = keepIn(archive, first);
    disk.fill();
    auto longer = first;
    longer.content = HistoryEntry::FailureData{audioFile(first), std::string(40'000, 'y')};
    const auto refused = archive.write(longer);
    const bool isRefused = !refused && refused.error().kind == HistoryError::Kind::file &&
                           !refused.error().detail.empty() && !keepIn(archive, second);
    const bool isWhole = archive.entry(first.id) == first;
    const bool isListed = archive.page({}).entries.size() == 1;
    HistoryArchive later(places, {}); // a program that starts now
    const bool isFound = later.entry(first.id) == first;
    disk.clear();
    const bool isMended = keepIn(archive, second) && archive.page({}).entries.size() == 2;
    return firstUnmet({isKept, isRefused, isWhole, isListed, isFound, isMended});
}

TEST_F(HistoryFaultsTest, AFullDiskCostsNoEntryThatIsThere)
{
    const auto first = dictation("first");
    const auto second = dictation("second");
    EXPECT_EQ(statusOf(inAnotherProcess([&] { return useFullDisk(m_folder.path(), first, second); })) >> 8, 0)
        << "the expectation that was not met is the exit code";
}

TEST_F(HistoryFaultsTest, AReadOnlyHistoryIsShownAndRefusesWhatItMust)
{
    const auto entry = dictation("kept");
    {
        HistoryArchive archive(m_places, {});
        ASSERT_TRUE(keepIn(archive, entry));
    }
    for (const auto& folder : {m_places.rootURL / "2026-03-01", m_places.rootURL, m_places.indexFile.parent_path()})
        ASSERT_EQ(::chmod(folder.c_str(), 0555), 0);
    for (const auto& file : {m_places.indexFile, fileOf(entry)})
        ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0755), 0);
    {
        const OrdinaryUser user;
        HistoryArchive archive(m_places, m_log.logger());
        refresh(archive);
        EXPECT_EQ(archive.page({}).entries, std::vector<HistoryEntry>{entry});
        EXPECT_FALSE(keepIn(archive, dictation("refused")));
        HistoryDeletion done;
        archive.remove(entry.id, done);
        EXPECT_EQ(done.failed, std::vector<Uuid>{entry.id});
        EXPECT_EQ(done.entries, 0U);
        EXPECT_EQ(archive.count({}), 1U);
    }
    for (const auto& folder : {m_places.rootURL, m_places.rootURL / "2026-03-01", m_places.indexFile.parent_path()})
        ASSERT_EQ(::chmod(folder.c_str(), 0700), 0);
    EXPECT_EQ(all(), std::vector<HistoryEntry>{entry});
}

} // namespace
