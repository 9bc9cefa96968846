#include "tests/app/cli/history/HistoryFixture.h"

#include <algorithm>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Digits = std::vector<std::string>;

class HistoryList : public HistoryProgram {
protected:
    void writeOneOfEach()
    {
        write(success("AAAA", "2026-01-05T10:00:00Z", "Überraschung im Café"));
        write(file("BBBB", "2026-01-04T10:00:00Z", "A lecture"));
        write(journal("CCCC", "2026-01-03T10:00:00Z", "Dear diary"));
        write(failed("DDDD", "2026-01-02T10:00:00Z", home / "none.wav"));
        write(rewritten(success("EEEE", "2026-01-01T10:00:00Z", "hello"), "Polite Mail", "Dear Sir"));
    }
};

TEST_F(HistoryList, ThePrintedCommandsLeadThroughAllPages)
{
    const Digits newestFirst = {"A007", "A006", "A005", "A004", "A003", "A002", "A001", "A000"};
    for (int i = 0; i < 8; ++i) // some of one instant
        write(success(newestFirst[7 - static_cast<std::size_t>(i)],
                      "2026-01-0" + std::to_string(1 + i / 3) + "T10:00:00Z", "it's " + std::to_string(i)));
    for (const bool oldestFirst : {false, true}) {
        std::vector<std::string> arguments = {"search", "it's", "--limit", "3", "--only", "dictation"};
        if (oldestFirst)
            arguments.emplace_back("--oldest-first");
        Digits seen;
        for (int page = 0; page < 3; ++page) {
            for (const auto& digits : listed(arguments))
                seen.push_back(digits);
            const auto hint = run(arguments).err;
            const auto last = hint.find("--before ");
            ASSERT_EQ(last == std::string::npos, page == 2) << hint;
            if (page == 2)
                break;
            EXPECT_TRUE(has(hint, "history search 'it'\\''s' --limit 3"));
            EXPECT_EQ(hint.find("--oldest-first") != std::string::npos, oldestFirst);
            if (page == 0)
                arguments.insert(arguments.end(), {"--before", ""});
            arguments.back() = hint.substr(last + 9, 36);
        }
        auto sorted = seen;
        std::sort(sorted.begin(), sorted.end());
        auto all = newestFirst;
        std::sort(all.begin(), all.end());
        EXPECT_EQ(sorted, all);
        EXPECT_EQ(seen.front().back() >= '6', !oldestFirst);
    }
}

TEST_F(HistoryList, ShowsWhatTheFiltersLetThrough)
{
    writeOneOfEach();
    struct Case {
        std::vector<std::string> arguments;
        Digits digits;
    };
    const std::vector<Case> cases = {
        {{"list"}, {"AAAA", "BBBB", "CCCC", "DDDD", "EEEE"}},
        {{"list", "--limit", "2"}, {"AAAA", "BBBB"}},
        {{"list", "--only", "dictation"}, {"AAAA", "DDDD", "EEEE"}},
        {{"list", "--only", "files"}, {"BBBB"}},
        {{"list", "--only", "journal"}, {"CCCC"}},
        {{"list", "--prompt", "polite mail"}, {"EEEE"}},
        {{"search", "UBERRASCHUNG", "im", "cafe"}, {"AAAA"}},
        {{"search", "dear"}, {"CCCC", "EEEE"}},
        {{"search", "dear", "--oldest-first"}, {"EEEE", "CCCC"}},
        {{"search", "dear", "--before", "cccc"}, {"EEEE"}},
        {{"search", "interrupted"}, {"DDDD"}},
        {{"search", "nothing like it"}, {}},
    };
    for (const auto& [arguments, digits] : cases)
        EXPECT_EQ(listed(arguments), digits) << arguments.back();
    std::filesystem::remove_all(home / "History" / "2026-01-05"); // by hand
    EXPECT_EQ(listed({"list"}).size(), 4u);
    EXPECT_EQ(run({"list", "--prompt", "rude mail"}).code, 1);
}

TEST_F(HistoryList, IsReadableAndHarmless)
{
    writeOneOfEach();
    write(success("FFFF", "2026-02-01T10:00:00Z",
                  "title\x1b]0;gotcha\x07 and \xC2\x9B"
                  "2J\r\nsecond\tline"));
    const auto list = run({"list"});
    EXPECT_TRUE(has(list.out, "FFFF0000  2026-02-01 10:00  dictation     0:05  title]0;gotcha and 2J second line\n"));
    EXPECT_TRUE(has(list.out, "DDDD0000  2026-01-02 10:00  dictation     0:05  Failed: Recording interrupted\n"));
    EXPECT_TRUE(has(list.out, "dictation     0:05  Dear Sir\n")) << "the text that the user got";
    for (const auto& text : {list.out, run({"show", "FFFF"}).out}) {
        for (const char c : text)
            EXPECT_TRUE(c == '\n' || c == '\t' || static_cast<unsigned char>(c) >= ' ') << text;
        EXPECT_EQ(text.find("\xC2\x9B"), std::string::npos);
    }
}

