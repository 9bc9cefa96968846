#pragma once

#include <unicode/brkiter.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vocalith {

/// A text in the form in which spoken commands are compared: small letters, canonically composed, as a row of
/// characters as people perceive them (extended grapheme clusters, UAX #29).
class ComparedText {
public:
    /// `ends` are the offsets behind each character.
    ComparedText(std::u16string text, std::vector<std::size_t> ends) : m_text(std::move(text)), m_ends(std::move(ends))
    {}

    std::size_t size() const { return m_ends.size(); } ///< in characters
    std::u16string_view at(std::size_t index) const;
    /// As UTF-8.
    std::string part(std::size_t first, std::size_t count) const;

private:
    std::size_t start(std::size_t index) const { return index == 0 ? 0 : m_ends[index - 1]; }

    std::u16string m_text;
    std::vector<std::size_t> m_ends;
};

/// Brings texts into the form in which they are compared. Invalid UTF-8 becomes U+FFFD. One thread at a time.
class TextComparison {
public:
    /// Without the white space around it, and then without the punctuation around that.
    ComparedText transcript(std::string_view utf8);
    /// Without the white space around it.
    ComparedText phrase(std::string_view utf8);

private:
    ComparedText compared(std::string_view utf8, bool trimsPunctuation);
    std::vector<std::size_t> characterEnds(const icu::UnicodeString& text);

    std::unique_ptr<icu::BreakIterator> m_characters; ///< made when a text needs it: that takes its time
};

} // namespace vocalith
