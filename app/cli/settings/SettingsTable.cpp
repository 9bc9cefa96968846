#include "app/cli/settings/SettingsTable.h"

#include "app/cli/settings/SettingSecrets.h"
#include "app/cli/text/ColumnText.h"
#include "base/Text.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {
namespace {

constexpr std::size_t kWidestValue = 60;

/// On one line, and not too long for a table.
std::string shortened(const std::string& text)
{
    return text.empty() ? "\"\"" : fitted(cleanText(text, ' '), kWidestValue);
}

std::string noteOf(const SettingRow& row)
{
    if (!row.isKnown)
        return "unknown to this version";
    if (!row.isReadable)
        return "what is stored cannot be read in full";
    return row.isDefault ? "default" : "";
}

} // namespace

std::vector<SettingRow> settingRows(const PersistentAppStorage& storage, bool showSecrets)
{
    std::vector<SettingRow> rows;
    for (const auto* setting : storage.settings()) {
        SettingRow row{setting->key(), setting->text(), setting->json(), setting->description()};
        row.isDefault = row.value == setting->defaultJson();
        row.isReadable = !storage.isUnreadable(*setting);
        if (setting->holdsSecrets() && !showSecrets) {
            row.value = withMaskedKeys(row.value);
            row.text = dumpJson(row.value);
        }
        rows.push_back(std::move(row));
    }
    const Json unknown = storage.unknownEntries();
    for (const auto& [key, value] : unknown.items()) {
        if (showSecrets)
            rows.push_back({key, dumpJson(value), value, "", false, true, false});
        else
            rows.push_back({key, "(shown with --show-secrets)", nullptr, "", false, true, false});
    }
    return rows;
}

std::string settingsTable(const std::vector<SettingRow>& rows)
{
    std::size_t keyWidth = 0;
    std::size_t valueWidth = 0;
    for (const auto& row : rows) {
        keyWidth = std::max(keyWidth, columnsOf(row.key));
        valueWidth = std::max(valueWidth, columnsOf(shortened(row.text)));
    }
    std::string table;
    for (const auto& row : rows) {
        const auto value = shortened(row.text);
        const auto note = noteOf(row);
        const std::string gap(note.empty() ? 0 : valueWidth - columnsOf(value) + 2, ' ');
        table += fmt::format("{:<{}}  {}{}{}\n", row.key, keyWidth, value, gap, note);
    }
    return table;
}

Json settingsJson(const std::vector<SettingRow>& rows)
{
    Json list = Json::array();
    for (const auto& row : rows)
        list.push_back({{"key", row.key},
                        {"value", row.value},
                        {"isDefault", row.isDefault},
                        {"isReadable", row.isReadable},
                        {"isKnown", row.isKnown},
                        {"type", row.type}});
    return list;
}

} // namespace vocalith
