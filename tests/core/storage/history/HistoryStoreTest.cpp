#include "tests/core/storage/history/HistoryFixture.h"

#include "core/storage/history/archive/HistoryFolder.h"

#include <sys/stat.h>

#include <fstream>
#include <set>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class HistoryStoreTest : public HistoryFixture {
protected:
    static void touch(const fs::path& file) { writeFile(file, "RIFF"); }
    fs::path recordingOf(const HistoryEntry& entry) const { return *filePath(audioFile(entry).fileBookmark); }
    /// An entry whose recording is on disk.
    HistoryEntry recorded(const std::string& text, Date date = kNoon) const
    {
        auto entry = dictation(text, date);
        fs::create_directories(m_places.recordingsFolder);
        touch(recordingOf(entry));
        return entry;
    }
};

TEST_F(HistoryStoreTest, AnEntryIsOneFileOfItsDayThatOnlyItsOwnerReads)
{
    auto store = open();
    auto first = dictation("one");
    const auto sameDay = dictation("two", kNoon + 1h);
    const auto nextDay = dictation("three", kNoon + 24h);
    keepAll(*store, {first, sameDay, nextDay});
    const auto found = files();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(fileOf(first).parent_path(), fileOf(sameDay).parent_path());
    EXPECT_NE(fileOf(first).parent_path(), fileOf(nextDay).parent_path());
    EXPECT_EQ(fileOf(first), m_places.rootURL / "2026-03-01" / (first.id.toString() + ".json"));
    struct stat status {};
    ASSERT_EQ(::stat(fileOf(first).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600);

    std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(first.content)).transform =
        AITransform{promptNamed("Letter"), "One."};
    keep(*store, first);
    EXPECT_EQ(files(), found);
    EXPECT_EQ(await(store->entry(first.id)).value(), first);

    first.creationDate += 48h; // its file moves, and stays one
    keep(*store, first);
    EXPECT_EQ(files().size(), 3U);
    EXPECT_EQ(texts(page(*store)), (std::vector<std::string>{"One.", "three", "two"}));
    EXPECT_EQ(userMessage(await(store->entry(Uuid::random())).error()), "Entry not found");
}

TEST_F(HistoryStoreTest, PagesLoseAndRepeatNothingWhateverTheDates)
{
    auto store = open();
    std::vector<HistoryEntry> kept;
    kept.reserve(60);
    for (int i = 0; i < 60; ++i) // many at one instant, some before 1970 and some long after us
        kept.push_back(dictation(std::to_string(i), i < 40 ? kNoon : Date() + (i - 50) * 24h * 3650));
    keepAll(*store, kept);
    const auto ids = [](const std::vector<HistoryEntry>& entries) {
        std::set<Uuid> found;
        for (const auto& entry : entries)
            found.insert(entry.id);
        return found;
    };
    for (const auto order : {HistorySortOrder::newestFirst, HistorySortOrder::oldestFirst}) {
        HistoryPageRequest request{{{}, "", order}, std::nullopt, 7};
        std::vector<HistoryEntry> all;
        do {
            const auto next = await(store->page(request)).value();
            EXPECT_LE(next.entries.size(), 7U);
            all.insert(all.end(), next.entries.begin(), next.entries.end());
            request.after = next.next;
        } while (request.after && all.size() < 100);
        EXPECT_EQ(all.size(), kept.size());
        EXPECT_EQ(ids(all), ids(kept));
        EXPECT_TRUE(std::is_sorted(all.begin(), all.end(), [&](const auto& one, const auto& other) {
            return order == HistorySortOrder::newestFirst ? one.creationDate > other.creationDate
                                                          : one.creationDate < other.creationDate;
        }));
    }
}

TEST_F(HistoryStoreTest, FiltersLetThroughWhatTheyAreFor)
{
    using namespace history_filter;
    auto store = open();
    const auto letter = promptNamed("Letter");
    keepAll(*store, {dictation("said", kNoon, letter), failed("No speech detected"), journal("thought"),
                     transcribedFile("talk"), dictation("other", kNoon, promptNamed("Mail"))});
    using Texts = std::set<std::string>;
    const std::vector<std::pair<HistoryFilterMode, Texts>> cases = {
        {All{}, {"said", "No speech detected", "thought", "talk", "other"}},
        {Dictation{}, {"said", "No speech detected", "other"}},
        {Files{}, {"talk"}},
        {Journal{}, {"thought"}},
        {AIPromptEntries{letter.id}, {"said"}},
        {AIPromptEntries{Uuid::random()}, {}},
    };
    for (const auto& [mode, expected] : cases) {
        const auto found = texts(page(*store, {mode, ""}));
        EXPECT_EQ(Texts(found.begin(), found.end()), expected) << mode.index();
        EXPECT_EQ(await(store->count({mode, ""})).value(), expected.size());
    }
    HistoryFilter both{Dictation{}, "o"};
    EXPECT_EQ(texts(page(*store, both)).size(), 2U) << "a filter and a search hold together";
}

