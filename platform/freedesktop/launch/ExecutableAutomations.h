#pragma once

#include "ports/Automations.h"

#include <filesystem>
#include <memory>

namespace vocalith {

class Clock;
class DetachedPrograms;

/// The executables of a folder are the automations, by their file names; in a name the extension may be left out. One
/// that still runs after a second counts as started. The composition owns it; main thread.
class ExecutableAutomations final : public Automations {
public:
    /// The folder need not be there.
    ExecutableAutomations(std::filesystem::path folder, Clock& clock);
    ~ExecutableAutomations() override;

    std::vector<std::string> names() const override;
    Task<Result<void, AutomationError>> run(std::string name) override;

private:
    struct File;

    std::vector<File> files() const;
    Result<File, AutomationError> find(const std::string& name) const;
    std::string notFound(const std::string& name) const;

    const std::filesystem::path m_folder;
    const std::unique_ptr<DetachedPrograms> m_programs;
};

} // namespace vocalith
