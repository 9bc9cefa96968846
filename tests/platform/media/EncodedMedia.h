#pragma once

#include <filesystem>
#include <string>

namespace vocalith::test {

/// A media file that a test makes: a 440 Hz tone of amplitude 0.5, with or without a picture.
struct MediaForm {
    std::string muxer{};        ///< FFmpeg's name of the container
    std::string audioEncoder{}; ///< FFmpeg's name; empty for a file without sound
    int rate = 48000;
    int channels = 2;
    bool video = false; ///< with a moving picture
    bool coverArt = false;
    double gapAt = 0; ///< seconds; the timestamps jump there
    double gap = 0;   ///< seconds
};

/// Throws when the libraries do not make it.
void writeMedia(const std::filesystem::path& file, const MediaForm& form, double seconds);

} // namespace vocalith::test
