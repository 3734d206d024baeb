#include <kivo/ResponseCode.hpp>

#include <gtest/gtest.h>

namespace kivo {
namespace {

TEST(ResponseCode, CarriesItsNumberNameAndTexts) {
    struct Row {
        ResponseCode responseCode;
        int code;
        std::string_view name;
        std::string_view message;
        std::string_view genericMessage;
    };

    const Row rows[] = {
        {ResponseCode::STATUS_INVALID_ACTIVATION_CODE, 1001, "STATUS_INVALID_ACTIVATION_CODE",
         "Activation code is not valid", "Processing error"},
        {ResponseCode::CANCELLED_BY_USER, 1133, "CANCELLED_BY_USER", "User cancelled via close button",
         "Processing error"},
        {ResponseCode::NO_CHIP, 2001, "NO_CHIP", "No chip", "Document scan error"},
        {ResponseCode::VIZ_CAPTURE_TIMEOUT, 2024, "VIZ_CAPTURE_TIMEOUT", "Viz capture has been timed out",
         "Document scan error"},
        {ResponseCode::CANCELLED, 3004, "CANCELLED", "Face scan cancelled", "Face scan error"},
        {ResponseCode::STATUS_SESSION_EXPIRED, 3020, "STATUS_SESSION_EXPIRED",
         "Facetec session token was either not provided or it has expired.", "Face scan error"},
        {static_cast<ResponseCode>(999), 0, "", "", ""},
        {static_cast<ResponseCode>(-1), 0, "", "", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(code(row.responseCode), row.code);
        EXPECT_EQ(name(row.responseCode), row.name);
        EXPECT_EQ(message(row.responseCode), row.message);
        EXPECT_EQ(genericMessage(row.responseCode), row.genericMessage);
    }
}

TEST(ResponseCode, NumbersOnlyRise) {
    int previous = 0;
    for (const auto responseCode : allResponseCodes()) {
        EXPECT_GT(code(responseCode), previous) << name(responseCode);
        previous = code(responseCode);
    }
    EXPECT_EQ(previous, 3020);
}

} // namespace
} // namespace kivo
