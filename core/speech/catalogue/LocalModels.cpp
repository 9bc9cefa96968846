#include "core/speech/catalogue/CatalogueTables_p.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>

namespace vocalith::catalogue {

namespace {

using Metadata = LocalTranscriptionModelMetadata;

constexpr std::string_view kHubBaseURL = "https://huggingface.co/";
/// The repository of the whisper.cpp model files and their encoders.
constexpr const char* kWhisperCpp = "ggerganov/whisper.cpp/resolve/main/";

enum class Engine { whisper, parakeet, parakeetEou, qwen3 };

struct Row {
    PredefinedModelID id;
    const char* name;
    Engine engine;
    const char* size; ///< as shown: a display text that need not be the real size
    ModelMetrics metrics;
    unsigned strengths;
    const char* languages;
    const char* description;
    const char* badge = nullptr;
    const char* repository = kWhisperCpp; ///< on the hub, for whisper models
    const char* file = nullptr;           ///< in the repository, for whisper models
    const char* coreMl = nullptr;         ///< the archive of the encoder in the repository
    const char* localFile = nullptr;      ///< the name in the models folder where it is not `file`
};

using enum PredefinedModelID;
constexpr unsigned kText = kPunctuation | kCaptions;

constexpr auto kRows = std::to_array<Row>({
    {.id = parakeetTDT06,
     .name = "NVIDIA Parakeet TDT 0.6B V3",
     .engine = Engine::parakeet,
     .size = "496 MB",
     .metrics = {8, 10},
     .strengths = kText | kFast,
     .languages = kMultilingual,
     .description = "**Ultra-fast transcription** powered by NVIDIA FastConformer. Optimized for conversational speech "
                    "and voice commands.",
     .badge = "Best for Multilingual",
     .localFile = "parakeet-tdt-0.6b-v3.bin"},
    {.id = parakeetTDT06V2,
     .name = "NVIDIA Parakeet TDT 0.6B V2",
     .engine = Engine::parakeet,
     .size = "496 MB",
     .metrics = {8, 10},
     .strengths = kText | kFast,
     .languages = kEnglishOnly,
     .description = "**Ultra-fast English-only transcription** powered by NVIDIA FastConformer V2. Optimized for "
                    "English dictation and voice commands.",
     .badge = "Best for English",
     .localFile = "parakeet-tdt-0.6b-v2.bin"},
    {.id = parakeetEou,
     .name = "NVIDIA Parakeet EOU 120M",
     .engine = Engine::parakeetEou,
     .size = "85 MB",
     .metrics = {6, 10},
     .strengths = kFast,
     .languages = kEnglishOnly,
     .description = "**Real-time streaming transcription** with end-of-utterance detection. Ultra-low latency updates "
                    "every 320ms.",
     .localFile = "parakeet-eou-120m.bin"},
    {.id = qwen3ASR,
     .name = "Qwen3-ASR 0.6B",
     .engine = Engine::qwen3,
     .size = "1.75 GB",
     .metrics = {9, 6},
     .strengths = kPunctuation | kAccurate,
     .languages = "30+ languages",
     .description = "**Multilingual transcription** powered by Qwen3-ASR. Supports **30+ languages** including "
                    "Chinese, Japanese, Korean, Arabic, and Hindi with excellent accuracy.",
     .badge = "Best for Asian Languages",
     .localFile = "qwen3-asr-0.6b.bin"},
    {.id = qwen3ASRInt8,
     .name = "Qwen3-ASR 0.6B Int8",
     .engine = Engine::qwen3,
     .size = "900 MB",
     .metrics = {8, 7},
     .strengths = kPunctuation,
     .languages = "30+ languages",
     .description =
         "**Multilingual transcription** powered by Qwen3-ASR in 8-bit precision. Supports **30+ languages** "
         "with very good accuracy in about half the space.",
     .badge = "Best for Asian Languages",
     .localFile = "qwen3-asr-0.6b-int8.bin"},
    {.id = distilSmallEn,
     .name = "Distil-Whisper Small (English Only)",
     .engine = Engine::whisper,
     .size = "336 MB",
     .metrics = {6, 8},
     .strengths = kText,
     .languages = kEnglishOnly,
     .description = "**Fast English-optimized transcription** with good accuracy. Smaller model provides **quick "
                    "processing** for English-only content with reduced storage requirements.",
     .repository = "distil-whisper/distil-small.en/resolve/main/",
     .file = "ggml-distil-small.en.bin"},
    {.id = distilMediumEn,
     .name = "Distil-Whisper Medium (English Only)",
     .engine = Engine::whisper,
     .size = "794 MB",
     .metrics = {7, 7},
     .strengths = kText,
     .languages = kEnglishOnly,
     .description = "**Works well for English dictation** with almost immediate output. Provides **good accuracy** for "
                    "English-only content while using less storage space than larger models.",
     .repository = "distil-whisper/distil-medium.en/resolve/main/",
     .file = "ggml-medium-32-2.en.bin",
     .localFile = "ggml-distil-medium.en.bin"},
    {.id = distilLargeV35,
     .name = "Distil-Whisper Large v3.5 (English Only)",
     .engine = Engine::whisper,
     .size = "1.5 GB",
     .metrics = {8, 6},
     .strengths = kText,
     .languages = kEnglishOnly,
     .description = "The newest Distil-Whisper model trained on **4× more diverse data** for enhanced robustness. "
                    "Delivers **excellent accuracy** while being **~1.5× faster** than Whisper Large v3 Turbo. "
                    "English-only optimized version.",
     .repository = "distil-whisper/distil-large-v3.5-ggml/resolve/main/",
     .file = "ggml-model.bin",
     .localFile = "ggml-distil-large-v3.5.bin"},
    {.id = largeV3TurboQuantized,
     .name = "Whisper Large v3 Turbo (Quantized)",
     .engine = Engine::whisper,
     .size = "547 MB",
     .metrics = {8, 6},
     .strengths = kText,
     .languages = kMultilingual,
     .description = "**Best for long audio transcriptions** in any language. Compressed model delivers **excellent "
                    "accuracy** while using significantly less memory than full-size models.",
     .file = "ggml-large-v3-turbo-q5_0.bin"},
    {.id = small,
     .name = "Whisper Small",
     .engine = Engine::whisper,
     .size = "244 MB",
     .metrics = {6, 7},
     .strengths = kText,
     .languages = kMultilingual,
     .description =
         "Good for **day-to-day dictation**. On-device with **balanced speed and accuracy** for general use.",
     .file = "ggml-small.bin",
     .coreMl = "ggml-small-encoder.mlmodelc.zip"},
    {.id = largeV3Turbo,
     .name = "Whisper Large v3 Turbo",
     .engine = Engine::whisper,
     .size = "1.5 GB",
     .metrics = {9, 5},
     .strengths = kText | kAccurate,
     .languages = kMultilingual,
     .description = "**Close to the accuracy of the largest model** in any language, at several times its speed. Needs "
                    "a capable machine.",
     .file = "ggml-large-v3-turbo.bin",
     .coreMl = "ggml-large-v3-turbo-encoder.mlmodelc.zip"},
    {.id = largeV3,
     .name = "Whisper Large v3",
     .engine = Engine::whisper,
     .size = "2.9 GB",
     .metrics = {10, 1},
     .strengths = kText | kAccurate,
     .languages = kMultilingual,
     .description = "**Maximum accuracy** for offline transcription. Captures **details of your voice extremely well** "
                    "but is slowest and resource-intensive.",
     .file = "ggml-large-v3.bin",
     .coreMl = "ggml-large-v3-encoder.mlmodelc.zip"},
    {.id = largeV2,
     .name = "Whisper Large v2",
     .engine = Engine::whisper,
     .size = "2.9 GB",
     .metrics = {9, 2},
     .strengths = kText | kAccurate,
     .languages = kMultilingual,
     .description = "**Maximum accuracy** for offline transcription. Captures **details of your voice extremely well** "
                    "but is slow and resource-intensive.",
     .file = "ggml-large-v2.bin",
     .coreMl = "ggml-large-v2-encoder.mlmodelc.zip"},
    {.id = base,
     .name = "Whisper Base",
     .engine = Engine::whisper,
     .size = "466 MB",
     .metrics = {5, 8},
     .strengths = kText,
     .languages = kMultilingual,
     .description = "For **quick memos and everyday dictation**. Offline with **good speed** but best for "
                    "straightforward speech.",
     .file = "ggml-base.bin",
     .coreMl = "ggml-base-encoder.mlmodelc.zip"},
    {.id = tinyEnglish,
     .name = "Whisper Tiny (English)",
     .engine = Engine::whisper,
     .size = "75 MB",
     .metrics = {4, 9},
     .strengths = kText | kFast,
     .languages = kEnglishOnly,
     .description = "For **instant voice notes in English** when speed matters. Smallest model gives **quick results** "
                    "but limited accuracy for complex speech.",
     .file = "ggml-tiny.en.bin",
     .coreMl = "ggml-tiny.en-encoder.mlmodelc.zip"},
    {.id = tiny,
     .name = "Whisper Tiny",
     .engine = Engine::whisper,
     .size = "75 MB",
     .metrics = {3, 9},
     .strengths = kText | kFast,
     .languages = kMultilingual,
     .description =
         "For **instant voice notes** when speed matters. Smallest model gives **quick results** but limited "
         "accuracy for complex speech.",
     .file = "ggml-tiny.bin",
     .coreMl = "ggml-tiny-encoder.mlmodelc.zip"},
});

std::optional<std::string> hubURL(const char* repository, const char* file)
{
    return file ? std::optional(fmt::format("{}{}{}", kHubBaseURL, repository, file)) : std::nullopt;
}

Metadata::ModelSource sourceOf(const Row& row)
{
    switch (row.engine) {
    case Engine::whisper:
        return Metadata::Downloadable{hubURL(row.repository, row.file), hubURL(row.repository, row.coreMl)};
    case Engine::parakeet: return Metadata::ParakeetDownloadable{};
    case Engine::parakeetEou: return Metadata::ParakeetEouDownloadable{};
    case Engine::qwen3: return Metadata::Qwen3Downloadable{};
    }
    return Metadata::Local{};
}

AIProviderType makerOf(Engine engine)
{
    switch (engine) {
    case Engine::whisper: return AIProviderType::openai;
    case Engine::parakeet:
    case Engine::parakeetEou: return AIProviderType::nvidia;
    case Engine::qwen3: return AIProviderType::qwen;
    }
    return AIProviderType::custom;
}

/// "496 MB" and "1.75 GB" in bytes.
std::uint64_t bytesOf(std::string_view sizeLabel)
{
    double amount = 0;
    std::from_chars(sizeLabel.data(), sizeLabel.data() + sizeLabel.size(), amount);
    return static_cast<std::uint64_t>(std::llround(amount * (sizeLabel.ends_with("GB") ? 1e9 : 1e6)));
}

std::string sizeLabelOf(std::uint64_t bytes)
{
    const auto megabytes = static_cast<double>(bytes) / 1e6;
    if (megabytes < 999.5)
        return fmt::format("{:.0f} MB", std::max(megabytes, 1.0));
    return fmt::format("{:g} GB", std::round(megabytes / 10) / 100);
}

VoiceModelAttribute sizeChip(std::string label)
{
    return {"shippingbox", std::move(label)};
}

} // namespace

std::vector<LocalTranscriptionModelMetadata> localModels()
{
    std::vector<Metadata> models;
    models.reserve(kRows.size());
    for (const Row& row : kRows) {
        models.push_back({.id = row.id,
                          .name = row.name,
                          .source = sourceOf(row),
                          .description = row.description,
                          .recommendationBadge = textOrNone(row.badge),
                          .attributes = {sizeChip(row.size), languageChip(row.languages)},
                          .categories = categoriesOf(VoiceModelCategory::localModels, row.strengths),
                          .metrics = row.metrics,
                          .providerType = makerOf(row.engine),
                          .sizeInBytes = bytesOf(row.size)});
    }
    return models;
}

LocalTranscriptionModelMetadata userModel(const std::string& identifier, std::optional<std::uint64_t> sizeInBytes)
{
    Metadata model{.id = identifier,
                   .name = identifier,
                   .source = Metadata::Local{},
                   .description = "**Your own model file** from the models folder.",
                   .recommendationBadge = std::nullopt,
                   .attributes = {},
                   .categories = categoriesOf(VoiceModelCategory::localModels, kText),
                   .metrics = std::nullopt,
                   .providerType = AIProviderType::custom,
                   .sizeInBytes = sizeInBytes.value_or(0)};
    if (sizeInBytes)
        model.attributes.push_back(sizeChip(sizeLabelOf(*sizeInBytes)));
    return model;
}

std::optional<std::string> localFileName(PredefinedModelID id)
{
    const auto* const row = std::ranges::find(kRows, id, &Row::id);
    if (row == kRows.end())
        return std::nullopt;
    return row->localFile ? row->localFile : row->file;
}

std::string userModelFileName(const std::string& identifier)
{
    // An identifier comes from the settings, which anybody can edit: it must not lead out of the models folder.
    std::string file = std::filesystem::path(identifier).filename().string();
    if (!file.ends_with(".bin"))
        file += ".bin";
    return file;
}

} // namespace vocalith::catalogue
