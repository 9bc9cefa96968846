#include "app/ui/start/FirstStartModel.h"

#include "core/session/shortcuts/KeyboardShortcutRecordingService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace vocalith {
namespace {

using namespace std::chrono_literals;

constexpr float kHeardLevel = 0.25F; // quiet speech near the microphone; a silent room stays below
constexpr Duration kPatience = 4s;
constexpr std::uint32_t kFirstScanCode = 8; // what X11 adds to the kernel's key codes, and Wayland's keymaps after it

QString translated(const char* text)
{
    return QCoreApplication::translate("Vocalith", text);
}

std::uint64_t flagsOf(Qt::KeyboardModifiers modifiers)
{
    std::uint64_t flags = 0;
    if (modifiers.testFlag(Qt::ShiftModifier))
        flags |= modifier_flags::shift;
    if (modifiers.testFlag(Qt::ControlModifier))
        flags |= modifier_flags::control;
    if (modifiers.testFlag(Qt::AltModifier))
        flags |= modifier_flags::option;
    if (modifiers.testFlag(Qt::MetaModifier))
        flags |= modifier_flags::command;
    return flags;
}

} // namespace

FirstStartModel::FirstStartModel(KeyboardShortcutRecordingService& recorder, MicrophoneCheck& microphone,
                                 PersistentAppStorage& storage, Clock& clock)
    : m_recorder(recorder), m_microphone(microphone), m_storage(storage), m_clock(clock)
{
    const auto told = [this](const auto&) { Q_EMIT changed(); };
    m_subscriptions.push_back(m_recorder.currentShortcut.subscribe(told));
    m_subscriptions.push_back(m_recorder.errorMessage.subscribe(told));
    m_subscriptions.push_back(m_recorder.recordingInProgress.subscribe(told));
    m_subscriptions.push_back(m_microphone.problem.subscribe(told));
    m_subscriptions.push_back(m_microphone.level.subscribe([this](float level) { heard(level); }));
}

FirstStartModel::~FirstStartModel()
{
    m_subscriptions.clear();
    stopRecordingShortcut();
    listen(false);
}

void FirstStartModel::setPage(int page)
{
    page = std::clamp(page, 0, pageCount - 1);
    if (std::exchange(m_page, page) == page)
        return;
    stopRecordingShortcut();
    listen(page == microphonePage);
    Q_EMIT pageChanged();
}

QString FirstStartModel::shortcut() const
{
    const auto& shortcut = m_recorder.currentShortcut.get();
    return shortcut && shortcut->keys ? QString::fromStdString(toString(*shortcut->keys)) : QString();
}

bool FirstStartModel::isRecordingShortcut() const
{
    return m_recorder.recordingInProgress.get();
}

QString FirstStartModel::shortcutError() const
{
    return QString::fromStdString(m_recorder.errorMessage.get().value_or(std::string()));
}

QString FirstStartModel::microphoneProblem() const
{
    if (!m_microphone.problem.get().empty())
        return QString::fromStdString(m_microphone.problem.get());
    if (m_isSilent)
        return translated("Nothing can be heard. See that the microphone is plugged in and not muted, and that the "
                          "right one is chosen in the sound settings of your desktop.");
    return {};
}

void FirstStartModel::recordShortcut()
{
    m_recorder.startRecording();
}

void FirstStartModel::stopRecordingShortcut()
{
    if (isRecordingShortcut())
        m_recorder.stopRecording();
}

void FirstStartModel::finish()
{
    stopRecordingShortcut();
    listen(false);
    m_storage.isFirstLaunch.set(false);
    Q_EMIT finished();
}

bool FirstStartModel::insert(const std::string& text)
{
    if (m_page != tryPage)
        return false;
    Q_EMIT dictated(QString::fromStdString(text));
    return true;
}

bool FirstStartModel::handleKey(std::uint32_t scanCode, Qt::KeyboardModifiers modifiers, bool isDown)
{
    if (!isRecordingShortcut() || scanCode <= kFirstScanCode)
        return false;
    const int key = virtualKeyCode(static_cast<int>(scanCode - kFirstScanCode));
    return m_recorder.handleKeyEvent(key, flagsOf(modifiers), isDown);
}

void FirstStartModel::listen(bool wanted)
{
    if (std::exchange(m_isListening, wanted) == wanted)
        return;
    m_patience.reset();
    m_isSilent = false;
    m_level = 0;
    if (!wanted)
        return m_microphone.stop();
    m_hasHeard = false;
    m_patience = m_clock.after(kPatience, [this] {
        m_isSilent = !m_hasHeard;
        Q_EMIT changed();
    });
    m_microphone.start();
    Q_EMIT changed();
}

void FirstStartModel::heard(float level)
{
    if (!m_isListening)
        return;
    const double shown = std::round(std::clamp(level, 0.0F, 1.0F) * 100) / 100;
    if (std::exchange(m_level, shown) != shown)
        Q_EMIT levelChanged();
    if (level < kHeardLevel || (m_hasHeard && !m_isSilent))
        return;
    m_hasHeard = true;
    m_isSilent = false;
    Q_EMIT changed();
}

} // namespace vocalith
