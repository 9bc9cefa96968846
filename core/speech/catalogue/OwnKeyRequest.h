#pragma once

#include "base/Result.h"
#include "core/speech/catalogue/VoiceModelMetadata.h"

#include <string>
#include <string_view>

namespace vocalith {

/// Why a request to a provider cannot be built from what the user entered.
enum class OwnKeyRequestError { invalidURL, missingModelName };

/// The text that is shown to the user.
std::string userMessage(OwnKeyRequestError error);

/// Where a server that follows the OpenAI transcription API takes recordings: the user's URL as it stands, completed by
/// "/v1/audio/transcriptions" when it names no path (a lone slash is none). Spaces around it are dropped. Only http and
/// https URLs with a host are valid.
Result<std::string, OwnKeyRequestError> openAICompatibleURL(std::string_view enteredURL);

/// The model to ask the provider for, from the model field as the user left it. The model that is proposed for files
/// becomes the provider's model for streaming when the audio is streamed: it would be refused there.
Result<std::string, OwnKeyRequestError> requestModelName(const BYOKVoiceModelMetadata& entry,
                                                         const VoiceModelWorkflow& workflow,
                                                         std::string_view enteredModel);

/// The model that is proposed for a workflow of the entry.
std::string proposedModel(const BYOKVoiceModelMetadata& entry, const VoiceModelWorkflow& workflow);

/// Scheme and host of the region's API for files.
std::string sonioxBaseURL(SonioxRegion region);
/// Scheme and host of the region's streaming API.
std::string sonioxStreamingURL(SonioxRegion region);

} // namespace vocalith
