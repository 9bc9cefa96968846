#include "platform/media/M4AWriter_p.h"

#include "platform/media/SamplePieces_p.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace vocalith::media {
namespace {

// Speech at 16 kHz gains nothing beyond this: a fifth of the WAV file's size, 22 MB an hour.
constexpr int kBitRate = 48'000;
constexpr int kBufferSize = 64 * 1024;

} // namespace

Result<std::unique_ptr<M4AWriter>, std::string> M4AWriter::open(OutputFile file)
{
    std::unique_ptr<M4AWriter> writer(new M4AWriter(std::move(file)));
    if (!writer->succeeded(writer->openEncoder()) || !writer->succeeded(writer->openContainer()))
        return failure(writer->reason());
    return writer;
}

int M4AWriter::openEncoder()
{
    const auto* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!encoder)
        return AVERROR_ENCODER_NOT_FOUND;
    m_codec.reset(avcodec_alloc_context3(encoder));
    m_codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    m_codec->sample_rate = kConvertedRate;
    m_codec->time_base = {1, kConvertedRate};
    m_codec->bit_rate = kBitRate;
    m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_channel_layout_default(&m_codec->ch_layout, 1);
    m_frame.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
    return avcodec_open2(m_codec.get(), encoder, nullptr);
}

int M4AWriter::openContainer()
{
    AVFormatContext* format = nullptr;
    if (const int result = avformat_alloc_output_context2(&format, nullptr, "ipod", nullptr); result < 0)
        return result;
    m_format.reset(format);
    m_io.reset(avio_alloc_context(static_cast<unsigned char*>(av_malloc(kBufferSize)), kBufferSize, 1, this, nullptr,
                                  &M4AWriter::writeBytes, &M4AWriter::seek));
    format->pb = m_io.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    auto* track = avformat_new_stream(format, nullptr);
    if (!track)
        return AVERROR(ENOMEM);
    track->time_base = m_codec->time_base;
    if (const int result = avcodec_parameters_from_context(track->codecpar, m_codec.get()); result < 0)
        return result;
    return avformat_write_header(format, nullptr);
}

bool M4AWriter::write(std::span<const float> samples)
{
    const auto frameSize = static_cast<std::size_t>(m_codec->frame_size);
    while (!samples.empty() && m_error == 0) {
        const auto taken = std::min(samples.size(), frameSize - m_pending.size());
        m_pending.insert(m_pending.end(), samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(taken));
        samples = samples.subspan(taken);
        if (m_pending.size() == frameSize)
            succeeded(encodePending(frameSize));
    }
    return m_error == 0;
}

int M4AWriter::encodePending(std::size_t count)
{
    auto* frame = m_frame.get();
    frame->nb_samples = static_cast<int>(count);
    frame->format = m_codec->sample_fmt;
    frame->sample_rate = kConvertedRate;
    frame->pts = m_encoded;
    int result = av_channel_layout_copy(&frame->ch_layout, &m_codec->ch_layout);
    if (result >= 0)
        result = av_frame_get_buffer(frame, 0);
    if (result >= 0) {
        std::copy(m_pending.begin(), m_pending.end(), reinterpret_cast<float*>(frame->data[0]));
        result = avcodec_send_frame(m_codec.get(), frame);
    }
    av_frame_unref(frame);
    m_encoded += static_cast<std::int64_t>(count);
    m_pending.clear();
    return result < 0 ? result : writePackets();
}

int M4AWriter::writePackets()
{
    for (;;) {
        int result = avcodec_receive_packet(m_codec.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return 0;
        if (result >= 0) {
            m_packet->stream_index = 0;
            av_packet_rescale_ts(m_packet.get(), m_codec->time_base, m_format->streams[0]->time_base);
            result = av_write_frame(m_format.get(), m_packet.get());
            av_packet_unref(m_packet.get());
        }
        if (result < 0)
            return result;
    }
}

Result<void, std::string> M4AWriter::finish()
{
    if (m_error == 0 && !m_pending.empty())
        succeeded(encodePending(m_pending.size()));
    if (m_error == 0 && succeeded(avcodec_send_frame(m_codec.get(), nullptr)) && succeeded(writePackets()))
        succeeded(av_write_trailer(m_format.get()));
    if (m_error == 0)
        avio_flush(m_io.get());
    if (m_error != 0 || m_file.failed())
        return failure(reason());
    return m_file.finish();
}

bool M4AWriter::succeeded(int result)
{
    if (result < 0 && m_error == 0)
        m_error = result;
    return m_error == 0;
}

std::string M4AWriter::reason() const
{
    return m_file.failed() ? std::generic_category().message(m_file.error()) : errorText(m_error);
}

int M4AWriter::writeBytes(void* self, WrittenByte* bytes, int size)
{
    auto& file = static_cast<M4AWriter*>(self)->m_file;
    return file.write({bytes, static_cast<std::size_t>(size)}) ? size : AVERROR(file.error());
}

std::int64_t M4AWriter::seek(void* self, std::int64_t offset, int whence)
{
    if ((whence & AVSEEK_SIZE) != 0)
        return AVERROR(ENOSYS);
    return static_cast<M4AWriter*>(self)->m_file.seek(offset, whence);
}

} // namespace vocalith::media
