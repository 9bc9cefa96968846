#include "ports/PCMConverter.h"

namespace vocalith {

std::string userMessage(const ConversionError& error)
{
    using Kind = ConversionError::Kind;
    const std::string name = "\"" + error.file.string() + "\"";
    switch (error.kind) {
    case Kind::notFound: return "There is no file " + name + ". Check the path.";
    case Kind::notAFile: return name + " is not a file. Name an audio or video file.";
    case Kind::unreadable: return name + " cannot be read. Check its permissions.";
    case Kind::empty: return name + " is empty. Name a file that holds a recording.";
    case Kind::notMedia: return name + " is not an audio or video file that can be read.";
    case Kind::noAudio: return name + " has no audio track.";
    case Kind::damaged: return name + " is damaged: none of its audio could be decoded.";
    case Kind::writeFailed: return name + " could not be written: " + error.detail + ".";
    }
    return {};
}

} // namespace vocalith
