#include "app/cli/settings/SettingsCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/models/ModelReport.h"
#include "app/cli/settings/SettingSecrets.h"
#include "app/cli/settings/SettingsExchange.h"
#include "app/cli/settings/SettingsTable.h"
#include "app/cli/terminal/Terminal.h"
#include "app/cli/text/NearestWord.h"
#include "base/AtomicFile.h"
#include "base/Json.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "core/storage/settings/rules/SettingWords.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

constexpr int kIndent = 2;

/// A file's text; "-" is standard input.
Result<std::string, FileError> textOf(const fs::path& file)
{
    return file == "-" ? readStandardInput() : readWholeFile(file);
}

/// The last line break comes from the shell or an editor and belongs to no value.
std::string withoutLastBreak(std::string text)
{
    if (text.ends_with('\n'))
        text.pop_back();
    if (text.ends_with('\r'))
        text.pop_back();
    return text;
}

std::vector<std::string> keysOf(const PersistentAppStorage& storage)
{
    std::vector<std::string> keys;
    for (const auto* setting : storage.settings())
        keys.push_back(setting->key());
    return keys;
}

std::string meant(const std::string& word)
{
    return word.empty() ? "" : fmt::format(" Did you mean {}?", word);
}

std::string lines(const std::vector<std::string>& words)
{
    std::string text;
    for (const auto& word : words)
        text += word + '\n';
    return text;
}

} // namespace

SettingsCommand::SettingsCommand(PersistentAppStorage& storage, const ModelReport& models, Terminal& terminal)
    : m_storage(storage), m_models(models), m_terminal(terminal)
{
    m_storage.leaveFailedWrites(); // `stored` says what a one-off command has to say of them
}

int SettingsCommand::run(const SettingsOptions& options)
{
    return std::visit([this](const auto& chosen) { return run(chosen); }, options);
}

int SettingsCommand::run(const SettingsList& options)
{
    if (options.keysOnly)
        return print(lines(keysOf(m_storage)));
    if (!options.wordsOf.empty()) {
        const auto* setting = find(options.wordsOf);
        return setting ? print(lines(setting->words())) : exitUsage;
    }
    const auto rows = settingRows(m_storage, options.showSecrets);
    return print(options.json ? dumpJson(settingsJson(rows), kIndent) + '\n' : settingsTable(rows));
}

int SettingsCommand::run(const SettingsGet& options)
{
    const auto* setting = find(options.key);
    if (!setting)
        return exitUsage;
    if (m_storage.isUnreadable(*setting))
        m_terminal.line(fmt::format("{} holds something that this version cannot read.", setting->key()));
    Json value = setting->json();
    if (setting->holdsSecrets() && !options.showSecrets)
        value = withMaskedKeys(std::move(value));
    const std::string text = setting->text();
    const bool hasWord = !value.is_structured() || text.find_first_of("[{") != 0;
    return print((hasWord && !options.json ? text : dumpJson(value, kIndent)) + '\n');
}

int SettingsCommand::run(const SettingsSet& options)
{
    auto* setting = findChoice(options.key);
    if (!setting)
        return exitUsage;
    std::string text = options.value;
    if (text == "-") {
        auto read = textOf("-");
        if (!read)
            return complain("Standard input cannot be read: " + read.error().reason.message() + ".", exitFailure);
        text = withoutLastBreak(std::move(*read));
    }
    if (const auto changed = change(*setting, std::move(text)); !changed)
        return complain(fmt::format("{}: {}", setting->key(), changed.error()), exitUsage);
    return stored();
}

Result<void, std::string> SettingsCommand::change(AnySetting& setting, std::string text)
{
    if (&setting == &m_storage.selectedDictationModelID ||
        &setting == &m_storage.selectedFileTranscriptionVoiceModelID) {
        auto known = model(text);
        if (!known)
            return failure(known.error());
        text = std::move(*known);
    }
    auto value = setting.parse(text);
    if (!value)
        return failure(value.error() + meant(nearestWord(text, setting.words())));
    std::vector<std::string> keyless;
    if (setting.holdsSecrets()) {
        auto completed = withCurrentKeys(std::move(*value), setting.json());
        if (!completed)
            return failure(completed.error());
        *value = std::move(completed->providers);
        keyless = std::move(completed->keyless);
    }
    if (auto checked = setting.check(*value); !checked)
        return checked;
    for (const auto& kind : keyless)
        m_terminal.line(fmt::format("{} has no API key yet.", kind));
    setting.assign(*value);
    return {};
}

