#pragma once

#include "base/Log.h"
#include "ports/Analytics.h"

namespace vocalith {

/// Counts events where the user can see them and nobody else: one line of the log each. Nothing leaves the machine.
class LocalAnalytics final : public Analytics {
public:
    explicit LocalAnalytics(Logger logger) : m_logger(std::move(logger)) {}

    void event(std::string_view name) override;

private:
    Logger m_logger;
};

} // namespace vocalith
