#include "core/speech/catalogue/OwnKeyRequest.h"

#include "base/Text.h"

#include <QByteArray>
#include <QUrl>

#include <algorithm>

namespace vocalith {

namespace {

bool isUsable(std::string_view url)
{
    const QUrl parsed = QUrl::fromEncoded(QByteArray(url.data(), static_cast<qsizetype>(url.size())), QUrl::StrictMode);
    const bool web = parsed.scheme() == "http" || parsed.scheme() == "https";
    return parsed.isValid() && web && !parsed.host().isEmpty();
}

} // namespace

std::string userMessage(OwnKeyRequestError error)
{
    switch (error) {
    case OwnKeyRequestError::invalidURL: return "Invalid URL";
    case OwnKeyRequestError::missingModelName: return "Missing model name";
    }
    return {};
}

Result<std::string, OwnKeyRequestError> openAICompatibleURL(std::string_view enteredURL)
{
    const std::string_view url = trimmedView(enteredURL);
    if (!isUsable(url))
        return failure(OwnKeyRequestError::invalidURL);
    // The URL is cut, not written anew by a library: what the user typed reaches the server unchanged.
    const auto afterHost = std::min(url.find_first_of("/?#", url.find("://") + 3), url.size());
    const auto pathEnd = std::min(url.find_first_of("?#", afterHost), url.size());
    if (pathEnd - afterHost > 1)
        return std::string(url);
    return std::string(url.substr(0, afterHost)) + "/v1/audio/transcriptions" + std::string(url.substr(pathEnd));
}

std::string proposedModel(const BYOKVoiceModelMetadata& entry, const VoiceModelWorkflow& workflow)
{
    if (const auto* stream = std::get_if<Streaming>(&workflow)) {
        if (stream->config == OnlineStreamingConfig::soniox)
            return "stt-rt-preview";
        if (stream->config == OnlineStreamingConfig::elevenLabsStreaming)
            return "scribe_v2_realtime";
    }
    return entry.modelPlaceholder;
}

Result<std::string, OwnKeyRequestError>
requestModelName(const BYOKVoiceModelMetadata& entry, const VoiceModelWorkflow& workflow, std::string_view enteredModel)
{
    const std::string_view model = trimmedView(enteredModel);
    if (model.empty())
        return failure(OwnKeyRequestError::missingModelName);
    return model == entry.modelPlaceholder ? proposedModel(entry, workflow) : std::string(model);
}

std::string sonioxBaseURL(SonioxRegion region)
{
    switch (region) {
    case SonioxRegion::us: return "https://api.soniox.com";
    case SonioxRegion::eu: return "https://api.eu.soniox.com";
    case SonioxRegion::japan: return "https://api.jp.soniox.com";
    }
    return {};
}

std::string sonioxStreamingURL(SonioxRegion region)
{
    switch (region) {
    case SonioxRegion::us: return "wss://stt-rt.soniox.com";
    case SonioxRegion::eu: return "wss://stt-rt.eu.soniox.com";
    case SonioxRegion::japan: return "wss://stt-rt.jp.soniox.com";
    }
    return {};
}

} // namespace vocalith
