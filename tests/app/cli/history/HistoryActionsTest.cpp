#include "tests/app/cli/history/HistoryFixture.h"
#include "tests/support/AudioServer.h"
#include "tests/support/Places.h"
#include "tests/support/ScriptedWhisperModel.h"

#include <csignal>
#include <set>

using namespace vocalith;
using namespace vocalith::test;
namespace fs = std::filesystem;

namespace {

class HistoryActions : public HistoryProgram {
protected:
    fs::path recording(const std::string& digits) const { return home / "VocalithRecordings" / (digits + ".wav"); }
    std::set<std::string> exported() const
    {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(home / "out"))
            names.insert(entry.path().filename());
        return names;
    }

    const fs::path sample = recordedSpeech();
};

TEST_F(HistoryActions, DeletingTakesTheRecordingsThatNobodyElseNeeds)
{
    auto shared = success("BBBB", "2026-01-02T10:00:00Z", "two");
    std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(shared.content)).result.audioFile =
        audio(recording("AAAA"));
    write(success("AAAA", "2026-01-01T10:00:00Z", "one"));
    write(shared);
    write(success("CCCC", "2026-01-03T10:00:00Z", "three"));
    for (const std::string digits : {"AAAA", "CCCC"})
        writeFile(recording(digits), "sound");

    EXPECT_EQ(run({"delete"}).code, 2);
    EXPECT_EQ(run({"delete", "AAAA", "1234"}).code, 1);
    EXPECT_EQ(files(), 3u) << "with one wrong name nothing is deleted";
    const auto ended = run({"delete", "AAAA", "CCCC", "aaaa"});
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.err, "Deleted 2 entries and 1 recording.\n");
    EXPECT_EQ(files(), 1u);
    EXPECT_TRUE(fs::exists(recording("AAAA"))) << "another entry uses it";
    EXPECT_FALSE(fs::exists(recording("CCCC")));

    auto byHand = shared;
    byHand.id = id("DDDD");
    write(byHand); // which nobody has looked at yet
    EXPECT_EQ(run({"delete", "BBBB"}).code, 0);
    EXPECT_TRUE(fs::exists(recording("AAAA")));
}

TEST_F(HistoryActions, EverythingIsDeletedOnlyWhenItIsMeant)
{
    write(success("AAAA", "2026-01-01T10:00:00Z", "one"));
    write(success("BBBB", "2026-01-02T10:00:00Z", "two"));
    const auto unasked = run({"delete", "--all"});
    EXPECT_EQ(unasked.code, 2);
    EXPECT_TRUE(has(unasked.err, "--yes"));
    for (const std::string answer : {"\n", "n\n", "\x03"}) {
        ProgramOnTerminal terminal(home.path(), {"history", "delete", "--all"});
        terminal.waitFor("Delete 2 entries with their recordings? [y/N]");
        terminal.type(answer);
        EXPECT_EQ(terminal.wait(), 130);
        EXPECT_EQ(files(), 2u) << answer;
    }
    ProgramOnTerminal terminal(home.path(), {"history", "delete", "--all"});
    terminal.waitFor("[y/N]");
    terminal.type("y\n");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_EQ(files(), 0u);
    write(success("AAAA", "2026-01-01T10:00:00Z", "one"));
    EXPECT_EQ(run({"delete", "--all", "--yes"}).err, "Deleted 1 entry and 0 recordings.\n");
}

TEST_F(HistoryActions, CleanupFollowsTheSetting)
{
    write(success("AAAA", "2020-01-01T10:00:00Z", "old"));
    write(success("BBBB", "2999-01-01T10:00:00Z", "new"));
    EXPECT_EQ(run({"cleanup"}).err, "Nothing is ever too old: the setting is \"Keep forever\".\n");
    writeFile(home / "settings.json", R"({"historyStoragePolicy": "oneMonth"})");
    EXPECT_EQ(run({"cleanup", "--dry-run"}).err, "1 entry would be deleted: the setting is \"Keep for 1 month\".\n");
    EXPECT_EQ(files(), 2u);
    EXPECT_EQ(run({"cleanup"}).err, "Deleted 1 entry and 0 recordings: the setting is \"Keep for 1 month\".\n");
    EXPECT_EQ(listed({"list"}), std::vector<std::string>{"BBBB"});
}

