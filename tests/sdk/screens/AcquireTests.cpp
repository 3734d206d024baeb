#include "impl/SessionAPI.hpp"
#include "support/HostScreenFixture.hpp"
#include "support/ScriptedBackend.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <vector>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using platform::TextField;
using platform::ViewController;
using test::Keys;

class Acquire : public test::HostScreenFixture {
protected:
    using HostScreenFixture::HostScreenFixture;

    using Outcomes = std::vector<IdvOutcome>;

    std::shared_ptr<SessionAPI> make(InterfaceVersion version = InterfaceVersion::v180) {
        return std::make_shared<SessionAPI>(version, backend);
    }

    IdvCompletion keep() {
        return [this](const IdvOutcome& outcome) { outcomes.push_back(outcome); };
    }

    /// The activation code screen that a person sees; null when it is another one.
    std::shared_ptr<QRCodeVC> codeScreen() const {
        return std::dynamic_pointer_cast<QRCodeVC>(window->visibleViewController());
    }

    void acquireCode(SessionAPI& api, const std::shared_ptr<ViewController>& context) {
        api.setContext(context);
        api.acquire(AcquisitionObject::activationCode, nullptr, keep());
        settle();
    }

    test::ScriptedBackend backend;
    Outcomes outcomes;
};

TEST_F(Acquire, PushesTheCodeScreenWhereThereIsANavigationStack) {
    const auto api = make();
    const auto theme = std::make_shared<ThemeCustomization>();
    api->setTheme(theme);
    acquireCode(*api, host);
    ASSERT_NE(codeScreen(), nullptr);
    EXPECT_EQ(navigation->topViewController(), codeScreen());
    EXPECT_EQ(codeScreen()->themeObj, theme);
    Keys::press(*navigation, "123456");
    ASSERT_EQ(outcomes.size(), 1U) << "at once, before the main queue turns";
    EXPECT_EQ((*outcomes[0])->data(), "123456");
    EXPECT_EQ((*outcomes[0])->responseType(), IdvEvents::SCAN_QR_CODE);
}

TEST_F(Acquire, PresentsTheCodeScreenElsewhere) {
    const auto bare = std::make_shared<ViewController>();
    window->setRootViewController(bare);
    const auto api = make();
    acquireCode(*api, bare);
    ASSERT_NE(codeScreen(), nullptr);
    EXPECT_EQ(bare->presentedViewController(), codeScreen());
    EXPECT_EQ(codeScreen()->themeObj, api->sdkTheme()) << "the theme that a session has at first";
}

TEST_F(Acquire, ShowsNothingWithoutAContextOrWithoutAScreen) {
    const auto api = make();
    testing::internal::CaptureStdout();
    api->acquire(AcquisitionObject::activationCode, nullptr, keep());
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("setContext(viewController:)"));
    api->setContext(host);
    for (const auto object :
         {AcquisitionObject::selfieImage, AcquisitionObject::documentMainImage, AcquisitionObject::documentBackImage}) {
        api->acquire(object, nullptr, keep());
    }
    settle();
    EXPECT_EQ(navigation->topViewController(), host);
    EXPECT_TRUE(outcomes.empty());
}

TEST_F(Acquire, GoesOnFromAContextThatOtherScreensCover) {
    const auto api = make();
    acquireCode(*api, host);
    acquireCode(*api, host);
    EXPECT_EQ(navigation->viewControllers().size(), 3U);

    const auto cover = std::make_shared<ViewController>();
    cover->setModalPresentationStyle(platform::ModalPresentationStyle::fullScreen);
    const auto bare = std::make_shared<ViewController>();
    window->setRootViewController(bare);
    bare->present(cover, false);
    settle();
    acquireCode(*api, bare);
    EXPECT_EQ(cover->presentedViewController(), codeScreen());
    EXPECT_TRUE(outcomes.empty());
}

