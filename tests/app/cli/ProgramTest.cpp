// The program as a user runs it: arguments, standard output, standard error, exit code.

#include "base/Json.h"
#include "core/audio/WavFile.h"
#include "models/HistoryEntry.h"
#include "tests/support/AudioServer.h"
#include "tests/support/MainLoop.h"
#include "tests/support/Places.h"
#include "tests/support/ScriptedWhisperModel.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/program/ProgramRun.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

using namespace vocalith;
using namespace vocalith::test;
namespace fs = std::filesystem;

namespace {

class Program : public testing::Test {
protected:
    void addModel(const std::string& name = "ggml-tiny.en.bin")
    {
        fs::create_directories(home / "Models");
        ScriptedWhisperModel().write(modelsFolder() / name);
    }
    /// The models folder is wherever the program says it is.
    fs::path modelsFolder() const { return home / "Models"; }

    Ended run(const std::vector<std::string>& arguments) { return ProgramRun(home.path(), arguments).wait(); }

    std::size_t recordings() const
    {
        const auto folder = home / "VocalithRecordings";
        return fs::exists(folder) ? static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {})) : 0;
    }

    /// What the history has, as its files say.
    std::vector<HistoryEntry> history() const
    {
        std::vector<HistoryEntry> entries;
        if (!fs::exists(home / "History"))
            return entries;
        for (const auto& file : fs::recursive_directory_iterator(home / "History")) {
            if (file.is_regular_file())
                entries.push_back(fromJson<HistoryEntry>(*parseJson(readFile(file.path()))).value());
        }
        return entries;
    }
    static fs::path recordingOf(const HistoryEntry& entry) { return *filePath(audioFile(entry).fileBookmark); }

    TemporaryFolder home;
    const std::string sample = recordedSpeech();
    const std::string scripted = "The quick brown fox jumps. Over the lazy dog, twice.";
};

TEST_F(Program, HelpAndWrongUsageReadWellAndTellThemApart)
{
    struct Case {
        std::vector<std::string> arguments;
        int code;
        std::string out;
        std::string err;
    };
    const std::vector<Case> cases = {
        {{"--help"}, 0, "transcribe", ""},
        {{"dictate", "--help"}, 0, "--audio", ""},
        {{"--version"}, 0, "vocalith", ""},
        {{}, 2, "", "Say what to do"},
        {{"listen"}, 2, "", "listen"},
        {{"transcribe"}, 2, "", "files"},
        {{"dictate", "--language", "klingon", "--audio", sample}, 2, "", "There is no language \"klingon\""},
        {{"transcribe", sample, "--format", "doc"}, 2, "", "There is no format \"doc\""},
        {{"dictate", "--source", "radio"}, 2, "", "source"},
    };
    for (const auto& testCase : cases) {
        const auto ended = run(testCase.arguments);
        EXPECT_EQ(ended.code, testCase.code) << ended.err;
        EXPECT_NE(ended.out.find(testCase.out), std::string::npos) << ended.out;
        EXPECT_NE(ended.err.find(testCase.err), std::string::npos) << ended.err;
        EXPECT_EQ(ended.out.empty(), testCase.code != 0) << "complaints do not belong on standard output";
    }
}

TEST_F(Program, TranscribesRealSpeechWithNothingDownloaded)
{
    const auto ended = run({"transcribe", sample});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_NE(ended.out.find("country"), std::string::npos) << ended.out;
}

TEST_F(Program, DictatesFromAFileThroughTheWholeSession)
{
    addModel();
    const auto ended = run({"dictate", "--audio", sample});
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.out, scripted + "\n");
    EXPECT_EQ(ended.err, "") << "a pipe sees no colours, progress or hints";
    const auto kept = history();
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(finalText(kept[0]), scripted);
    EXPECT_TRUE(readWavHeader(recordingOf(kept[0])));
    EXPECT_EQ(recordings(), 1u);

    const auto json = run({"dictate", "--audio", sample, "--json"});
    EXPECT_EQ(json.out, "{\"text\":\"" + scripted + "\",\"model\":\"tinyEnglish\"}\n");
}

TEST_F(Program, KeepsNothingOfADictationWhereNoHistoryIsWanted)
{
    addModel();
    writeFile(home / "settings.json", R"({"historyStoragePolicy": "disabled"})");
    const auto ended = run({"dictate", "--audio", sample});
    EXPECT_EQ(ended.out, scripted + "\n");
    EXPECT_TRUE(history().empty());
    EXPECT_EQ(recordings(), 0u);
}

TEST_F(Program, ADictationWithoutSpeechIsInTheHistoryAndCanBeTriedAgain)
{
    const auto silence = home / "silence.wav";
    ASSERT_TRUE(WavWriter::create(silence).value().append(std::vector<std::int16_t>(32000)));
    const auto ended = run({"dictate", "--audio", silence.string()});
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(ended.out, "");
    ASSERT_EQ(history().size(), 1u);
    const auto id = history()[0].id.toString().substr(0, 8);
    EXPECT_EQ(ended.err, "Error: No speech detected\nThe recording is in the history. Try again with: "
                         "vocalith history retry " +
                             id + "\n");
    addModel();
    EXPECT_EQ(run({"history", "retry", id}).out, scripted.substr(0, 26) + "\n");
    EXPECT_EQ(finalText(history()[0]), scripted.substr(0, 26));
}

