#include "tests/support/ScriptedWhisperModel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>

namespace vocalith::test {
namespace {

using Vector = std::vector<float>;

constexpr std::int32_t kMelFilters = 80;
constexpr std::int32_t kFftBins = 201;
constexpr std::int32_t kTextContext = 448;
constexpr std::int32_t kAudioContext = 1500;
constexpr float kWinningLogit = 32;

struct Dimensions {
    int state;
    int heads;
    int layers;
};

/// The ids of the tokens that steer a decode, as the library numbers them.
struct Tokens {
    explicit Tokens(bool multilingual)
        : shift(multilingual ? 1 : 0), vocabulary(51864 + shift), endOfText(50256 + shift), start(50257 + shift),
          firstLanguage(50258 + shift), translate(50357 + shift), transcribe(50358 + shift), begin(50363 + shift)
    {}
    int shift;
    int vocabulary;
    int endOfText;
    int start;
    int firstLanguage;
    int translate;
    int transcribe;
    int begin;

    int at(double seconds) const { return begin + static_cast<int>(std::lround(seconds / 0.02)); }
};

std::uint16_t halfOf(float value) // normal numbers and zero; smaller ones become zero
{
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const auto sign = static_cast<std::uint16_t>((bits >> 16) & 0x8000);
    const int exponent = static_cast<int>((bits >> 23) & 0xFF) - 112;
    if (exponent <= 0)
        return sign;
    if (exponent >= 31)
        return static_cast<std::uint16_t>(sign | 0x7C00);
    const auto rounded = static_cast<std::uint32_t>(exponent << 10) + (((bits & 0x7FFFFF) + 0x1000) >> 13);
    return static_cast<std::uint16_t>(sign | rounded);
}

/// Orthogonal rows of ±1 without a mean (the rows of a Hadamard matrix and their negatives): the code of each step.
class Codes {
public:
    explicit Codes(int state) : m_state(state), m_period(state & -state) {}

    Vector next()
    {
        if (m_used >= 2 * (m_period - 1))
            throw std::length_error("the script is too long for the model");
        const int row = 1 + m_used % (m_period - 1);
        const float sign = m_used < m_period - 1 ? 1.0F : -1.0F;
        ++m_used;
        Vector code(static_cast<std::size_t>(m_state));
        for (int i = 0; i < m_state; ++i) {
            const auto overlap = static_cast<unsigned>(row & (i % m_period));
            code[static_cast<std::size_t>(i)] = std::popcount(overlap) % 2 == 0 ? sign : -sign;
        }
        return code;
    }

private:
    int m_state;
    int m_period;
    int m_used = 0;
};

/// The weights that make the decoder follow its script.
class Script {
public:
    Script(const ScriptedWhisperModel& model, const Tokens& tokens, int state)
        : m_tokens(tokens), m_state(static_cast<std::size_t>(state)), m_codes(state),
          m_embeddings(static_cast<std::size_t>(tokens.vocabulary) * m_state), m_positions(kTextContext * m_state),
          m_lookUp(4 * m_state * m_state), m_lookUpBias(4 * m_state), m_answers(4 * m_state * m_state)
    {
        for (int byte = 0; byte < 256; ++byte)
            m_vocabulary.emplace_back(1, static_cast<char>(byte));
        if (model.driver == ScriptedWhisperModel::Driver::position)
            followPosition(compile(model.segments), model.multilingual ? 2 : 0);
        else
            followLastToken(model);
    }

    const std::vector<std::string>& vocabulary() const { return m_vocabulary; }
    const Vector& embeddings() const { return m_embeddings; }
    const Vector& positions() const { return m_positions; }
    const Vector& lookUp() const { return m_lookUp; }
    const Vector& lookUpBias() const { return m_lookUpBias; }
    const Vector& answers() const { return m_answers; }

private:
    float scale() const { return kWinningLogit / static_cast<float>(m_state); }

    std::vector<int> compile(const std::vector<ScriptedWhisperModel::Segment>& segments)
    {
        std::vector<int> steps;
        for (const auto& segment : segments) {
            steps.push_back(m_tokens.at(segment.start));
            std::istringstream words(segment.text);
            for (std::string word; words >> word;) {
                m_vocabulary.push_back(" " + word);
                steps.push_back(static_cast<int>(m_vocabulary.size()) - 1);
                if (word == "♪")
                    m_optional.push_back(steps.back());
            }
            steps.push_back(m_tokens.at(segment.end));
        }
        steps.push_back(m_tokens.endOfText);
        return steps;
    }

    void embed(int token, const Vector& code)
    {
        for (std::size_t i = 0; i < m_state; ++i)
            m_embeddings[static_cast<std::size_t>(token) * m_state + i] += scale() * code[i];
    }

