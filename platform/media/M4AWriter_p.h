#pragma once

#include "platform/media/FFmpegHandles_p.h"
#include "platform/media/OutputFile_p.h"

#include <span>
#include <vector>

namespace vocalith::media {

/// Encodes 16 kHz mono samples as AAC into an M4A file.
class M4AWriter {
public:
    static Result<std::unique_ptr<M4AWriter>, std::string> open(OutputFile file);
    M4AWriter(const M4AWriter&) = delete;
    M4AWriter& operator=(const M4AWriter&) = delete;

    /// Yields whether they could be written; the reason why not comes from `finish`.
    bool write(std::span<const float> samples);
    Result<void, std::string> finish();

private:
    explicit M4AWriter(OutputFile file) : m_file(std::move(file)) {}
    int openEncoder();
    int openContainer();
    int encodePending(std::size_t count);
    int writePackets();
    /// Remembers the first failure.
    bool succeeded(int result);
    std::string reason() const;

    static int writeBytes(void* self, WrittenByte* bytes, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);

    OutputFile m_file;
    IOHandle m_io;
    OutputHandle m_format;
    CodecHandle m_codec;
    FrameHandle m_frame;
    PacketHandle m_packet;
    std::vector<float> m_pending; ///< less than a frame
    std::int64_t m_encoded = 0;   ///< samples
    int m_error = 0;
};

} // namespace vocalith::media
