#include "core/storage/AppPaths.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

fs::path homeFolder(const EnvironmentLookup& environment)
{
    if (const auto home = environment("HOME"); home && fs::path(*home).is_absolute())
        return *home;
    passwd entry{};
    passwd* found = nullptr;
    std::array<char, 16384> buffer{};
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_dir)
        return found->pw_dir;
    return "/"; // nothing can be kept there, which is reported where it is tried
}

fs::path baseFolder(const EnvironmentLookup& environment, const std::string& variable, const char* belowHome)
{
    const auto value = environment(variable);
    const fs::path folder =
        value && fs::path(*value).is_absolute() ? fs::path(*value) : homeFolder(environment) / belowHome;
    return folder / "Vocalith";
}

AppPaths pathsIn(const fs::path& config, const fs::path& data, const fs::path& temporary, const fs::path& cache,
                 const fs::path& state)
{
    return {.settingsFile = config / "settings.json",
            .historyFolder = data / "History",
            .recordingsFolder = data / "VocalithRecordings",
            .automationsFolder = config / "shortcuts",
            .modelsFolder = data / "Models",
            .bridgeScript = data / "mcp-bridge.sh",
            .temporaryFolder = temporary / "Temp",
            .indexFolder = cache,
            .logFile = state / "vocalith.log"};
}

} // namespace

std::optional<std::string> environmentVariable(const std::string& name)
{
    const char* value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
}

AppPaths appPaths(const EnvironmentLookup& environment)
{
    if (const auto value = environment("VOCALITH_HOME"); value && !value->empty()) {
        std::error_code error;
        const auto absolute = fs::absolute(*value, error).lexically_normal();
        const auto home = error ? fs::path(*value) : absolute;
        return pathsIn(home, home, home, home / "Cache", home); // the indexes apart: their folder may be deleted
    }
    const auto cache = baseFolder(environment, "XDG_CACHE_HOME", ".cache");
    return pathsIn(baseFolder(environment, "XDG_CONFIG_HOME", ".config"),
                   baseFolder(environment, "XDG_DATA_HOME", ".local/share"), cache, cache,
                   baseFolder(environment, "XDG_STATE_HOME", ".local/state"));
}

} // namespace vocalith
