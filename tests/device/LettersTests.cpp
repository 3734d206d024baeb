#include <gmock/gmock.h>

#include <QFontDatabase>
#include <QGlyphRun>
#include <QTextLayout>

namespace kivo::test {
namespace {

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