    void followPosition(const std::vector<int>& steps, std::size_t first)
    {
        for (std::size_t k = 0; k < steps.size(); ++k) {
            const auto code = m_codes.next();
            embed(steps[k], code);
            for (std::size_t i = 0; i < m_state; ++i)
                m_positions[(first + k) * m_state + i] = 64 * scale() * code[i];
        }
    }

    void followLastToken(const ScriptedWhisperModel& model)
    {
        const auto steps = compile(model.segments);
        if (model.multilingual) {
            chain(m_tokens.start, {m_tokens.firstLanguage + model.detectedLanguage});
            chain(m_tokens.transcribe, steps);
            chain(m_tokens.translate, compile(model.translated));
        } else {
            chain(m_tokens.start, steps);
        }
        std::size_t row = 0;
        for (const auto& [from, to] : m_next)
            writeTransition(row++, from, to);
    }

    void chain(int from, const std::vector<int>& steps)
    {
        for (const int to : steps) {
            if (!m_next.emplace(from, to).second)
                throw std::logic_error("a token of the script has two successors");
            from = to;
        }
    }

    const Vector& codeOf(int token)
    {
        const auto found = m_codeOf.find(token);
        if (found != m_codeOf.end())
            return found->second;
        const auto& code = m_codeOf.emplace(token, m_codes.next()).first->second;
        embed(token, code);
        return code;
    }

    /// One row of the first block's look-up table: the code of `from` switches it on, and it answers with the code of
    /// `to`; a word that can be left out brings the one behind it as the second best.
    void writeTransition(std::size_t row, int from, int to)
    {
        const auto input = codeOf(from);
        auto output = codeOf(to);
        const bool canBeLeftOut = std::find(m_optional.begin(), m_optional.end(), to) != m_optional.end();
        if (canBeLeftOut) {
            const auto& second = codeOf(m_next.at(to));
            for (std::size_t i = 0; i < m_state; ++i)
                output[i] += 0.5F * second[i];
        }
        const float half = static_cast<float>(m_state) / 2;
        m_lookUpBias.at(row) = -half;
        for (std::size_t i = 0; i < m_state; ++i) {
            m_lookUp[row * m_state + i] = input[i];
            m_answers[i * 4 * m_state + row] = 64 * scale() / half * output[i];
        }
    }

    const Tokens& m_tokens;
    std::size_t m_state;
    Codes m_codes;
    std::vector<std::string> m_vocabulary;
    std::vector<int> m_optional;
    std::map<int, int> m_next;
    std::map<int, Vector> m_codeOf;
    Vector m_embeddings;
    Vector m_positions;
    Vector m_lookUp;
    Vector m_lookUpBias;
    Vector m_answers;
};

class ModelWriter {
public:
    ModelWriter(const std::filesystem::path& file, Dimensions dimensions, bool randomWeights)
        : m_stream(file, std::ios::binary), m_dimensions(dimensions), m_randomWeights(randomWeights)
    {}

    void header(const Script& script, int vocabulary)
    {
        const auto [state, heads, layers] = m_dimensions;
        const std::int32_t magic = 0x67676d6c;
        const std::int32_t halfFloats = 1;
        numbers({magic, vocabulary, kAudioContext, state, heads, layers, kTextContext, state, heads, layers,
                 kMelFilters, halfFloats, kMelFilters, kFftBins});
        for (int filter = 0; filter < kMelFilters; ++filter) {
            const double centre = 1 + (kFftBins - 2) * (filter + 0.5) / kMelFilters;
            for (int bin = 0; bin < kFftBins; ++bin)
                raw(static_cast<float>(std::max(0.0, 1 - std::abs(bin - centre) / 2.5) * 0.02));
        }
        numbers({static_cast<std::int32_t>(script.vocabulary().size())});
        for (const auto& word : script.vocabulary()) {
            numbers({static_cast<std::int32_t>(word.size())});
            m_stream.write(word.data(), static_cast<std::streamsize>(word.size()));
        }
    }

    void encoder()
    {
        const int d = m_dimensions.state;
        single("encoder.positional_embedding", {d, kAudioContext}, weights(d * kAudioContext, d));
        half("encoder.conv1.weight", {3, kMelFilters, d}, weights(3 * kMelFilters * d, 3 * kMelFilters));
        single("encoder.conv1.bias", {1, d}, weights(d, d));
        half("encoder.conv2.weight", {3, d, d}, weights(3 * d * d, 3 * d));
        single("encoder.conv2.bias", {1, d}, weights(d, d));
        norm("encoder.ln_post");
        for (int layer = 0; layer < m_dimensions.layers; ++layer) {
            const std::string block = "encoder.blocks." + std::to_string(layer);
            norm(block + ".mlp_ln");
            linear(block + ".mlp.0", d, 4 * d);
            linear(block + ".mlp.2", 4 * d, d);
            norm(block + ".attn_ln");
            attention(block + ".attn", true);
        }
    }

