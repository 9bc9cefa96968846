#pragma once

#include "platform/media/FFmpegPCMConverter.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace vocalith::test {

/// Decodes a file into memory; the result is the samples.
inline Result<std::vector<float>, ConversionError> converted(const std::filesystem::path& file)
{
    std::vector<float> samples;
    const auto keep = [&samples](std::span<const float> piece) {
        EXPECT_LE(piece.size(), 16000u);
        samples.insert(samples.end(), piece.begin(), piece.end());
        return true;
    };
    const auto count = FFmpegPCMConverter().convert(file, keep, {}, {});
    if (!count)
        return failure(count.error());
    EXPECT_EQ(static_cast<std::size_t>(*count), samples.size());
    return samples;
}

inline Result<std::vector<float>, ConversionError> converted(const TemporaryFolder& folder, std::string_view content)
{
    writeFile(folder / "content", content);
    return converted(folder / "content");
}

} // namespace vocalith::test
