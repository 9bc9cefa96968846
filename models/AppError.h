#pragma once

#include <optional>
#include <string>

namespace vocalith {

/// An error that travels across services.
struct AppError {
    std::string message;                        ///< shown to the user
    std::optional<std::string> underlyingError; ///< what caused it, for the log

    bool operator==(const AppError&) const = default;
};

} // namespace vocalith
