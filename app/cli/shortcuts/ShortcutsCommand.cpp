#include "app/cli/shortcuts/ShortcutsCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/terminal/Terminal.h"
#include "app/cli/text/ColumnText.h"
#include "app/cli/text/NearestWord.h"
#include "base/CaseName.h"
#include "base/Text.h"
#include "core/session/shortcuts/ConfiguredShortcuts.h"
#include "core/session/shortcuts/KeyboardShortcutRecordingService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "models/KeyboardShortcutText.h"
#include "models/VirtualKeyCode.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {
namespace {

std::string padded(const std::string& text, std::size_t columns)
{
    return text + std::string(columns - std::min(columns, columnsOf(text)), ' ');
}

/// Presses the keys for the service that records them, which knows what does for a shortcut.
void press(KeyboardShortcutRecordingService& recorder, const KeyboardShortcut::Keys& keys)
{
    recorder.startRecording();
    if (keys.keyCode) {
        recorder.handleKeyEvent(*keys.keyCode, keys.rawFlags, true);
        return;
    }
    using namespace virtual_key_code;
    for (const int key : {control, option, shift, command, function}) {
        if ((keys.rawFlags & modifierFlag(key)) == 0)
            continue;
        recorder.handleKeyEvent(key, keys.rawFlags, true);
        recorder.handleKeyEvent(key, 0, false);
        return;
    }
}

/// Whether the service has taken the keys; it leaves the old ones where it has not.
bool hasTaken(const KeyboardShortcutRecordingService& recorder, const KeyboardShortcut::Keys& keys)
{
    const auto& shortcut = recorder.currentShortcut.get();
    return shortcut && shortcut->keys == comparable(keys);
}

} // namespace

int ShortcutsCommand::run(const ShortcutsOptions& options)
{
    return std::visit([this](const auto& chosen) { return run(chosen); }, options);
}

std::vector<ShortcutsCommand::Named> ShortcutsCommand::all() const
{
    std::vector<Named> found{{"main", m_appStorage.mainPrompt.get().shortcut}};
    for (const auto& prompt : m_appStorage.aiPrompts.get())
        found.push_back({prompt.name, prompt.shortcut});
    found.push_back({"journal", m_appStorage.voiceJournalShortcut.get()});
    return found;
}

Result<ShortcutsCommand::Named, std::string> ShortcutsCommand::find(const std::string& which) const
{
    std::vector<std::string> names;
    for (const auto& named : all()) {
        if (sameIgnoringCase(named.name, which))
            return named;
        names.push_back(named.name);
    }
    const auto near = nearestWord(which, names);
    return failure(fmt::format("There is no shortcut \"{}\".{} \"vocalith shortcuts\" lists them.", which,
                               near.empty() ? "" : fmt::format(" Did you mean \"{}\"?", near)));
}

int ShortcutsCommand::run(const ShortcutsListOptions&)
{
    std::size_t widest = 0;
    for (const auto& named : all())
        widest = std::max(widest, columnsOf(named.name));
    std::string lines;
    for (const auto& [name, shortcut] : all()) {
        const auto keys = areAssigned(shortcut.keys) ? toString(*shortcut.keys) : std::string("none");
        lines += fmt::format("{}  {:<20}  {}\n", padded(name, widest), keys, caseName(shortcut.activationMode));
    }
    return writeToStandardOutput(lines) == 0 ? exitSuccess : exitFailure;
}

int ShortcutsCommand::run(const ShortcutsSetOptions& options)
{
    const auto found = find(options.which);
    if (!found)
        return complain(found.error());
    if (options.keys.empty() && !options.mode)
        return complain("Say which keys, e.g.: vocalith shortcuts set " + options.which + " Ctrl+Alt+Space");
    if (!options.keys.empty()) {
        const auto keys = parseKeys(options.keys);
        if (!keys)
            return complain(
                fmt::format("\"{}\" are no keys. Write them like Ctrl+Alt+Space, Super+D or F9.", options.keys));
        KeyboardShortcutRecordingService recorder(found->shortcut.id, m_appStorage, false, Logger());
        press(recorder, *keys);
        if (recorder.recordingInProgress.get())
            return complain(recorder.errorMessage.get().value_or("These keys cannot be used."));
        if (!hasTaken(recorder, *keys)) // Escape ends the recording
            return complain(options.keys + " cannot be a shortcut. Choose other keys, like Ctrl+Alt+Space.");
        if (const auto warning = recorder.errorMessage.get())
            m_terminal.line(m_terminal.coloured(Terminal::Colour::yellow, "Notice: ") + *warning);
    }
    if (options.mode) {
        auto shortcut = find(options.which)->shortcut;
        shortcut.activationMode = *options.mode;
        storeShortcut(m_appStorage, shortcut);
    }
    return stored(found->name);
}

int ShortcutsCommand::run(const ShortcutsClearOptions& options)
{
    const auto found = find(options.which);
    if (!found)
        return complain(found.error());
    KeyboardShortcutRecordingService(found->shortcut.id, m_appStorage, false, Logger()).clear();
    return stored(found->name);
}

int ShortcutsCommand::stored(const std::string& name)
{
    if (const auto reason = m_appStorage.whyNotStored())
        return complain("The shortcut could not be kept: " + *reason);
    const auto shortcut = find(name)->shortcut;
    m_terminal.line(areAssigned(shortcut.keys)
                        ? fmt::format("{}: {} ({})", name, toString(*shortcut.keys), caseName(shortcut.activationMode))
                        : name + ": no keys");
    return exitSuccess;
}

int ShortcutsCommand::complain(const std::string& text)
{
    m_terminal.line(m_terminal.coloured(Terminal::Colour::red, "Error: ") + text);
    return exitFailure;
}

} // namespace vocalith
