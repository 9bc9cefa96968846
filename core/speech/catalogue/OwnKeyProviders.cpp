#include "core/speech/catalogue/CatalogueTables_p.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"

#include <array>

namespace vocalith::catalogue {

namespace {

using Provider = BYOKVoiceModelMetadata;
using Workflow = FileBasedWorkflow;
using Config = OnlineStreamingConfig;
using Setting = VoiceModelSetting;
using enum PredefinedModelID;

constexpr auto kPlain = AudioUploadCompression::none;
constexpr auto kM4A = AudioUploadCompression::m4a;

struct Row {
    std::variant<PredefinedModelID, const char*> id;
    const char* name;
    const char* model; ///< proposed in the model field
    const char* url;   ///< null: the user's own server
    AIProviderType provider;
    std::optional<FileBased> upload;
    std::optional<Config> stream;
    unsigned strengths;
    const char* languages; ///< null: it depends on the server
    const char* description;
    std::array<std::optional<Setting>, 2> settings = {};
};

constexpr auto kRows = std::to_array<Row>({
    {.id = sonioxAPI,
     .name = "Soniox",
     .model = "stt-async-preview",
     .url = "https://api.soniox.com",
     .provider = AIProviderType::soniox,
     .upload = FileBased{Workflow::soniox, kM4A},
     .stream = Config::soniox,
     .strengths = kPunctuation | kFast | kAccurate,
     .languages = "60+ languages",
     .description = "Use **your own Soniox key**. Very accurate in **60+ languages**, while you speak or afterwards.",
     .settings = {Setting::streaming, Setting::region}},
    {.id = openAI,
     .name = "OpenAI",
     .model = "gpt-4o-mini-transcribe",
     .url = "https://api.openai.com",
     .provider = AIProviderType::openai,
     .upload = FileBased{Workflow::openAI, kM4A},
     .stream = std::nullopt,
     .strengths = kPunctuation | kAccurate,
     .languages = kMultilingual,
     .description =
         "Use **your own OpenAI key**. For the best accuracy the model **gpt-4o-transcribe** is recommended.",
     .settings = {Setting::transcriptionPrompt, Setting::language}},
    {.id = openAICompatible,
     .name = "OpenAI Compatible",
     .model = "Systran/faster-whisper-tiny",
     .url = nullptr,
     .provider = AIProviderType::custom,
     // Small servers often read WAV only, and one on this machine gains nothing from smaller uploads.
     .upload = FileBased{Workflow::openAICompatible, kPlain},
     .stream = std::nullopt,
     .strengths = kPunctuation,
     .languages = nullptr,
     .description =
         "Use **any server that follows the OpenAI transcription API**, in your network or on this computer.",
     .settings = {Setting::transcriptionPrompt, Setting::language}},
    {.id = deepgram,
     .name = "Deepgram",
     .model = "nova-3",
     .url = "https://api.deepgram.com",
     .provider = AIProviderType::deepgram,
     .upload = FileBased{Workflow::deepgram, kM4A},
     .stream = Config::deepgram,
     .strengths = kPunctuation | kFast,
     .languages = kMultilingual,
     .description = "Use **your own Deepgram key**. Fast recognition, while you speak or afterwards.",
     .settings = {Setting::streaming, Setting::languageDetection}},
    {.id = elevenLabs,
     .name = "ElevenLabs",
     .model = "scribe_v2",
     .url = "https://api.elevenlabs.io",
     .provider = AIProviderType::elevenLabs,
     .upload = FileBased{Workflow::elevenLabs, kM4A},
     .stream = Config::elevenLabsStreaming,
     .strengths = kPunctuation | kCaptions | kAccurate,
     .languages = "90+ languages",
     .description = "Use **your own ElevenLabs key**. Very accurate, with the **time of every word** for captions.",
     .settings = {Setting::streaming, Setting::language}},
    {.id = fireworks,
     .name = "Fireworks AI",
     .model = "whisper-v3",
     .url = "https://audio-prod.api.fireworks.ai",
     .provider = AIProviderType::fireworks,
     .upload = FileBased{Workflow::fireworks, kPlain}, // documented for WAV, MP3 and FLAC only
     .stream = std::nullopt,
     .strengths = kPunctuation | kFast,
     .languages = kMultilingual,
     .description = "Use **your own Fireworks AI key**. Whisper on fast servers."},
    {.id = groq,
     .name = "Groq",
     .model = "whisper-large-v3-turbo",
     .url = "https://api.groq.com",
     .provider = AIProviderType::groq,
     .upload = FileBased{Workflow::groq, kM4A},
     .stream = std::nullopt,
     .strengths = kPunctuation | kFast,
     .languages = kMultilingual,
     .description = "Use **your own Groq key**. Whisper with **very short waiting times**."},
    {.id = assemblyAI,
     .name = "AssemblyAI",
     .model = "universal",
     .url = "https://api.assemblyai.com",
     .provider = AIProviderType::assemblyai,
     .upload = FileBased{Workflow::assemblyAI, kM4A},
     .stream = Config::assemblyAI,
     .strengths = kPunctuation | kAccurate,
     .languages = kMultilingual,
     .description = "Use **your own AssemblyAI key**. Made for long recordings, and able to stream.",
     .settings = {Setting::streaming}},
    {.id = kMistralID,
     .name = "Mistral",
     .model = "voxtral-mini-2507",
     .url = "https://api.mistral.ai",
     .provider = AIProviderType::mistral,
     .upload = FileBased{Workflow::mistral, kM4A},
     .stream = std::nullopt,
     .strengths = kPunctuation,
     .languages = kMultilingual,
     .description = "Use **your own Mistral key**. The Voxtral models, strong in European languages."},
    {.id = kVolcengineID,
     .name = "Volcengine",
     .model = "bigmodel",
     .url = "https://openspeech.bytedance.com",
     .provider = AIProviderType::volcengine,
     .upload = std::nullopt,
     .stream = Config::volcengine,
     .strengths = kPunctuation | kFast,
     .languages = "Chinese and English",
     .description =
         "Use **your own Volcengine account**. Streaming recognition, strong in **Chinese**. Needs the app ID "
         "and the access token.",
     .settings = {Setting::secondaryCredential, Setting::resourceId}},
    {.id = kCartesiaID,
     .name = "Cartesia",
     .model = "ink-whisper",
     .url = "https://api.cartesia.ai",
     .provider = AIProviderType::cartesia,
     .upload = FileBased{Workflow::cartesia, kM4A},
     .stream = std::nullopt,
     .strengths = kPunctuation | kFast,
     .languages = kMultilingual,
     .description = "Use **your own Cartesia key**. Whisper made robust against noise."},
});

TranscriptionModelID idOf(const Row& row)
{
    return std::visit([](const auto id) { return TranscriptionModelID(id); }, row.id);
}

Provider::BaseURL baseURLOf(const Row& row)
{
    if (row.url)
        return Provider::Hardcoded{row.url};
    return Provider::Customizable{"http://localhost:8000", "http://localhost:8000"};
}

std::vector<VoiceModelAttribute> attributesOf(const Row& row)
{
    if (!row.url)
        return {{"network", "Online"}};
    return {{"key", "API Key"}, languageChip(row.languages)};
}

std::vector<VoiceModelWorkflow> workflowsOf(const Row& row)
{
    std::vector<VoiceModelWorkflow> workflows;
    if (row.upload)
        workflows.emplace_back(*row.upload);
    if (row.stream)
        workflows.emplace_back(Streaming{*row.stream});
    return workflows;
}

std::optional<VoiceModelSettings> settingsOf(const Row& row)
{
    VoiceModelSettings settings;
    for (const auto& setting : row.settings) {
        if (setting)
            settings.offered.push_back(*setting);
    }
    return settings.offered.empty() ? std::nullopt : std::optional(std::move(settings));
}

} // namespace

std::vector<BYOKVoiceModelMetadata> ownKeyProviders()
{
    std::vector<Provider> providers;
    providers.reserve(kRows.size());
    for (const Row& row : kRows) {
        providers.push_back({.id = idOf(row),
                             .name = row.name,
                             .description = row.description,
                             .recommendationBadge = std::nullopt,
                             .requiresAPIKey = row.url != nullptr,
                             .modelPlaceholder = row.model,
                             .baseURL = baseURLOf(row),
                             .attributes = attributesOf(row),
                             .workflows = workflowsOf(row),
                             .providerType = row.provider,
                             .settings = settingsOf(row),
                             .categories = categoriesOf(VoiceModelCategory::api, row.strengths)});
    }
    return providers;
}

} // namespace vocalith::catalogue
