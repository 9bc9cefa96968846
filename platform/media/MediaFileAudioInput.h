#pragma once

#include "base/Worker.h"
#include "ports/AudioInput.h"
#include "ports/PCMConverter.h"

#include <filesystem>

namespace vocalith {

/// A media file in place of the microphone, for dictating from a recording: whatever microphone is asked for, a stream
/// delivers the whole file as fast as its listener takes it and ends. Lives on the main thread; the file is examined on
/// a worker and decoded on the stream's own thread. Destroying a stream stops its thread at the next piece.
class MediaFileAudioInput final : public AudioInput {
public:
    /// `converter` outlives this object and its streams.
    MediaFileAudioInput(const PCMConverter& converter, std::filesystem::path file);

    Task<Result<std::vector<AudioDevice>, AudioInputError>> microphones() override;
    /// A file that cannot be used is `sourceUnreadable`: at once, or at the stream's end when only decoding shows it.
    Task<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> open(AudioInputRequest request,
                                                                          AudioInputListener& listener) override;

private:
    const PCMConverter& m_converter;
    std::filesystem::path m_file;
    Worker m_worker;
};

} // namespace vocalith
