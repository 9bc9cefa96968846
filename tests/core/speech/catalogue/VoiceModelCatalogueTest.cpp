#include "core/speech/catalogue/VoiceModelCatalogue.h"

#include "base/Json.h"
#include "core/speech/catalogue/TranscriptionModelSelection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

using namespace vocalith;

namespace {

using enum PredefinedModelID;
using Local = LocalTranscriptionModelMetadata;
using Provider = BYOKVoiceModelMetadata;

template <class T>
bool contains(const std::vector<T>& values, const T& value)
{
    return std::ranges::find(values, value) != values.end();
}

const Local& local(const VoiceModelCatalogue& catalogue, PredefinedModelID model)
{
    return std::get<Local>(*catalogue.find(model));
}

TEST(VoiceModelCatalogue, HoldsEveryPredefinedModelOnceAndFiveMore)
{
    const VoiceModelCatalogue catalogue;
    std::multiset<TranscriptionModelID> found;
    for (const auto& entry : catalogue.entries())
        found.insert(id(entry));
    for (const PredefinedModelID model : allPredefinedModelIDs())
        EXPECT_EQ(found.count(model), 1U) << toString(model);
    for (const char* model : {"appleSpeechTranscriber", "appleSpeechAnalyzer", "mistral", "volcengine", "cartesia"})
        EXPECT_EQ(found.count(std::string(model)), 1U) << model;
    EXPECT_EQ(found.size(), 42U);

    const std::vector<std::pair<VoiceModelFamily, std::size_t>> families{{VoiceModelFamily::local, 16},
                                                                         {VoiceModelFamily::online, 13},
                                                                         {VoiceModelFamily::apple, 2},
                                                                         {VoiceModelFamily::byok, 11}};
    for (const auto& [wanted, count] : families)
        EXPECT_EQ(catalogue.entries(wanted).size(), count);
}

TEST(VoiceModelCatalogue, EveryEntryCanBeShownAndFiltered)
{
    const VoiceModelCatalogue catalogue;
    EXPECT_EQ(catalogue.entries(VoiceModelCategory::all).size(), catalogue.entries().size());
    for (const auto& entry : catalogue.entries()) {
        SCOPED_TRACE(toString(id(entry)));
        EXPECT_FALSE(name(entry).empty());
        EXPECT_FALSE(description(entry).empty());
        EXPECT_FALSE(attributes(entry).empty());
        // Markdown emphasis that is opened must be closed.
        std::size_t marks = 0;
        for (auto at = description(entry).find("**"); at != std::string::npos;
             at = description(entry).find("**", at + 2))
            ++marks;
        EXPECT_EQ(marks % 2, 0U);
        const auto& filters = categories(entry);
        EXPECT_EQ(std::set(filters.begin(), filters.end()).size(), filters.size()) << "listed twice under one filter";
        if (const auto bars = metrics(entry)) {
            EXPECT_TRUE(bars->accuracy >= 1 && bars->accuracy <= 10 && bars->speed >= 1 && bars->speed <= 10);
            EXPECT_EQ(contains(filters, VoiceModelCategory::mostFast), bars->speed >= 9);
            EXPECT_EQ(contains(filters, VoiceModelCategory::mostAccurate), bars->accuracy >= 9);
        }
    }
}

TEST(VoiceModelCatalogue, LocalEntriesCarryTheirSizeAndAFileNameOfTheirOwn)
{
    const VoiceModelCatalogue catalogue;
    std::set<std::string> files;
    for (const auto& entry : catalogue.entries(VoiceModelFamily::local)) {
        SCOPED_TRACE(toString(id(entry)));
        const auto& model = std::get<Local>(entry);
        ASSERT_EQ(model.attributes.front().icon, "shippingbox");
        // What the label says is what the number says.
        double amount = 0;
        char unit = 0;
        ASSERT_EQ(std::sscanf(model.attributes.front().label.c_str(), "%lf %cB", &amount, &unit), 2);
        EXPECT_NEAR(static_cast<double>(model.sizeInBytes), amount * (unit == 'G' ? 1e9 : 1e6), 1);
        const auto file = modelFileName(entry);
        ASSERT_TRUE(file && file->ends_with(".bin") && file->find('/') == std::string::npos);
        EXPECT_TRUE(files.insert(*file).second) << *file << " belongs to two models";
        if (const auto* hub = std::get_if<Local::Downloadable>(&model.source)) {
            ASSERT_TRUE(hub->downloadUrl);
            EXPECT_TRUE(hub->downloadUrl->starts_with("https://") && hub->downloadUrl->ends_with(".bin"));
            const auto encoder = hub->coreMlDownloadUrl.value_or("-encoder.mlmodelc.zip");
            EXPECT_TRUE(encoder.ends_with("-encoder.mlmodelc.zip"));
        }
    }
}

TEST(VoiceModelCatalogue, LocalRowsReadAsTheyWereGiven)
{
    struct Row {
        PredefinedModelID model;
        bool encoder;
        const char* name;
        const char* size;
        const char* badge;
        const char* urlEnd;
    };
    const Row rows[] = {
        {parakeetTDT06, false, "NVIDIA Parakeet TDT 0.6B V3", "496 MB", "Best for Multilingual", ""},
        {parakeetEou, false, "NVIDIA Parakeet EOU 120M", "85 MB", "", ""},
        {qwen3ASR, false, "Qwen3-ASR 0.6B", "1.75 GB", "Best for Asian Languages", ""},
        {distilMediumEn, false, "Distil-Whisper Medium (English Only)", "794 MB", "",
         "/distil-whisper/distil-medium.en/resolve/main/ggml-medium-32-2.en.bin"},
        {distilLargeV35, false, "Distil-Whisper Large v3.5 (English Only)", "1.5 GB", "",
         "/distil-whisper/distil-large-v3.5-ggml/resolve/main/ggml-model.bin"},
        {largeV3TurboQuantized, false, "Whisper Large v3 Turbo (Quantized)", "547 MB", "",
         "/resolve/main/ggml-large-v3-turbo-q5_0.bin"},
        {base, true, "Whisper Base", "466 MB", "", "/resolve/main/ggml-base.bin"},
        {tinyEnglish, true, "Whisper Tiny (English)", "75 MB", "", "/resolve/main/ggml-tiny.en.bin"},
    };
    const VoiceModelCatalogue catalogue;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Local& model = local(catalogue, row.model);
        EXPECT_EQ(model.name, row.name);
        EXPECT_EQ(model.attributes.front().label, row.size);
        EXPECT_EQ(model.recommendationBadge.value_or(""), row.badge);
        const auto* hub = std::get_if<Local::Downloadable>(&model.source);
        EXPECT_TRUE(std::string(hub ? hub->downloadUrl.value() : "").ends_with(row.urlEnd));
        EXPECT_EQ(hub != nullptr && hub->coreMlDownloadUrl.has_value(), row.encoder);
    }
    EXPECT_EQ(local(catalogue, distilLargeV35).description,
              "The newest Distil-Whisper model trained on **4× more diverse data** for enhanced robustness. Delivers "
              "**excellent accuracy** while being **~1.5× faster** than Whisper Large v3 Turbo. English-only optimized "
              "version.");
    EXPECT_EQ(modelFileName(*catalogue.find(distilLargeV35)), "ggml-distil-large-v3.5.bin");
    EXPECT_EQ(modelFileName(*catalogue.find(small)), "ggml-small.bin");
    EXPECT_EQ(modelFileName(*catalogue.find(gpt4o)), std::nullopt);
}

