#pragma once

#include "base/Iso8601.h"
#include "base/Json.h"
#include "models/HistoryEntry.h"
#include "tests/support/program/ProgramRun.h"

#include <gtest/gtest.h>

namespace vocalith::test {

/// A home with a history that the test writes file by file, and runs of `vocalith history` in it.
class HistoryProgram : public testing::Test {
protected:
    /// An identifier that begins with those four digits.
    static Uuid id(const std::string& digits)
    {
        return Uuid::parse(digits + "0000-0000-4000-8000-00000000" + digits).value();
    }
    static Date date(const std::string& text) { return dateFromIso8601(text).value(); }

    AudioFile audio(const std::filesystem::path& file) const
    {
        return {fileBookmark(file, date("2026-01-01T00:00:00Z")), 5, 1000};
    }
    static TranscriptionData words(const std::string& text)
    {
        return {PredefinedModelID::tinyEnglish, {{Uuid::random(), text, 0, 2, std::nullopt}}};
    }

    void write(const HistoryEntry& entry) const
    {
        const auto day = toIso8601(entry.creationDate).substr(0, 10);
        writeFile(home / "History" / day / (entry.id.toString() + ".json"), dumpJson(toJson(entry), 2));
    }
    HistoryEntry success(const std::string& digits, const std::string& created, const std::string& text) const
    {
        const auto key = id(digits);
        HistoryEntry::SuccessData data;
        data.result = {key, audio(home / "VocalithRecordings" / (digits + ".wav")), words(text)};
        return {key, date(created), HistoryEntry::DictationEntry(std::move(data))};
    }
    HistoryEntry failed(const std::string& digits, const std::string& created, const std::filesystem::path& file) const
    {
        return {id(digits), date(created),
                HistoryEntry::DictationEntry(HistoryEntry::FailureData{audio(file), "Recording interrupted"})};
    }
    HistoryEntry journal(const std::string& digits, const std::string& created, const std::string& text) const
    {
        const auto key = id(digits);
        return {key, date(created),
                HistoryEntry::VoiceJournalEntry{{key, audio(home / "none.wav"), words(text)}, {}, {}}};
    }
    HistoryEntry file(const std::string& digits, const std::string& created, const std::string& text) const
    {
        const auto key = id(digits);
        return {key, date(created),
                FileTranscriptionProject{key, audio(home / "none.wav"), MediaFileType::audio,
                                         FileTranscriptionProject::Completed{words(text)}}};
    }
    static HistoryEntry rewritten(HistoryEntry entry, const std::string& promptName, const std::string& text)
    {
        auto& data = std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(entry.content));
        AIPrompt prompt;
        prompt.id = Uuid::random();
        prompt.name = promptName;
        data.transform = AITransform{prompt, text};
        return entry;
    }

    Ended run(std::vector<std::string> arguments, const Surroundings& surroundings = {}) const
    {
        arguments.insert(arguments.begin(), "history");
        return ProgramRun(home.path(), arguments, surroundings).wait();
    }
    /// The first four digits of the entries that `arguments` lists, in order.
    std::vector<std::string> listed(std::vector<std::string> arguments) const
    {
        arguments.emplace_back("--json");
        const auto ended = run(arguments);
        EXPECT_EQ(ended.code, 0) << ended.err;
        const auto array = parseJson(ended.out);
        EXPECT_TRUE(array) << ended.out;
        const auto entries = fromJson<std::vector<HistoryEntry>>(array.value_or(Json()));
        EXPECT_TRUE(entries) << ended.out;
        std::vector<std::string> digits;
        for (const auto& entry : entries.value_or(std::vector<HistoryEntry>()))
            digits.push_back(entry.id.toString().substr(0, 4));
        return digits;
    }
    std::size_t files() const
    {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(home / "History"))
            count += entry.is_regular_file() ? 1 : 0;
        return count;
    }

    TemporaryFolder home;
};

/// Whether `text` contains `part`, and what it is if not.
inline testing::AssertionResult has(const std::string& text, const std::string& part)
{
    if (text.find(part) != std::string::npos)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "\"" << part << "\" is not in:\n" << text;
}

} // namespace vocalith::test
