#include "core/session/ShortcutUserFeedbackService.h"

#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/SoundPlayer.h"
#include "ports/SystemVolume.h"

namespace vocalith {

ShortcutUserFeedbackService::ShortcutUserFeedbackService(SoundPlayer& audioPlayer, SystemVolume& systemVolumeManager,
                                                         const PersistentAppStorage& appStorage, Logger logger)
    : m_audioPlayer(audioPlayer), m_systemVolumeManager(systemVolumeManager), m_appStorage(appStorage),
      m_logger(std::move(logger))
{}

void ShortcutUserFeedbackService::recordingEnded(bool longEnough)
{
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
        m_logger.warning("🔊 Could not play boop sound: " + played.error());
}

} // namespace vocalith
