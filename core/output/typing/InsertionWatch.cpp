#include "core/output/typing/InsertionWatch.h"

#include "base/Text.h"
#include "ports/Accessibility.h"

namespace vocalith {
namespace {

constexpr int kReadBefore = 64;        // characters, enough for the bytes below and white space behind them
constexpr std::size_t kTailBytes = 48; // are telling, and quickly read

/// The end of the last line that has one: applications differ in what they make of line breaks and of white space at
/// the end.
std::string tailOf(const std::string& text)
{
    std::string line = trimmed(text);
    line.erase(0, line.find_last_of("\n\t") + 1);
    if (line.size() <= kTailBytes)
        return line;
    std::size_t start = line.size() - kTailBytes;
    while (start < line.size() && (static_cast<unsigned char>(line[start]) & 0xC0U) == 0x80U)
        ++start; // not in the middle of a character
    return line.substr(start);
}

} // namespace

Task<void> InsertionWatch::untilShown(std::string text)
{
    const std::string tail = tailOf(text);
    const Instant deadline = m_clock.instant() + kLimit;
    while (true) {
        const auto paused = co_await sleepFor(m_clock, kPause);
        if (!paused || tail.empty() || !m_accessibility.isProcessTrusted() || m_clock.instant() >= deadline)
            co_return;
        const auto element = co_await m_accessibility.focusedElement();
        if (!element || element->isSecure())
            co_return;
        const auto around = co_await element->text(kReadBefore);
        if (!around || trimmed(around->before).ends_with(tail))
            co_return;
    }
}

} // namespace vocalith
