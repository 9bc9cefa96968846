#include "tests/platform/media/Conversion.h"
#include "tests/platform/media/EncodedMedia.h"
#include "tests/platform/media/Sound.h"

#include <optional>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;
using Kind = ConversionError::Kind;

/// The kind of error that a conversion ends with; nothing on success.
std::optional<Kind> conversionKind(const fs::path& file)
{
    const auto samples = converted(file);
    if (samples)
        return std::nullopt;
    EXPECT_EQ(samples.error().file, file);
    EXPECT_FALSE(samples.error().cancelled);
    return samples.error().kind;
}

TEST(UnusableFile, SaysWhatIsWrongWithIt)
{
    const TemporaryFolder folder;
    writeFile(folder / "empty.wav", "");
    writeFile(folder / "file", "x");
    writeFile(folder / "text.mp3", "Dear diary,\ntoday I dictated a letter.\n");
    writeFile(folder / "letter.txt", std::string(5000, 'a') + "\n");
    writeFile(folder / "zeros.wav", std::string(100'000, '\0'));
    writeFile(folder / "subtitles.srt",
              "1\n00:00:01,000 --> 00:00:02,000\nHello\n\n2\n00:00:03,000 --> 00:00:04,000\nyou\n");
    writeFile(folder / "page.svg", "<?xml version=\"1.0\"?><svg xmlns=\"http://www.w3.org/2000/svg\"/>");
    writeFile(folder / "script.ass", "[Script Info]\nScriptType: v4.00+\n\n[Events]\nFormat: Start, End, Text\n");
    writeMedia(folder / "silent.mp4", {.muxer = "mp4", .video = true}, 1);
    ASSERT_EQ(::mkfifo((folder / "pipe.wav").c_str(), 0600), 0);

    const struct {
        fs::path file;
        Kind kind;
    } cases[] = {
        {folder / "missing.wav", Kind::notFound},
        {folder / "file" / "below.wav", Kind::notFound},
        {folder / std::string(300, 'n'), Kind::notFound},
        {folder.path(), Kind::notAFile},
        {folder / "pipe.wav", Kind::notAFile},
        {"/dev/zero", Kind::notAFile},
        {folder / "empty.wav", Kind::empty},
        {folder / "text.mp3", Kind::notMedia},
        {folder / "letter.txt", Kind::notMedia},
        {folder / "zeros.wav", Kind::notMedia},
        {folder / "subtitles.srt", Kind::notMedia},
        {folder / "page.svg", Kind::notMedia},
        {folder / "script.ass", Kind::notMedia},
        {folder / "silent.mp4", Kind::noAudio},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.file);
        EXPECT_EQ(conversionKind(each.file), each.kind);
        const auto info = FFmpegPCMConverter().examine(each.file);
        if (each.kind == Kind::noAudio)
            EXPECT_FALSE(info.value().hasAudio);
        else
            EXPECT_EQ(info.error().kind, each.kind);
    }
}

TEST(UnusableFile, ThatMayNotBeReadIsUnreadable)
{
    const TemporaryFolder folder;
    writeFile(folder / "secret.wav", wavOfTone({}, 0.1));
    fs::permissions(folder / "secret.wav", fs::perms::none);
    const auto user = ::geteuid();
    if (user == 0) { // root may read everything, so be somebody else meanwhile
        ASSERT_EQ(::seteuid(65534), 0);
    }
    const auto kind = conversionKind(folder / "secret.wav");
    ASSERT_EQ(::seteuid(user), 0);
    EXPECT_EQ(kind, Kind::unreadable);
}

TEST(UnusableFile, APlaylistOpensNoOtherFile)
{
    const TemporaryFolder folder;
    writeFile(folder / "other.wav", wavOfTone({}, 1));
    const auto other = (folder / "other.wav").string();
    const std::pair<const char*, std::string> playlists[] = {
        {"a.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\n" + other + "\n#EXT-X-ENDLIST\n"},
        {"b.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\nfile:///etc/passwd\n#EXT-X-ENDLIST\n"},
        {"c.ffconcat", "ffconcat version 1.0\nfile '" + other + "'\n"},
        {"d.sdp", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 5004 RTP/AVP 0\n"},
        {"e.mpd", "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\"><Period>"
                  "<AdaptationSet mimeType=\"audio/wav\"><Representation id=\"1\"><BaseURL>" +
                      other + "</BaseURL></Representation></AdaptationSet></Period></MPD>"},
    };
    for (const auto& [name, content] : playlists) {
        SCOPED_TRACE(name);
        writeFile(folder / name, content);
        EXPECT_EQ(conversionKind(folder / name), Kind::notMedia);
    }
}

TEST(OddFile, NamesAreOnlyNames)
{
    const TemporaryFolder folder;
    const auto back = fs::current_path();
    fs::current_path(folder.path());
    const auto sound = wavOfTone({}, 0.5);
    for (const char* name : {"a:b.wav", "http:x.wav", "-i.wav", "two words.wav", "съвещание 会議 🎤.wav", "concat:a|b",
                             "%03d.wav", "no extension", "wrong.txt", "list.m3u8", "line\nbreak.wav", "\xFF\xFE.wav"}) {
        SCOPED_TRACE(name);
        writeFile(folder / name, sound);
        EXPECT_EQ(conversionKind(name), std::nullopt);
        EXPECT_EQ(conversionKind(folder / name), std::nullopt);
    }
    fs::current_path(back);
}

TEST(OddFile, WavHeadersThatLieEndInAnErrorOrInWhatIsThere)
{
    const TemporaryFolder folder;
    const auto sound = wavOfTone({}, 1);
    const auto patched = [&](std::size_t offset, std::string_view bytes) {
        auto copy = sound;
        copy.replace(offset, bytes.size(), bytes);
        return converted(folder, copy);
    };
    using namespace std::string_view_literals;
    constexpr std::size_t kChannels = 22;
    constexpr std::size_t kRate = 24;
    constexpr std::size_t kBlockSize = 32;
    constexpr std::size_t kBits = 34;
    constexpr std::size_t kDataSize = 40;
    EXPECT_EQ(patched(kChannels, "\0\0"sv).error().kind, Kind::damaged);
    EXPECT_EQ(patched(kChannels, "\xFF\xFF"sv).error().kind, Kind::damaged);
    EXPECT_EQ(patched(kRate, "\0\0\0\0"sv).error().kind, Kind::damaged);
    EXPECT_EQ(patched(kRate, "\1\0\0\0"sv).error().kind, Kind::damaged) << "16,000 samples made of each";
    EXPECT_EQ(patched(kRate, "\xFF\xFF\xFF\x7F"sv).error().kind, Kind::damaged);
    EXPECT_EQ(patched(20, "\x99\x99"sv).error().kind, Kind::damaged) << "a coding that does not exist";
    for (const auto size : {"\xFF\xFF\xFF\xFF"sv, "\0\0\0\0"sv, "\xFF\xFF\xFF\x7F"sv}) // as streaming recorders write
        EXPECT_EQ(patched(kDataSize, size).value_or(std::vector<float>{}).size(), 16000u);
    for (const auto size : {"\0\0"sv, "\xFF\xFF"sv, "\1\0"sv}) { // whatever comes, it must come to an end
        patched(kBlockSize, size);
        patched(kBits, size);
    }
}

TEST(OddFile, ATruncatedFileGivesWhatItHolds)
{
    const TemporaryFolder folder;
    const auto wav = wavOfTone({.rate = 16000}, 0.1);
    for (std::size_t length = 1; length < wav.size(); length += length < 60 ? 1 : 97) {
        const auto samples = converted(folder, std::string_view(wav).substr(0, length));
        if (length >= 46)
            EXPECT_EQ(samples.value_or(std::vector<float>{}).size(), (length - 44) / 2) << length;
        else
            EXPECT_FALSE(samples) << length;
    }

    for (const auto& form :
         {MediaForm{.muxer = "mp3", .audioEncoder = "libmp3lame"}, MediaForm{.muxer = "ogg", .audioEncoder = "libopus"},
          MediaForm{.muxer = "matroska", .audioEncoder = "aac", .video = true},
          MediaForm{.muxer = "adts", .audioEncoder = "aac"}}) {
        SCOPED_TRACE(form.muxer);
        writeMedia(folder / "whole", form, 10);
        const auto whole = readFile(folder / "whole");
        const auto samples = converted(folder, std::string_view(whole).substr(0, whole.size() / 2));
        ASSERT_TRUE(samples) << samples.error().detail;
        const auto sound = measure(*samples, 440);
        EXPECT_NEAR(sound.seconds, 5, 0.8);
        EXPECT_NEAR(sound.amplitude, 0.5, 0.03);
    }
}

TEST(OddFile, EveryTruncationOfAnM4AEndsCleanly)
{
    const TemporaryFolder folder;
    writeMedia(folder / "whole.m4a", {.muxer = "ipod", .audioEncoder = "aac", .rate = 16000, .channels = 1}, 0.5);
    const auto whole = readFile(folder / "whole.m4a");
    for (std::size_t length = 1; length < whole.size(); length += 13) {
        // Its index is at the end, so without it there is nothing to decode.
        const auto samples = converted(folder, std::string_view(whole).substr(0, length));
        const auto kind = samples ? Kind::damaged : samples.error().kind;
        EXPECT_TRUE(kind == Kind::damaged || kind == Kind::notMedia) << length;
    }
    EXPECT_EQ(converted(folder, std::string_view(whole).substr(0, whole.size() / 2)).error().kind, Kind::damaged);
}

TEST(OddFile, DamageInTheMiddleIsSkipped)
{
    const TemporaryFolder folder;
    for (const auto& form :
         {MediaForm{.muxer = "mp3", .audioEncoder = "libmp3lame"}, MediaForm{.muxer = "ipod", .audioEncoder = "aac"},
          MediaForm{.muxer = "ogg", .audioEncoder = "libopus"}, MediaForm{.muxer = "flac", .audioEncoder = "flac"},
          MediaForm{.muxer = "adts", .audioEncoder = "aac"}}) {
        SCOPED_TRACE(form.muxer);
        writeMedia(folder / "whole", form, 10);
        auto damaged = readFile(folder / "whole");
        std::mt19937 random(7);
        for (std::size_t i = damaged.size() * 45 / 100; i < damaged.size() * 55 / 100; ++i)
            damaged[i] = static_cast<char>(random());
        const auto samples = converted(folder, damaged);
        ASSERT_TRUE(samples) << samples.error().detail;
        ASSERT_GT(samples->size(), 8.5 * 16000);
        EXPECT_LT(samples->size(), 11.0 * 16000);
        const std::span all(*samples);
        EXPECT_NEAR(measure(all.first(4 * 16000), 440).amplitude, 0.5, 0.03) << "before the damage";
        EXPECT_NEAR(measure(all.last(3 * 16000), 440).amplitude, 0.5, 0.03) << "after the damage";
    }
}

TEST(OddFile, RandomBytesAndRandomDamageEndCleanly)
{
    const TemporaryFolder folder;
    writeMedia(folder / "a", {.muxer = "mp4", .audioEncoder = "aac", .video = true}, 0.5);
    writeMedia(folder / "b", {.muxer = "ogg", .audioEncoder = "libvorbis"}, 0.5);
    writeMedia(folder / "c", {.muxer = "matroska", .audioEncoder = "flac"}, 0.5);
    const std::string seeds[] = {std::string(3000, 'x'), wavOfTone({.rate = 48000, .channels = 2}, 0.1),
                                 readFile(folder / "a"), readFile(folder / "b"), readFile(folder / "c")};
    std::mt19937 random(42);
    for (const auto& seed : seeds) {
        for (int round = 0; round < 40; ++round) {
            auto bytes = seed;
            const std::size_t changes = &seed == &seeds[0] ? bytes.size() : 1 + random() % 30;
            const std::size_t reach = round % 2 == 0 ? bytes.size() : std::min<std::size_t>(bytes.size(), 200);
            for (std::size_t i = 0; i < changes; ++i)
                bytes[random() % reach] = static_cast<char>(random());
            const auto samples = converted(folder, bytes);
            EXPECT_LT(samples.value_or(std::vector<float>{}).size(), 16000u * 3600) << "bytes became hours";
        }
    }
}

} // namespace
