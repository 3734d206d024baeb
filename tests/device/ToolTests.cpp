#include "app/AnimatedPng.hpp"
#include "app/DeviceWindow.hpp"
#include "app/Keeping.hpp"
#include "app/Laboratory.hpp"
#include "app/LogView.hpp"
#include "app/Recording.hpp"
#include "support/Program.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/simulator/Person.hpp>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <algorithm>
#include <csignal>
#include <utility>

namespace kivo::test {
namespace {

using namespace device::app;
using namespace std::chrono_literals;
using testing::HasSubstr;

QImage screen(const QColor& color, int x) {
    QImage picture{60, 40, QImage::Format_RGB888};
    picture.fill(Qt::white);
    for (int i = 0; i < 5; ++i) {
        picture.setPixelColor(x + i, 20 + i, color);
    }
    return picture;
}

TEST(Recordings, GiveBackEachChangeOfTheDisplayAndEndByThemselves) {
    const std::array screens{screen(Qt::red, 5), screen(Qt::red, 5), screen(Qt::blue, 50), screen(Qt::white, 0)};
    std::size_t next = 0;
    int ends = 0;
    Recording recording{[&] { return screens.at(std::min(next++, screens.size() - 1)); }, [&] { ++ends; }};
    for (const auto at : {100ms, 200ms, 300ms}) {
        recording.take(at);
    }
    const auto frames = framesOf(recording.file());
    ASSERT_TRUE(frames) << frames.error();
    EXPECT_EQ(*frames, (std::vector{screens[0], screens[2], screens[3]})) << "what does not change is no frame";
    EXPECT_EQ(QImage::fromData(recording.file()).convertToFormat(QImage::Format_RGB888), screens[0])
        << "for programs without animations";
    EXPECT_EQ(ends, 0);
    recording.take(Recording::longest);
    EXPECT_EQ(ends, 1);
}

TEST(Recordings, ThatAreBrokenAreRefused) {
    AnimatedPng animation;
    animation.add(screen(Qt::red, 5), 100ms);
    animation.add(screen(Qt::blue, 50), 100ms);
    const auto whole = animation.file();
    EXPECT_FALSE(framesOf(whole, /*most=*/1));
    for (const auto length : {0, 7, 40, 90, static_cast<int>(whole.size()) - 30, static_cast<int>(whole.size()) - 1}) {
        EXPECT_FALSE(framesOf(whole.left(length))) << length;
    }
    auto longer = whole;
    longer.replace(whole.lastIndexOf("fdAT") - 4, 4, QByteArray{"\x7f\xff\xff\xff", 4});
    EXPECT_FALSE(framesOf(longer));
}

TEST(Keeping, APictureIsForThePersonAloneAndAFullDiskLeavesNone) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "kept.png";
    const auto keepIt = [&] { return keep(QString::fromStdString(file.string()), asPng(screen(Qt::red, 5))); };
    std::signal(SIGXFSZ, SIG_IGN);
    {
        const LowLimit full{RLIMIT_FSIZE, 10};
        const auto kept = keepIt();
        ASSERT_FALSE(kept);
        EXPECT_THAT(kept.error(), HasSubstr(file.string() + " could not be written"));
        EXPECT_FALSE(exists(file));
    }
    ASSERT_TRUE(keepIt());
    struct stat told{};
    ASSERT_EQ(stat(file.c_str(), &told), 0);
    EXPECT_EQ(told.st_mode & 0777U, 0600U);
}

TEST(Log, ShowsTheLinesOfALevelWithATextAndCopiesThose) {
    LogView log;
    for (const auto* line : {"\u2139\uFE0F join begins", "\u26A0\uFE0F join is slow", "  with a second line",
                             "\u274C Update failed", "\u2753 join: details"}) {
        log.add(QString::fromUtf8(line));
    }
    const auto copied = [&] {
        log.copy();
        return QGuiApplication::clipboard()->text().toStdString();
    };
    auto* const level = log.findChild<QComboBox*>();
    auto* const text = log.findChild<QLineEdit*>();
    level->setCurrentIndex(level->findText("Warnings and errors"));
    EXPECT_EQ(copied(), "\u26A0\uFE0F join is slow\n  with a second line\n\u274C Update failed");
    text->setText("UPDATE");
    EXPECT_EQ(copied(), "\u274C Update failed");
    log.add(QString::fromUtf8("\u274C another update failed"));
    EXPECT_EQ(copied(), "\u274C Update failed\n\u274C another update failed");
    level->setCurrentIndex(0);
    text->clear();
    EXPECT_THAT(copied(), HasSubstr("details"));
}

TEST(Tool, TheNextScreensSpeakTheChosenLanguage) {
    const program::TemporaryFolder folder{"kivo-tool-tests"};
    Laboratory laboratory{"18", folder};
    const DeviceWindow tool{laboratory};
    laboratory.start();
    simulator::Person person{laboratory.window};
    const auto choosers = tool.findChildren<QComboBox*>();
    const auto chooser = std::ranges::find(choosers, "Language", &QWidget::accessibleName);
    ASSERT_NE(chooser, choosers.end());
    for (const auto& [title, text] : {std::pair{"Deutsch", "Los geht’s"}, std::pair{"العربية", "لنبدأ"}}) {
        (*chooser)->setCurrentIndex((*chooser)->findText(title));
        EXPECT_EQ(laboratory.window->find("getStartedTitleLabel"), nullptr) << "the host's start screen";
        ASSERT_TRUE(person.tap("enterCode"));
        EXPECT_TRUE(person.sees(text)) << title;
    }
    EXPECT_EQ(laboratory.window->layoutDirection(), platform::LayoutDirection::rightToLeft);
}

} // namespace
} // namespace kivo::test
