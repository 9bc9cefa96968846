#include "core/storage/LocalAnalytics.h"

#include "tests/support/RecordedLog.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

TEST(LocalAnalytics, EachEventIsOneLineOfTheLog)
{
    const RecordedLog log;
    LocalAnalytics analytics(log.logger());
    analytics.event("dictation_started");
    analytics.event("dictation_started");
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Event: dictation_started", "Event: dictation_started"}));
}

} // namespace
