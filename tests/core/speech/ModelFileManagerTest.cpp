#include "core/speech/whisper/ModelFileManager.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

TEST(ModelFileManager, FindsModelsOfTheCatalogueAndOfTheUser)
{
    const TemporaryFolder folder;
    const VoiceModelCatalogue catalogue;
    const ModelFileManager files(folder / "Models", catalogue);
    EXPECT_TRUE(files.presentModels().empty()) << "there is no folder yet";

    const auto tinyFile = files.expectedFile(PredefinedModelID::tiny);
    ASSERT_TRUE(tinyFile);
    writeFile(*tinyFile, "x");
    writeFile(folder / "Models/my voice.bin", "x");
    writeFile(folder / "Models/notes.txt", "x");
    writeFile(folder / "Models/.hidden.bin", "x");
    std::filesystem::create_directories(folder / "Models/folder.bin");
    EXPECT_THAT(files.presentModels(), testing::ElementsAre(TranscriptionModelID(PredefinedModelID::tiny),
                                                            TranscriptionModelID(std::string("my voice"))));
    EXPECT_EQ(files.locate(PredefinedModelID::tiny), folder / "Models" / tinyFile->filename());
    EXPECT_EQ(files.locate(std::string("my voice")), folder / "Models/my voice.bin");
    EXPECT_EQ(files.locate(std::string("my voice.bin")), folder / "Models/my voice.bin");
}

TEST(ModelFileManager, NamesWhatItDoesNotFindAndStaysInItsFolder)
{
    const TemporaryFolder folder;
    const VoiceModelCatalogue catalogue;
    const ModelFileManager files(folder / "Models", catalogue);
    std::filesystem::create_directories(folder / "Models/folder.bin");
    writeFile(folder / "outside.bin", "x");
    for (const std::string id : {"absent", "../outside", "..", "", "folder", "/etc/passwd", "a/../../outside"}) {
        const auto located = files.locate(id);
        ASSERT_FALSE(located) << id;
        EXPECT_EQ(userMessage(located.error()), "Model not found: " + id);
    }
    EXPECT_EQ(userMessage(files.locate(PredefinedModelID::largeV3).error()), "Model not found: largeV3");
    EXPECT_FALSE(files.locate(PredefinedModelID::parakeetTDT06)) << "no whisper model";
}

} // namespace
