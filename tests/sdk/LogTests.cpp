#include "Configuration/logging/Log.hpp"

#include <kivo/KivoSDK.hpp>

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <thread>
#include <vector>

namespace kivo {
namespace {

TEST(Log, BuildsNoMessageThatIsNotPrinted) {
    testing::internal::CaptureStdout();
    int built = 0;
    log::debug("f()", [&] { return std::to_string(++built); });
    log::info("f()", [&] { return std::to_string(++built); });
    EXPECT_EQ(built, 1);
    EXPECT_TRUE(testing::internal::GetCapturedStdout().ends_with(" \u2013 f() \u2013 1\n"));
}

TEST(Log, TakesTheThresholdWithTheFirstLine) {
    KivoSDK::setLogLevel(LogLevel::verbose);
    testing::internal::CaptureStdout();
    log::line(LogLevel::verbose, "f()", "first");
    KivoSDK::setLogLevel(LogLevel::error);
    log::line(LogLevel::verbose, "f()", "second");
    const auto output = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(output.starts_with("\u27A1\uFE0F \u2013 LogTests.cpp:"));
    EXPECT_TRUE(output.contains("first") && output.contains("second"));
}

TEST(Log, GoesToTheHostsSinkAndCanBeSilenced) {
    std::vector<std::string> lines;
    KivoSDK::setLogSink([&](LogLevel level, std::string_view line) {
        lines.push_back(std::to_string(rawValue(level)) + " " + std::string{line.substr(line.rfind(' ') + 1)});
    });
    testing::internal::CaptureStdout();
    log::error("f()", "loud");
    log::debug("f()", "quiet");
    log::print("bare");
    EXPECT_EQ(lines, (std::vector<std::string>{"5 loud", "3 bare"}));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    KivoSDK::setLogSink({});
    testing::internal::CaptureStdout();
    log::print("bare");
    KivoSDK::setLogLevel(LogLevel::off);
    log::error("f()", "loud");
    log::print("bare");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "bare\n");
    EXPECT_EQ(lines.size(), 2U);
}

TEST(LogConcurrency, LinesOfManyThreadsComeOutWhole) {
    constexpr int threads = 8;
    constexpr int lines = 200;
    testing::internal::CaptureStdout();
    {
        std::vector<std::jthread> writers;
        for (int t = 0; t < threads; ++t) {
            writers.emplace_back([t] {
                for (int i = 0; i < lines; ++i) {
                    log::info("f()",
                              [&] { return std::to_string(t) + ":" + std::to_string(i) + std::string(300, 'x'); });
                }
            });
        }
    }
    std::istringstream output{testing::internal::GetCapturedStdout()};
    std::set<std::string> seen;
    for (std::string line; std::getline(output, line);) {
        EXPECT_TRUE(line.starts_with("\u2139\uFE0F \u2013 LogTests.cpp:") && line.ends_with(std::string(300, 'x')))
            << line;
        seen.insert(line);
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(threads * lines));
}

} // namespace
} // namespace kivo
