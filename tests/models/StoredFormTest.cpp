#include "base/Json.h"
#include "models/HistoryEntry.h"
#include "models/KeyboardCompanion.h"
#include "models/TranscriptionState.h"
#include "tests/support/Places.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <set>

using namespace vocalith;
using namespace vocalith::test;

namespace {

std::string golden(const std::string& name)
{
    return readFile(testData() / "models" / (name + ".json"));
}

template <class T>
T load(const std::string& name)
{
    const auto value = parseJson(golden(name)).and_then(&fromJson<T>);
    EXPECT_TRUE(value) << name << ": " << toString(value.error());
    return value.value_or(T{});
}

template <class T>
std::string saved(const T& value)
{
    return dumpJson(toJson(value), 2) + '\n';
}

const std::string kHistory[] = {"history-success", "history-failure", "history-journal", "history-file"};

TEST(StoredForm, EveryKindOfHistoryEntrySurvivesALoadAndSave)
{
    for (const auto& name : kHistory)
        EXPECT_EQ(saved(load<HistoryEntry>(name)), golden(name));
    EXPECT_EQ(saved(load<AIPrompt>("prompt")), golden("prompt"));
}

TEST(StoredForm, OlderFormsAreReadAndTheCurrentOneIsWritten)
{
    for (const std::string name : {"history-failure", "history-file"})
        EXPECT_EQ(saved(load<HistoryEntry>(name + "-legacy")), golden(name));
    EXPECT_EQ(saved(load<AIPrompt>("prompt-legacy")), golden("prompt"));
}

TEST(StoredForm, KeysLandInTheirOwnMembers)
{
    const auto entry = load<HistoryEntry>("history-success");
    const auto& success = std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(entry.content));
    EXPECT_EQ(filePath(success.result.audioFile.fileBookmark), "/home/ada/Voice notes/Grüße.wav");
    EXPECT_EQ(success.result.audioFile.fileSize, 112044);
    EXPECT_EQ(success.result.transcriptionData.modelId, TranscriptionModelID(PredefinedModelID::largeV3TurboQuantized));
    EXPECT_EQ(success.result.transcriptionData.segments[0].end, 1.5);
    EXPECT_FALSE(success.aiPrompt->shortcut.keys);
    EXPECT_EQ(success.aiPrompt->postAIPromptScript, "tr a-z A-Z");

    const auto& prompt = success.transform->prompt;
    EXPECT_EQ(prompt.mode, ActionMode::copyToClipboard);
    EXPECT_EQ(prompt.shortcut.keys->rawFlags, ~std::uint64_t{0});
    EXPECT_EQ(prompt.fallbackAIProviderID, Uuid::parse("00000000-0000-4000-8000-000000000002"));
    EXPECT_EQ(prompt.reasoningEffort, AIPrompt::ReasoningEffort::minimal);
    EXPECT_TRUE(prompt.includeClipboardContext && prompt.includeCursorContext);
    EXPECT_FALSE(prompt.includeFocusedAppContext || prompt.disableAgentSystemTools);
    EXPECT_EQ(prompt.preAIPromptScript, "cat");
    EXPECT_EQ(std::get<AITool::Response>(success.conversation->messages[2].content).toolCallId, "call_1");
}

/// A member of an object somewhere in a record.
struct Member {
    Json::json_pointer pointer;
    std::string path; ///< as errors name it
    std::string parent;
    std::string key;
};

void collectMembers(const Json& json, const Json::json_pointer& pointer, const std::string& path,
                    std::vector<Member>& members)
{
    if (json.is_array()) {
        for (std::size_t i = 0; i < json.size(); ++i)
            collectMembers(json[i], pointer / i, path + "[" + std::to_string(i) + "]", members);
    } else if (json.is_object()) {
        for (const auto& [key, value] : json.items()) {
            std::string memberPath = path;
            if (!path.empty())
                memberPath += '.';
            memberPath += key;
            const Member member{pointer / key, memberPath, path, key};
            members.push_back(member);
            collectMembers(value, member.pointer, member.path, members);
        }
    }
}

std::vector<Member> membersOf(const Json& json)
{
    std::vector<Member> members;
    collectMembers(json, Json::json_pointer(), "", members);
    return members;
}

const std::set<std::string> kOptional = {
    "speakerId",
    "aiPrompt",
    "transform",
    "conversation",
    "appBundleIdentifier",
    "aiProviderID",
    "fallbackAIProviderID",
    "temperature",
    "keys",
    "keyCode",
    "items",
    "transcriptionModelID",
};
const std::set<std::string> kCases = {"dictation",         "success",   "failure",    "voiceJournal",
                                      "fileTranscription", "completed", "predefined", "custom"};

/// The names of the parameters in the golden tool are the caller's own, not keys of a record.
bool isOptional(const Member& member)
{
    return kOptional.contains(member.key) || member.parent.ends_with(".properties");
}

TEST(StoredForm, OnlyOptionalKeysMayBeMissingAndTheErrorNamesTheKey)
{
    for (const auto& name : kHistory) {
        const auto whole = parseJson(golden(name)).value();
        for (const auto& member : membersOf(whole)) {
            auto broken = whole;
            broken.at(member.pointer.parent_pointer()).erase(member.key);
            const auto entry = fromJson<HistoryEntry>(broken);
            ASSERT_EQ(entry.has_value(), isOptional(member)) << name << ": " << member.path;
            if (!entry) {
                EXPECT_EQ(entry.error().path, kCases.contains(member.key) ? member.parent : member.path) << name;
            }
        }
    }
}

