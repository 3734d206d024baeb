#include "support/Program.hpp"

#include <gtest/gtest.h>

#include <string>

namespace kivo::reader {
namespace {

TEST(ChipReading, NeitherCrashesNorHangsAProcessThatExits) {
    for (int i = 0; i < 40; ++i) {
        const auto when = i == 0 ? "card" : std::to_string(1000 * i);
        const auto ended = test::run("exec " KIVO_TEST_PROGRAMS "/ExitWhileReading " + when + " 2>&1");
        EXPECT_TRUE(ended.hasExitedWith(0)) << when << ": " << ended.status << ended.output;
    }
}

} // namespace
} // namespace kivo::reader
