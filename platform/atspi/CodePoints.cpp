#include "platform/atspi/CodePoints_p.h"

namespace vocalith {
namespace {

bool startsCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

} // namespace

std::string firstCharacters(std::string text, int limit)
{
    std::size_t end = 0;
    for (int count = 0; end < text.size(); ++end) {
        if (startsCharacter(text[end]) && ++count > limit)
            break;
    }
    text.resize(end);
    return text;
}

std::string lastCharacters(std::string text, int limit)
{
    std::size_t begin = text.size();
    for (int count = 0; begin > 0 && count < limit;) {
        if (startsCharacter(text[--begin]))
            ++count;
    }
    return text.substr(begin);
}

} // namespace vocalith
