#include "Configuration/environment/SdkBundle.hpp"
#include "impl/SessionAPI.hpp"
#include "support/HostScreenFixture.hpp"
#include "support/ScriptedBackend.hpp"

namespace kivo {
namespace {

using platform::TextField;
using platform::ViewController;
using test::Keys;
using test::Texts;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Acquire : public test::HostScreenFixture {
protected:
    using HostScreenFixture::HostScreenFixture;

    std::shared_ptr<SessionAPI> make(InterfaceVersion version = InterfaceVersion::v180) {
        return std::make_shared<SessionAPI>(version, backend);
    }

    /// The activation code screen that a person sees; null when it is another one.
    std::shared_ptr<QRCodeVC> codeScreen() const {
        return std::dynamic_pointer_cast<QRCodeVC>(window->visibleViewController());
    }

    void acquire(SessionAPI& api, AcquisitionObject object, const std::shared_ptr<ViewController>& context) {
        ears->restart();
        api.setContext(context);
        api.acquire(object, nullptr, ears->completion());
        EXPECT_THAT(ears->heard, IsEmpty()) << "only on the main queue";
        settle();
    }

    void acquireCode(SessionAPI& api, const std::shared_ptr<ViewController>& context) {
        acquire(api, AcquisitionObject::activationCode, context);
    }

    test::ScriptedBackend backend;
};

TEST_F(Acquire, PushesTheCodeScreenWhereThereIsANavigationStack) {
    const auto api = make();
    const auto theme = makeTheme();
    std::string data;
    api->setTheme(theme);
    api->setContext(host);
    api->acquire(AcquisitionObject::activationCode, nullptr, [&](const IdvOutcome& outcome) {
        EXPECT_EQ((*outcome)->responseType(), IdvEvents::SCAN_QR_CODE);
        data += (*outcome)->data() + ' ';
    });
    settle();
    ASSERT_NE(codeScreen(), nullptr);
    EXPECT_TRUE(isOnTop(codeScreen()));
    EXPECT_EQ(codeScreen()->themeObj, theme);
    Keys::press(*navigation, "123456");
    EXPECT_EQ(data, "123456 ") << "at once, before the main queue turns";
}

TEST_F(Acquire, PresentsTheCodeScreenElsewhere) {
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
    acquireCode(*api, nullptr);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("setContext(viewController:)"));
    for (const auto object :
         {AcquisitionObject::selfieImage, AcquisitionObject::documentMainImage, AcquisitionObject::documentBackImage}) {
        acquire(*api, object, host);
        EXPECT_TRUE(isOnTop(host));
        EXPECT_THAT(ears->heard, IsEmpty());
    }
}

TEST_F(Acquire, GoesOnFromAContextThatOtherScreensCover) {
    const auto api = make();
    acquireCode(*api, host);
    acquireCode(*api, host);
    EXPECT_EQ(navigation->viewControllers().size(), 3U);

    const auto cover = std::make_shared<ViewController>();
    cover->setModalPresentationStyle(platform::ModalPresentationStyle::fullScreen);
    window->setRootViewController(bare);
    bare->present(cover, false);
    settle();
    acquireCode(*api, bare);
    EXPECT_EQ(cover->presentedViewController(), codeScreen());
    EXPECT_THAT(ears->heard, IsEmpty());
}

TEST_F(Acquire, NeedsAWindowOrANavigationStackThatMayComeToOne) {
    acquireCode(*make(), bare);
    EXPECT_THAT(ears->heard, ElementsAre("UNKNOWN_ERROR"));

    window->setRootViewController(nullptr);
    const auto api = make();
    acquireCode(*api, host);
    window->setRootViewController(navigation);
    settle();
    ASSERT_NE(codeScreen(), nullptr);
    Keys::press(*navigation, "123456");
    EXPECT_THAT(ears->heard, ElementsAre("SCAN_QR_CODE"));
}

TEST_F(Acquire, FailsWhereTheHostsBundleHasNoLayout) {
    for (const auto object : {AcquisitionObject::nfcScan, AcquisitionObject::mrzScan, AcquisitionObject::facemapScan,
                              AcquisitionObject::ocrScan}) {
        const auto api = make();
        acquire(*api, object, host);
        EXPECT_THAT(ears->heard, ElementsAre("UNKNOWN_ERROR"));
        EXPECT_THAT(api->lastFailure()->text,
                    testing::AllOf(
                        HasSubstr("The host's bundle has no ZORFramework.storyboard"),
                        HasSubstr(sdkBundle()->pathForResource("ZORFramework", "storyboard")->parent_path().string())));
    }
    acquire(*make(InterfaceVersion::v140), AcquisitionObject::ocrScan, host);
    EXPECT_THAT(ears->heard, IsEmpty()) << "the first versions do not know the ID scan";
}

class AcquireFromAnotherLayout : public Acquire {
protected:
    AcquireFromAnotherLayout()
        : Acquire{SdkBundle::ofTheTest} {}
};

TEST_F(AcquireFromAnotherLayout, SaysWhatIsWrongWithAStoryboardThatDoesNotFit) {
    const struct {
        const char* storyboard;
        const char* complaint;
    } rows[] = {
        {nullptr, "ZORFramework"},
        {"{", "ZORFramework.storyboard"},
        {R"({"scenes":{}})", "QRCodeVC"},
        {R"({"scenes":{"QRCodeVC":{"class":"Nobody","view":{}}}})", "Nobody"},
        {R"({"scenes":{"QRCodeVC":{"class":"ViewController","view":{}}}})", "another class"},
        {R"({"scenes":{"QRCodeVC":{"class":"QRCodeVC","view":{}}}})", "textFieldDigitOne"},
    };

    for (const auto& row : rows) {
        if (row.storyboard != nullptr) {
            folder.write("Sdk.bundle/ZORFramework.storyboard", row.storyboard);
        }
        testing::internal::CaptureStdout();
        const auto api = make();
        acquireCode(*api, host);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(row.complaint));
        EXPECT_THAT(api->lastFailure()->text, HasSubstr(row.complaint));
        EXPECT_THAT(ears->heard, ElementsAre("UNKNOWN_ERROR")) << row.complaint;
        EXPECT_TRUE(isOnTop(host));
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
    EXPECT_EQ(ears->heard.size(), 1U) << "a late outcome still finds the host's handler";
}

} // namespace
} // namespace kivo
