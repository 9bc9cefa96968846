#include "app/whisper/OpenMPWaitPolicy.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>

using namespace vocalith;

namespace {

constexpr auto kSecondStart = "VOCALITH_TEST_SECOND_START";

/// Starts the test program anew with the one test below, which then tells by the exit code what it has found.
[[noreturn]] void startAnew()
{
    unsetenv("OMP_WAIT_POLICY");
    unsetenv("GOMP_SPINCOUNT");
    setenv(kSecondStart, "1", 1);
    std::string program = "test";
    std::string filter = "--gtest_filter=OpenMPWaitPolicy.HoldsInTheSecondStart";
    std::array<char*, 3> arguments = {program.data(), filter.data(), nullptr};
    reexecuteWithPassiveWaiting(arguments.data());
    std::_Exit(42); // it came back
}

TEST(OpenMPWaitPolicyDeathTest, StartsTheProgramAnew)
{
    EXPECT_EXIT(startAnew(), testing::ExitedWithCode(0), "");
}

TEST(OpenMPWaitPolicy, HoldsInTheSecondStart)
{
    if (std::getenv(kSecondStart) == nullptr)
        setenv("OMP_WAIT_POLICY", "passive", 0);
    const auto* policy = std::getenv("OMP_WAIT_POLICY");
    ASSERT_NE(policy, nullptr);
    EXPECT_STREQ(policy, "passive");
    std::array<char*, 1> nothing = {nullptr};
    reexecuteWithPassiveWaiting(nothing.data()); // a third start would run this test without an end
    EXPECT_EQ(std::getenv("VOCALITH_REEXECUTED"), nullptr) << "programs that this one starts inherit the mark";
}

} // namespace