TEST(VoiceModelCatalogue, OwnKeyProvidersOfferTheirRoutes)
{
    using File = FileBasedWorkflow;
    using Stream = OnlineStreamingConfig;
    struct Row {
        TranscriptionModelID model;
        const char* placeholder;
        std::optional<File> file;
        std::optional<Stream> stream;
    };
    const Row rows[] = {
        {sonioxAPI, "stt-async-preview", File::soniox, Stream::soniox},
        {openAI, "gpt-4o-mini-transcribe", File::openAI, std::nullopt},
        {openAICompatible, "Systran/faster-whisper-tiny", File::openAICompatible, std::nullopt},
        {deepgram, "nova-3", File::deepgram, Stream::deepgram},
        {elevenLabs, "scribe_v2", File::elevenLabs, Stream::elevenLabsStreaming},
        {fireworks, "whisper-v3", File::fireworks, std::nullopt},
        {groq, "whisper-large-v3-turbo", File::groq, std::nullopt},
        {assemblyAI, "universal", File::assemblyAI, Stream::assemblyAI},
        {"mistral", "voxtral-mini-2507", File::mistral, std::nullopt},
        {"volcengine", "bigmodel", std::nullopt, Stream::volcengine},
        {"cartesia", "ink-whisper", File::cartesia, std::nullopt},
    };
    const VoiceModelCatalogue catalogue;
    for (const Row& row : rows) {
        SCOPED_TRACE(toString(row.model));
        const auto provider = std::get<Provider>(catalogue.entry(row.model));
        EXPECT_EQ(provider.modelPlaceholder, row.placeholder);
        std::optional<File> file;
        std::optional<Stream> stream;
        for (const auto& workflow : provider.workflows) {
            if (const auto* upload = std::get_if<FileBased>(&workflow))
                file = upload->workflow;
            else
                stream = std::get<Streaming>(workflow).config;
        }
        EXPECT_EQ(file, row.file);
        EXPECT_EQ(stream, row.stream);
        const bool compatible = row.model == TranscriptionModelID(openAICompatible);
        EXPECT_EQ(provider.requiresAPIKey, !compatible);
        if (const auto* fixed = std::get_if<Provider::Hardcoded>(&provider.baseURL)) {
            EXPECT_TRUE(fixed->url.starts_with("https://") && !fixed->url.ends_with("/"));
        }
        EXPECT_EQ(std::holds_alternative<Provider::Customizable>(provider.baseURL), compatible);
    }
    const auto server = std::get<Provider>(catalogue.entry(openAICompatible));
    EXPECT_EQ(server.attributes, (std::vector<VoiceModelAttribute>{{"network", "Online"}}));
    EXPECT_EQ(std::get<Provider::Customizable>(server.baseURL).placeholder, "http://localhost:8000");
}

