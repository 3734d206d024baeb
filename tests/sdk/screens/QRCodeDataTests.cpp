#include "services/acquisition/qr/inhouse/QRCodeData.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace kivo {
namespace {

TEST(QRCodePayload, IsAJsonObjectWithTheCode) {
    struct Row {
        const char* text;
        std::optional<std::string> code;
    };

    const Row rows[] = {
        {R"({"code":"123456"})", "123456"},
        {R"({"code":""})", ""},
        {R"( {"x":[{}],"code":"ABC","code2":1} )", "ABC"},
        {"{\"code\":\"\\u00e9\\n\"}", "\u00E9\n"},
        {R"({"code":123456})", std::nullopt},
        {R"({"code":null})", std::nullopt},
        {R"({"Code":"123456"})", std::nullopt},
        {R"(["code"])", std::nullopt},
        {R"("123456")", std::nullopt},
        {R"({"code":"123456"} x)", std::nullopt},
        {R"({"code":"1)", std::nullopt},
        {"{\"code\":\"\xFF\"}", std::nullopt},
        {"4006381333931", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& row : rows) {
        const auto payload = QRCodeData::decode(row.text);
        EXPECT_EQ(payload ? std::optional{payload->code} : std::nullopt, row.code) << row.text;
    }
    EXPECT_EQ(QRCodeData{.code = "A\"b"}.encode(), R"({"code":"A\"b"})");
}

} // namespace
} // namespace kivo