TEST(StoredForm, AValueOfAnotherTypeIsRefusedByItsPath)
{
    for (const auto& name : kHistory) {
        const auto whole = parseJson(golden(name)).value();
        for (const auto& member : membersOf(whole)) {
            auto broken = whole;
            auto& value = broken.at(member.pointer);
            value = value.is_boolean() ? Json("true") : Json(true);
            const auto entry = fromJson<HistoryEntry>(broken);
            ASSERT_FALSE(entry) << name << ": " << member.path;
            EXPECT_EQ(entry.error().path, member.path) << name;
        }
    }
}

TEST(StoredForm, AnOlderProjectIsReadWholeOrNotAtAll)
{
    const auto whole = parseJson(golden("history-file-legacy")).value().at("content").at("fileTranscription").at("_0");
    ASSERT_TRUE(fromJson<FileTranscriptionProject>(whole));
    for (const std::string key : {"id", "name", "sizeInBytes", "fileType", "state"}) {
        auto broken = whole;
        broken.erase(key);
        const auto project = fromJson<FileTranscriptionProject>(broken);
        ASSERT_FALSE(project) << key;
        EXPECT_EQ(project.error(), (JsonError{key, "missing"}));
    }
    auto unmeasured = whole;
    unmeasured.erase("duration");
    unmeasured["state"] = Json::parse(R"({"extractingAudio": {"progress": 0.25}})");
    const auto project = fromJson<FileTranscriptionProject>(unmeasured);
    ASSERT_TRUE(project) << toString(project.error());
    EXPECT_EQ(project->audioFile.duration, 0);
    EXPECT_EQ(project->state,
              FileTranscriptionProject::TranscriptionState(FileTranscriptionProject::ExtractingAudio{0.25}));
}

TEST(StoredForm, AnOlderScriptNeverReplacesANewerOne)
{
    const struct {
        std::string_view pre, post, legacy, expectedPre, expectedPost;
    } cases[] = {
        {R"("")", R"("")", R"("old")", "old", ""},         {R"("pre")", R"("")", R"("old")", "pre", "old"},
        {R"("")", R"("post")", R"("old")", "old", "post"}, {R"("pre")", R"("post")", R"("old")", "pre", "post"},
        {R"("pre")", R"("")", R"("")", "pre", ""},         {R"("")", R"("")", "null", "", ""},
    };
    for (const auto& [pre, post, legacy, expectedPre, expectedPost] : cases) {
        auto stored = parseJson(golden("prompt")).value();
        stored["preAIPromptScript"] = parseJson(pre).value();
        stored["postAIPromptScript"] = parseJson(post).value();
        stored["legacyBashScript"] = parseJson(legacy).value();
        const auto prompt = fromJson<AIPrompt>(stored);
        ASSERT_TRUE(prompt) << toString(prompt.error());
        EXPECT_EQ(prompt->preAIPromptScript, expectedPre);
        EXPECT_EQ(prompt->postAIPromptScript, expectedPost);
    }
    auto stored = parseJson(golden("prompt")).value();
    stored["legacyBashScript"] = 5;
    EXPECT_EQ(fromJson<AIPrompt>(stored).error().path, "legacyBashScript");
    stored["legacyBashScript"] = "old";
    stored.erase("name");
    EXPECT_EQ(fromJson<AIPrompt>(stored).error().path, "name");
}

TEST(StoredForm, ABookmarkWithBothFormsIsTheCurrentOne)
{
    const auto bookmark = parseJson(R"({"path": "/old", "url": "file:///new", "bookmarkData": "", "createdAt": 0})")
                              .and_then(&fromJson<FileBookmark>);
    ASSERT_TRUE(bookmark);
    EXPECT_EQ(filePath(*bookmark), "/new");
}

TEST(StoredForm, SmallRecords)
{
    EXPECT_EQ(dumpJson(toJson(KeyboardSessionState::inactive)), R"({"inactive":{}})");
    EXPECT_EQ(dumpJson(toJson(KeyboardRecordingState::deactivated)), R"({"deactivated":{}})");
    EXPECT_EQ(fromJson<KeyboardSessionState>(Json::parse(R"({"active":{}})")), KeyboardSessionState::active);
    EXPECT_FALSE(fromJson<KeyboardSessionState>(Json("active")));
    EXPECT_EQ(dumpJson(toJson(KeyboardTranscription{"done"})), R"({"final":"done"})");

    const TranscriptionState state{"so far", std::nullopt, true, TranscriptionState::SpeechState::started};
    EXPECT_EQ(dumpJson(toJson(state)), R"({"final":"so far","isLoading":true,"speechState":"started"})");
    EXPECT_EQ(fromJson<TranscriptionState>(toJson(state)), state);

    const FileTranscriptionProject::TranscriptionState idle, failed = FileTranscriptionProject::Failed{"No audio"};
    EXPECT_EQ(dumpJson(toJson(idle)), R"({"idle":{}})");
    EXPECT_EQ(dumpJson(toJson(failed)), R"({"failed":{"_0":"No audio"}})");
}

} // namespace
