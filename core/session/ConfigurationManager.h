#pragma once

#include "base/Log.h"
#include "base/Result.h"
#include "core/session/DictationConfiguration.h"

#include <functional>
#include <optional>
#include <string>

namespace vocalith {

/// Holds the configuration of dictations once it could be loaded. Lives as long as the program; main thread.
class ConfigurationManager {
public:
    using Loader = std::function<Result<DictationConfiguration, std::string>()>;

    ConfigurationManager(Loader loader, Logger logger);

    /// Loads afresh. A failure is logged, returned as a sentence for people, and leaves what was loaded before.
    Result<void, std::string> load();
    const std::optional<DictationConfiguration>& configuration() const { return m_configuration; }
    /// The mode of a configured shortcut; none for an unknown one and while nothing is loaded.
    std::optional<OverlayActivationModeWithShortcutIndex> activation(const Uuid& shortcutID) const;

private:
    const Loader m_loader;
    const Logger m_logger;
    std::optional<DictationConfiguration> m_configuration;
};

} // namespace vocalith
