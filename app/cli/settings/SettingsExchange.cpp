#include "app/cli/settings/SettingsExchange.h"

#include "app/cli/settings/SettingSecrets.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "core/storage/settings/file/SettingsMigration.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace vocalith {
namespace {

void examineKnown(AnySetting& setting, const Json& value, SettingsToImport& found, std::vector<std::string>& faults)
{
    const auto& key = setting.key();
    if (key == kSettingsVersionKey)
        return;
    if (!setting.isChoice()) {
        found.notices.push_back(fmt::format("{} is kept by the program itself and is not taken over.", key));
        return;
    }
    Json wanted = value;
    if (setting.holdsSecrets()) {
        auto completed = withCurrentKeys(value, setting.json());
        if (!completed) {
            faults.push_back(fmt::format("{}: {}", key, completed.error()));
            return;
        }
        wanted = std::move(completed->providers);
        if (!completed->keyless.empty())
            found.notices.push_back(fmt::format("{}: no API key came along for {}. Add it before you use it.", key,
                                                fmt::join(completed->keyless, ", ")));
    }
    if (const auto checked = setting.check(wanted); !checked)
        faults.push_back(fmt::format("{}: {}", key, checked.error()));
    else
        found.known.emplace_back(&setting, std::move(wanted));
}

} // namespace

ExportedSettings exportSettings(const PersistentAppStorage& storage, bool showSecrets)
{
    ExportedSettings exported;
    exported.entries = Json{{kSettingsVersionKey, storage.settingsVersion.get().value_or(kSettingsVersion)}};
    for (const auto* setting : storage.settings()) {
        if (!storage.isStored(*setting) || !setting->isChoice())
            continue;
        Json value = setting->json();
        if (storage.isUnreadable(*setting)) {
            exported.notices.push_back(
                fmt::format("{} holds something that this version cannot read; that is left out.", setting->key()));
            if (!value.is_array() || value.empty())
                continue; // it would be the default, which nobody chose
        }
        const bool isHidden = setting->holdsSecrets() && !showSecrets;
        exported.entries[setting->key()] = isHidden ? withoutKeys(std::move(value)) : std::move(value);
    }
    const Json unknown = storage.unknownEntries();
    for (const auto& [key, value] : unknown.items()) {
        if (showSecrets)
            exported.entries[key] = value;
        else
            exported.notices.push_back(fmt::format("{} is unknown to this version and may hold secrets; it is left out "
                                                   "without --show-secrets.",
                                                   key));
    }
    return exported;
}

Result<SettingsToImport, std::vector<std::string>> examineImport(const PersistentAppStorage& storage,
                                                                 const std::string& text)
{
    auto entries = parseJson(text);
    if (!entries)
        return failure(std::vector{"That is no settings file: " + toString(entries.error()) + "."});
    if (!entries->is_object())
        return failure(std::vector<std::string>{"That is no settings file: it does not hold a JSON object."});
    migrateSettings(*entries);
    SettingsToImport found;
    std::vector<std::string> faults;
    for (const auto& [key, value] : entries->items()) {
        if (auto* setting = storage.find(key)) {
            examineKnown(*setting, value, found, faults);
        } else {
            found.unknown.emplace_back(key, value);
            found.notices.push_back(fmt::format("This version has no setting {}; it is kept for one that has.", key));
        }
    }
    if (!faults.empty())
        return failure(std::move(faults));
    return found;
}

void importSettings(PersistentAppStorage& storage, const SettingsToImport& settings)
{
    const auto batch = storage.batch();
    for (const auto& [setting, value] : settings.known)
        setting->assign(value);
    for (const auto& [key, value] : settings.unknown)
        storage.storeUnknownEntry(key, value);
}

} // namespace vocalith
