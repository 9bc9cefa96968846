#include "models/TranscriptionData.h"

#include <string_view>

namespace vocalith {
namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kWhitespace = " \t\n\v\f\r";
    const auto first = text.find_first_not_of(kWhitespace);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kWhitespace) - first + 1);
}

} // namespace

std::string plainText(const TranscriptionData& transcript)
{
    std::string text;
    for (const auto& segment : transcript.segments) {
        const auto part = trimmed(segment.text);
        if (part.empty())
            continue;
        if (!text.empty())
            text += ' ';
        text += part;
    }
    return text;
}

} // namespace vocalith
