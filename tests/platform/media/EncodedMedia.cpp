#include "tests/platform/media/EncodedMedia.h"

#include "platform/media/FFmpegHandles_p.h"
#include "tests/platform/media/Sound.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

#include <cmath>
#include <stdexcept>
#include <vector>

namespace vocalith::test {
namespace {

using namespace media;

int check(int result, const char* what)
{
    if (result < 0)
        throw std::runtime_error(std::string(what) + ": " + errorText(result));
    return result;
}

void store(AVFrame& frame, int channel, int index, double sample)
{
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    auto* plane = frame.extended_data[planar ? channel : 0];
    const int position = planar ? index : index * frame.ch_layout.nb_channels + channel;
    switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_S16:
        reinterpret_cast<std::int16_t*>(plane)[position] = static_cast<std::int16_t>(std::lround(sample * 32767));
        break;
    case AV_SAMPLE_FMT_S32:
        reinterpret_cast<std::int32_t*>(plane)[position] = static_cast<std::int32_t>(std::lround(sample * 2147483647));
        break;
    case AV_SAMPLE_FMT_FLT: reinterpret_cast<float*>(plane)[position] = static_cast<float>(sample); break;
    default: throw std::runtime_error("sample format");
    }
}

class MediaMaker {
public:
    MediaMaker(const std::filesystem::path& file, const MediaForm& form) : m_form(form)
    {
        av_log_set_level(AV_LOG_QUIET);
        AVFormatContext* format = nullptr;
        check(avformat_alloc_output_context2(&format, nullptr, form.muxer.c_str(), nullptr), "muxer");
        m_format.reset(format);
        check(avio_open(&format->pb, ("file:" + file.string()).c_str(), AVIO_FLAG_WRITE), "file");
    }
    ~MediaMaker() { avio_closep(&m_format->pb); }

    void make(double seconds)
    {
        if (!m_form.audioEncoder.empty())
            openAudio();
        if (m_form.video || m_form.coverArt)
            openVideo();
        check(avformat_write_header(m_format.get(), nullptr), "header");
        if (m_video)
            encodeVideo(m_form.coverArt ? 1 : static_cast<int>(seconds * 10));
        if (m_audio)
            encodeAudio(seconds);
        check(av_write_trailer(m_format.get()), "trailer");
    }

private:
    CodecHandle makeCodec(const AVCodec* encoder)
    {
        if (!encoder)
            throw std::runtime_error("encoder");
        CodecHandle codec(avcodec_alloc_context3(encoder));
        if ((m_format->oformat->flags & AVFMT_GLOBALHEADER) != 0)
            codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        return codec;
    }

    AVStream* addTrack(AVCodecContext& codec)
    {
        check(avcodec_open2(&codec, codec.codec, nullptr), "encoder");
        auto* track = avformat_new_stream(m_format.get(), nullptr);
        track->time_base = codec.time_base;
        check(avcodec_parameters_from_context(track->codecpar, &codec), "parameters");
        return track;
    }

    void openAudio()
    {
        m_audio = makeCodec(avcodec_find_encoder_by_name(m_form.audioEncoder.c_str()));
        m_audio->sample_fmt = m_audio->codec->sample_fmts[0];
        m_audio->sample_rate = m_form.rate;
        m_audio->time_base = {1, m_form.rate};
        m_audio->bit_rate = 64'000 * m_form.channels;
        av_channel_layout_default(&m_audio->ch_layout, m_form.channels);
        m_audioTrack = addTrack(*m_audio);
    }

    void openVideo()
    {
        m_video = makeCodec(avcodec_find_encoder(m_form.coverArt ? AV_CODEC_ID_MJPEG : AV_CODEC_ID_MPEG4));
        m_video->width = 64;
        m_video->height = 48;
        m_video->pix_fmt = m_form.coverArt ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P;
        m_video->time_base = {1, 10};
        m_videoTrack = addTrack(*m_video);
        if (m_form.coverArt)
            m_videoTrack->disposition = AV_DISPOSITION_ATTACHED_PIC;
    }

    void encodeVideo(int frames)
    {
        for (int i = 0; i < frames; ++i) {
            const FrameHandle frame(av_frame_alloc());
            frame->width = m_video->width;
            frame->height = m_video->height;
            frame->format = m_video->pix_fmt;
            check(av_frame_get_buffer(frame.get(), 0), "picture");
            for (int plane = 0; plane < 3; ++plane)
                std::fill_n(frame->data[plane], frame->linesize[plane] * (plane == 0 ? 48 : 24),
                            static_cast<std::uint8_t>(100 + i));
            frame->pts = i;
            encode(*m_video, *m_videoTrack, frame.get());
        }
        encode(*m_video, *m_videoTrack, nullptr);
    }

    void encodeAudio(double seconds)
    {
        const auto samples = tone(440, 0.5, seconds, m_form.rate);
        const int frameSize = m_audio->frame_size > 0 ? m_audio->frame_size : 1024;
        for (std::size_t start = 0; start < samples.size(); start += static_cast<std::size_t>(frameSize)) {
            const FrameHandle frame(av_frame_alloc());
            frame->nb_samples = static_cast<int>(std::min(samples.size() - start, static_cast<std::size_t>(frameSize)));
            frame->format = m_audio->sample_fmt;
            frame->sample_rate = m_form.rate;
            check(av_channel_layout_copy(&frame->ch_layout, &m_audio->ch_layout), "layout");
            check(av_frame_get_buffer(frame.get(), 0), "frame");
            for (int channel = 0; channel < m_form.channels; ++channel)
                for (int i = 0; i < frame->nb_samples; ++i)
                    store(*frame, channel, i, samples[start + static_cast<std::size_t>(i)]);
            const bool afterGap = m_form.gap > 0 && static_cast<double>(start) >= m_form.gapAt * m_form.rate;
            frame->pts =
                static_cast<std::int64_t>(start) + (afterGap ? static_cast<std::int64_t>(m_form.gap * m_form.rate) : 0);
            encode(*m_audio, *m_audioTrack, frame.get());
        }
        encode(*m_audio, *m_audioTrack, nullptr);
    }

    void encode(AVCodecContext& codec, const AVStream& track, const AVFrame* frame)
    {
        check(avcodec_send_frame(&codec, frame), "encode");
        const PacketHandle packet(av_packet_alloc());
        while (avcodec_receive_packet(&codec, packet.get()) >= 0) {
            packet->stream_index = track.index;
            av_packet_rescale_ts(packet.get(), codec.time_base, track.time_base);
            check(av_interleaved_write_frame(m_format.get(), packet.get()), "write");
        }
    }

    MediaForm m_form;
    OutputHandle m_format;
    CodecHandle m_audio;
    CodecHandle m_video;
    AVStream* m_audioTrack = nullptr;
    AVStream* m_videoTrack = nullptr;
};

} // namespace

void writeMedia(const std::filesystem::path& file, const MediaForm& form, double seconds)
{
    MediaMaker(file, form).make(seconds);
}

} // namespace vocalith::test