/// A misspelt model would be noticed only when somebody has spoken.
Result<std::string, std::string> SettingsCommand::model(const std::string& text) const
{
    const auto wanted = toString(m_models.named(text));
    std::vector<std::string> ids{"none"};
    for (const auto& row : m_models.rows())
        ids.push_back(row.id);
    if (std::find(ids.begin(), ids.end(), wanted) != ids.end())
        return wanted;
    return failure(fmt::format("There is no voice model {}.{} \"vocalith models list\" shows which there are.",
                               inQuotes(text), meant(nearestWord(text, ids))));
}

int SettingsCommand::run(const SettingsReset& options)
{
    std::vector<AnySetting*> chosen;
    for (const auto& key : options.keys) {
        auto* setting = findChoice(key);
        if (!setting)
            return exitUsage; // and nothing is reset
        chosen.push_back(setting);
    }
    if (options.all)
        std::copy_if(m_storage.settings().begin(), m_storage.settings().end(), std::back_inserter(chosen),
                     [](const auto* setting) { return setting->isChoice(); });
    else if (chosen.empty())
        return complain("Say which settings to reset, or --all for all of them.", exitUsage);
    {
        const auto batch = m_storage.batch();
        for (auto* setting : chosen)
            setting->reset();
    }
    return stored();
}

int SettingsCommand::run(const SettingsExport& options)
{
    if (m_storage.whyNotRead())
        return complain("Nothing was exported.", exitFailure); // why is said already
    const auto exported = exportSettings(m_storage, options.showSecrets);
    const std::string text = dumpJson(exported.entries, kIndent) + '\n';
    for (const auto& notice : exported.notices)
        m_terminal.line(notice);
    if (options.file.empty() || options.file == "-")
        return print(text);
    std::error_code ignored;
    if (fs::exists(options.file, ignored) && !fs::is_regular_file(options.file, ignored))
        return complain(fmt::format("\"{}\" is not a file that can be replaced.", options.file.string()), exitUsage);
    if (fs::exists(options.file, ignored) && !options.force)
        return complain(fmt::format("\"{}\" exists. Add --force to replace it.", options.file.string()), exitUsage);
    if (const auto written = writeFileAtomically(options.file, text); !written)
        return complain("The settings could not be exported: " + toString(written.error()) + ".", exitFailure);
    return exitSuccess;
}

int SettingsCommand::run(const SettingsImport& options)
{
    const auto text = textOf(options.file);
    if (!text)
        return complain("The file cannot be read: " + toString(text.error()) + ".", exitFailure);
    const auto found = examineImport(m_storage, *text);
    if (!found) {
        for (const auto& fault : found.error())
            complain(fault, exitFailure);
        return complain("Nothing was changed.", exitFailure);
    }
    for (const auto& notice : found->notices)
        m_terminal.line(notice);
    importSettings(m_storage, *found);
    const int exitCode = stored();
    if (exitCode == exitSuccess)
        m_terminal.line(fmt::format("Settings taken over: {}.", found->known.size() + found->unknown.size()));
    return exitCode;
}

int SettingsCommand::run(const SettingsPath&)
{
    return print(m_storage.file().string() + '\n');
}

AnySetting* SettingsCommand::find(const std::string& key)
{
    auto* setting = m_storage.find(key);
    if (!setting)
        complain(fmt::format("There is no setting {}.{} \"vocalith settings list\" shows which there are.",
                             inQuotes(key), meant(nearestWord(key, keysOf(m_storage)))),
                 exitUsage);
    return setting;
}

AnySetting* SettingsCommand::findChoice(const std::string& key)
{
    auto* setting = find(key);
    if (setting && !setting->isChoice()) {
        complain(fmt::format("{} is kept by the program itself and cannot be changed.", key), exitUsage);
        return nullptr;
    }
    return setting;
}

int SettingsCommand::print(const std::string& text)
{
    if (writeToStandardOutput(text) == 0)
        return exitSuccess;
    return complain("Standard output could not be written.", exitFailure);
}

int SettingsCommand::stored()
{
    const auto why = m_storage.whyNotStored();
    return why ? complain("The change could not be saved: " + *why + ".", exitFailure) : static_cast<int>(exitSuccess);
}

int SettingsCommand::complain(const std::string& text, int exitCode)
{
    m_terminal.line(m_terminal.coloured(Terminal::Colour::red, "Error: ") + text);
    return exitCode;
}

} // namespace vocalith