TEST_F(Acquire, NeedsAWindowOrANavigationStackThatMayComeToOne) {
    acquireCode(*make(), std::make_shared<ViewController>());
    EXPECT_EQ(outcomes, Outcomes{std::unexpected{ResponseCode::UNKNOWN_ERROR}});

    outcomes.clear();
    window->setRootViewController(nullptr);
    const auto api = make();
    acquireCode(*api, host);
    window->setRootViewController(navigation);
    settle();
    ASSERT_NE(codeScreen(), nullptr);
    Keys::press(*navigation, "123456");
    EXPECT_EQ(outcomes.size(), 1U);
}

TEST_F(Acquire, FailsWhereTheHostsBundleHasNoLayout) {
    for (const auto object : {AcquisitionObject::nfcScan, AcquisitionObject::mrzScan, AcquisitionObject::facemapScan,
                              AcquisitionObject::ocrScan}) {
        const auto api = make();
        outcomes.clear();
        api->setContext(host);
        api->acquire(object, nullptr, keep());
        EXPECT_TRUE(outcomes.empty());
        settle();
        EXPECT_EQ(outcomes, Outcomes{std::unexpected{ResponseCode::UNKNOWN_ERROR}});
    }
    const auto old = make(InterfaceVersion::v140);
    outcomes.clear();
    old->setContext(host);
    old->acquire(AcquisitionObject::ocrScan, nullptr, keep());
    settle();
    EXPECT_TRUE(outcomes.empty()) << "the first versions do not know the ID scan";
}

class AcquireFromAnotherLayout : public Acquire {
protected:
    AcquireFromAnotherLayout()
        : Acquire{SdkBundle::ofTheTest} {}
};

TEST_F(AcquireFromAnotherLayout, SaysWhatIsWrongWithAStoryboardThatDoesNotFit) {
    struct Row {
        const char* storyboard;
        const char* complaint;
    };

    const Row rows[] = {
        {nullptr, "ZORFramework"},
        {"{", "ZORFramework.storyboard"},
        {R"({"scenes":{}})", "QRCodeVC"},
        {R"({"scenes":{"QRCodeVC":{"class":"Nobody","view":{}}}})", "Nobody"},
        {R"({"scenes":{"QRCodeVC":{"class":"ViewController","view":{}}}})", "another class"},
        {R"({"scenes":{"QRCodeVC":{"class":"QRCodeVC","view":{}}}})", "textFieldDigitOne"},
    };
    folder.write("Sdk.bundle/Info.plist", R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleIdentifier</key><string>com.test.ZORFramework</string></dict></plist>)");
    for (const auto& row : rows) {
        if (row.storyboard != nullptr) {
            folder.write("Sdk.bundle/ZORFramework.storyboard", row.storyboard);
        }
        outcomes.clear();
        testing::internal::CaptureStdout();
        acquireCode(*make(), host);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr(row.complaint));
        EXPECT_EQ(outcomes, Outcomes{std::unexpected{ResponseCode::UNKNOWN_ERROR}}) << row.complaint;
        EXPECT_EQ(navigation->topViewController(), host);
    }
}

TEST_F(Acquire, AFailedJoinEmptiesTheBoxesFromTheFourthVersionOn) {
    for (const auto version : allInterfaceVersions) {
        const auto api = make(version);
        acquireCode(*api, host);
        const auto box = outlet<TextField>(*codeScreen(), "textFieldDigitOne");
        box->insertText("1");
        api->join("123456", nullptr, {});
        EXPECT_EQ(box->text(), "1") << "only on the main queue";
        settle();
        EXPECT_EQ(box->text(), version >= InterfaceVersion::v170 ? "" : "1") << static_cast<int>(version);
        pop();
    }
}

TEST_F(Acquire, DoesNotKeepAScreenThatHasLeft) {
    const auto api = make();
    acquireCode(*api, host);
    const std::weak_ptr weak = codeScreen();
    pop();
    EXPECT_TRUE(weak.expired());
    api->join("123456", nullptr, {});
    settle();
    api->activationCodeEntered("late");
    EXPECT_EQ(outcomes.size(), 1U) << "a late outcome still finds the host's handler";
}

} // namespace
} // namespace kivo
