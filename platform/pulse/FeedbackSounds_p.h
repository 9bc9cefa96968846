#pragma once

#include "ports/SoundPlayer.h"

#include <vector>

namespace vocalith {

/// The sound itself: 16 kHz mono, at most a quarter of full scale, a fifth of a second long. It begins and ends in
/// silence, so that it does not click.
std::vector<float> feedbackSound(SoundPlayer::Sound sound);

} // namespace vocalith