TEST_F(HistoryStoreTest, ASearchFindsTextInAnyLanguageWhateverItsCaseAndAccents)
{
    auto store = open();
    auto rewritten = dictation("the raw words", kNoon, promptNamed("Übersetzung"));
    std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(rewritten.content)).transform =
        AITransform{promptNamed("Übersetzung"), "the polished sentence"};
    keepAll(*store, {rewritten, dictation("Zahnärztin in der STRASSE"), dictation("Ёлка в Москве"),
                     dictation("ありがとうございます東京"), dictation("हिन्दी में"), dictation("שָׁלוֹם"),
                     dictation("50% of \"all\" a_b*c"), dictation(std::string("nul\0byte", 8)), failed("Disk full")});
    const std::string polished = "the polished sentence";
    const std::vector<std::pair<std::string, std::string>> found = {
        {"RAW WORDS", polished},
        {"polished", polished},
        {"ubersetz", polished},
        {"ZAHNARZT", "Zahnärztin in der STRASSE"},
        {"straße", "Zahnärztin in der STRASSE"},
        {"елка", "Ёлка в Москве"},
        {"МОСКВ", "Ёлка в Москве"},
        {"東京", "ありがとうございます東京"},
        {"ｔｏｕ", ""},
        {"ございます", "ありがとうございます東京"},
        {"हिन्दी", "हिन्दी में"},
        {"हिन्दा", ""},
        {"שלום", "שָׁלוֹם"},
        {"% of", "50% of \"all\" a_b*c"},
        {"\"all\"", "50% of \"all\" a_b*c"},
        {"a_b*c", "50% of \"all\" a_b*c"},
        {"a?b", ""},
        {"5", "50% of \"all\" a_b*c"},
        {"disk F", "Disk full"},
        {"raw polished", ""},
    };
    for (const auto& [query, text] : found) {
        const auto expected = text.empty() ? std::vector<std::string>() : std::vector<std::string>{text};
        EXPECT_EQ(search(*store, query), expected) << query;
    }
    EXPECT_EQ(search(*store, "").size(), 9U);
    EXPECT_EQ(search(*store, std::string("nul\0b", 5)).size(), 1U);

    keep(*store, [&] { // what is no longer in an entry is no longer found
        auto changed = rewritten;
        changed.content = HistoryEntry::FailureData{audioFile(rewritten), "gone"};
        return changed;
    }());
    EXPECT_TRUE(search(*store, "polished").empty());
}

TEST_F(HistoryStoreTest, ARecordingGoesWithTheLastEntryThatUsesIt)
{
    auto store = open();
    const auto alone = recorded("alone");
    const auto shared = recorded("shared");
    auto second = dictation("second");
    std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(second.content)).result.audioFile =
        audioFile(shared);
    const auto spokenFor = recorded("also named by a file of a newer version");
    auto own = transcribedFile("the user's own file");
    touch(m_folder / "talk.wav");
    std::get<FileTranscriptionProject>(own.content).audioFile = audioAt(m_folder / "talk.wav");
    keepAll(*store, {alone, shared, second, spokenFor, own});
    writeFile(m_places.rootURL / "2026-03-01" / (Uuid::random().toString() + ".json"),
              R"({"telepathy":{"audio":")" + recordingOf(spokenFor).string() + "\"}}");
    ASSERT_TRUE(await(store->refresh()));

    const auto gone = await(store->remove({alone.id, shared.id, spokenFor.id, own.id, Uuid::random()})).value();
    EXPECT_EQ(gone.entries, 4U);
    EXPECT_EQ(gone.recordings, 1U);
    EXPECT_FALSE(fs::exists(recordingOf(alone)));
    EXPECT_TRUE(fs::exists(recordingOf(shared)));
    EXPECT_TRUE(fs::exists(recordingOf(spokenFor)));
    EXPECT_TRUE(fs::exists(m_folder / "talk.wav"));

    const auto added = [&] { // by hand, and not looked at since
        auto entry = dictation("added");
        std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(entry.content)).result.audioFile =
            audioFile(shared);
        entry.creationDate += 24h;
        writeByHand("2026-03-02/" + entry.id.toString() + ".json", entry);
        return entry.id;
    }();
    EXPECT_EQ(await(store->removeCreatedBefore(kNoon + 1ms)).value().recordings, 0U);
    EXPECT_TRUE(fs::exists(recordingOf(shared)));
    ASSERT_TRUE(await(store->remove({added})));
    EXPECT_FALSE(fs::exists(recordingOf(shared)));
    EXPECT_TRUE(page(*store).empty());
    EXPECT_EQ(await(store->unreadable()).value().size(), 1U);
}

