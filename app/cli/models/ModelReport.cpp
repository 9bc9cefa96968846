#include "app/cli/models/ModelReport.h"

#include "core/speech/catalogue/DefaultModelChoice.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/SpeechRecognizer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <system_error>

namespace vocalith {
namespace {

std::string familyWord(VoiceModelFamily family)
{
    switch (family) {
    case VoiceModelFamily::online: return "online";
    case VoiceModelFamily::local: return "local";
    case VoiceModelFamily::apple: return "system";
    case VoiceModelFamily::byok: return "own key";
    }
    return {};
}

std::string sizeLabel(const VoiceModelMetadata& entry)
{
    const auto& chips = attributes(entry);
    const auto chip =
        std::find_if(chips.begin(), chips.end(), [](const auto& each) { return each.icon == "shippingbox"; });
    return chip == chips.end() ? std::string() : chip->label;
}

bool equalsIgnoringCase(std::string_view left, std::string_view right)
{
    const auto same = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), same);
}

/// The command that fetches a model of the catalogue.
std::string downloadCommand(const VoiceModelMetadata& entry, const std::string& folder)
{
    const auto* local = std::get_if<LocalTranscriptionModelMetadata>(&entry);
    const auto* source = local ? std::get_if<LocalTranscriptionModelMetadata::Downloadable>(&local->source) : nullptr;
    if (!source || !source->downloadUrl)
        return {};
    return fmt::format("curl -L --create-dirs -o \"{}/{}\" {}", folder, modelFileName(entry).value_or(""),
                       *source->downloadUrl);
}

} // namespace

ModelReport::ModelReport(const VoiceModelCatalogue& catalogue, const ModelFileManager& files,
                         const SpeechRecognizer& recogniser, const PersistentAppStorage& appStorage,
                         PlatformTraits traits)
    : m_catalogue(catalogue), m_files(files), m_recogniser(recogniser), m_appStorage(appStorage), m_traits(traits)
{}

ModelSurvey ModelReport::survey() const
{
    const auto presentModels = m_files.presentModels();
    const std::set<TranscriptionModelID> present(presentModels.begin(), presentModels.end());
    ModelSurvey found{{}, defaultModel(TranscriptionSource::dictation, presentModels)};
    for (const auto& entry : m_catalogue.entries())
        found.rows.push_back(row(entry, present));
    for (const auto& model : presentModels) {
        if (!m_catalogue.find(model))
            found.rows.push_back(row(m_catalogue.entry(model, sizeOf(model)), present));
    }
    for (auto& each : found.rows)
        each.isDefault = each.id == toString(found.defaultModel);
    return found;
}

std::optional<std::uint64_t> ModelReport::sizeOf(const TranscriptionModelID& model) const
{
    std::error_code error;
    const auto size = std::filesystem::file_size(m_files.expectedFile(model).value_or(""), error);
    return error ? std::nullopt : std::optional<std::uint64_t>(size);
}

ModelRow ModelReport::row(const VoiceModelMetadata& entry, const std::set<TranscriptionModelID>& present) const
{
    ModelRow row;
    row.id = toString(id(entry));
    row.name = name(entry);
    row.family = familyWord(family(entry));
    row.size = sizeLabel(entry);
    row.state = stateOf(entry, present.contains(id(entry)));
    row.isReady = row.state == "ready";
    return row;
}

std::string ModelReport::stateOf(const VoiceModelMetadata& entry, bool isPresent) const
{
    switch (family(entry)) {
    case VoiceModelFamily::online: return "needs an account";
    case VoiceModelFamily::byok: return "needs a key";
    case VoiceModelFamily::apple:
        if (!checkModel(entry, m_traits, true))
            return "not supported here";
        return m_recogniser.availability() ? "ready" : "not installed";
    case VoiceModelFamily::local: break;
    }
    if (!isWhisperModel(entry) || !checkModel(entry, m_traits, true))
        return "not supported here";
    return isPresent ? "ready" : "not downloaded";
}

TranscriptionModelID ModelReport::defaultModel(TranscriptionSource source) const
{
    return defaultModel(source, m_files.presentModels());
}

TranscriptionModelID ModelReport::defaultModel(TranscriptionSource source, const Present& present) const
{
    const auto& setting = source == TranscriptionSource::file ? m_appStorage.selectedFileTranscriptionVoiceModelID
                                                              : m_appStorage.selectedDictationModelID;
    auto selection = setting.get();
    if (selection)
        selection = named(toString(*selection), present); // a model file may have been stored with its extension
    return dictationModel(m_catalogue, selection, {present.begin(), present.end()}, m_traits);
}

TranscriptionModelID ModelReport::named(const std::string& text) const
{
    return named(text, m_files.presentModels());
}

TranscriptionModelID ModelReport::named(const std::string& text, const Present& present) const
{
    for (const auto& entry : m_catalogue.entries()) {
        if (equalsIgnoringCase(toString(id(entry)), text))
            return id(entry);
    }
    for (const auto& model : present) {
        const auto file = m_files.expectedFile(model);
        if (equalsIgnoringCase(toString(model), text) || (file && file->filename() == text))
            return model;
    }
    return text;
}

Task<std::vector<Finding>> ModelReport::examine()
{
    std::vector<Finding> findings;
    const auto available = m_recogniser.availability();
    if (available)
        findings.push_back({"System recogniser", Finding::State::good, m_recogniser.displayName(), {}});
    else
        findings.push_back({"System recogniser", Finding::State::limited, userMessage(available.error()),
                            "sudo apt-get install pocketsphinx-en-us"});

    const auto present = m_files.presentModels();
    const std::string folder = m_files.modelsFolder().string();
    Finding models{"Models", Finding::State::good, {}, {}};
    for (const auto& model : present)
        models.detail += (models.detail.empty() ? "" : ", ") + toString(model);
    if (present.empty()) {
        models.state = available ? Finding::State::limited : Finding::State::missing;
        models.detail = "no whisper model in " + folder;
        models.remedy = downloadCommand(m_catalogue.entry(PredefinedModelID::base), folder);
    }
    findings.push_back(std::move(models));
    const auto chosen = defaultModel(TranscriptionSource::dictation, present);
    const bool isReady = stateOf(m_catalogue.entry(chosen), true) == "ready";
    findings.push_back(
        {"Default model", isReady ? Finding::State::good : Finding::State::missing, toString(chosen), {}});
    co_return findings;
}

} // namespace vocalith
