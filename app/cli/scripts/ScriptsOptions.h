#pragma once

#include <string>
#include <variant>

namespace vocalith {

/// `vocalith scripts list`
struct ScriptsListOptions {};

/// `vocalith scripts show NAME`
struct ScriptsShowOptions {
    std::string name;
};

using ScriptsOptions = std::variant<ScriptsListOptions, ScriptsShowOptions>;

} // namespace vocalith
