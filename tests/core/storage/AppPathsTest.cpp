#include "core/storage/AppPaths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>

using namespace vocalith;

namespace {

namespace fs = std::filesystem;
using Environment = std::map<std::string, std::string>;

AppPaths pathsFor(Environment environment)
{
    return appPaths([environment = std::move(environment)](const std::string& name) {
        const auto found = environment.find(name);
        return found == environment.end() ? std::nullopt : std::optional(found->second);
    });
}

const AppPaths kBelowHome{.settingsFile = "/home/ann/.config/Vocalith/settings.json",
                          .historyFolder = "/home/ann/.local/share/Vocalith/History",
                          .recordingsFolder = "/home/ann/.local/share/Vocalith/VocalithRecordings",
                          .automationsFolder = "/home/ann/.config/Vocalith/shortcuts",
                          .modelsFolder = "/home/ann/.local/share/Vocalith/Models",
                          .bridgeScript = "/home/ann/.local/share/Vocalith/mcp-bridge.sh",
                          .temporaryFolder = "/home/ann/.cache/Vocalith/Temp",
                          .indexFolder = "/home/ann/.cache/Vocalith",
                          .logFile = "/home/ann/.local/state/Vocalith/vocalith.log"};

TEST(AppPaths, LieInTheUsersFolderUnlessAnAbsoluteVariableSaysOtherwise)
{
    EXPECT_EQ(pathsFor({{"HOME", "/home/ann"}}), kBelowHome);
    EXPECT_EQ(pathsFor({{"HOME", "/home/ann"},
                        {"XDG_CONFIG_HOME", ""},
                        {"XDG_DATA_HOME", "relative/share"},
                        {"XDG_CACHE_HOME", "./cache"},
                        {"XDG_STATE_HOME", "~/state"},
                        {"VOCALITH_HOME", ""}}),
              kBelowHome);

    const auto moved = pathsFor({{"HOME", "/home/ann"},
                                 {"XDG_CONFIG_HOME", "/c"},
                                 {"XDG_DATA_HOME", "/d"},
                                 {"XDG_CACHE_HOME", "/k"},
                                 {"XDG_STATE_HOME", "/s"}});
    EXPECT_EQ(moved, (AppPaths{.settingsFile = "/c/Vocalith/settings.json",
                               .historyFolder = "/d/Vocalith/History",
                               .recordingsFolder = "/d/Vocalith/VocalithRecordings",
                               .automationsFolder = "/c/Vocalith/shortcuts",
                               .modelsFolder = "/d/Vocalith/Models",
                               .bridgeScript = "/d/Vocalith/mcp-bridge.sh",
                               .temporaryFolder = "/k/Vocalith/Temp",
                               .indexFolder = "/k/Vocalith",
                               .logFile = "/s/Vocalith/vocalith.log"}));
}

TEST(AppPaths, OneFolderHoldsEverythingAndTheIndexesLieApart)
{
    for (const std::string home : {"/demo", "demo"}) {
        const auto paths = pathsFor({{"HOME", "/home/ann"}, {"XDG_DATA_HOME", "/d"}, {"VOCALITH_HOME", home}});
        const auto root = fs::absolute(home);
        const std::set<fs::path> all{paths.settingsFile,      paths.historyFolder, paths.recordingsFolder,
                                     paths.automationsFolder, paths.modelsFolder,  paths.bridgeScript,
                                     paths.temporaryFolder,   paths.indexFolder,   paths.logFile};
        EXPECT_EQ(all.size(), 9U);
        for (const auto& path : all) {
            EXPECT_EQ(path.parent_path(), root) << path;
            // Deleting the indexes must cost nothing else.
            EXPECT_TRUE(path == paths.indexFolder || path.string().find(paths.indexFolder.string() + "/") != 0) << path;
        }
    }
}

TEST(AppPaths, WithoutAHomeTheUserDatabaseIsAsked)
{
    const auto unset = pathsFor({});
    EXPECT_TRUE(unset.settingsFile.is_absolute());
    EXPECT_EQ(pathsFor({{"HOME", "relative"}}), unset);
    EXPECT_EQ(pathsFor({{"HOME", ""}}), unset);
}

} // namespace
