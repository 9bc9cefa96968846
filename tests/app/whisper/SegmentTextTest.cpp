#include "app/whisper/SegmentText.h"

#include <gtest/gtest.h>

using namespace vocalith;

namespace {

TEST(SegmentText, ACharacterThatIsCutGoesOverIntoTheNextSegment)
{
    SegmentText text;
    EXPECT_EQ(text.next(" \n Gr\xC3", false), "Gr");
    EXPECT_EQ(text.next("\xBC\xC3\x9F"
                        "e \xF0\x9F\x98",
                        false),
              "üße");
    EXPECT_EQ(text.next("\x80 \r\n", true), "😀");
}

TEST(SegmentText, WhatIsNoTextBecomesAReplacementCharacter)
{
    SegmentText text;
    EXPECT_EQ(text.next("a\xFF"
                        "b",
                        false),
              "a\uFFFDb");
    EXPECT_EQ(text.next("end\xE2", true), "end\uFFFD");
}

} // namespace