    void decoder(const Script& script, int vocabulary)
    {
        const int d = m_dimensions.state;
        single("decoder.positional_embedding", {d, kTextContext}, script.positions());
        half("decoder.token_embedding.weight", {d, vocabulary}, script.embeddings());
        norm("decoder.ln");
        for (int layer = 0; layer < m_dimensions.layers; ++layer) {
            const std::string block = "decoder.blocks." + std::to_string(layer);
            norm(block + ".mlp_ln");
            if (layer == 0) {
                half(block + ".mlp.0.weight", {d, 4 * d}, script.lookUp());
                single(block + ".mlp.0.bias", {4 * d}, script.lookUpBias());
                half(block + ".mlp.2.weight", {4 * d, d}, script.answers());
            } else {
                linear(block + ".mlp.0", d, 4 * d);
                half(block + ".mlp.2.weight", {4 * d, d}, zeros(4 * d * d));
            }
            single(block + ".mlp.2.bias", {d}, zeros(d));
            norm(block + ".attn_ln");
            attention(block + ".attn", false);
            norm(block + ".cross_attn_ln");
            attention(block + ".cross_attn", false);
        }
    }

private:
    static Vector zeros(int count) { return Vector(static_cast<std::size_t>(count)); }

    Vector weights(int count, int inputs)
    {
        auto values = zeros(count);
        if (m_randomWeights) {
            std::uniform_real_distribution<float> distribution(-1, 1);
            const float scale = std::sqrt(3.0F / static_cast<float>(inputs));
            for (auto& value : values)
                value = scale * distribution(m_random);
        }
        return values;
    }

    template <class T>
    void raw(T value)
    {
        m_stream.write(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void numbers(const std::vector<std::int32_t>& values)
    {
        for (const auto value : values)
            raw(value);
    }
    void tensorHeader(const std::string& name, const std::vector<int>& shape, std::int32_t type)
    {
        numbers({static_cast<std::int32_t>(shape.size()), static_cast<std::int32_t>(name.size()), type});
        numbers({shape.begin(), shape.end()});
        m_stream.write(name.data(), static_cast<std::streamsize>(name.size()));
    }
    /// Shapes name the innermost dimension first.
    void single(const std::string& name, const std::vector<int>& shape, const Vector& values)
    {
        tensorHeader(name, shape, 0);
        m_stream.write(reinterpret_cast<const char*>(values.data()),
                       static_cast<std::streamsize>(values.size() * sizeof(float)));
    }
    void half(const std::string& name, const std::vector<int>& shape, const Vector& values)
    {
        tensorHeader(name, shape, 1);
        std::vector<std::uint16_t> halves(values.size());
        std::transform(values.begin(), values.end(), halves.begin(), halfOf);
        m_stream.write(reinterpret_cast<const char*>(halves.data()),
                       static_cast<std::streamsize>(halves.size() * sizeof(std::uint16_t)));
    }
    void norm(const std::string& name)
    {
        single(name + ".weight", {m_dimensions.state}, Vector(static_cast<std::size_t>(m_dimensions.state), 1.0F));
        single(name + ".bias", {m_dimensions.state}, zeros(m_dimensions.state));
    }
    void linear(const std::string& name, int inputs, int outputs)
    {
        half(name + ".weight", {inputs, outputs}, weights(inputs * outputs, inputs));
        single(name + ".bias", {outputs}, weights(outputs, inputs));
    }
    void attention(const std::string& name, bool answers)
    {
        const int d = m_dimensions.state;
        linear(name + ".query", d, d);
        half(name + ".key.weight", {d, d}, weights(d * d, d));
        linear(name + ".value", d, d);
        if (answers) {
            linear(name + ".out", d, d);
        } else {
            half(name + ".out.weight", {d, d}, zeros(d * d));
            single(name + ".out.bias", {d}, zeros(d));
        }
    }

    std::ofstream m_stream;
    Dimensions m_dimensions;
    bool m_randomWeights;
    std::minstd_rand m_random{1};
};

} // namespace

void ScriptedWhisperModel::write(const std::filesystem::path& file) const
{
    const bool isTiny = size == Size::whisperTiny;
    const auto dimensions = isTiny ? Dimensions{384, 6, 4} : Dimensions{64, 1, 1};
    const Tokens tokens(multilingual);
    const Script script(*this, tokens, dimensions.state);
    std::filesystem::create_directories(file.parent_path());
    ModelWriter writer(file, dimensions, isTiny);
    writer.header(script, tokens.vocabulary);
    writer.encoder();
    writer.decoder(script, tokens.vocabulary);
}

} // namespace vocalith::test
