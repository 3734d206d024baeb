#include <kivo/ResponseCode.hpp>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace kivo {
namespace {

// Hosts store the numbers, services send the names, and people read the texts.
TEST(ResponseCode, KeepsItsNumberNameAndTexts) {
    std::ostringstream all;
    for (const auto each : allResponseCodes()) {
        all << code(each) << ' ' << name(each) << ": " << message(each) << " (" << genericMessage(each) << ")\n";
        EXPECT_EQ(responseCode(code(each)), each);
        EXPECT_EQ(responseCodeNamed(name(each)), each);
    }
    std::ostringstream published;
    published << std::ifstream{KIVO_TEST_DATA "/response-codes.txt"}.rdbuf();
    EXPECT_EQ(all.str(), published.str());
    for (const auto unknown : {static_cast<ResponseCode>(999), static_cast<ResponseCode>(-1)}) {
        EXPECT_EQ(code(unknown), 0);
        EXPECT_EQ(name(unknown), "");
        EXPECT_EQ(message(unknown), "");
        EXPECT_EQ(genericMessage(unknown), "");
    }
    EXPECT_FALSE(responseCode(0) || responseCode(1000) || responseCodeNamed("") || responseCodeNamed("no_chip"));
}

} // namespace
} // namespace kivo
