#include "core/session/ConfigurationManager.h"

#include <algorithm>

namespace vocalith {

ConfigurationManager::ConfigurationManager(Loader loader, Logger logger)
    : m_loader(std::move(loader)), m_logger(std::move(logger))
{}

Result<void, std::string> ConfigurationManager::load()
{
    auto loaded = m_loader();
    if (!loaded) {
        m_logger.error("Failed to load config: " + loaded.error());
        return failure(std::move(loaded.error()));
    }
    m_configuration = std::move(*loaded);
    return {};
}

std::optional<OverlayActivationModeWithShortcutIndex> ConfigurationManager::activation(const Uuid& shortcutID) const
{
    if (!m_configuration)
        return std::nullopt;
    const auto& shortcuts = m_configuration->shortcuts;
    const auto found = std::find_if(shortcuts.begin(), shortcuts.end(),
                                    [&](const auto& shortcut) { return shortcut.id == shortcutID; });
    if (found == shortcuts.end())
        return std::nullopt;
    return found->activation;
}

} // namespace vocalith