TEST_F(HistoryActions, ExportsOneEntryWhereItIsTold)
{
    write(rewritten(success("AAAA", "2026-01-01T10:00:00Z", "hello there"), "Polite", "Dear Sir"));
    write(failed("BBBB", "2026-01-02T10:00:00Z", home / "none.wav"));
    EXPECT_EQ(run({"export", "AAAA"}).out, "hello there\n");
    EXPECT_EQ(run({"export", "AAAA", "-f", "srt"}).out, "1\n00:00:00,000 --> 00:00:02,000\nhello there\n\n");
    EXPECT_EQ(run({"export", "AAAA", "-f", "entry"}).out, run({"show", "AAAA", "--json"}).out);
    const auto target = home / "my words.vtt";
    EXPECT_EQ(run({"export", "AAAA", "-o", target.string()}).code, 0);
    EXPECT_TRUE(readFile(target).starts_with("WEBVTT\n\n"));
    const auto again = run({"export", "AAAA", "-o", target.string(), "-f", "txt"});
    EXPECT_EQ(again.code, 1);
    EXPECT_TRUE(has(again.err, "--force"));
    EXPECT_EQ(run({"export", "AAAA", "-o", target.string(), "-f", "txt", "--force"}).code, 0);
    EXPECT_EQ(readFile(target), "hello there\n");

    struct Case {
        std::vector<std::string> arguments;
        int code;
        std::string err;
    };
    const std::vector<Case> cases = {
        {{"export", "BBBB"}, 1, "has no transcript"},
        {{"export"}, 2, "--output"},
        {{"export", "AAAA", "BBBB", "-o", (home / "file.txt").string()}, 2, "must be a folder"},
        {{"export", "AAAA", "-o", (home / "absent" / "file.txt").string()}, 2, "Make it first"},
        {{"export", "AAAA", "-f", "doc"}, 2, "There is no format \"doc\""},
        {{"export", "--since", "2026-02-30", "-o", home.path().string()}, 2, "is no date"},
        {{"export", "AAAA", "--since", "2026-01-01"}, 2, "excludes"},
    };
    for (const auto& testCase : cases) {
        const auto ended = run(testCase.arguments);
        EXPECT_EQ(ended.code, testCase.code) << ended.err;
        EXPECT_TRUE(has(ended.err, testCase.err));
        EXPECT_EQ(ended.out, "");
    }
}

TEST_F(HistoryActions, ExportsAllThatTheSelectionLetsThrough)
{
    for (int i = 0; i < 120; ++i) { // more than two pages
        const auto digits = std::to_string(1000 + i);
        const auto second = std::to_string(10 + i / 3); // some of one instant
        write(success(digits, "2026-01-01T10:00:" + (second.size() > 2 ? "59" : second) + "Z", "words"));
    }
    write(success("AAAA", "2026-01-02T00:00:00Z", "other words"));
    write(journal("BBBB", "2026-01-02T23:59:59Z", "words"));
    write(failed("CCCC", "2026-01-03T00:00:00Z", home / "none.wav"));
    fs::create_directory(home / "out");
    const auto folder = (home / "out").string();

    const auto day = run({"export", "-o", folder, "-f", "md", "--since", "2026-01-02", "--until", "2026-01-02"});
    EXPECT_EQ(day.code, 0) << day.err;
    EXPECT_EQ(day.err, "Exported 2 entries to \"" + folder + "\".\n");
    EXPECT_EQ(exported(), (std::set<std::string>{"2026-01-02-000000-AAAA0000.md", "2026-01-02-235959-BBBB0000.md"}));
    EXPECT_EQ(run({"export", "-o", folder, "-f", "md", "--search", "OTHER", "--force"}).code, 0);

    const auto all = run({"export", "-o", folder});
    EXPECT_EQ(all.code, 1) << "one was left out";
    EXPECT_TRUE(has(all.err, "The entry CCCC0000 has no transcript"));
    EXPECT_TRUE(has(all.err, "Exported 122 entries"));
    EXPECT_EQ(exported().size(), 124u);
    EXPECT_TRUE(has(run({"export", "-o", folder, "--only", "journal"}).err, "BBBB0000.txt\" exists."));
}

TEST_F(HistoryActions, CopiesWhatTheUserGot)
{
    write(rewritten(success("AAAA", "2026-01-01T10:00:00Z", "hello"), "Polite", "Dear Sir"));
    write(failed("BBBB", "2026-01-02T10:00:00Z", home / "none.wav"));
    const auto program = home / "bin" / "wl-copy";
    writeFile(program, "#!/bin/sh\n/bin/cat > " + (home / "copied").string() + "\n");
    fs::permissions(program, fs::perms::owner_all);
    Surroundings wayland;
    wayland.environment = {{"WAYLAND_DISPLAY", "wayland-7"}, {"PATH", (home / "bin").string()}};
    const auto copied = run({"copy", "AAAA"}, wayland);
    EXPECT_EQ(copied.code, 0);
    EXPECT_EQ(copied.err, "Copied: Dear Sir\n");
    EXPECT_EQ(readFile(home / "copied"), "Dear Sir");
    EXPECT_TRUE(has(run({"copy", "BBBB"}, wayland).err, "has no text"));

    const auto elsewhere = run({"copy", "AAAA"});
    EXPECT_EQ(elsewhere.code, 1);
    EXPECT_EQ(elsewhere.out, "Dear Sir\n") << "it is not lost";
    EXPECT_TRUE(has(elsewhere.err, "no clipboard"));
}

