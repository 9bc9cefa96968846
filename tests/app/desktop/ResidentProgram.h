#pragma once

#include "tests/support/AudioServer.h"

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vocalith {
class PersistentAppStorage;
} // namespace vocalith

namespace vocalith::test {

/// The program as a user runs it, with a microphone that plays what it is given, and a home of its own.
class ResidentProgram {
public:
    /// `desktop` is the environment of a desktop session, with its bus. The main prompt is started by Ctrl+Alt+Space,
    /// held. `change` may set more before the program reads it.
    explicit ResidentProgram(std::vector<std::string> desktop,
                             const std::function<void(PersistentAppStorage&)>& change = {});

    /// Runs until this object is gone; returns once it can be asked for a dictation.
    void start();
    /// What a run of the program with these arguments prints, the errors too; it may fail.
    std::string command(std::vector<std::string> arguments) const;
    void terminate(); ///< politely; waits for the end

    /// Speaks into the microphone, and returns once the program has it on the disk.
    void speak(const std::string& sentence);
    /// The text of the newest entry of the history, once there are `count`.
    std::string lastText(std::size_t count = 1) const;
    std::string log() const;
    /// Where it keeps its files.
    const std::filesystem::path& home() const { return m_home.path(); }

    AudioServer audio{AudioServer::Kind::pulseAudio};

private:
    std::uintmax_t recordedBytes() const;

    TemporaryFolder m_home;
    std::vector<std::string> m_environment;
    PipeMicrophone m_microphone;
    ChildProcess m_program;
    mutable int m_runs = 0;
    std::mutex m_speaking;
    std::jthread m_silence; ///< of the microphone while nobody speaks: without any samples it would be taken for lost
};

} // namespace vocalith::test
