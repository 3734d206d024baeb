#include "DeviceFixture.hpp"
#include "desk/ReaderTour.hpp"
#include "pictures/reader/PagePicture.hpp"

#include <kivo/device/LayoutFaults.hpp>
#include <kivo/platform/ui/Button.hpp>

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <functional>

namespace kivo::test {
namespace {

using namespace platform;
using namespace std::chrono_literals;
using testing::IsEmpty;

class ReaderLayout : public DeviceFixture, public testing::WithParamInterface<const char*> {
protected:
    void TearDown() override { unsetenv("LC_ALL"); }

    void speak(const char* language) {
        setenv("LC_ALL", language, /*overwrite=*/1);
        services.bundles =
            linuxServices({.mainBundle = {}, .dataFolder = folder.path() / "other", .trustedCertificates = {}}).bundles;
        platform::install(services);
    }

    void expectNoFaults(const std::string& where) {
        ++looks;
        EXPECT_THAT(device::layoutFaults(*window, readable), IsEmpty()) << where;
    }

    /// Texts, other than the titles of buttons, contrast more. An icon, which has no name, and an empty field are no
    /// texts.
    void expectPlainTexts(const std::string& where) {
        for (const auto& fault : device::layoutFaults(*window, 7)) {
            const auto name = fault.substr(1, fault.find('"', 1) - 1);
            const auto field = window->find<TextField>(name);
            EXPECT_TRUE(name.empty() || window->find<Button>(name) || (field && field->text().empty()))
                << fault << ", " << where;
        }
    }

    /// At every reading size on every display, and in the dark while the page stands.
    void look(const std::string& page) {
        for (const auto& size : displays) {
            window->setSize(size);
            for (int raw = 0; raw <= RawValues<ContentSizeCategory>::last; ++raw) {
                window->setPreferredContentSizeCategory(static_cast<ContentSizeCategory>(raw));
                expectNoFaults(page + " at reading size " + std::to_string(raw) + ", " +
                               std::to_string(static_cast<int>(size.width)) + " points wide");
            }
        }
        window->setPreferredContentSizeCategory(ContentSizeCategory::large);
        expectPlainTexts(page);
        window->setUserInterfaceStyle(UserInterfaceStyle::dark);
        expectNoFaults(page + " in the dark");
        expectPlainTexts(page + " in the dark");
        const auto ground = window->visibleViewController()->view()->backgroundColor();
        EXPECT_TRUE(ground && ground->in(UserInterfaceStyle::dark).red < 0.2) << page;
        window->setUserInterfaceStyle(UserInterfaceStyle::light);
    }

    /// The chip and the search for lines have threads of their own.
    bool becomes(const std::function<bool()>& condition) const {
        const auto deadline = std::chrono::steady_clock::now() + 30s;
        while (!mainLoop->runUntil(condition, 1ms)) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            clock->advance(10ms);
        }
        return true;
    }

    static constexpr double readable = 4.5;
    static constexpr Size displays[] = {{390, 844}, {320, 568}, {844, 390}, {820, 1180}};
    int looks = 0;
};

TEST_P(ReaderLayout, ShowsEveryPageAtEveryReadingSizeOnEveryDisplay) {
    const std::string_view language = GetParam();
    speak(GetParam());
    const auto passport =
        std::make_shared<simulator::Passport>(simulator::PassportConfiguration{.extendedLength = false});
    auto unread = passport->zone();
    unread.back().back() = 'A'; // where a check digit is
    desk::ReaderTour tour{
        passport,
        {.unread = device::pictures::pagePicture(unread), .readable = device::pictures::pagePicture(passport->zone())},
        host,
        window,
        simulator::Person{window, mainLoop, clock},
        [this](const auto& condition) { return becomes(condition); }};
    const auto visit = [&](const std::string& page) {
        look(page);
        const auto back = window->find("readerBack")->frameOnScreen();
        EXPECT_EQ(back.left() > window->frame().size.width / 2, language == "ar") << page << " is mirrored";
    };
    tour.goWell(visit);
    tour.goWrong(visit);
    constexpr int pages = 23;
    EXPECT_EQ(looks, pages * (4 * 12 + 1));
}

INSTANTIATE_TEST_SUITE_P(Languages, ReaderLayout, testing::Values("en", "de", "fr", "es", "pl", "ar", "ja"),
                         [](const auto& each) { return std::string{each.param}; });

} // namespace
} // namespace kivo::test
