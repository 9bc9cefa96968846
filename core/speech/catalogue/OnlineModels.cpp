#include "core/speech/catalogue/CatalogueTables_p.h"

#include <array>

namespace vocalith::catalogue {

namespace {

using enum PredefinedModelID;
using Config = OnlineStreamingConfig;
using OwnKey = BYODictationAPIKeyOption;

/// Uploads to the vendor's backend are compressed: it takes every format, and the way there is what takes the time.
constexpr FileBased kUpload{FileBasedWorkflow::vocalith, AudioUploadCompression::m4a};

struct Row {
    PredefinedModelID id;
    const char* name;
    VoiceModelWorkflow workflow;
    AIProviderType provider;
    ModelMetrics metrics;
    unsigned strengths;
    const char* languages;
    const char* description;
    std::optional<OwnKey> ownKey = std::nullopt;
    const char* badge = nullptr;
    bool promptable = false; ///< takes a prompt and a pinned language
};

constexpr auto kRows = std::to_array<Row>({
    {.id = sonioxRealtime,
     .name = "Soniox Realtime",
     .workflow = Streaming{Config::vocalithSoniox},
     .provider = AIProviderType::soniox,
     .metrics = {9, 10},
     .strengths = kPunctuation | kFast | kAccurate,
     .languages = "60+ languages",
     .description = "**Powered by Soniox** - most accurate real-time transcription available. Supports **60+ "
                    "languages** with excellent accuracy.",
     .ownKey = OwnKey::soniox,
     .badge = "Fastest"},
    {.id = sonioxAsync,
     .name = "Soniox Async",
     .workflow = kUpload,
     .provider = AIProviderType::soniox,
     .metrics = {9, 6},
     .strengths = kPunctuation | kAccurate,
     .languages = "60+ languages",
     .description = "**Powered by Soniox** - high-accuracy file transcription with support for **60+ languages**. "
                    "Ideal for meetings, calls, and long-form content.",
     .ownKey = OwnKey::soniox},
    {.id = nova3English,
     .name = "Real-time Nova-3 (English Only)",
     .workflow = Streaming{Config::vocalithNova3En},
     .provider = AIProviderType::deepgram,
     .metrics = {8, 10},
     .strengths = kPunctuation | kFast,
     .languages = kEnglishOnly,
     .description = "**Powered by Deepgram Nova-3** - real-time transcription tuned for English. The text appears "
                    "**while you speak**.",
     .ownKey = OwnKey::nova3},
    {.id = nova3,
     .name = "Real-time Nova-3",
     .workflow = Streaming{Config::vocalithNova3},
     .provider = AIProviderType::deepgram,
     .metrics = {8, 9},
     .strengths = kPunctuation | kFast,
     .languages = kMultilingual,
     .description = "**Powered by Deepgram Nova-3** - real-time transcription that follows you from one language to "
                    "another. The text appears **while you speak**.",
     .ownKey = OwnKey::nova3},
    {.id = nova3Medical,
     .name = "Nova-3 Medical (Real-time)",
     .workflow = Streaming{Config::vocalithNova3Medical},
     .provider = AIProviderType::deepgram,
     .metrics = {8, 9},
     .strengths = kPunctuation | kFast,
     .languages = kEnglishOnly,
     .description =
         "**Powered by Deepgram Nova-3 Medical** - real-time transcription with the vocabulary of **clinical "
         "dictation**."},
    {.id = streamingWhisperV3,
     .name = "Real-time Whisper Large v3",
     .workflow = Streaming{Config::vocalithWhisper3},
     .provider = AIProviderType::fireworks,
     .metrics = {8, 8},
     .strengths = kPunctuation,
     .languages = kMultilingual,
     .description = "**Whisper Large v3 while you speak** - the accuracy of the large model with text that appears in "
                    "real time."},
    {.id = cartesiaInkStreaming,
     .name = "Cartesia Ink",
     .workflow = Streaming{Config::vocalithCartesia},
     .provider = AIProviderType::cartesia,
     .metrics = {8, 10},
     .strengths = kPunctuation | kFast,
     .languages = kMultilingual,
     .description = "Streaming STT built on Whisper with ultra-fast latency and real-world noise resilience."},
    {.id = gpt4oMini,
     .name = "GPT-4o mini Transcribe",
     .workflow = kUpload,
     .provider = AIProviderType::openai,
     .metrics = {10, 7},
     .strengths = kPunctuation | kAccurate,
     .languages = kMultilingual,
     .description = "**Powered by OpenAI GPT-4o mini** - excellent accuracy at a good speed. Follows **your prompt** "
                    "for names and terms.",
     .ownKey = OwnKey::gpt4oMiniTranscribe,
     .badge = "Most Accurate",
     .promptable = true},
    {.id = gpt4o,
     .name = "GPT-4o Transcribe",
     .workflow = kUpload,
     .provider = AIProviderType::openai,
     .metrics = {10, 6},
     .strengths = kPunctuation | kAccurate,
     .languages = kMultilingual,
     .description = "**Powered by OpenAI GPT-4o** - understands **difficult recordings and accents**. Follows your "
                    "prompt for names and terms.",
     .ownKey = OwnKey::gpt4oTranscribe,
     .promptable = true},
    {.id = whisperLargeV3,
     .name = "Whisper Large v3",
     .workflow = kUpload,
     .provider = AIProviderType::groq,
     .metrics = {9, 8},
     .strengths = kPunctuation | kAccurate,
     .languages = kMultilingual,
     .description = "**Powered by Groq Whisper Large v3** - high-quality online transcription. **Handles challenging "
                    "phrases** better than offline options.",
     .ownKey = OwnKey::whisperV3Large},
    {.id = whisperV3Turbo,
     .name = "Whisper v3 Turbo",
     .workflow = kUpload,
     .provider = AIProviderType::groq,
     .metrics = {8, 9},
     .strengths = kPunctuation | kFast,
     .languages = kMultilingual,
     .description = "**Powered by Groq Whisper v3 Turbo** - online transcription with **very short waiting times**, "
                    "close to the large model in accuracy.",
     .ownKey = OwnKey::whisperV3Turbo},
    {.id = elevenLabsScribe,
     .name = "ElevenLabs Scribe",
     .workflow = kUpload,
     .provider = AIProviderType::elevenLabs,
     .metrics = {9, 7},
     .strengths = kPunctuation | kCaptions | kAccurate,
     .languages = "90+ languages",
     .description = "**Powered by ElevenLabs Scribe** - high accuracy in many languages, with the **time of every "
                    "word** for captions."},
    {.id = voxtralMini,
     .name = "Voxtral Mini",
     .workflow = kUpload,
     .provider = AIProviderType::mistral,
     .metrics = {8, 8},
     .strengths = kPunctuation,
     .languages = kMultilingual,
     .description = "Mistral AI's fast and accurate transcription model with excellent multilingual support. Delivers "
                    "high-quality results comparable to GPT-4o mini."},
});

std::optional<VoiceModelSettings> settingsOf(const Row& row)
{
    if (!row.promptable)
        return std::nullopt;
    return VoiceModelSettings{{VoiceModelSetting::transcriptionPrompt, VoiceModelSetting::language}};
}

} // namespace

std::vector<OnlineTranscriptionModelMetadata> onlineModels()
{
    std::vector<OnlineTranscriptionModelMetadata> models;
    models.reserve(kRows.size());
    for (const Row& row : kRows) {
        const bool streams = std::holds_alternative<Streaming>(row.workflow);
        models.push_back({.id = row.id,
                          .name = row.name,
                          .description = row.description,
                          .byokSupport = row.ownKey,
                          .recommendationBadge = textOrNone(row.badge),
                          .attributes = {streams ? VoiceModelAttribute{"waveform", "Real-time"}
                                                 : VoiceModelAttribute{"cloud", "Online"},
                                         languageChip(row.languages)},
                          .workflow = row.workflow,
                          .categories = categoriesOf(VoiceModelCategory::onlineModels, row.strengths),
                          .metrics = row.metrics,
                          .providerType = row.provider,
                          .settings = settingsOf(row)});
    }
    return models;
}

} // namespace vocalith::catalogue
