#include "core/speech/whisper/WhisperModelFile.h"

#include "core/speech/whisper/WhisperTensors.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocalith {
namespace {

constexpr std::int32_t kMagic = 0x67676d6c; // "ggml"
constexpr std::int32_t kQuantisationVersionFactor = 1000;
constexpr std::int32_t kFftBins = 201; // of the library's 400 samples
constexpr std::int32_t kLongestText = 1024;

/// Walks through a file from its beginning to its end, reading little and skipping much. The first thing that is wrong
/// stays: from then on every number is 0 and every text empty.
class FileWalk {
public:
    explicit FileWalk(const std::filesystem::path& file)
        : m_descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
        struct stat status {};
        if (m_descriptor < 0)
            damage("it cannot be opened");
        else if (fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode))
            damage("it is not a file");
        else
            m_size = status.st_size;
    }
    FileWalk(const FileWalk&) = delete;
    FileWalk& operator=(const FileWalk&) = delete;
    ~FileWalk()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }

    bool isSound() const { return !m_damage; }
    bool isAtEnd() const { return m_position == m_size; }
    const std::optional<std::string>& whatIsWrong() const { return m_damage; }

    void damage(std::string reason)
    {
        if (!m_damage)
            m_damage = std::move(reason);
    }
    void require(bool holds, const char* what, std::int64_t value)
    {
        if (!holds)
            damage(fmt::format("its header is not that of a whisper model: {} {}", what, value));
    }

    void skip(std::int64_t bytes)
    {
        if (bytes < 0 || bytes > m_size - m_position)
            damage(fmt::format("it ends too early: {} bytes are missing", m_position + bytes - m_size));
        if (isSound())
            m_position += bytes;
    }

    std::int32_t number()
    {
        std::int32_t value = 0;
        read(reinterpret_cast<char*>(&value), sizeof value);
        return value;
    }

    std::string text(std::int32_t length)
    {
        if (length < 0 || length > kLongestText)
            damage(fmt::format("a text in it claims {} bytes", length));
        if (!isSound())
            return {};
        std::string value(static_cast<std::size_t>(length), '\0');
        read(value.data(), value.size());
        return value;
    }

private:
    void read(char* destination, std::size_t bytes)
    {
        const auto begin = m_position;
        skip(static_cast<std::int64_t>(bytes));
        if (isSound() && (begin < m_bufferBegin || m_position > bufferEnd()))
            fill(begin);
        if (m_position > bufferEnd())
            damage("it cannot be read");
        if (isSound())
            std::copy_n(m_buffer.begin() + (begin - m_bufferBegin), bytes, destination);
    }

    std::int64_t bufferEnd() const { return m_bufferBegin + m_buffered; }

    void fill(std::int64_t begin)
    {
        m_bufferBegin = begin;
        m_buffered = std::max<std::int64_t>(0, pread(m_descriptor, m_buffer.data(), m_buffer.size(), begin));
    }

    int m_descriptor;
    std::int64_t m_size = 0;
    std::int64_t m_position = 0;
    std::optional<std::string> m_damage;
    std::vector<char> m_buffer = std::vector<char>(4096);
    std::int64_t m_bufferBegin = 0;
    std::int64_t m_buffered = 0;
};

WhisperModelFile readHeader(FileWalk& file)
{
    if (file.number() != kMagic)
        file.damage("it is not a ggml model file");
    WhisperModelFile model;
    for (auto* field :
         {&model.vocabulary, &model.audioContext, &model.audioState, &model.audioHeads, &model.audioLayers,
          &model.textContext, &model.textState, &model.textHeads, &model.textLayers, &model.melFilters, &model.format})
        *field = file.number();
    return model;
}

void checkHeader(FileWalk& file, WhisperModelFile& model)
{
    const auto within = [](std::int32_t value, std::int32_t least, std::int32_t most) {
        return value >= least && value <= most;
    };
    // English; 99 languages; 100 languages. The library counts on the tokens of these.
    file.require(within(model.vocabulary, 51864, 51866), "vocabulary", model.vocabulary);
    file.require(within(model.audioContext, 16, 1500), "audio context", model.audioContext);
    file.require(within(model.textContext, 16, 4096), "text context", model.textContext);
    file.require(within(model.audioState, 16, 4096), "state", model.audioState);
    file.require(model.textState == model.audioState, "text state", model.textState);
    file.require(within(model.audioLayers, 1, 128), "audio layers", model.audioLayers);
    file.require(within(model.textLayers, 1, 128), "text layers", model.textLayers);
    file.require(within(model.audioHeads, 1, 128) && model.audioState % model.audioHeads == 0, "audio heads",
                 model.audioHeads);
    file.require(within(model.textHeads, 1, 128) && model.textState % model.textHeads == 0, "text heads",
                 model.textHeads);
    file.require(model.melFilters == 80 || model.melFilters == 128, "mel filters", model.melFilters);
    file.require(model.format >= 0, "format", model.format);
    model.format %= kQuantisationVersionFactor;
    const auto type = weightType(model.format);
    file.require(type && model.textState % type->blockElements == 0, "format", model.format);
}

void walkFilters(FileWalk& file, const WhisperModelFile& model)
{
    const auto filters = file.number();
    const auto bins = file.number();
    file.require(filters == model.melFilters, "mel filters", filters);
    file.require(bins == kFftBins, "frequencies", bins);
    file.skip(std::int64_t{4} * model.melFilters * kFftBins);
}

void walkVocabulary(FileWalk& file, const WhisperModelFile& model)
{
    const auto count = file.number();
    file.require(count >= 1 && count <= model.vocabulary, "words", count);
    bool hasSpace = false; // which the library looks up without asking
    for (std::int32_t i = 0; i < count && file.isSound(); ++i) {
        const auto length = file.number();
        hasSpace = file.text(length) == " " || hasSpace;
    }
    if (!hasSpace)
        file.damage("its vocabulary is not complete");
}

void walkTensor(FileWalk& file, std::map<std::string, WhisperTensor>& expected)
{
    const auto dimensions = file.number();
    const auto nameLength = file.number();
    const auto type = file.number();
    if (dimensions < 1 || dimensions > 3)
        file.damage(fmt::format("a tensor claims {} dimensions", dimensions));
    std::array<std::int64_t, 3> shape{1, 1, 1};
    for (std::int32_t i = 0; i < dimensions && file.isSound(); ++i)
        shape.at(static_cast<std::size_t>(i)) = file.number();
    const auto name = file.text(nameLength);
    const auto found = expected.find(name);
    if (found == expected.end()) {
        file.damage("it holds a tensor that no whisper model of its size has, or one twice");
        return;
    }
    if (found->second.shape != shape || found->second.type.id != type)
        file.damage(fmt::format("its tensor {} has not the shape and type that its header says", name));
    file.skip(found->second.bytes());
    expected.erase(found);
}

} // namespace

Result<WhisperModelFile, std::string> readWhisperModelFile(const std::filesystem::path& path)
{
    FileWalk file(path);
    auto model = readHeader(file);
    checkHeader(file, model);
    if (file.isSound())
        walkFilters(file, model);
    if (file.isSound())
        walkVocabulary(file, model);
    auto missing = file.isSound() ? whisperTensors(model) : std::map<std::string, WhisperTensor>{};
    while (file.isSound() && !file.isAtEnd())
        walkTensor(file, missing);
    if (!missing.empty())
        file.damage(fmt::format("{} of its tensors are missing", missing.size()));
    if (file.whatIsWrong())
        return failure(*file.whatIsWrong());
    return model;
}

} // namespace vocalith
