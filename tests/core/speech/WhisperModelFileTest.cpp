#include "core/speech/whisper/WhisperModelFile.h"
#include "tests/support/ScriptedWhisperModel.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include <sys/stat.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

class WhisperModelFileTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        const TemporaryFolder folder;
        ScriptedWhisperModel().write(folder / "model.bin");
        s_content = readFile(folder / "model.bin");
    }

    Result<WhisperModelFile, std::string> read(std::string_view content) const
    {
        writeFile(m_file, content);
        return readWhisperModelFile(m_file);
    }

    static std::string withNumber(std::size_t offset, std::int32_t number)
    {
        auto content = s_content;
        std::memcpy(content.data() + offset, &number, sizeof number);
        return content;
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder / "model.bin";
    static inline std::string s_content;
};

TEST_F(WhisperModelFileTest, ReadsTheHeaderOfACompleteModel)
{
    const auto model = read(s_content);
    ASSERT_TRUE(model) << model.error();
    EXPECT_EQ(model->vocabulary, 51864);
    EXPECT_EQ(model->textState, 64);
    EXPECT_EQ(model->format, 1);
    EXPECT_TRUE(read(withNumber(44, 2001))) << "the version of the quantisation does not matter";
}

TEST_F(WhisperModelFileTest, RefusesAFileThatIsCutAnywhere)
{
    const auto firstTensor = s_content.find("encoder.positional_embedding");
    const auto lastTensor = s_content.rfind("decoder.blocks.0.cross_attn.out.bias");
    ASSERT_NE(lastTensor, std::string::npos);
    std::vector<std::size_t> lengths = {0, 1, 48, 52, 56, 60, 1000, 56 + 80 * 201 * 4, firstTensor - 300};
    for (std::size_t header = 0; header <= 48; header += 4)
        lengths.push_back(header + 2);
    for (std::size_t byte = 0; byte < 24; ++byte) {
        lengths.push_back(firstTensor - 16 + byte);
        lengths.push_back(lastTensor - 16 + byte);
    }
    for (const std::size_t missing : {1U, 2U, 4U, 255U, 256U, 4096U})
        lengths.push_back(s_content.size() - missing);
    for (const auto length : lengths)
        EXPECT_FALSE(read(std::string_view(s_content).substr(0, length))) << length;
    EXPECT_FALSE(read(s_content + '\0'));
    EXPECT_FALSE(read(s_content + s_content));
}

TEST_F(WhisperModelFileTest, RefusesNumbersThatNoModelHas)
{
    const std::size_t words = 56 + 80 * 201 * 4;
    const std::size_t tensor = s_content.find("encoder.positional_embedding") - 20;
    for (std::size_t field = 0; field <= 52; field += 4) {
        for (const std::int32_t number : {-1, 0, 7, 0x7FFFFFFF})
            EXPECT_FALSE(read(withNumber(field, number))) << "at " << field << ": " << number;
    }
    for (const std::int32_t number : {-1, 0, 0x7FFFFFFF}) {
        EXPECT_FALSE(read(withNumber(words, number))) << "words: " << number;
        EXPECT_FALSE(read(withNumber(words + 4, number))) << "length of a word: " << number;
        for (const std::size_t field : {0U, 4U, 12U, 16U})
            EXPECT_FALSE(read(withNumber(tensor + field, number))) << "tensor at " << field << ": " << number;
    }
    EXPECT_FALSE(read(withNumber(tensor + 8, 1))) << "another type of the same tensor";
    EXPECT_FALSE(read(withNumber(44, 0))) << "32-bit weights, with which the library aborts";
}

TEST_F(WhisperModelFileTest, RefusesOtherFiles)
{
    std::string random(200'000, '\0');
    std::minstd_rand generator(7);
    for (auto& byte : random)
        byte = static_cast<char>(generator());
    EXPECT_FALSE(read(random));
    EXPECT_FALSE(read("lmgg" + random)) << "only the magic number is right";
    EXPECT_FALSE(read("GGUF" + random));
    // Another family in the same container: a speech model of 8192 words, 1024 wide.
    auto other = s_content;
    const std::int32_t header[] = {8192, 1024, 24, 8, 128, 640, 2};
    std::memcpy(other.data() + 4, header, sizeof header);
    EXPECT_FALSE(read(other));

    EXPECT_FALSE(readWhisperModelFile(m_folder / "absent.bin"));
    EXPECT_FALSE(readWhisperModelFile(m_folder.path()));
    ASSERT_EQ(mkfifo((m_folder / "pipe.bin").c_str(), 0600), 0);
    EXPECT_FALSE(readWhisperModelFile(m_folder / "pipe.bin"));
}

} // namespace
