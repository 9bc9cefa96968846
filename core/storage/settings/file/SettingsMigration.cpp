#include "core/storage/settings/file/SettingsMigration.h"

#include "models/AIPrompt.h"
#include "models/WordReplacement.h"

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

/// One step leads from the layout with its index to the next one.
using Step = void (*)(Json& entries);

void addMissing(Json& object, const char* key, Json value)
{
    if (object.is_object() && !object.contains(key))
        object[key] = std::move(value);
}

template <class Action>
void forEntry(Json& entries, const char* key, Action action)
{
    if (const auto entry = entries.find(key); entry != entries.end())
        action(*entry);
}

template <class Action>
void forElements(Json& entries, const char* key, Action action)
{
    forEntry(entries, key, [&action](Json& list) {
        if (list.is_array())
            std::for_each(list.begin(), list.end(), action);
    });
}

/// "largeV3" was all that was stored of a model, or stood in a record with its kind; without it none was chosen.
void identifyModel(Json& model)
{
    if (model.is_object() && model.contains("modelType"))
        model = model.value("modelId", Json());
    if (!model.is_string())
        return;
    const auto name = model.get<std::string>();
    const auto known = predefinedModelID(name);
    model = toJson(known ? TranscriptionModelID(*known) : TranscriptionModelID(name));
}

void completeShortcut(Json& shortcut)
{
    const KeyboardShortcut unset;
    addMissing(shortcut, "visionEnabled", toJson(unset.visionEnabled));
    addMissing(shortcut, "activationMode", toJson(unset.activationMode));
}

void renewPrompt(Json& prompt)
{
    if (!prompt.is_object())
        return;
    forEntry(prompt, "shortcut", completeShortcut);
    const auto script = prompt.find("legacyBashScript");
    if (script == prompt.end())
        return;
    const auto read = fromJson<AIPrompt>(prompt);
    if (!read)
        return; // it is reported when it is read, and stays as it is
    prompt.erase(script);
    prompt["preAIPromptScript"] = read->preAIPromptScript;
    prompt["postAIPromptScript"] = read->postAIPromptScript;
}

void completeWordReplacement(Json& replacement)
{
    const WordReplacement unset;
    addMissing(replacement, "isRegex", toJson(unset.isRegex));
    addMissing(replacement, "timing", toJson(unset.timing));
}

/// The identifier was all that was stored of a microphone.
void nameMicrophone(Json& microphone)
{
    if (microphone.is_string())
        microphone = Json{{"uid", microphone}, {"name", microphone}};
}

void toVersion1(Json& entries)
{
    for (const auto* key : {"transcriptionModelID", "fileTranscriptionVoiceModelID"})
        forEntry(entries, key, identifyModel);
    forEntry(entries, "voiceJournalShortcut", completeShortcut);
    forElements(entries, "additionalShortcuts", completeShortcut);
    forEntry(entries, "mainPrompt", renewPrompt);
    forElements(entries, "aiPresets", renewPrompt);
    forElements(entries, "wordReplacements", completeWordReplacement);
    forElements(entries, "microphonePriorityList", nameMicrophone);
}

constexpr std::array<Step, kSettingsVersion> kSteps{&toVersion1};

/// Files that say nothing of their version come from before there was one; nonsense is no newer version either.
int versionOf(const Json& entries)
{
    const auto entry = entries.find(kSettingsVersionKey);
    if (entry == entries.end() || !entry->is_number_integer())
        return 0;
    return static_cast<int>(std::clamp<std::int64_t>(entry->get<std::int64_t>(), 0, kSettingsVersion));
}

} // namespace

bool migrateSettings(Json& entries)
{
    const int version = versionOf(entries);
    for (auto step = static_cast<std::size_t>(version); step < kSteps.size(); ++step)
        kSteps[step](entries);
    if (version < kSettingsVersion)
        entries[kSettingsVersionKey] = kSettingsVersion;
    return version < kSettingsVersion;
}

} // namespace vocalith