TEST_F(Program, SaysOnceThatTheSystemsRecogniserIsOnlyABeginning)
{
    const auto first = run({"dictate", "--audio", sample});
    EXPECT_NE(first.err.find("the system's own recogniser"), std::string::npos) << first.err;
    EXPECT_EQ(run({"dictate", "--audio", sample}).err, "");
}

TEST_F(Program, WritesSubtitlesWhereItIsToldAndReplacesNothingUnasked)
{
    addModel();
    const auto file = home / "my töne.srt";
    EXPECT_EQ(run({"transcribe", sample, "-o", file.string()}).code, 0);
    EXPECT_EQ(readFile(file), "1\n00:00:00,000 --> 00:00:02,399\nThe quick brown fox jumps.\n\n"
                              "2\n00:00:02,600 --> 00:00:05,000\nOver the lazy dog, twice.\n\n");
    const auto again = run({"transcribe", sample, "-o", file.string()});
    EXPECT_EQ(again.code, 2);
    EXPECT_NE(again.err.find("--force"), std::string::npos) << again.err;
    EXPECT_EQ(run({"transcribe", sample, "-o", file.string(), "--force", "--format", "vtt"}).code, 0);
    EXPECT_TRUE(readFile(file).starts_with("WEBVTT\n\n"));
    const auto kept = run({"history", "search", "lazy dog", "--only", "files"});
    EXPECT_EQ(std::count(kept.out.begin(), kept.out.end(), '\n'), 2)
        << "each transcript is in the history: " << kept.out;
}

TEST_F(Program, OneBadFileDoesNotKeepTheOthersFromTheirTurn)
{
    addModel();
    writeFile(home / "in" / "not audio.wav", "these are words, not samples");
    writeFile(home / "in" / "empty.wav", "");
    fs::create_directories(home / "in" / "folder");
    fs::create_directories(home / "out");
    fs::copy_file(sample, home / "in" / "gut — ok.wav");
    const auto in = [this](const char* name) { return (home / "in" / name).string(); };
    const auto ended = run({"transcribe", in("not audio.wav"), in("empty.wav"), in("folder"), in("absent.wav"),
                            in("gut — ok.wav"), "--format", "txt", "--output", (home / "out").string()});
    EXPECT_EQ(ended.code, 1);
    for (const char* complaint : {"not audio.wav\" is not an audio", "empty.wav\" is empty", "folder\" is not a file",
                                  "There is no file", "absent.wav"})
        EXPECT_NE(ended.err.find(complaint), std::string::npos) << ended.err;
    EXPECT_EQ(readFile(home / "out" / "gut — ok.txt"), scripted + "\n");
}

TEST_F(Program, ABadModelIsASentenceAndTheWordsAreKept)
{
    writeFile(modelsFolder() / "broken.bin", std::string("lmgg", 4) + std::string(5000, 'x'));
    for (const std::string model : {"broken", "no-such-model", "small", "gpt4o", "qwen3ASR", "parakeetTDT06"}) {
        const auto ended = run({"transcribe", sample, "--model", model});
        EXPECT_EQ(ended.code, 1) << model;
        EXPECT_TRUE(ended.err.starts_with("Error: ")) << ended.err;
        EXPECT_EQ(ended.out, "");
    }
    const auto dictated = run({"dictate", "--audio", sample, "--model", "broken"});
    EXPECT_EQ(dictated.code, 1);
    EXPECT_TRUE(dictated.err.starts_with("Error: Failed to recognize text")) << dictated.err;
}

