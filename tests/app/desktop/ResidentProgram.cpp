#include "tests/app/desktop/ResidentProgram.h"

#include "base/Json.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "models/HistoryEntry.h"
#include "models/KeyboardShortcutText.h"
#include "ports/AudioInput.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/Places.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/SpokenAudio.h"
#include "tests/support/program/ProgramRun.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace vocalith::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::int16_t> samples(const std::vector<float>& speech)
{
    std::vector<std::int16_t> converted;
    converted.reserve(speech.size());
    for (const float sample : speech)
        converted.push_back(static_cast<std::int16_t>(sample * 32767.0F));
    return converted;
}

/// The event loop runs meanwhile: the program may want something from this very process.
int untilEnd(ChildProcess process)
{
    std::optional<int> status;
    runUntil([&] {
        status = process.ended();
        return status.has_value();
    });
    return status.value_or(-1);
}

} // namespace

ResidentProgram::ResidentProgram(std::vector<std::string> desktop,
                                 const std::function<void(PersistentAppStorage&)>& change)
    : m_environment(std::move(desktop)), m_microphone(audio.addMicrophone("microphone"))
{
    for (const auto* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) { // of a build with sanitizers
        if (const char* const value = std::getenv(name))
            m_environment.push_back(std::string(name) + "=" + value);
    }
    // Qt asks for EGL when it decorates a window, and Mesa's drivers leak when they are unloaded at the end.
    for (const std::string& more :
         {"VOCALITH_HOME=" + m_home.path().string(), "PULSE_SERVER=" + audio.address(),
          std::string("OMP_WAIT_POLICY=passive"), std::string("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION=none")})
        m_environment.push_back(more);

    FakeClock clock;
    RecordedLog log;
    PersistentAppStorage storage(m_home / "settings.json", clock, log.logger());
    auto prompt = storage.mainPrompt.get();
    prompt.shortcut.keys = parseKeys("Ctrl+Alt+Space");
    prompt.shortcut.activationMode = ActivationMode::pushToTalk;
    storage.mainPrompt.set(prompt);
    storage.isFirstLaunch.set(false);
    if (change)
        change(storage);
    m_silence = std::jthread([this](const std::stop_token& stop) {
        constexpr auto kPiece = std::chrono::milliseconds(20);
        const std::vector<std::int16_t> piece(kAudioSampleRate / 50);
        for (auto due = std::chrono::steady_clock::now(); !stop.stop_requested(); std::this_thread::sleep_until(due)) {
            const std::lock_guard lock(m_speaking);
            m_microphone.offer(piece);
            due += kPiece;
        }
    });
}

void ResidentProgram::start()
{
    m_program = ChildProcess({programFile(), "run"}, m_environment, m_home / "run.out");
    const std::vector<std::string> wait{"gdbus", "wait", "--session", "--timeout", "50", "org.vocalith.Vocalith"};
    EXPECT_EQ(untilEnd(ChildProcess(wait, m_environment, m_home / "wait.out")), 0) << log();
}

std::string ResidentProgram::command(std::vector<std::string> arguments) const
{
    const auto output = m_home / fmt::format("command-{}.out", m_runs++);
    arguments.insert(arguments.begin(), programFile());
    untilEnd(ChildProcess(std::move(arguments), m_environment, output));
    return readFile(output) + readFile(output.string() + ".err");
}

void ResidentProgram::terminate()
{
    m_program.signal(SIGTERM);
    EXPECT_EQ(untilEnd(std::move(m_program)), 0) << log();
}

void ResidentProgram::speak(const std::string& sentence)
{
    runUntil([&] { return audio.recordings() > 0; });
    const auto speech = samples(spoken(sentence));
    std::uintmax_t before = 0;
    {
        const std::lock_guard lock(m_speaking);
        before = recordedBytes();
        EXPECT_TRUE(m_microphone.feed(speech));
    }
    // With half a second of the silence after it, for that before it may still be on its way.
    const auto expected = speech.size() + kAudioSampleRate / 2;
    runUntil([&] { return recordedBytes() >= before + expected * sizeof(std::int16_t); });
}

std::uintmax_t ResidentProgram::recordedBytes() const
{
    std::uintmax_t all = 0;
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(m_home / "VocalithRecordings", none))
        all += entry.file_size(none);
    return all;
}

std::string ResidentProgram::lastText(std::size_t count) const
{
    std::string text;
    runUntil([&] {
        const auto list = parseJson(command({"history", "list", "--json"}));
        const auto entries = list ? fromJson<std::vector<HistoryEntry>>(*list) : failure(list.error());
        if (!entries || entries->size() < count)
            return false;
        text = finalText(entries->front());
        return !text.empty();
    });
    return text;
}

std::string ResidentProgram::log() const
{
    return readFile(m_home / "vocalith.log") + readFile(m_home / "run.out.err");
}

} // namespace vocalith::test
