// What happens to the settings when the machine is against them.

#include "tests/core/storage/settings/SettingsFixture.h"
#include "tests/support/Faults.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <random>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;

class SettingsFaultsTest : public SettingsFixture {};

constexpr int kWrites = 200;
constexpr int kSlots = 5;

/// Stores ever larger numbers, under several keys in turn, and reports each one that was stored.
int storeNumbers(PersistentAppStorage& settings, int first, int report)
{
    std::vector<std::string> list;
    for (int number = first;; ++number) {
        const auto text = std::to_string(number);
        switch (number % kSlots) {
        case 0: settings.whisperPrompt.set(text + std::string(static_cast<std::size_t>(number) * 50, 'x')); break;
        case 1: settings.whisperMaxSentenceLength.set(number); break;
        case 2: settings.shownNotificationIDs.set({text}); break;
        case 3: settings.crashRecoveryInfo.set(AudioCrashRecoveryInfo{text, number}); break;
        default: settings.selectedDictationModelID.set(TranscriptionModelID(text)); break;
        }
        if (::write(report, &number, sizeof number) != sizeof number)
            return 1;
    }
}

std::array<int, kSlots> storedNumbers(const PersistentAppStorage& settings)
{
    const auto number = [](const std::string& text) { return text.empty() ? 0 : std::stoi(text); };
    const auto& list = settings.shownNotificationIDs.get();
    const auto& info = settings.crashRecoveryInfo.get();
    const auto& model = settings.selectedDictationModelID.get();
    return {number(settings.whisperPrompt.get()), settings.whisperMaxSentenceLength.get(),
            list.empty() ? 0 : number(list[0]), info ? static_cast<int>(info->startByte) : 0,
            model ? number(toString(*model)) : 0};
}

TEST_F(SettingsFaultsTest, AKillAtAnyMomentLosesNothingThatWasStored)
{
    std::minstd_rand random(20260301);
    int last = 0;
    std::array<int, kSlots> confirmed{};
    while (last < kWrites) {
        std::array<int, 2> pipe{};
        ASSERT_EQ(::pipe(pipe.data()), 0);
        const pid_t child = inAnotherProcess([&] {
            PersistentAppStorage settings(m_file, m_clock, {});
            return storeNumbers(settings, last + 1, pipe[1]);
        });
        ::close(pipe[1]);
        const auto readOne = [&] {
            int number = 0;
            if (::read(pipe[0], &number, sizeof number) != sizeof number)
                return false;
            last = number;
            confirmed[static_cast<std::size_t>(number % kSlots)] = number;
            return true;
        };
        const auto writes = static_cast<int>(random() % 8) + 1;
        for (int i = 0; i < writes; ++i)
            ASSERT_TRUE(readOne());
        const timespec somewhereInTheNextWrite{0, static_cast<long>(random() % 4'000'000)};
        ::ppoll(nullptr, 0, &somewhereInTheNextWrite, nullptr);
        ::kill(child, SIGKILL);
        EXPECT_TRUE(WIFSIGNALED(statusOf(child)));
        while (readOne()) {
        }
        ::close(pipe[0]);

        ASSERT_TRUE(parseJson(content())) << content();
        const auto found = storedNumbers(storage());
        for (std::size_t slot = 0; slot < kSlots; ++slot) {
            ASSERT_GE(found.at(slot), confirmed.at(slot)) << "after " << last;
            last = std::max(last, found.at(slot)); // stored, and killed before it could be reported
            confirmed.at(slot) = found.at(slot);
        }
    }
    EXPECT_TRUE(m_log.lines().empty());
    storage().playSound.set(true);
    for (const auto& entry : fs::directory_iterator(m_folder.path()))
        EXPECT_TRUE(entry.path().filename().string().starts_with("settings.json")) << entry.path() << " was left";
}

TEST_F(SettingsFaultsTest, TwoProcessesThatWriteAtTheSameTimeLoseNothing)
{
    const pid_t child = inAnotherProcess([this] {
        PersistentAppStorage theirs(m_file, m_clock, {});
        for (int i = 1; i <= kWrites; ++i)
            theirs.whisperMaxSentenceLength.set(i);
        return 0;
    });
    auto settings = storage();
    std::vector<std::string> seen;
    for (int i = 1; i <= kWrites; ++i) {
        seen.push_back(std::to_string(i));
        settings.shownNotificationIDs.set(seen);
        ASSERT_EQ(json()["shownNotificationIDs"].size(), seen.size());
    }
    EXPECT_EQ(statusOf(child), 0);
    EXPECT_EQ(json()["whisperMaxSentenceLength"], kWrites);
    EXPECT_EQ(json()["shownNotificationIDs"].size(), seen.size());
}

int useFullDisk(const fs::path& folder, const Clock& clock)
{
    const SmallDisk disk(folder);
    const auto file = folder / "settings.json";
    PersistentAppStorage settings(file, clock, {});
    RecordedNotices notices;
    settings.showProblems(notices);
    settings.whisperPrompt.set("before");
    const auto before = readFile(file);
    disk.fill();
    settings.whisperPrompt.set(std::string(8000, 'y'));
    settings.whisperLanguage.set("fr");
    const bool isReported = settings.whyNotStored() && notices.shown.size() == 1; // and not once a setting
    const bool isWhole = readFile(file) == before;
    const bool holds = settings.whisperLanguage.get() == "fr";
    disk.clear();
    settings.playSound.set(false);
    const auto after = parseJson(readFile(file)).value();
    const bool isMended = after["whisperPrompt"].get<std::string>().size() == 8000 &&
                          after["whisperLanguage"] == "fr" && !settings.whyNotStored();
    return firstUnmet({isReported, isWhole, holds, isMended});
}

TEST_F(SettingsFaultsTest, AFullDiskKeepsTheFileAndTheNextWriteCatchesUp)
{
    EXPECT_EQ(statusOf(inAnotherProcess([this] { return useFullDisk(m_folder.path(), m_clock); })), 0)
        << "the expectation that was not met is the exit code";
}

TEST_F(SettingsFaultsTest, AReadOnlyFolderIsReadAndReported)
{
    const auto damaged = std::string("{\n  \"whisperPrompt\": \"kept\",\n  \"whisperLanguage\": \"d");
    for (const auto& stored : {std::string(R"({"whisperPrompt": "kept"})"), damaged}) { // an old layout, and damage
        writeFile(m_file, stored);
        ASSERT_EQ(::chmod(m_file.c_str(), 0444), 0);
        ASSERT_EQ(::chmod(m_folder.path().c_str(), 0555), 0);
        {
            const OrdinaryUser user;
            auto settings = storage();
            RecordedNotices notices;
            settings.showProblems(notices);
            EXPECT_EQ(settings.whisperPrompt.get(), "kept");
            settings.playSound.set(false);
            EXPECT_FALSE(settings.playSound.get());
            EXPECT_TRUE(settings.whyNotStored());
            EXPECT_EQ(notices.shown.size(), stored == damaged ? 2U : 1U);
            EXPECT_TRUE(m_log.has("Cannot store setting: playSound: "));
        }
        ASSERT_EQ(::chmod(m_folder.path().c_str(), 0700), 0);
        EXPECT_EQ(content(), stored);
        fs::remove(m_file);
    }
    EXPECT_TRUE(fs::is_empty(m_folder.path()));
}

} // namespace
