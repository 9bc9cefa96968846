#include "base/CaseName.h"
#include "models/AIProviderType.h"
#include "models/AppInterfaceLanguage.h"
#include "models/MainAppURL.h"
#include "models/SharedAudioStorage.h"
#include "models/TranscriptionModelID.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>

using namespace vocalith;
using namespace vocalith::test;

namespace {

TEST(TranscriptionModelID, TheStoredNamesAreTheseAndStayTheseInThisOrder)
{
    const std::string_view expected[] = {
        "distilSmallEn",
        "distilMediumEn",
        "distilLargeV35",
        "largeV3TurboQuantized",
        "small",
        "largeV3Turbo",
        "largeV3",
        "largeV2",
        "base",
        "tinyEnglish",
        "tiny",
        "parakeetTDT06V2",
        "parakeetTDT06",
        "qwen3ASR",
        "qwen3ASRInt8",
        "parakeetEou",
        "sonioxRealtime",
        "sonioxAsync",
        "nova3English",
        "nova3",
        "nova3Medical",
        "streamingWhisperV3",
        "cartesiaInkStreaming",
        "gpt4oMini",
        "gpt4o",
        "whisperLargeV3",
        "whisperV3Turbo",
        "elevenLabsScribe",
        "voxtralMini",
        "sonioxAPI",
        "openAI",
        "openAICompatible",
        "deepgram",
        "elevenLabs",
        "fireworks",
        "groq",
        "assemblyAI",
    };
    std::vector<std::string> names;
    for (const auto id : allPredefinedModelIDs()) {
        names.push_back(toString(id));
        EXPECT_EQ(predefinedModelID(names.back()), id);
    }
    EXPECT_TRUE(std::ranges::equal(names, expected));
    EXPECT_EQ(names.size(), 37u);
    EXPECT_FALSE(predefinedModelID("mistral"));
    EXPECT_FALSE(predefinedModelID(""));
    EXPECT_EQ(toString(TranscriptionModelID("my own/model")), "my own/model");
}

TEST(AIProviderType, IconsLieUnderTheLowerCasedName)
{
    EXPECT_EQ(kAllCases<AIProviderType>.size(), 21u);
    EXPECT_EQ(iconPath(AIProviderType::googleGemini), "ai_providers/googlegemini.png");
    EXPECT_EQ(iconPath(AIProviderType::elevenLabs), "ai_providers/elevenlabs.png");
}

TEST(AppInterfaceLanguage, EveryLanguageHasItsOwnNameAndCode)
{
    std::set<std::string_view> names;
    std::set<std::string_view> codes;
    for (const auto language : kAllCases<AppInterfaceLanguage>) {
        names.insert(displayName(language));
        codes.insert(localeCode(language).value_or(""));
    }
    EXPECT_EQ(names.size(), 11u);
    EXPECT_EQ(codes.size(), 11u);
    EXPECT_EQ(displayName(AppInterfaceLanguage::systemDefault), "System");
    EXPECT_EQ(localeCode(AppInterfaceLanguage::systemDefault), std::nullopt);
    EXPECT_EQ(displayName(AppInterfaceLanguage::chineseTraditional), "Chinese (Traditional)");
    EXPECT_EQ(localeCode(AppInterfaceLanguage::chineseTraditional), "zh-Hant");
    EXPECT_EQ(localeCode(AppInterfaceLanguage::chineseSimplified), "zh-Hans");
}

TEST(MainAppURL, EveryLinkThatIsBuiltIsReadBack)
{
    for (const auto route : kAllCases<MainAppURL::Route>) {
        const MainAppURL url{route,
                             {{"bundleID", "org.example.Editor"}, {"fileName", "a&b=c #1%?+ü/\n.wav"}, {"é", ""}}};
        EXPECT_EQ(MainAppURL::parse(url.toString()), url) << url.toString();
    }
    const MainAppURL plain{MainAppURL::Route::startSession, {{std::string(MainAppURL::kBundleID), "a b"}}};
    EXPECT_EQ(plain.toString(), "vocalith://startSession?bundleID=a%20b");
}

TEST(MainAppURL, ReadsWhatDesktopsMakeOfLinksAndRefusesTheRest)
{
    using Route = MainAppURL::Route;
    const struct {
        std::string_view url;
        MainAppURL expected;
    } readable[] = {
        {"vocalith://", {Route::base, {}}},
        {"vocalith:", {Route::base, {}}},
        {"vocalith://?fileName=a", {Route::base, {{"fileName", "a"}}}},
        {"VOCALITH://startsession/", {Route::startSession, {}}},
        {"vocalith:transcribeFile?fileName=x.wav#top", {Route::transcribeFile, {{"fileName", "x.wav"}}}},
        {"vocalith:///stopLiveActivity?&flag&a=1&a=2&b=c=d&",
         {Route::stopLiveActivity, {{"flag", ""}, {"a", "2"}, {"b", "c=d"}}}},
    };
    for (const auto& [url, expected] : readable)
        EXPECT_EQ(MainAppURL::parse(url), expected) << url;
    for (const auto* url : {"", "vocalith", "vocalithx://base", "http://base", "vocalith://unknown",
                            "vocalith://startSession/more", "vocalith://base?a=%", "vocalith://base?%zz=1"})
        EXPECT_FALSE(MainAppURL::parse(url)) << url;
}

TEST(SharedAudioStorage, FindsOnlyFilesOfItsFolder)
{
    const TemporaryFolder container;
    const SharedAudioStorage storage(container.path());
    const auto folder = storage.folder();
    ASSERT_EQ(folder, container / "SharedAudio");
    std::ofstream(*folder / "a.wav") << "RIFF";
    std::ofstream(container / "outside.wav") << "RIFF";
    EXPECT_EQ(storage.file("a.wav"), *folder / "a.wav");
    for (const std::string_view name :
         {std::string_view("b.wav"), std::string_view(""), std::string_view("."), std::string_view(".."),
          std::string_view("../outside.wav"), std::string_view("/etc/hostname"), std::string_view("a.wav\0x", 7)})
        EXPECT_EQ(storage.file(name), failure(SharedAudioStorageError::fileMissing)) << name;
    EXPECT_EQ(userMessage(SharedAudioStorageError::fileMissing), "Shared audio file missing");
}

TEST(SharedAudioStorage, SaysWhenThereIsNoContainer)
{
    const TemporaryFolder temporary;
    writeFile(temporary / "file", "");
    for (const std::optional<std::filesystem::path>& container :
         {std::optional<std::filesystem::path>(), std::optional(temporary / "missing"),
          std::optional(temporary / "file")}) {
        const auto file = SharedAudioStorage(container).file("a.wav");
        ASSERT_FALSE(file);
        EXPECT_EQ(userMessage(file.error()), "Shared container unavailable");
    }
}

} // namespace
