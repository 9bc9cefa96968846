#pragma once

#include <string>

namespace vocalith {

/// Makes the text of one segment after the other from what the library says. The library cuts between tokens, and a
/// token may end in the middle of a character: such a beginning goes over into the next segment. What is no UTF-8 all
/// the same becomes U+FFFD, since texts are stored as JSON.
class SegmentText {
public:
    /// Yields the text without white space and line breaks around it.
    std::string next(const std::string& libraryText, bool isLast);

private:
    std::string m_beginning;
};

} // namespace vocalith