TEST_F(HistoryList, OnATerminalLinesFitAndStoredFormsAreHarmless)
{
    write(success("AAAA", "2026-02-01T10:00:00Z", "数学数学数学数学数学数学 \xC2\x9B 数学数学数学"));
    write(failed("BBBB", "2026-01-31T10:00:00Z", home / "none.wav"));
    ProgramOnTerminal list(home.path(), {"history", "list"});
    EXPECT_EQ(list.wait(), 0);
    EXPECT_TRUE(has(list.screen(), "  数学数学数…\r\n")) << "12 columns are left, and half a character does not fit";
    EXPECT_TRUE(has(list.screen(), "\x1b[31mFailed: Rec…\x1b[0m"));
    ProgramOnTerminal json(home.path(), {"history", "show", "last", "--json"});
    EXPECT_EQ(json.wait(), 0);
    EXPECT_TRUE(has(json.screen(), "\"id\": \"AAAA0000"));
    EXPECT_EQ(json.screen().find("\xC2\x9B"), std::string::npos);
}

TEST_F(HistoryList, NamesWhatItCannotReadAndWhatItCannotWrite)
{
    writeOneOfEach();
    const auto broken = home / "History" / "2026-01-05" / (id("ABCD").toString() + ".json");
    writeFile(broken, "{\"id\": ");
    const auto ended = run({"list", "--json"});
    EXPECT_EQ(ended.code, 0);
    EXPECT_TRUE(has(ended.err, "Cannot be read: \"" + broken.string() + "\": "));
    EXPECT_EQ(listed({"list"}).size(), 5u);
    EXPECT_EQ(run({"show", id("ABCD").toString()}).code, 1);

    Surroundings full;
    full.output = "/dev/full";
    const auto unwritten = run({"list"}, full);
    EXPECT_EQ(unwritten.code, 1);
    EXPECT_TRUE(has(unwritten.err, "Standard output could not be written: No space left on device."));
}

TEST_F(HistoryList, EntriesAreNamedByTheBeginningOfTheirIdentifier)
{
    writeOneOfEach();
    auto twin = success("AAAA", "2026-01-06T10:00:00Z", "Twin");
    twin.id.bytes.back() = 1;
    write(twin);
    struct Case {
        std::string name;
        int code;
        std::string out;
        std::string err;
    };
    const std::vector<Case> cases = {
        {"cccc", 0, "Dear diary", ""},
        {id("AAAA").toString(), 0, "Überraschung im Café", ""},
        {"last", 0, "Twin", ""},
        {"EEEE0000-00", 0, "Polite Mail", ""},
        {"ccc", 2, "", "\"ccc\" names no entry"},
        {"c%c_", 2, "", "names no entry"},
        {"1234", 1, "", "There is no entry \"1234\""},
        {id("1234").toString(), 1, "", "There is no entry \"12340000"},
        {"aaaa", 1, "", id("AAAA").toString() + "  2026-01-05 10:00  Überraschung"},
        {"aaaa", 1, "", twin.id.toString() + "  2026-01-06 10:00  Twin"},
    };
    for (const auto& testCase : cases) {
        const auto ended = run({"show", testCase.name});
        EXPECT_EQ(ended.code, testCase.code) << testCase.name;
        EXPECT_TRUE(has(ended.out, testCase.out));
        EXPECT_TRUE(has(ended.err, testCase.err));
        EXPECT_EQ(ended.out.empty(), testCase.code != 0);
    }
}

TEST_F(HistoryList, AnEmptyOrMissingHistoryIsASentence)
{
    EXPECT_EQ(run({"list"}).err, "The history is empty.\n");
    EXPECT_EQ(run({"search", "words"}).err, "There are no such entries.\n");
    EXPECT_EQ(listed({"list"}), Digits());
    EXPECT_TRUE(has(run({"show", "last"}).err, "The history is empty."));
    std::filesystem::remove_all(home / "History");
    writeFile(home / "History", "in the way");
    const std::vector<std::vector<std::string>> commands = {{"list"}, {"show", "last"}, {"show", "AAAA"}, {"cleanup"}};
    for (const auto& arguments : commands) {
        const auto ended = run(arguments);
        EXPECT_EQ(ended.code, 1);
        EXPECT_TRUE(has(ended.err, "Error: The history cannot be reached: ")) << arguments.front();
    }
}

} // namespace
