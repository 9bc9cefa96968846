#include "core/speech/catalogue/DefaultModelChoice.h"
#include "core/speech/catalogue/ModelGuards.h"
#include "core/speech/catalogue/ModelSelection.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using enum PredefinedModelID;
using Model = TranscriptionModelID;

constexpr PlatformTraits kEverything{.intelProcessor = false, .supportsQwen3 = true, .supportsSpeechAnalyzer = true};
constexpr PlatformTraits kOldIntel{.intelProcessor = true, .supportsQwen3 = false, .supportsSpeechAnalyzer = false};

const std::string kParakeetText =
    "Parakeet V2 is not compatible with Intel Macs. Use Parakeet V3, Whisper, or online models instead.";
const std::string kQwenText = "Qwen3-ASR requires macOS 15 or iOS 18";
const std::string kAnalyzerText = "Apple Speech Analyzer requires macOS 26 or iOS 26 or later";

TEST(ModelGuards, RefuseWhatThePlatformCannotRun)
{
    struct Row {
        Model model;
        std::string refusal; ///< on the old machine; empty: allowed
    };
    const Row rows[] = {
        {parakeetTDT06V2, kParakeetText},
        {qwen3ASR, kQwenText},
        {qwen3ASRInt8, kQwenText},
        {"appleSpeechAnalyzer", kAnalyzerText},
        {parakeetTDT06, ""},
        {parakeetEou, ""},
        {small, ""},
        {gpt4o, ""},
        {groq, ""},
        {"appleSpeechTranscriber", ""},
        {"mine.bin", ""},
    };
    const VoiceModelCatalogue catalogue;
    for (const Row& row : rows) {
        SCOPED_TRACE(toString(row.model));
        const auto entry = catalogue.entry(row.model);
        const auto refused = checkModel(entry, kOldIntel, true);
        EXPECT_EQ(refused ? "" : userMessage(refused.error()), row.refusal);
        EXPECT_TRUE(checkModel(entry, kEverything, true));
        // What the machine can never run is not recommended for download.
        const auto missing = checkModel(entry, kOldIntel, false);
        EXPECT_EQ(missing.has_value(), row.refusal.empty() && family(entry) != VoiceModelFamily::local);
        if (!row.refusal.empty()) {
            EXPECT_EQ(userMessage(missing.error()), row.refusal);
        }
    }
}

TEST(ModelGuards, TellWhichFileIsMissingAndWhereItBelongs)
{
    const VoiceModelCatalogue catalogue;
    const auto refused = checkModel(catalogue.entry(distilLargeV35), kEverything, false, "/home/me/Models");
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, ModelRefusal::Kind::filesMissing);
    const std::string text = userMessage(refused.error());
    for (const char* part :
         {"Distil-Whisper Large v3.5 (English Only)", "ggml-distil-large-v3.5.bin", "/home/me/Models"})
        EXPECT_NE(text.find(part), std::string::npos) << text;
}

TEST(ModelGuards, ThisPlatformOffersNoneOfTheNewerRecognisers)
{
    const PlatformTraits traits = currentPlatformTraits();
    EXPECT_FALSE(traits.supportsQwen3);
    EXPECT_FALSE(traits.supportsSpeechAnalyzer);
#if defined(__aarch64__)
    EXPECT_FALSE(traits.intelProcessor);
#elif defined(__x86_64__)
    EXPECT_TRUE(traits.intelProcessor);
#endif
}

TEST(ModelSelection, KeepsThePreviousChoiceWhenAModelIsRefused)
{
    const TemporaryFolder folder;
    const FakeClock clock;
    const VoiceModelCatalogue catalogue;
    bool present = true;
    int lookups = 0;
    const auto find = [&](const VoiceModelMetadata&) {
        ++lookups;
        return ModelSelection::ModelFiles{present, folder.path()};
    };
    {
        PersistentAppStorage storage(folder / "settings.json", clock, Logger());
        ModelSelection selection(catalogue, storage.selectedDictationModelID, kOldIntel, find);
        EXPECT_EQ(selection.selected(), std::nullopt);
        ASSERT_TRUE(selection.select(small));

        const auto refused = selection.select(parakeetTDT06V2);
        ASSERT_FALSE(refused);
        EXPECT_EQ(userMessage(refused.error()), kParakeetText);
        present = false;
        EXPECT_FALSE(selection.select(largeV3));
        EXPECT_EQ(selection.selected(), Model(small));
        EXPECT_FALSE(selection.check(small)) << "the file went after the selection";

        const int before = lookups;
        EXPECT_TRUE(selection.select("mistral"));
        EXPECT_EQ(lookups, before) << "looked for files of an online model";
    }
    PersistentAppStorage reopened(folder / "settings.json", clock, Logger());
    EXPECT_EQ(reopened.selectedDictationModelID.get(), Model("mistral"));
    EXPECT_EQ(reopened.selectedFileTranscriptionVoiceModelID.get(), std::nullopt);
}

TEST(DefaultModelChoice, FindsAModelThatCanBeUsed)
{
    struct Row {
        const char* what;
        std::optional<Model> selection;
        std::set<Model> present;
        Model chosen;
    };
    const Row rows[] = {
        {"nothing there", std::nullopt, {}, "appleSpeechTranscriber"},
        {"selected and there", tiny, {tiny, largeV3}, tiny},
        {"selected but gone", tiny, {small, base}, small},
        {"online needs no file", gpt4oMini, {largeV3}, gpt4oMini},
        {"refused by the platform", "appleSpeechAnalyzer", {base}, base},
        {"the most accurate", std::nullopt, {tiny, base, small, largeV3Turbo}, largeV3Turbo},
        {"the multilingual among equals", std::nullopt, {distilLargeV35, largeV3TurboQuantized}, largeV3TurboQuantized},
        {"the smaller among equals", std::nullopt, {largeV2, largeV3Turbo}, largeV3Turbo},
        {"no other runtime by itself", std::nullopt, {parakeetTDT06, qwen3ASR, parakeetEou}, "appleSpeechTranscriber"},
        {"own file", std::nullopt, {"mine.bin"}, "mine.bin"},
        {"own file comes last", std::nullopt, {"mine.bin", tiny}, tiny},
        {"own file when selected", "mine.bin", {"mine.bin", largeV3}, "mine.bin"},
        {"own file gone", "mine.bin", {}, "appleSpeechTranscriber"},
    };
    const VoiceModelCatalogue catalogue;
    for (const Row& row : rows)
        EXPECT_EQ(dictationModel(catalogue, row.selection, row.present, kOldIntel), row.chosen) << row.what;
}

} // namespace
