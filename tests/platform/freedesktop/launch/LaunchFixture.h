#pragma once

#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace vocalith::test {

/// A desktop that the test furnishes: the programs in its PATH, its desktop entries and its session bus. The libraries
/// look for most of that once in a process, so it is the same for all tests.
class LaunchFixture : public testing::Test {
protected:
    static void SetUpTestSuite();
    void TearDown() override;

    static const TemporaryFolder& folder();
    static const SessionBus& bus();

    /// A shell script; it finds the test's folder in $F.
    static void install(const std::filesystem::path& file, const std::string& script);
    static std::filesystem::path program(const std::string& name) { return folder() / "bin" / name; }
    /// A desktop entry by its path below the folder of entries.
    static void addEntry(const std::string& path, const std::string& lines);
    /// Until the library has seen that it was added.
    static void waitForEntry(const std::string& id);
    /// What a program wrote into the test's folder, once it is there.
    static std::string written(const std::string& name);
    /// The state of the process in this file is well: leads its session, and has nothing of ours.
    static void expectDetached(const std::string& name);
    static bool isRunning(const std::string& pidFile);
    static void endProcess(const std::string& pidFile);

    /// For a script: notes, under that name, what `expectDetached` looks at.
    static std::string notesItself(const std::string& name);

    FakeClock clock;
};

} // namespace vocalith::test
