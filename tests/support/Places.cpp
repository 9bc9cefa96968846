#include "tests/support/Places.h"

namespace vocalith::test {

// The only source that is compiled with absolute paths, so that the compiler's cache serves every clone with the
// others.

std::string programFile()
{
    return VOCALITH_PROGRAM;
}

std::filesystem::path testData()
{
    return VOCALITH_TEST_DATA;
}

std::filesystem::path recordedSpeech()
{
    return VOCALITH_RECORDED_SPEECH;
}

} // namespace vocalith::test