TEST_F(Program, WithoutAnAudioServerItSaysSoInOneSentence)
{
    addModel();
    const auto ended = run({"dictate"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.err, "Error: No audio server is running. Start PipeWire or PulseAudio (systemctl --user start "
                         "pipewire-pulse) and try again.\n");
    EXPECT_EQ(recordings(), 0u);
}

TEST_F(Program, ListsModelsAndExaminesTheMachine)
{
    addModel("my model.bin");
    const auto list = run({"models", "list", "--json"});
    EXPECT_EQ(list.code, 0);
    EXPECT_NE(list.out.find("\"id\": \"my model\""), std::string::npos) << list.out;
    EXPECT_NE(list.out.find("\"id\": \"largeV3\""), std::string::npos);
    const auto report = run({"doctor"});
    EXPECT_EQ(report.code, 1) << "without an audio server no dictation can work";
    EXPECT_NE(report.out.find("my model"), std::string::npos) << report.out;
}

/// Dictation from a real audio server, with a pipe as its microphone.
class LiveProgram : public Program {
protected:
    std::vector<std::int16_t> noise(double seconds)
    {
        std::vector<std::int16_t> samples(static_cast<std::size_t>(seconds * 16000));
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<std::int16_t>((i * 7919) % 8000) - 4000;
        return samples;
    }
    /// Starts a dictation and speaks until enough of it is on the disk.
    std::unique_ptr<ProgramRun> startSpeaking(const std::vector<std::string>& arguments = {"dictate"})
    {
        auto running = std::make_unique<ProgramRun>(home.path(), arguments, withMicrophone());
        runUntil([&] {
            microphone.offer(noise(0.05));
            return recordedBytes() > 64000;
        });
        return running;
    }
    Surroundings withMicrophone() const
    {
        Surroundings surroundings;
        surroundings.environment = {{"PULSE_SERVER", server.address()}};
        return surroundings;
    }
    std::uintmax_t recordedBytes() const
    {
        std::uintmax_t bytes = 0;
        const auto folder = home / "VocalithRecordings";
        if (fs::exists(folder)) {
            for (const auto& entry : fs::directory_iterator(folder))
                bytes += entry.file_size();
        }
        return bytes;
    }

    /// What the model says of two seconds: the second sentence begins after them.
    const std::string spoken = "The quick brown fox jumps.";
    AudioServer server{AudioServer::Kind::pulseAudio};
    PipeMicrophone microphone = server.addMicrophone("pipe");
};

TEST_F(LiveProgram, EnterEndsTheRecordingAndPrintsTheText)
{
    addModel();
    const auto running = startSpeaking();
    running->process().write("\n");
    const auto ended = running->wait();
    EXPECT_EQ(ended.code, 0) << ended.err;
    EXPECT_EQ(ended.out, spoken + "\n");
}

TEST_F(LiveProgram, CtrlCThrowsTheRecordingAway)
{
    addModel();
    const auto running = startSpeaking();
    ::kill(static_cast<pid_t>(running->process().processId()), SIGINT);
    const auto ended = running->wait();
    EXPECT_EQ(ended.code, 130);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(recordings(), 0u);
}

TEST_F(LiveProgram, APoliteRequestToEndStillPrintsTheText)
{
    addModel();
    const auto running = startSpeaking();
    ::kill(static_cast<pid_t>(running->process().processId()), SIGTERM);
    EXPECT_EQ(running->wait().out, spoken + "\n");
}

TEST_F(LiveProgram, ASecondDictationIsRefusedWhileOneRuns)
{
    addModel();
    const auto running = startSpeaking();
    const auto second = ProgramRun(home.path(), {"dictate"}, withMicrophone()).wait();
    EXPECT_EQ(second.code, 1);
    EXPECT_NE(
        second.err.find("A dictation is already running (process " + std::to_string(running->process().processId())),
        std::string::npos)
        << second.err;
    running->process().write("\n");
    EXPECT_EQ(running->wait().code, 0);
}

TEST_F(LiveProgram, AKilledDictationIsInTheHistoryAndCanBeWrittenDown)
{
    addModel();
    const auto running = startSpeaking();
    running->process().kill();
    running->wait();
    EXPECT_EQ(recordings(), 1u);
    const auto next = run({"dictate", "--audio", sample});
    EXPECT_EQ(next.code, 0);
    EXPECT_NE(next.err.find("A dictation was cut off earlier"), std::string::npos) << next.err;
    auto entries = history();
    std::erase_if(entries, [](const auto& entry) { return !errorMessage(entry); });
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(*errorMessage(entries[0]), "Recording interrupted — app was terminated");
    const auto id = entries[0].id.toString().substr(0, 8);
    EXPECT_NE(next.err.find("vocalith history retry " + id), std::string::npos) << next.err;
    EXPECT_EQ(run({"history", "retry", id}).out, spoken + "\n");
    EXPECT_EQ(run({"dictate", "--audio", sample}).err, "") << "it is said once";
}

TEST_F(Program, ADamagedSettingsFileIsToldOnceAndCostsOnlyWhatWasHit)
{
    writeFile(home / "settings.json", "{\n  \"whisperLanguage\": \"de\"\n  \"whisperPrompt\": \"cut o");
    const auto first = run({"settings", "get", "whisperLanguage"});
    EXPECT_EQ(first.out, "de\n");
    EXPECT_NE(first.err.find("The settings file was damaged."), std::string::npos) << first.err;
    EXPECT_NE(first.err.find("Lost: whisperPrompt."), std::string::npos) << first.err;
    EXPECT_EQ(run({"settings", "get", "whisperLanguage"}).err, "");
}

TEST_F(Program, TextThatStandardOutputDoesNotTakeIsSaved)
{
    addModel();
    Surroundings full;
    full.output = "/dev/full";
    const auto ended = ProgramRun(home.path(), {"dictate", "--audio", sample}, full).wait();
    EXPECT_EQ(ended.code, 0);
    EXPECT_NE(ended.err.find("It was saved in"), std::string::npos) << ended.err;
    EXPECT_EQ(recordings(), 2u) << "the text beside the recording";
    EXPECT_EQ(history().size(), 1u);
}

} // namespace
