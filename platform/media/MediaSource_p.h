#pragma once

#include "platform/media/FFmpegHandles_p.h"
#include "platform/media/FileDescriptor_p.h"
#include "ports/PCMConverter.h"

namespace vocalith::media {

/// A media file that is open and whose tracks are known. FFmpeg gets its bytes from here alone: whatever the file's
/// content says, no other file and no network address is opened. What the file is, is told by its content, never by its
/// name. Belongs to the thread that opened it. After a stop, reading fails.
class MediaSource {
public:
    static Result<std::unique_ptr<MediaSource>, ConversionError> open(const std::filesystem::path& file,
                                                                      const StopToken& stop);
    MediaSource(const MediaSource&) = delete;
    MediaSource& operator=(const MediaSource&) = delete;
    ~MediaSource();

    AVFormatContext& format() const { return *m_format; }
    const std::filesystem::path& file() const { return m_file; }
    MediaInfo info() const;
    /// The first audio track that can be decoded, else the first; nullptr when there is none.
    AVStream* audioTrack() const;
    /// How much of the file was read, in 0..1.
    double fractionRead() const;
    bool stopRequested() const { return m_stop.stop_requested(); }
    /// The error of this file; the cancelled one after a stop, and `unreadable` after the system refused a read.
    ConversionError error(ConversionError::Kind kind, std::string detail) const;

private:
    MediaSource(std::filesystem::path file, StopToken stop) : m_file(std::move(file)), m_stop(std::move(stop)) {}
    Result<void, ConversionError> openFile();
    Result<void, ConversionError> openContainer();
    Result<const AVInputFormat*, ConversionError> recognise(int& score);

    static int read(void* self, std::uint8_t* buffer, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);

    std::filesystem::path m_file;
    StopToken m_stop;
    FileDescriptor m_descriptor;
    std::int64_t m_size = 0;
    int m_readError = 0; ///< errno of the last read that failed
    IOHandle m_io;
    InputHandle m_format;
};

} // namespace vocalith::media
