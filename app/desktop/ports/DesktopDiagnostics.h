#pragma once

#include "app/desktop/ports/DesktopPorts.h"

namespace vocalith {

class PersistentAppStorage;

/// What this desktop session offers for shortcuts, insertion and the overlay, decided as the resident program decides.
class DesktopDiagnostics final : public Diagnostics {
public:
    DesktopDiagnostics(EnvironmentLookup environment, const AppPaths& paths, const PersistentAppStorage& storage,
                       Clock& clock, const LogService& log)
        : m_environment(std::move(environment)), m_paths(paths), m_storage(storage), m_clock(clock), m_log(log)
    {}

    Task<std::vector<Finding>> examine() override;

private:
    void addServices(std::vector<Finding>& findings, const DesktopPorts& ports, bool isAccessible) const;

    const EnvironmentLookup m_environment;
    const AppPaths& m_paths;
    const PersistentAppStorage& m_storage;
    Clock& m_clock;
    const LogService& m_log;
};

} // namespace vocalith
