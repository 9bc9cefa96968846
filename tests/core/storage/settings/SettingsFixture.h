#pragma once

#include "base/Json.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace vocalith::test {

/// A settings file of the test's own.
class SettingsFixture : public testing::Test {
protected:
    PersistentAppStorage storage() { return PersistentAppStorage(m_file, m_clock, m_log.logger()); }
    std::string content() const { return readFile(m_file); }
    Json json() const { return parseJson(content()).value(); }
    /// Without the two entries that every first write adds.
    Json chosen() const
    {
        Json entries = json();
        entries.erase("settingsVersion");
        entries.erase("installDate");
        return entries;
    }
    /// What was kept of damaged files, the oldest first.
    std::vector<std::filesystem::path> keptAside() const
    {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::directory_iterator(m_file.parent_path())) {
            if (entry.path().filename().string().find("unreadable") != std::string::npos)
                found.push_back(entry.path());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder / "settings.json";
    FakeClock m_clock;
    RecordedLog m_log;
};

} // namespace vocalith::test