TEST_F(HistoryStoreTest, RemovingByDateTakesWhatIsOlderAndNothingElse)
{
    auto store = open();
    keepAll(*store, {dictation("older", kNoon - 1ms), dictation("at the limit"), dictation("younger", kNoon + 1ms),
                     dictation("from the future", Date(std::chrono::days(400'000)))});
    EXPECT_EQ(await(store->removeCreatedBefore(kNoon)).value().entries, 1U);
    EXPECT_EQ(page(*store).size(), 3U);

    // What was edited by hand since counts with the date that it has now.
    auto edited = page(*store).back();
    const auto file = fileOf(edited);
    edited.creationDate += 240h;
    writeFile(file, dumpJson(toJson(edited)));
    EXPECT_EQ(await(store->removeCreatedBefore(kNoon + 1h)).value().entries, 1U);
    EXPECT_EQ(texts(page(*store)), (std::vector<std::string>{"from the future", "at the limit"}));
    EXPECT_EQ(await(store->removeAll()).value().entries, 2U);
    EXPECT_TRUE(files().empty());
    EXPECT_TRUE(fs::is_empty(m_places.rootURL)) << "days without entries go too";
}

TEST_F(HistoryStoreTest, WhatIsDoneByHandAppears)
{
    auto store = open();
    const auto removed = dictation("removed");
    auto edited = dictation("before the edit");
    keepAll(*store, {removed, edited});
    ASSERT_EQ(page(*store).size(), 2U);

    fs::remove(fileOf(removed));
    std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(edited.content))
        .result.transcriptionData = transcriptOf("after the edit, which is longer");
    writeFile(fileOf(edited), dumpJson(toJson(edited), 4));
    EXPECT_EQ(texts(page(*store)), std::vector<std::string>{"after the edit, which is longer"})
        << "files are the truth";

    const auto added = dictation("added");
    writeByHand("2026-02-28/" + added.id.toString() + ".json", added);
    ASSERT_TRUE(await(store->refresh()).value());
    EXPECT_FALSE(await(store->refresh()).value()) << "nothing has changed since";
    EXPECT_EQ(search(*store, "added").size(), 1U);
    EXPECT_EQ(search(*store, "after the edit").size(), 1U);
    EXPECT_EQ(await(store->entry(added.id)).value(), added);
    EXPECT_EQ(await(store->identifiers(added.id.toString().substr(0, 9), 5)).value(), std::vector<Uuid>{added.id});
    EXPECT_TRUE(await(store->identifiers("xyz", 5)).value().empty());
}

TEST_F(HistoryStoreTest, FilesThatAreNoEntriesAreListedAndLeftAlone)
{
    const auto whole = dictation("whole");
    const auto day = m_places.rootURL / "2026-03-01";
    const auto text = dumpJson(toJson(whole));
    const auto name = [] { return Uuid::random().toString() + ".json"; };
    writeByHand("2026-03-01/" + whole.id.toString() + ".json", whole);
    const std::vector<std::pair<std::string, std::string>> damaged = {
        {name(), ""},
        {name(), text.substr(0, text.size() / 2)},
        {name(), std::string("\x00\xff\x13{[\"", 6)},
        {name(), R"({"id":"x","creationDate":0,"content":{"telepathy":{}}})"},
        {name(), text}, // named after another entry
        {name(), std::string(50 << 20, '[')},
        {"notes.json", "[]"},
    };
    for (const auto& [file, content] : damaged)
        writeFile(day / file, content);
    writeFile(day / ".hidden.json", "{}");
    writeFile(day / "readme.txt", "mine");
    for (const auto* folder : {"backup", "2026-13-41", "2026-02-30", "20260301"})
        writeByHand(std::string(folder) + "/" + whole.id.toString() + ".json", whole);
    const auto before = files();

    auto store = open();
    ASSERT_TRUE(await(store->refresh()));
    EXPECT_EQ(texts(page(*store)), std::vector<std::string>{"whole"});
    const auto listed = await(store->unreadable()).value();
    ASSERT_EQ(listed.size(), damaged.size());
    for (const auto& entry : listed) {
        EXPECT_FALSE(entry.reason.empty()) << entry.file;
        EXPECT_TRUE(fs::exists(entry.file));
    }
    ASSERT_TRUE(await(store->removeCreatedBefore(kNoon + 240h)));
    ASSERT_TRUE(await(store->removeAll()));
    EXPECT_EQ(files().size(), before.size() - 1);
    writeFile(listed[0].file, ""); // mended or not, it is looked at again
    fs::remove(listed[0].file);
    ASSERT_TRUE(await(store->refresh()).value());
    EXPECT_EQ(await(store->unreadable()).value().size(), damaged.size() - 1);
}

TEST_F(HistoryStoreTest, AnIndexThatIsMissingDamagedOrOfAnotherHistoryIsMadeAnew)
{
    {
        auto store = open();
        for (int i = 0; i < 300; ++i)
            keep(*store, dictation("number " + std::to_string(i), kNoon + i * 1s));
        ASSERT_TRUE(await(store->refresh()));
    }
    const auto index = m_places.indexFile;
    const auto overwrite = [&](std::size_t from, const std::string& bytes) {
        std::fstream file(index, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(from));
        file << bytes;
    };
    const std::vector<std::pair<const char*, std::function<void()>>> faults = {
        {"missing", [&] { fs::remove(index); }},
        {"empty", [&] { writeFile(index, ""); }},
        {"no database", [&] { writeFile(index, std::string(5000, 'x')); }},
        {"truncated", [&] { fs::resize_file(index, fs::file_size(index) / 2); }},
        {"overwritten", [&] { overwrite(4096, std::string(fs::file_size(index) - 4096, '\x5a')); }},
        {"a folder", [&] { fs::remove(index), fs::create_directories(index / "x"); }},
        {"in no folder", [&] { fs::remove_all(index.parent_path()), writeFile(index.parent_path(), ""); }},
    };
    for (const auto& [name, damage] : faults) {
        fs::remove(index.string() + "-wal");
        damage();
        auto store = open();
        HistoryFilter filter;
        filter.searchQuery = "NUMBER 29";
        static_cast<void>(page(*store, filter)); // whatever it yields, it notices
        EXPECT_TRUE(store->needsRefresh()) << name;
        ASSERT_TRUE(await(store->refresh())) << name;
        EXPECT_FALSE(store->needsRefresh()) << name;
        EXPECT_EQ(page(*store, filter).size(), 11U) << name;
        EXPECT_EQ(page(*store).size(), 300U) << name;
        const auto last = dictation("new");
        keep(*store, last);
        EXPECT_EQ(search(*store, "new").size(), 1U) << name;
        ASSERT_TRUE(await(store->remove({last.id}))) << name;
    }

    fs::remove(index.parent_path());
    {
        auto store = open();
        ASSERT_TRUE(await(store->refresh()));
    }
    m_places.rootURL = m_folder / "Other";
    auto other = open();
    ASSERT_TRUE(await(other->refresh()));
    EXPECT_TRUE(page(*other).empty());
}

TEST_F(HistoryStoreTest, TheHistoryStaysUsableWhileItsIndexIsMade)
{
    for (int i = 0; i < 400; ++i) {
        const auto entry = dictation("old " + std::to_string(i), kNoon - i * 1h);
        writeByHand(HistoryFolder::pathFor(entry), entry);
    }
    auto store = open();
    std::vector<double> progress;
    const auto watched = store->indexingProgress().subscribe([&](const auto& part) {
        if (part)
            progress.push_back(*part);
    });
    std::optional<Result<bool, HistoryError>> refreshed;
    TaskScope scope;
    scope.start(storeResult(store->refresh(), refreshed));
    const auto added = dictation("new");
    keep(*store, added);
    EXPECT_EQ(await(store->entry(added.id)).value(), added);
    ASSERT_TRUE(runUntil([&] { return scope.isEmpty(); }));
    EXPECT_EQ(page(*store).size(), 401U);
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), 1.0);
    EXPECT_FALSE(store->indexingProgress().get());
}

} // namespace