TEST_F(HistoryActions, RetryGivesAFailedRecordingItsWords)
{
    ScriptedWhisperModel().write(home / "Models" / "ggml-tiny.en.bin");
    const std::string scripted = "The quick brown fox jumps. Over the lazy dog, twice.";
    write(failed("AAAA", "2026-01-01T10:00:00Z", sample));
    write(failed("BBBB", "2026-01-02T10:00:00Z", home / "gone.wav"));
    auto spoken = journal("CCCC", "2026-01-03T10:00:00Z", "older words");
    std::get<HistoryEntry::VoiceJournalEntry>(spoken.content).result.audioFile = audio(sample);
    write(spoken);

    const auto ended = run({"retry", "AAAA", "--model", "tinyEnglish"});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.out, scripted + "\n");
    EXPECT_EQ(run({"export", "AAAA"}).out, scripted + "\n");
    EXPECT_EQ(files(), 3u);

    const auto again = run({"retry", "CCCC"});
    EXPECT_EQ(again.out, scripted + "\n");
    EXPECT_TRUE(has(again.err, "The entry keeps the text that it had"));
    EXPECT_EQ(run({"export", "CCCC0000"}).out, "older words\n");
    EXPECT_EQ(files(), 4u) << "the new one's id may begin with any four digits";

    EXPECT_TRUE(has(run({"retry", "BBBB0000"}).err, "not there any more: \"" + (home / "gone.wav").string()));
    const auto unknown = run({"retry", "AAAA0000", "--model", "no-such-model"});
    EXPECT_EQ(unknown.code, 1);
    EXPECT_TRUE(has(unknown.err, "vocalith models list"));
}

TEST_F(HistoryActions, ARetryWhoseTextCannotBeKeptPrintsItAndSaysSo)
{
    ScriptedWhisperModel().write(home / "Models" / "ggml-tiny.en.bin");
    auto spoken = journal("AAAA", "2026-01-03T10:00:00Z", "older words");
    std::get<HistoryEntry::VoiceJournalEntry>(spoken.content).result.audioFile = audio(sample);
    write(spoken);
    const auto now = std::chrono::time_point_cast<Date::duration>(std::chrono::system_clock::now());
    for (const auto day : {now, now + std::chrono::days(1)}) // in case that it is midnight
        writeFile(home / "History" / toIso8601(day).substr(0, 10), "no folder");
    const auto ended = run({"retry", "AAAA"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "The quick brown fox jumps. Over the lazy dog, twice.\n");
    EXPECT_TRUE(has(ended.err, "Error: The history cannot be reached: "));
    EXPECT_TRUE(has(ended.err, "The new text is kept nowhere but here:\n"));
}

TEST_F(HistoryActions, PlaysUntilTheEndOrCtrlC)
{
    write(failed("AAAA", "2026-01-01T10:00:00Z", sample));
    write(failed("BBBB", "2026-01-02T10:00:00Z", home / "gone.wav"));
    write(failed("CCCC", "2026-01-03T10:00:00Z", home / "settings.json"));
    writeFile(home / "settings.json", "{}");
    EXPECT_TRUE(has(run({"play", "BBBB"}).err, "not there any more"));
    EXPECT_TRUE(has(run({"play", "AAAA"}).err, "No audio server is running."));

    AudioServer server(AudioServer::Kind::pulseAudio);
    Surroundings withSound;
    withSound.environment = {{"PULSE_SERVER", server.address()}};
    EXPECT_TRUE(has(run({"play", "CCCC"}, withSound).err, "is not an audio or video file"));
    const auto played = run({"play", "AAAA"}, withSound);
    EXPECT_EQ(played.code, 0) << played.err;
    EXPECT_EQ(played.err, "");

    ProgramRun running(home.path(), {"history", "play", "AAAA"}, withSound);
    runUntil([&] { return !server.pactl({"list", "short", "sink-inputs"}).empty(); });
    ::kill(static_cast<pid_t>(running.process().processId()), SIGINT);
    const auto stopped = running.wait();
    EXPECT_EQ(stopped.code, 130);
    EXPECT_EQ(stopped.err, "Stopped.\n");
}

} // namespace
