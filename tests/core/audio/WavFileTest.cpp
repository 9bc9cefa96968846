#include "core/audio/WavFile.h"

#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <numeric>
#include <vector>

using namespace vocalith;
using namespace vocalith::test;

namespace {

std::vector<std::int16_t> ramp(std::size_t count)
{
    std::vector<std::int16_t> samples(count);
    std::iota(samples.begin(), samples.end(), std::int16_t{1});
    return samples;
}

std::string headerOf(std::uint32_t riffSize, std::uint32_t dataSize)
{
    const auto number = [](std::uint32_t value) { return std::string(reinterpret_cast<const char*>(&value), 4); };
    using namespace std::string_literals;
    return "RIFF" + number(riffSize) + "WAVEfmt \x10\0\0\0\x01\0\x01\0\x80\x3E\0\0\0\x7D\0\0\x02\0\x10\0data"s +
           number(dataSize);
}

TEST(WavWriter, HeaderIsExactAfterEveryAppend)
{
    const TemporaryFolder folder;
    const auto file = folder / "a.wav";
    auto writer = WavWriter::create(file);
    ASSERT_TRUE(writer);
    std::string samples;
    for (const std::size_t count : {0, 1, 160, 7, 16000}) {
        const auto piece = ramp(count);
        ASSERT_TRUE(writer->append(piece));
        samples.append(reinterpret_cast<const char*>(piece.data()), piece.size() * 2);
        const auto size = static_cast<std::uint32_t>(samples.size());
        EXPECT_EQ(readFile(file), headerOf(size + 36, size) + samples);
    }
    struct ::stat status {};
    ::stat(file.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_FALSE(WavWriter::create(file)) << "an existing recording was overwritten";
}

TEST(WavWriter, LocksTheFileWhileItLives)
{
    const TemporaryFolder folder;
    const auto file = folder / "a.wav";
    std::optional<WavWriter> writer = WavWriter::create(file).value();
    const FileDescriptor other(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), -1);
    writer.reset();
    EXPECT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), 0);
}

TEST(WavHeader, OpensAFileThatEndsAnywhere)
{
    const TemporaryFolder folder;
    const auto whole = headerOf(36 + 20, 20) + std::string(20, 'x');
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        writeFile(folder / "cut.wav", whole.substr(0, length));
        const auto info = readWavHeader(folder / "cut.wav");
        ASSERT_EQ(info.has_value(), length >= kWavHeaderSize) << length;
        if (info) {
            EXPECT_EQ(*info, (WavInfo{1, 16000, 16, 44, length - kWavHeaderSize}));
        } else {
            EXPECT_EQ(info.error().kind, WavError::Kind::notWav);
        }
    }
    EXPECT_EQ(readWavHeader(folder / "none.wav").error().kind, WavError::Kind::notFound);
}

TEST(WavHeader, SkipsOtherChunks)
{
    const TemporaryFolder folder;
    using namespace std::string_literals;
    const auto plain = headerOf(0, 4);
    writeFile(folder / "a.wav",
              plain.substr(0, 36) + "LIST\x03\0\0\0abc\0"s + plain.substr(36) + "1234" + "tail\x02\0\0\0zz"s);
    EXPECT_EQ(readWavHeader(folder / "a.wav"), (WavInfo{1, 16000, 16, 56, 4}));
    EXPECT_DOUBLE_EQ((WavInfo{1, 16000, 16, 44, 32000}).duration(), 1.0);
}

/// A disk with room for `room` bytes that writes at most 1000 at a time and is interrupted every third time.
WavWriter::WriteAt smallDisk(std::uint64_t room, int code)
{
    return [room, code, calls = 0](int fd, const void* bytes, std::size_t count, ::off_t offset) mutable -> ::ssize_t {
        if (++calls % 3 == 0) {
            errno = EINTR;
            return -1;
        }
        const auto end = static_cast<std::uint64_t>(offset);
        if (end >= room) {
            errno = code;
            return -1;
        }
        return ::pwrite(fd, bytes, std::min({count, std::size_t{1000}, static_cast<std::size_t>(room - end)}), offset);
    };
}

TEST(WavWriter, WhatFitOnAFullDiskStaysValid)
{
    struct Case {
        std::uint64_t room;
        int code;
        WavError::Kind kind;
        std::uint64_t kept;
    };
    const TemporaryFolder folder;
    for (const auto& [room, code, kind, kept] :
         {Case{3045, ENOSPC, WavError::Kind::diskFull, 3000}, Case{3044, EDQUOT, WavError::Kind::diskFull, 3000},
          Case{2044, EFBIG, WavError::Kind::tooLarge, 2000}, Case{1044, EIO, WavError::Kind::failed, 1000}}) {
        const auto file = folder / (std::to_string(room) + ".wav");
        auto writer = WavWriter::create(file, {smallDisk(room, code)}).value();
        auto written = writer.append(ramp(400));
        for (int i = 0; written && i < 20; ++i)
            written = writer.append(ramp(400));
        ASSERT_FALSE(written);
        EXPECT_EQ(written.error().kind, kind);
        EXPECT_EQ(writer.dataBytes(), kept);
        EXPECT_EQ(readWavHeader(file), (WavInfo{1, 16000, 16, 44, kept}));
        EXPECT_EQ(std::filesystem::file_size(file), kWavHeaderSize + kept);
    }
    EXPECT_EQ(WavWriter::create(folder / "full.wav", {smallDisk(0, ENOSPC)}).error().kind, WavError::Kind::diskFull);
    EXPECT_FALSE(std::filesystem::exists(folder / "full.wav"));
}

TEST(WavWriter, StopsCleanlyAtTheSizeLimit)
{
    EXPECT_LE(kWavMaxDataBytes + 36, 0xFFFFFFFFU);
    const TemporaryFolder folder;
    auto writer = WavWriter::create(folder / "a.wav", {::pwrite, 10}).value();
    EXPECT_TRUE(writer.append(ramp(3)));
    EXPECT_EQ(writer.append(ramp(3)).error().kind, WavError::Kind::tooLarge);
    EXPECT_EQ(writer.append(ramp(1)).error().kind, WavError::Kind::tooLarge);
    EXPECT_EQ(readWavHeader(folder / "a.wav")->dataBytes, 10U);
}

} // namespace
