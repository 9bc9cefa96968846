#include "platform/pocketsphinx/PocketSphinxModel_p.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <string_view>

namespace vocalith {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

std::uint64_t littleEndian(std::string_view fourBytes)
{
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < fourBytes.size(); ++i)
        number |= std::uint64_t{static_cast<unsigned char>(fourBytes[i])} << (8 * i);
    return number;
}

/// Reads a model file; whatever is read past its end is 0.
class ModelReader {
public:
    explicit ModelReader(const fs::path& path) : m_stream(path, std::ios::binary) {}

    std::string text(std::uint32_t length)
    {
        constexpr std::uint32_t kLongestText = 4096;
        std::string read(std::min(length, kLongestText), '\0');
        m_stream.read(read.data(), static_cast<std::streamsize>(read.size()));
        return read;
    }
    std::string string() // ends with a 0
    {
        std::string read;
        std::getline(m_stream, read, '\0');
        return read;
    }
    std::uint64_t number() { return littleEndian(text(4)); } // 32 bits
    std::string last(std::uintmax_t length)
    {
        std::string read(length, '\0');
        m_stream.seekg(-static_cast<std::streamoff>(length), std::ios::end);
        m_stream.read(read.data(), static_cast<std::streamsize>(length));
        return read;
    }
    std::uint64_t position() { return m_stream ? static_cast<std::uint64_t>(m_stream.tellg()) : 0; }
    explicit operator bool() const { return m_stream.good(); }

private:
    std::ifstream m_stream;
};

using Check = bool (*)(const fs::path& path, std::uintmax_t size);

bool isAnything(const fs::path&, std::uintmax_t size)
{
    return size > 0;
}

/// The library believes that all words are there, which are the last thing in the file, after the size of them all.
bool isLanguageModel(const fs::path& path, std::uintmax_t size)
{
    constexpr auto kMark = "Trie Language Model"sv;
    constexpr std::uint64_t kRoomForAWord = 64;
    ModelReader reader(path);
    if (reader.text(kMark.size()) != kMark)
        return false;
    reader.text(1); // the length of the longest phrases
    const auto words = reader.number();
    const auto tail = reader.last(std::min<std::uintmax_t>(size, (words + 1) * kRoomForAWord));
    auto wordsBegin = tail.size();
    for (std::uint64_t left = words + 1; left > 0; --left) {
        const auto end = wordsBegin == 0 ? std::string::npos : tail.rfind('\0', wordsBegin - 1);
        if (end == std::string::npos)
            return false;
        wordsBegin = end;
    }
    ++wordsBegin; // the size's own highest byte is 0, too
    return words > 0 && wordsBegin >= 4 && littleEndian(tail.substr(wordsBegin - 4, 4)) == tail.size() - wordsBegin;
}

bool isParameters(const fs::path& path, std::uintmax_t)
{
    constexpr auto kMark = "s3\nversion"sv;
    return ModelReader(path).text(kMark.size()) == kMark;
}

/// The library maps the table of phones into memory and believes its counts.
bool isPhoneTable(const fs::path& path, std::uintmax_t size)
{
    constexpr auto kMark = "BMDF"sv;
    constexpr std::uint64_t kTreeNodeBytes = 8;
    constexpr std::uint64_t kPhoneBytes = 12;
    constexpr std::uint64_t kMostNames = 4096;
    constexpr std::uint64_t kMostStates = 64;
    ModelReader reader(path);
    if (reader.text(kMark.size()) != kMark)
        return false;
    reader.number(); // version
    reader.text(static_cast<std::uint32_t>(reader.number()));
    std::array<std::uint64_t, 10> counts{};
    for (auto& count : counts)
        count = reader.number();
    const auto [names, phones, states, ciSenones, senones, matrices, sequences, contexts, nodes, silence] = counts;
    const auto namesBegin = reader.position();
    if (!reader || names == 0 || names > kMostNames || states > kMostStates)
        return false;
    for (std::uint64_t i = 0; i < names; ++i)
        reader.string();
    const auto namesSize = (reader.position() - namesBegin + 3) / 4 * 4;
    return reader && silence < names &&
           size >= namesBegin + namesSize + nodes * kTreeNodeBytes + phones * kPhoneBytes + 4 + sequences * states * 2;
}

/// The library maps the weights into memory, too.
bool isWeights(const fs::path& path, std::uintmax_t size)
{
    constexpr auto kFeatures = "feature_count "sv;
    ModelReader reader(path);
    std::uint64_t features = 1;
    while (const auto length = reader.number()) {
        const auto line = reader.text(static_cast<std::uint32_t>(length));
        if (line.starts_with(kFeatures))
            std::from_chars(line.data() + kFeatures.size(), line.data() + line.size(), features);
    }
    const auto codewords = reader.number();
    const auto densities = reader.number();
    return reader && codewords > 0 && densities > 0 && size >= reader.position() + features * codewords * densities;
}

struct ModelFile {
    const char* name;
    Check check;
};

constexpr auto kAcousticModel = "en-us";
constexpr auto kLanguageModel = "en-us.lm.bin";
constexpr auto kDictionary = "cmudict-en-us.dict";

constexpr std::array kFiles{
    ModelFile{kLanguageModel, isLanguageModel},
    ModelFile{kDictionary, isAnything},
    ModelFile{"en-us/feat.params", isAnything},
    ModelFile{"en-us/mdef", isPhoneTable},
    ModelFile{"en-us/means", isParameters},
    ModelFile{"en-us/variances", isParameters},
    ModelFile{"en-us/transition_matrices", isParameters},
    ModelFile{"en-us/noisedict", isAnything},
    ModelFile{"en-us/sendump", isWeights},
};

} // namespace

Result<PocketSphinxModel, std::string> findPocketSphinxModel(const fs::path& folder)
{
    for (const auto& file : kFiles) {
        const auto path = folder / file.name;
        std::error_code error;
        const auto size = fs::is_regular_file(path, error) ? fs::file_size(path, error) : 0;
        if (error || !file.check(path, size))
            return failure(path.string());
    }
    return PocketSphinxModel{folder / kAcousticModel, folder / kLanguageModel, folder / kDictionary};
}

} // namespace vocalith
