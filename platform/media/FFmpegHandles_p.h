#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/mem.h>
#include <libswresample/swresample.h>
}

#include <memory>
#include <string>

namespace vocalith::media {

/// Frees each of FFmpeg's objects in its own way.
struct FFmpegDeleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(SwrContext* context) const { swr_free(&context); }
    void operator()(AVIOContext* io) const
    {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};

struct InputCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

struct OutputCloser {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

using CodecHandle = std::unique_ptr<AVCodecContext, FFmpegDeleter>;
using FrameHandle = std::unique_ptr<AVFrame, FFmpegDeleter>;
using PacketHandle = std::unique_ptr<AVPacket, FFmpegDeleter>;
using ResamplerHandle = std::unique_ptr<SwrContext, FFmpegDeleter>;
using IOHandle = std::unique_ptr<AVIOContext, FFmpegDeleter>;
using InputHandle = std::unique_ptr<AVFormatContext, InputCloser>;
using OutputHandle = std::unique_ptr<AVFormatContext, OutputCloser>;

#if LIBAVFORMAT_VERSION_MAJOR < 61
using WrittenByte = std::uint8_t;
#else
using WrittenByte = const std::uint8_t;
#endif

/// FFmpeg's words for one of its error codes.
inline std::string errorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

} // namespace vocalith::media
