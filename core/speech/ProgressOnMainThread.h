#pragma once

#include "core/speech/TranscriptionService.h"

#include <memory>

namespace vocalith {

/// Carries progress from a worker to the main thread, as long as the request is there that wants it: the one that owns
/// `handler`.
std::function<void(double)> onMainThread(const std::shared_ptr<TranscriptionService::ProgressHandler>& handler);

} // namespace vocalith
