#include "core/speech/ProgressOnMainThread.h"

#include "base/MainThread.h"

namespace vocalith {

std::function<void(double)> onMainThread(const std::shared_ptr<TranscriptionService::ProgressHandler>& handler)
{
    return [weak = std::weak_ptr(handler)](double progress) {
        postToMainThread([weak, progress] {
            if (const auto alive = weak.lock(); alive && *alive)
                (*alive)(progress);
        });
    };
}

} // namespace vocalith
