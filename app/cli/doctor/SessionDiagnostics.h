#pragma once

#include "ports/Diagnostics.h"

#include <functional>
#include <optional>
#include <string>

namespace vocalith {

/// Says which kind of desktop session the program runs in.
class SessionDiagnostics final : public Diagnostics {
public:
    /// Yields the value of an environment variable, nothing when it is not set.
    using Environment = std::function<std::optional<std::string>(const char* name)>;

    explicit SessionDiagnostics(Environment environment) : m_environment(std::move(environment)) {}

    Task<std::vector<Finding>> examine() override;

private:
    bool has(const char* name) const;

    const Environment m_environment;
};

} // namespace vocalith
