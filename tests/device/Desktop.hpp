#pragma once

#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <QGuiApplication>
#include <QProcess>
#include <QTest>
#include <chrono>
#include <string>
#include <typeinfo>

namespace kivo::test {

/// A real window with real key and mouse events; `desktop` beside this file gives it a display.
class Desktop : public DeviceFixture {
protected:
    /// For a program to start or to end, in milliseconds; a sanitizer on a busy machine takes its time.
    static constexpr int patience = 60'000;

    void SetUp() override {
        if (QGuiApplication::platformName() != "xcb") {
            GTEST_SKIP() << "there is no X display";
        }
        phone.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&phone));
        xdotool({"windowfocus", "--sync", QString::number(phone.winId())});
        ASSERT_TRUE(QTest::qWaitForWindowActive(&phone));
    }

    /// While the tool works, so does the window.
    static void xdotool(const QStringList& arguments) {
        QProcess process;
        process.start("xdotool", arguments);
        ASSERT_TRUE(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, patience))
            << "xdotool hangs";
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }

    static platform::Point middleOf(const platform::View& view) {
        const auto frame = view.frameOnScreen();
        return {frame.left() + frame.size.width / 2, frame.top() + frame.size.height / 2};
    }

    void click(const std::string& name) {
        window->layoutIfNeeded();
        const auto view = window->find(name);
        ASSERT_NE(view, nullptr) << name;
        const auto middle = middleOf(*view);
        const auto onScreen = phone.mapToGlobal(QPointF{middle.x, middle.y}).toPoint();
        xdotool({"mousemove", QString::number(onScreen.x()), QString::number(onScreen.y()), "click", "1"});
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
        auto hit = view ? window->hitTest(middleOf(*view)) : nullptr;
        while (hit && hit != view) {
            hit = hit->superview();
        }
        return hit != nullptr;
    }

    std::string textOf(const std::string& field) const { return window->find<platform::TextField>(field)->text(); }

    std::string screen() const {
        const auto visible = window->visibleViewController();
        return typeid(*visible).name();
    }

    device::PhoneView phone{window};
};

} // namespace kivo::test
