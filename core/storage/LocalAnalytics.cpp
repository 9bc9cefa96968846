#include "core/storage/LocalAnalytics.h"

#include <string>

namespace vocalith {

void LocalAnalytics::event(std::string_view name)
{
    m_logger.info("Event: " + std::string(name));
}

} // namespace vocalith
