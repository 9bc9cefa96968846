#include "core/speech/whisper/WhisperTensors.h"

#include "core/speech/whisper/WhisperModelFile.h"

#include <algorithm>

namespace vocalith {
namespace {

struct Format {
    std::int32_t id; ///< ggml_ftype
    WhisperTensorType type;
};

constexpr WhisperTensorType kSingle{0, 4, 1};
constexpr WhisperTensorType kHalf{1, 2, 1};
constexpr std::array<Format, 11> kFormats{{
    {1, kHalf},
    {2, {2, 18, 32}},     // q4_0
    {3, {3, 20, 32}},     // q4_1
    {7, {8, 34, 32}},     // q8_0
    {8, {6, 22, 32}},     // q5_0
    {9, {7, 24, 32}},     // q5_1
    {10, {10, 84, 256}},  // q2_K
    {11, {11, 110, 256}}, // q3_K
    {12, {12, 144, 256}}, // q4_K
    {13, {13, 176, 256}}, // q5_K
    {14, {14, 210, 256}}, // q6_K
}};

class TensorList {
public:
    explicit TensorList(WhisperTensorType weights) : m_weights(weights) {}

    void single(const std::string& name, std::int64_t inner, std::int64_t outer = 1)
    {
        m_tensors[name] = {{inner, outer, 1}, kSingle};
    }
    void convolution(const std::string& name, std::int64_t inputs, std::int64_t outputs)
    {
        m_tensors[name + ".weight"] = {{3, inputs, outputs}, kHalf};
        single(name + ".bias", 1, outputs);
    }
    void weight(const std::string& name, std::int64_t inputs, std::int64_t outputs)
    {
        m_tensors[name] = {{inputs, outputs, 1}, m_weights};
    }
    void linear(const std::string& name, std::int64_t inputs, std::int64_t outputs)
    {
        weight(name + ".weight", inputs, outputs);
        single(name + ".bias", outputs);
    }
    void norm(const std::string& name, std::int64_t state)
    {
        single(name + ".weight", state);
        single(name + ".bias", state);
    }
    void attention(const std::string& name, std::int64_t state)
    {
        norm(name + "_ln", state);
        linear(name + ".query", state, state);
        weight(name + ".key.weight", state, state);
        linear(name + ".value", state, state);
        linear(name + ".out", state, state);
    }
    void block(const std::string& name, std::int64_t state)
    {
        norm(name + ".mlp_ln", state);
        linear(name + ".mlp.0", state, 4 * state);
        linear(name + ".mlp.2", 4 * state, state);
        attention(name + ".attn", state);
    }
    std::map<std::string, WhisperTensor> take() { return std::move(m_tensors); }

private:
    WhisperTensorType m_weights;
    std::map<std::string, WhisperTensor> m_tensors;
};

} // namespace

std::optional<WhisperTensorType> weightType(std::int32_t format)
{
    const auto* found =
        std::find_if(kFormats.begin(), kFormats.end(), [format](const Format& known) { return known.id == format; });
    return found == kFormats.end() ? std::nullopt : std::optional(found->type);
}

std::int64_t WhisperTensor::bytes() const
{
    return shape[0] * shape[1] * shape[2] / type.blockElements * type.blockBytes;
}

std::map<std::string, WhisperTensor> whisperTensors(const WhisperModelFile& model)
{
    TensorList tensors(weightType(model.format).value_or(kHalf));
    tensors.single("encoder.positional_embedding", model.audioState, model.audioContext);
    tensors.convolution("encoder.conv1", model.melFilters, model.audioState);
    tensors.convolution("encoder.conv2", model.audioState, model.audioState);
    tensors.norm("encoder.ln_post", model.audioState);
    for (int layer = 0; layer < model.audioLayers; ++layer)
        tensors.block("encoder.blocks." + std::to_string(layer), model.audioState);

    tensors.single("decoder.positional_embedding", model.textState, model.textContext);
    tensors.weight("decoder.token_embedding.weight", model.textState, model.vocabulary);
    tensors.norm("decoder.ln", model.textState);
    for (int layer = 0; layer < model.textLayers; ++layer) {
        const auto name = "decoder.blocks." + std::to_string(layer);
        tensors.block(name, model.textState);
        tensors.attention(name + ".cross_attn", model.textState);
    }
    return tensors.take();
}

} // namespace vocalith
