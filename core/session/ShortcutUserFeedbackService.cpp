#include "core/session/ShortcutUserFeedbackService.h"

#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/SoundPlayer.h"
#include "ports/SystemVolume.h"

#include <utility>

namespace vocalith {

ShortcutUserFeedbackService::ShortcutUserFeedbackService(SoundPlayer& audioPlayer, SystemVolume& systemVolumeManager,
                                                         const PersistentAppStorage& appStorage, Logger logger)
    : m_audioPlayer(audioPlayer), m_systemVolumeManager(systemVolumeManager), m_appStorage(appStorage),
      m_logger(std::move(logger))
{
    m_playFinish = m_audioPlayer.finished.subscribe([this](const auto& heard) { onPlayFinish(heard); });
}

void ShortcutUserFeedbackService::recordingStarted(RecordingMode mode)
{
    m_canEnd = true;
    m_mutingIsDue = m_appStorage.muteWhileRecording.get() && mode == RecordingMode::microphone;
    if (!m_appStorage.playSound.get()) {
        muteIfDue();
        return;
    }
    const auto played = m_audioPlayer.play(SoundPlayer::Sound::recordingStarted);
    if (!played)
        onPlayFinish(played);
}

void ShortcutUserFeedbackService::recordingEnded(bool longEnough)
{
    m_mutingIsDue = false;
    if (m_canEnd) {
        m_canEnd = false;
        m_systemVolumeManager.restore();
    }
    if (!longEnough || !m_appStorage.playSound.get()) {
        m_audioPlayer.stop();
        return;
    }
    const auto played = m_audioPlayer.play(SoundPlayer::Sound::recordingEnded);
    if (!played)
        onPlayFinish(played);
}

void ShortcutUserFeedbackService::onPlayFinish(const Result<void, std::string>& heard)
{
    if (!heard)
        m_logger.warning("🔊 Could not play boop sound: " + heard.error());
    muteIfDue();
}

void ShortcutUserFeedbackService::muteIfDue()
{
    if (std::exchange(m_mutingIsDue, false))
        m_systemVolumeManager.mute();
}

} // namespace vocalith
