#include "app/Records.hpp"

#include <gmock/gmock.h>

#include <QFontDatabase>
#include <QGlyphRun>
#include <QTextLayout>

namespace kivo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(ShownBodies, HideCodesKeysAndScansAtEveryDepthAndKeepWhatHelps) {
    const auto shown = device::app::withoutSecrets(R"({"kivo-action":"init","kivo-init-code":"SECRET-1",
        "app-info":{"os":"12.5","deviceId":"SECRET-2"},"auditTrail":["SECRET-3"],"faceScan":"SECRET-4"})")
                           .toStdString();
    EXPECT_THAT(shown, HasSubstr("init"));
    EXPECT_THAT(shown, HasSubstr("12.5"));
    EXPECT_THAT(shown, HasSubstr("(8 characters)"));
    EXPECT_THAT(shown, Not(HasSubstr("SECRET")));
    for (const auto* other : {"SECRET", R"(["SECRET"])", ""}) {
        EXPECT_THAT(device::app::withoutSecrets(other).toStdString(), Not(HasSubstr("SECRET")));
    }
}

/// The markers of the log's levels, as the library's own log test has them, and other letters of the device.
TEST(ShownLog, EveryLetterIsInAnInstalledFont) {
    for (const char32_t letter : U"\u27A1\u2753\u2139\u26A0\u274C\u2013\u2022\u2026") {
        const auto text = QString::fromUcs4(&letter, letter == 0 ? 0 : 1);
        QTextLayout layout{text, QFontDatabase::systemFont(QFontDatabase::FixedFont)};
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        for (const auto& run : layout.glyphRuns()) {
            EXPECT_THAT(run.glyphIndexes(), testing::Each(testing::Ne(0U))) << text.toStdString();
        }
    }
}

} // namespace
} // namespace kivo::test
