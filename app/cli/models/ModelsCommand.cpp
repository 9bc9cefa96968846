#include "app/cli/models/ModelsCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/terminal/Terminal.h"
#include "base/Json.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {
namespace {

Json jsonRow(const ModelRow& row)
{
    return {{"id", row.id},       {"name", row.name},     {"family", row.family},    {"size", row.size},
            {"state", row.state}, {"ready", row.isReady}, {"default", row.isDefault}};
}

std::size_t widest(const std::vector<ModelRow>& rows, std::string ModelRow::*column)
{
    std::size_t width = 0;
    for (const auto& row : rows)
        width = std::max(width, (row.*column).size());
    return width;
}

std::string table(const std::vector<ModelRow>& rows)
{
    const auto id = widest(rows, &ModelRow::id);
    const auto name = widest(rows, &ModelRow::name);
    std::string text =
        fmt::format("  {:<{}}  {:<{}}  {:<8} {:<8} {}\n", "ID", id, "NAME", name, "FAMILY", "SIZE", "STATE");
    for (const auto& row : rows)
        text += fmt::format("{} {:<{}}  {:<{}}  {:<8} {:<8} {}\n", row.isDefault ? "*" : " ", row.id, id, row.name,
                            name, row.family, row.size, row.state);
    return text;
}

} // namespace

int listModels(const ModelsOptions& options, const std::vector<ModelRow>& rows, Terminal& terminal)
{
    std::vector<ModelRow> shown = rows;
    if (options.installedOnly)
        std::erase_if(shown, [](const auto& row) { return !row.isReady; });
    std::string text;
    if (options.json) {
        Json list = Json::array();
        for (const auto& row : shown)
            list.push_back(jsonRow(row));
        text = dumpJson(list, 2) + '\n';
    } else {
        text = table(shown) + "\n* serves when no model is named\n";
    }
    if (writeToStandardOutput(text) == 0)
        return exitSuccess;
    terminal.line("The list could not be written to standard output.");
    return exitFailure;
}

} // namespace vocalith
