#pragma once

#include "base/Json.h"
#include "core/storage/history/HistoryStore.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace vocalith::test {

/// 2026-03-01T12:00:00Z
inline constexpr Date kNoon = std::chrono::sys_days{std::chrono::year{2026} / 3 / 1} + std::chrono::hours{12};

inline TranscriptionData transcriptOf(const std::string& text)
{
    return {PredefinedModelID::small, {{Uuid::random(), text, 0, 1, std::nullopt}}};
}

inline AudioFile audioAt(const std::filesystem::path& file)
{
    return {fileBookmark(file, kNoon), 1, 32044};
}

inline AIPrompt promptNamed(const std::string& name)
{
    AIPrompt prompt;
    prompt.id = Uuid::random();
    prompt.name = name;
    return prompt;
}

/// A history of the test's own.
class HistoryFixture : public testing::Test {
protected:
    HistoryEntry dictation(const std::string& text, Date date = kNoon, std::optional<AIPrompt> prompt = {}) const
    {
        const auto id = Uuid::random();
        DictationResult result{id, audioAt(m_places.recordingsFolder / (id.toString() + ".wav")), transcriptOf(text)};
        return {id, date, HistoryEntry::SuccessData{std::move(result), std::move(prompt), {}, {}}};
    }
    HistoryEntry failed(const std::string& message, Date date = kNoon) const
    {
        const auto id = Uuid::random();
        const auto audio = audioAt(m_places.recordingsFolder / (id.toString() + ".wav"));
        return {id, date, HistoryEntry::FailureData{audio, message}};
    }
    HistoryEntry journal(const std::string& text, Date date = kNoon) const
    {
        DictationResult result{Uuid::random(), audioAt("/elsewhere/a.wav"), transcriptOf(text)};
        return {Uuid::random(), date, HistoryEntry::VoiceJournalEntry{std::move(result), {}, {}}};
    }
    HistoryEntry transcribedFile(const std::string& text, Date date = kNoon) const
    {
        return {Uuid::random(), date,
                FileTranscriptionProject{Uuid::random(), audioAt("/home/user/talk.mp3"), MediaFileType::audio,
                                         FileTranscriptionProject::Completed{transcriptOf(text)}}};
    }

    std::unique_ptr<HistoryStore> open() { return HistoryStore::open(m_places, m_log.logger()).value(); }
    void keep(HistoryStore& store, const HistoryEntry& entry)
    {
        const auto kept = await(store.upsert(entry));
        ASSERT_TRUE(kept) << kept.error().detail;
    }
    void keepAll(HistoryStore& store, const std::vector<HistoryEntry>& entries)
    {
        for (const auto& entry : entries)
            keep(store, entry);
    }
    static std::vector<HistoryEntry> page(HistoryStore& store, HistoryFilter filter = {}, std::size_t size = 1000)
    {
        HistoryPageRequest request{std::move(filter), std::nullopt, size};
        return await(store.page(request)).value().entries;
    }
    static std::vector<std::string> texts(const std::vector<HistoryEntry>& entries)
    {
        std::vector<std::string> found;
        found.reserve(entries.size());
        for (const auto& entry : entries)
            found.push_back(errorMessage(entry) ? *errorMessage(entry) : finalText(entry));
        return found;
    }
    static std::vector<std::string> search(HistoryStore& store, const std::string& query)
    {
        HistoryFilter filter;
        filter.searchQuery = query;
        return texts(page(store, filter));
    }

    /// Relative to the history's folder, sorted.
    std::vector<std::string> files() const
    {
        std::vector<std::string> found;
        for (const auto& file : std::filesystem::recursive_directory_iterator(m_places.rootURL)) {
            if (file.is_regular_file())
                found.push_back(std::filesystem::relative(file.path(), m_places.rootURL));
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    std::filesystem::path fileOf(const HistoryEntry& entry) const
    {
        for (const auto& file : files()) {
            if (file.find(entry.id.toString()) != std::string::npos)
                return m_places.rootURL / file;
        }
        return {};
    }
    void writeByHand(const std::string& path, const HistoryEntry& entry) const
    {
        std::filesystem::create_directories((m_places.rootURL / path).parent_path());
        writeFile(m_places.rootURL / path, dumpJson(toJson(entry)));
    }

    TemporaryFolder m_folder;
    HistoryPlaces m_places{m_folder / "History", m_folder / "VocalithRecordings", m_folder / "cache" / "history.index"};
    RecordedLog m_log;
};

} // namespace vocalith::test
