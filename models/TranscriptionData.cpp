#include "models/TranscriptionData.h"

#include "base/Text.h"

namespace vocalith {

std::string plainText(const TranscriptionData& transcript)
{
    std::string text;
    for (const auto& segment : transcript.segments) {
        const auto part = trimmedView(segment.text);
        if (part.empty())
            continue;
        if (!text.empty())
            text += ' ';
        text += part;
    }
    return text;
}

} // namespace vocalith
