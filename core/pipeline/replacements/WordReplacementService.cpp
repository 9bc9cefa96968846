#include "core/pipeline/replacements/WordReplacementService.h"

#include "core/pipeline/replacements/WordReplacementRules.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "core/storage/settings/rules/SettingWords.h"
#include "ports/Notices.h"

#include <fmt/format.h>

namespace vocalith {

WordReplacementService::WordReplacementService(PersistentAppStorage& appStorage, Notices& notices, Logger logger)
    : m_appStorage(appStorage), m_notices(notices), m_logger(std::move(logger))
{}

std::vector<WordReplacement> WordReplacementService::replacements(WordReplacementTiming timing) const
{
    auto list = m_appStorage.wordReplacements.get();
    if (timing != WordReplacementTiming::both)
        std::erase_if(list, [&](const auto& entry) {
            return entry.timing != timing && entry.timing != WordReplacementTiming::both;
        });
    return list;
}

Task<ReplacementResult> WordReplacementService::apply(std::vector<WordReplacement> list, std::string text)
{
    if (list.empty())
        co_return ReplacementResult{std::move(text), {}};
    auto work = [list = std::move(list), text, logger = m_logger](const StopToken& stop) {
        return applyReplacements(list, text, stop, logger);
    };
    auto applied = co_await m_worker.run(std::move(work));
    if (!applied)
        co_return ReplacementResult{std::move(text), {}};
    for (const auto& [original, matches, problem] : applied->givenUp)
        m_notices.show(
            fmt::format("The word replacement {} was left out: {}. \"vocalith replacements edit\" changes it.",
                        inQuotes(original), problem));
    co_return std::move(applied->result);
}

} // namespace vocalith
