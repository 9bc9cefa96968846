#include "app/whisper/SegmentText.h"

#include <QString>

#include <algorithm>
#include <utility>

namespace vocalith {
namespace {

/// How many bytes at the end of `text` begin a character that is not complete.
std::size_t incompleteTail(const std::string& text)
{
    for (std::size_t length = 1; length <= std::min<std::size_t>(3, text.size()); ++length) {
        const auto byte = static_cast<unsigned char>(text[text.size() - length]);
        if ((byte & 0xC0) == 0x80)
            continue;
        const std::size_t needed = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return needed > length ? length : 0;
    }
    return 0;
}

} // namespace

std::string SegmentText::next(const std::string& libraryText, bool isLast)
{
    std::string text = std::exchange(m_beginning, {}) + libraryText;
    if (!isLast) {
        const auto complete = text.size() - incompleteTail(text);
        m_beginning = text.substr(complete);
        text.resize(complete);
    }
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).trimmed().toStdString();
}

} // namespace vocalith
