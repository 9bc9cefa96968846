#include "platform/media/MediaSource_p.h"

extern "C" {
#include <libavutil/avstring.h>
}

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <system_error>

namespace vocalith::media {
namespace {

using Kind = ConversionError::Kind;

/// The containers that are opened: those that people keep recordings in. Playlists, images, subtitles, text, raw
/// streams without a header and whatever names other files are left out.
constexpr auto kContainers = "aac,ac3,aiff,amr,ape,asf,au,avi,caf,dsf,dss,dts,dtshd,dv,eac3,flac,flv,gxf,live_flv,loas,"
                             "matroska,mlp,mov,mp3,mpc,mpc8,mpeg,mpegts,mxf,nistsphere,nsv,nut,ogg,oma,qcp,rm,tak,"
                             "truehd,tta,voc,w64,wav,webm,wsd,wtv,wv,xwma";
constexpr int kBufferSize = 64 * 1024;

std::string systemText(int code)
{
    return std::generic_category().message(code);
}

Kind kindOfOpenError(int code)
{
    switch (code) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP: return Kind::notFound;
    case ENXIO: // a socket
    case ENODEV: return Kind::notAFile;
    default: return Kind::unreadable;
    }
}

int refuseToOpen(AVFormatContext* /*context*/, AVIOContext** /*io*/, const char* /*url*/, int /*flags*/,
                 AVDictionary** /*options*/)
{
    return AVERROR(EPERM);
}

int stopWasRequested(void* stop)
{
    return static_cast<const StopToken*>(stop)->stop_requested() ? 1 : 0;
}

bool holdsMedia(const AVStream& stream)
{
    const auto type = stream.codecpar->codec_type;
    return type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_SUBTITLE;
}

bool isMovingPicture(const AVStream& stream)
{
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
           (stream.disposition & (AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS)) == 0;
}

} // namespace

MediaSource::~MediaSource() = default;

Result<std::unique_ptr<MediaSource>, ConversionError> MediaSource::open(const std::filesystem::path& file,
                                                                        const StopToken& stop)
{
    std::unique_ptr<MediaSource> source(new MediaSource(file, stop));
    if (const auto opened = source->openFile(); !opened)
        return failure(opened.error());
    if (const auto opened = source->openContainer(); !opened)
        return failure(opened.error());
    return source;
}

ConversionError MediaSource::error(Kind kind, std::string detail) const
{
    if (stopRequested())
        return {.kind = kind, .file = m_file, .detail = "stopped", .cancelled = true};
    if (m_readError != 0)
        return {.kind = Kind::unreadable, .file = m_file, .detail = systemText(m_readError)};
    return {.kind = kind, .file = m_file, .detail = std::move(detail)};
}

Result<void, ConversionError> MediaSource::openFile()
{
    // Without O_NONBLOCK a named pipe that nobody writes would hold us here for ever.
    m_descriptor = FileDescriptor(::open(m_file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!m_descriptor)
        return failure(error(kindOfOpenError(errno), systemText(errno)));
    struct stat status {};
    if (::fstat(m_descriptor.get(), &status) != 0)
        return failure(error(Kind::unreadable, systemText(errno)));
    if (!S_ISREG(status.st_mode))
        return failure(error(Kind::notAFile, "not a regular file"));
    if (status.st_size == 0)
        return failure(error(Kind::empty, "0 bytes"));
    m_size = status.st_size;
    m_io.reset(avio_alloc_context(static_cast<unsigned char*>(av_malloc(kBufferSize)), kBufferSize, 0, this,
                                  &MediaSource::read, nullptr, &MediaSource::seek));
    return {};
}

Result<const AVInputFormat*, ConversionError> MediaSource::recognise(int& score)
{
    const AVInputFormat* container = nullptr;
    score = av_probe_input_buffer2(m_io.get(), &container, "", nullptr, 0, 0);
    if (score < 0 || !container)
        return failure(error(Kind::notMedia, errorText(score)));
    if (av_match_list(container->name, kContainers, ',') <= 0)
        return failure(error(Kind::notMedia, std::string("looks like ") + container->name));
    return container;
}

Result<void, ConversionError> MediaSource::openContainer()
{
    int score = 0;
    const auto container = recognise(score);
    if (!container)
        return failure(container.error());

    AVFormatContext* format = avformat_alloc_context();
    format->pb = m_io.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    format->io_open = refuseToOpen;
    format->interrupt_callback = {.callback = stopWasRequested, .opaque = &m_stop};
    format->format_whitelist = av_strdup(kContainers);
    format->protocol_whitelist = av_strdup("none");
    format->fps_probe_size = 0; // nobody asks for the frame rate of a video
    if (const int opened = avformat_open_input(&format, "", *container, nullptr); opened < 0) {
        // A weak guess that does not open was a wrong guess.
        const auto kind = score > AVPROBE_SCORE_RETRY ? Kind::damaged : Kind::notMedia;
        return failure(error(kind, std::string((*container)->name) + ": " + errorText(opened)));
    }
    m_format.reset(format);
    // What it cannot find out, it leaves unknown; whether that matters shows when the track is decoded.
    avformat_find_stream_info(format, nullptr);
    if (stopRequested())
        return failure(error(Kind::notMedia, {}));
    // A header that is cut off may still announce a track, but not of what.
    const std::span streams(format->streams, format->nb_streams);
    if (std::none_of(streams.begin(), streams.end(), [](const auto* each) { return holdsMedia(*each); }))
        return failure(error(Kind::damaged, "no track that is known"));
    return {};
}

MediaInfo MediaSource::info() const
{
    MediaInfo info;
    const std::span streams(m_format->streams, m_format->nb_streams);
    info.hasAudio = audioTrack() != nullptr;
    info.hasVideo =
        std::any_of(streams.begin(), streams.end(), [](const auto* each) { return isMovingPicture(*each); });
    if (m_format->duration > 0)
        info.duration = static_cast<double>(m_format->duration) / AV_TIME_BASE;
    return info;
}

AVStream* MediaSource::audioTrack() const
{
    AVStream* first = nullptr;
    for (auto* stream : std::span(m_format->streams, m_format->nb_streams)) {
        if (stream->codecpar->codec_type != AVMEDIA_TYPE_AUDIO)
            continue;
        if (avcodec_find_decoder(stream->codecpar->codec_id))
            return stream;
        if (!first)
            first = stream;
    }
    return first;
}

double MediaSource::fractionRead() const
{
    return std::clamp(static_cast<double>(avio_tell(m_io.get())) / static_cast<double>(m_size), 0.0, 1.0);
}

int MediaSource::read(void* self, std::uint8_t* buffer, int size)
{
    auto& source = *static_cast<MediaSource*>(self);
    if (source.stopRequested())
        return AVERROR_EXIT;
    ssize_t count = 0;
    do
        count = ::read(source.m_descriptor.get(), buffer, static_cast<std::size_t>(size));
    while (count < 0 && errno == EINTR);
    if (count > 0)
        return static_cast<int>(count);
    if (count == 0)
        return AVERROR_EOF;
    source.m_readError = errno;
    return AVERROR(errno);
}

std::int64_t MediaSource::seek(void* self, std::int64_t offset, int whence)
{
    const auto& source = *static_cast<MediaSource*>(self);
    if ((whence & AVSEEK_SIZE) != 0)
        return source.m_size;
    const auto position = ::lseek(source.m_descriptor.get(), offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
}

} // namespace vocalith::media
