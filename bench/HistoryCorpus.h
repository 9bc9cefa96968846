#pragma once

#include "base/Json.h"
#include "core/storage/history/archive/HistoryFolder.h"
#include "models/HistoryEntry.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace vocalith::bench {

/// Entries as people make them: three years of dictations, journal entries, transcribed files and failures, in several
/// languages. The same for every run.
class HistoryCorpus {
public:
    static constexpr int days = 3 * 365;

    HistoryEntry next()
    {
        const auto& words = kLanguages[chance(0.5) ? 0 : m_random() % kLanguages.size()];
        HistoryEntry entry{id(), date(), {}};
        DictationResult result{id(), audio(), transcript(words)};
        if (chance(0.03)) {
            entry.content = HistoryEntry::FailureData{audio(), "Failed to recognize text"};
        } else if (chance(0.02)) {
            entry.content = FileTranscriptionProject{id(), audio(), MediaFileType::audio,
                                                     FileTranscriptionProject::Completed{transcript(words)}};
        } else if (chance(0.2)) {
            entry.content = HistoryEntry::VoiceJournalEntry{std::move(result), {}, {}};
        } else {
            AIPrompt prompt;
            prompt.id = m_promptIDs[m_random() % m_promptIDs.size()];
            prompt.name = "Letter";
            prompt.prompt = "Correct the punctuation and leave the meaning alone.";
            HistoryEntry::SuccessData success{std::move(result), prompt, {}, {}};
            if (chance(0.3))
                success.transform = AITransform{prompt, plainText(success.result.transcriptionData)};
            entry.content = std::move(success);
        }
        return entry;
    }

    /// Writes the entries as the program does, but for the flushing, which would take an hour.
    static void write(const std::filesystem::path& root, int count)
    {
        HistoryCorpus corpus;
        for (int i = 0; i < count; ++i) {
            const auto entry = corpus.next();
            const auto file = root / HistoryFolder::pathFor(entry);
            std::filesystem::create_directories(file.parent_path());
            std::ofstream(file, std::ios::binary) << dumpJson(toJson(entry), 2) << '\n';
        }
    }

private:
    using Words = std::vector<std::string_view>;

    bool chance(double probability) { return std::uniform_real_distribution<double>()(m_random) < probability; }

    Uuid id()
    {
        Uuid made;
        for (auto& byte : made.bytes)
            byte = static_cast<std::uint8_t>(m_random());
        return made;
    }

    Date date()
    {
        constexpr Date kFirst{std::chrono::milliseconds(1'700'000'000'000)};
        constexpr std::int64_t kSpan = std::int64_t{days} * 24 * 60 * 60 * 1000;
        return kFirst + std::chrono::milliseconds(std::uniform_int_distribution<std::int64_t>(0, kSpan)(m_random));
    }

    AudioFile audio()
    {
        const auto file = "/home/user/.local/share/Vocalith/VocalithRecordings/" + id().toString() + ".wav";
        return {fileBookmark(file, date()), 12.5, 400044};
    }

    TranscriptionData transcript(const Words& words)
    {
        TranscriptionData made{PredefinedModelID::largeV3Turbo, {}};
        const int segments = 1 + static_cast<int>(m_random() % 5);
        for (int i = 0; i < segments; ++i) {
            std::string text;
            const int count = 4 + static_cast<int>(m_random() % 14);
            for (int k = 0; k < count; ++k)
                text.append(k == 0 ? "" : " ").append(word(words));
            made.segments.push_back({id(), text + ".", 2.5 * i, 2.5 * i + 2.4, std::nullopt});
        }
        return made;
    }

    std::string word(const Words& words)
    {
        // Names, numbers and half words: what is said once.
        if (chance(0.05))
            return "n" + std::to_string(m_random() % 1'000'000);
        // Few words make up most of what people say.
        const double rank = std::pow(std::uniform_real_distribution<double>()(m_random), 2.5);
        return std::string(words[static_cast<std::size_t>(rank * static_cast<double>(words.size()))]);
    }

    static const std::array<Words, 8> kLanguages;

    std::mt19937_64 m_random{20261123};
    std::array<Uuid, 5> m_promptIDs{id(), id(), id(), id(), id()};
};

inline const std::array<HistoryCorpus::Words, 8> HistoryCorpus::kLanguages = {{
    {"the",        "and",      "please",   "meeting",  "tomorrow",  "morning", "we",        "should",
     "send",       "invoice",  "customer", "about",    "report",    "before",  "project",   "release",
     "question",   "remember", "schedule", "because",  "kitchen",   "garden",  "quarterly", "review",
     "understand", "budget",   "hospital", "language", "wonderful", "peculiar"},
    {"und",         "die",      "der",   "nicht", "bitte",       "morgen",    "wir",     "müssen",
     "Rechnung",    "Kunden",   "über",  "schön", "Straße",      "größer",    "Bericht", "Termin",
     "verschieben", "fröhlich", "Übung", "Küche", "Besprechung", "Zahnärztin"},
    {"et",  "le",     "la",      "réunion", "demain",  "matin",   "nous",     "devons", "envoyer", "facture",
     "été", "garçon", "hôpital", "déjà",    "château", "fenêtre", "français", "voilà",  "naïve",   "cœur"},
    {"y", "el", "la", "reunión", "mañana", "por", "favor", "enviar", "factura", "año", "corazón", "niño", "pingüino",
     "canción", "teléfono", "difícil"},
    {"и", "в", "не", "собрание", "завтра", "утром", "нужно", "отправить", "счёт", "клиент", "Москва", "проект",
     "хорошо", "ёлка", "вопрос", "здравствуйте"},
    {"और", "में", "कल", "सुबह", "बैठक", "हमें", "भेजना", "चालान", "ग्राहक", "हिन्दी", "धन्यवाद", "परियोजना"},
    {"明天上午", "我们", "需要", "发送", "发票", "客户", "会议", "项目", "问题", "谢谢大家", "重要的", "报告"},
    {"明日", "会議", "ありがとう", "ございます", "請求書", "お客様", "プロジェクト", "東京都", "質問", "確認",
     "します"},
}};

} // namespace vocalith::bench