TEST(VoiceModelCatalogue, UnknownIdentifiersAreModelFilesOfTheUser)
{
    const VoiceModelCatalogue catalogue;
    // The plain-text identities of the catalogue come first; a case name in text form is no predefined model.
    EXPECT_EQ(family(catalogue.entry("mistral")), VoiceModelFamily::byok);
    EXPECT_EQ(name(catalogue.entry(kSpeechTranscriberID)), "Apple Speech Recognition");
    EXPECT_EQ(name(catalogue.entry(kSpeechAnalyzerID)), "Apple Speech Analyzer");
    EXPECT_EQ(family(catalogue.entry("mistral.bin")), VoiceModelFamily::local);
    EXPECT_EQ(name(catalogue.entry("small")), "small");

    const auto entry = catalogue.entry("my-model.bin", 1'626'000'000);
    const auto& model = std::get<Local>(entry);
    EXPECT_TRUE(std::holds_alternative<Local::Local>(model.source));
    EXPECT_EQ(model.name, "my-model.bin");
    EXPECT_TRUE(isWhisperModel(entry));
    EXPECT_EQ(modelFileName(entry), "my-model.bin");
    EXPECT_TRUE(contains(model.categories, VoiceModelCategory::all));

    const std::map<std::uint64_t, std::string> labels{{12, "1 MB"},
                                                      {74'600'000, "75 MB"},
                                                      {999'900'000, "1 GB"},
                                                      {1'500'000'000, "1.5 GB"},
                                                      {1'626'000'000, "1.63 GB"}};
    for (const auto& [size, label] : labels) {
        const auto sized = catalogue.entry("a.bin", size);
        EXPECT_EQ(attributes(sized).front(), (VoiceModelAttribute{"shippingbox", label}));
    }
}

TEST(VoiceModelCatalogue, AnIdentifierCannotLeaveTheModelsFolder)
{
    const VoiceModelCatalogue catalogue;
    for (const char* hostile : {"../../secret", "/etc/passwd", "..", ".", "a/../..", "folder/"}) {
        const auto file = modelFileName(catalogue.entry(hostile)).value();
        EXPECT_EQ(file.find('/'), std::string::npos) << hostile;
        EXPECT_TRUE(file.ends_with(".bin")) << hostile;
    }
}

TEST(VoiceModelCatalogue, KnowsTheModelsThatUnderstandEnglishOnly)
{
    const VoiceModelCatalogue catalogue;
    std::set<TranscriptionModelID> english;
    for (const auto& entry : catalogue.entries()) {
        if (isEnglishOnly(entry))
            english.insert(id(entry));
    }
    EXPECT_EQ(english, (std::set<TranscriptionModelID>{distilSmallEn, distilMediumEn, distilLargeV35, tinyEnglish,
                                                       parakeetTDT06V2, parakeetEou, nova3English, nova3Medical,
                                                       kSpeechTranscriberID}));
}

TEST(TranscriptionModelSelection, IsStoredUnderItsKeys)
{
    const std::pair<TranscriptionModelSelection, const char*> forms[] = {
        {{"small", ModelType::whisper, std::nullopt}, R"({"modelId":"small","modelType":"whisper"})"},
        {{std::nullopt, ModelType::appleSpeech, "en_US"}, R"({"modelType":"appleSpeech","locale":"en_US"})"},
        {{}, R"({"modelType":"none"})"},
    };
    for (const auto& [record, text] : forms) {
        EXPECT_EQ(dumpJson(toJson(record)), text);
        EXPECT_EQ(fromJson<TranscriptionModelSelection>(parseJson(text).value()).value(), record);
    }
}

} // namespace
