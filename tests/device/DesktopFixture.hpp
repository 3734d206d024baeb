#pragma once

#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>

#include <QApplication>
#include <QProcess>
#include <QTest>
#include <chrono>
#include <string>

namespace kivo::test {

/// A real window with real key and mouse events; `desktop` beside this file gives it a display.
class Desktop : public DeviceFixture {
protected:
    /// For anything awaited, in milliseconds; a sanitizer on a busy machine takes its time.
    static constexpr int patience = 20'000;

    void SetUp() override {
        if (QGuiApplication::platformName() != "xcb") {
            GTEST_SKIP() << "there is no X display";
        }
        auto& shown = *phone.window();
        shown.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&shown));
        xdotool({"windowfocus", "--sync", QString::number(shown.winId())});
        ASSERT_TRUE(QTest::qWaitForWindowActive(&shown));
    }

    /// While the tool works, so does the window.
    static void xdotool(const QStringList& arguments) {
        QProcess process;
        process.start("xdotool", arguments);
        ASSERT_TRUE(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, patience))
            << "xdotool hangs";
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }

    /// As soon as it is there. The fifth button turns the wheel down.
    void click(const std::string& name, const char* button = "1") {
        ASSERT_TRUE(await([&] { return isThere(name); })) << name;
        const auto onScreen = phone.mapToGlobal(middleOf(*window->find(name))).toPoint();
        xdotool({"mousemove", QString::number(onScreen.x()), QString::number(onScreen.y()), "click", button});
    }

    /// Time on the main queue goes by faster than in the window.
    template <class Condition>
    bool await(const Condition& condition) {
        return QTest::qWaitFor(
            [&] {
                clock->advance(std::chrono::milliseconds{20});
                mainLoop->drain();
                return condition();
            },
            patience);
    }

    /// In sight, and nothing in front of it.
    bool isThere(const std::string& name) const {
        window->layoutIfNeeded();
        const auto view = window->find(name);
        const auto middle = view ? middleOf(*view) : QPointF{};
        auto hit = view ? window->hitTest({middle.x(), middle.y()}) : nullptr;
        while (hit && hit != view) {
            hit = hit->superview();
        }
        return hit != nullptr;
    }

    /// Presses Tab until the control of that name has the focus.
    bool tabTo(const QString& name) {
        for (int i = 0; i < 20; ++i) {
            const auto* const former = QApplication::focusWidget();
            xdotool({"key", "Tab"});
            const bool moved = await([&] { return QApplication::focusWidget() != former; });
            if (!moved || !phone.isAncestorOf(QApplication::focusWidget())) {
                return false;
            }
            if (QApplication::focusWidget()->objectName() == name) {
                return true;
            }
        }
        return false;
    }

    /// Goes to a button with Tab as soon as it is there, and presses the button with the key.
    void pressWith(const char* key, const std::string& name) {
        ASSERT_TRUE(await([&] { return isThere(name); })) << name;
        const auto* const focused = QApplication::focusWidget();
        const auto wanted = QString::fromStdString(name);
        ASSERT_TRUE((focused != nullptr && focused->objectName() == wanted) || tabTo(wanted)) << name;
        xdotool({"key", key});
    }

    device::PhoneView phone{window};
};

} // namespace kivo::test
