#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace vocalith {

/// Where the program keeps its files, all absolute. Nothing of it needs to exist yet.
struct AppPaths {
    std::filesystem::path settingsFile;
    std::filesystem::path historyFolder;
    std::filesystem::path recordingsFolder;
    std::filesystem::path automationsFolder; ///< executables that spoken commands run by name
    std::filesystem::path modelsFolder;      ///< unless the user chose another
    std::filesystem::path bridgeScript;
    std::filesystem::path temporaryFolder;
    std::filesystem::path indexFolder; ///< derived data: may be deleted at any time
    std::filesystem::path logFile;

    bool operator==(const AppPaths&) const = default;
};

/// Yields the value of an environment variable, or nothing when it is not set.
using EnvironmentLookup = std::function<std::optional<std::string>(const std::string& name)>;

/// Looks into the environment of this process.
std::optional<std::string> environmentVariable(const std::string& name);

/// The places after the XDG Base Directory Specification 0.8: an empty or relative value of its variables counts as not
/// set. `VOCALITH_HOME`, when set, holds everything instead; a relative one is meant from the working folder. Without
/// `HOME` the user database says where the user's folder is.
AppPaths appPaths(const EnvironmentLookup& environment);

} // namespace vocalith
