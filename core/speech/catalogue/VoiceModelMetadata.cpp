#include "core/speech/catalogue/VoiceModelMetadata.h"

#include "core/speech/catalogue/CatalogueTables_p.h"

#include <algorithm>
#include <type_traits>

namespace vocalith {

VoiceModelFamily family(const VoiceModelMetadata& entry)
{
    return static_cast<VoiceModelFamily>(entry.index());
}

const TranscriptionModelID& id(const VoiceModelMetadata& entry)
{
    return std::visit([](const auto& model) -> const TranscriptionModelID& { return model.id; }, entry);
}

const std::string& name(const VoiceModelMetadata& entry)
{
    return std::visit(
        [](const auto& model) -> const std::string& {
            if constexpr (std::is_same_v<std::decay_t<decltype(model)>, AppleTranscriptionModelMetadata>)
                return model.title;
            else
                return model.name;
        },
        entry);
}

const std::string& description(const VoiceModelMetadata& entry)
{
    return std::visit([](const auto& model) -> const std::string& { return model.description; }, entry);
}

const std::vector<VoiceModelAttribute>& attributes(const VoiceModelMetadata& entry)
{
    return std::visit(
        [](const auto& model) -> const auto& { return model.attributes; }, entry);
}

const std::vector<VoiceModelCategory>& categories(const VoiceModelMetadata& entry)
{
    return std::visit(
        [](const auto& model) -> const auto& { return model.categories; }, entry);
}

std::optional<std::string> recommendationBadge(const VoiceModelMetadata& entry)
{
    return std::visit(
        [](const auto& model) -> std::optional<std::string> {
            if constexpr (std::is_same_v<std::decay_t<decltype(model)>, AppleTranscriptionModelMetadata>)
                return std::nullopt;
            else
                return model.recommendationBadge;
        },
        entry);
}

std::optional<ModelMetrics> metrics(const VoiceModelMetadata& entry)
{
    return std::visit(
        [](const auto& model) -> std::optional<ModelMetrics> {
            if constexpr (std::is_same_v<std::decay_t<decltype(model)>, BYOKVoiceModelMetadata>)
                return std::nullopt;
            else
                return model.metrics;
        },
        entry);
}

AIProviderType providerType(const VoiceModelMetadata& entry)
{
    return std::visit([](const auto& model) { return model.providerType; }, entry);
}

bool isEnglishOnly(const VoiceModelMetadata& entry)
{
    return std::ranges::find(attributes(entry), catalogue::languageChip(catalogue::kEnglishOnly)) !=
           attributes(entry).end();
}

bool isWhisperModel(const VoiceModelMetadata& entry)
{
    using Local = LocalTranscriptionModelMetadata;
    const auto* local = std::get_if<Local>(&entry);
    return local && (std::holds_alternative<Local::Downloadable>(local->source) ||
                     std::holds_alternative<Local::Local>(local->source));
}

std::optional<std::string> modelFileName(const VoiceModelMetadata& entry)
{
    const auto* local = std::get_if<LocalTranscriptionModelMetadata>(&entry);
    if (!local)
        return std::nullopt;
    if (const auto* predefined = std::get_if<PredefinedModelID>(&local->id))
        return catalogue::localFileName(*predefined);
    return catalogue::userModelFileName(std::get<std::string>(local->id));
}

} // namespace vocalith
