#include "Configuration/theme/ThemeHelpers.hpp"
#include "support/HostScreenFixture.hpp"

#include <kivo/platform/Services.hpp>

namespace kivo {
namespace {

using platform::FaceTecCustomization;

/// Keeps the looks it is given; it has no screens.
class Looks final : public platform::FaceTec {
public:
    void initializeInProductionMode(const std::string& /*key*/, const std::string& /*encryptionKey*/,
                                    std::function<void(bool)> /*completion*/) override {}

    void initializeInDevelopmentMode(const std::string& /*key*/, const std::string& /*encryptionKey*/,
                                     std::function<void(bool)> /*completion*/) override {}

    void setLanguage(std::string_view /*language*/) override {}

    std::shared_ptr<FaceTecCustomization> makeCustomization() override {
        return std::make_shared<FaceTecCustomization>();
    }

    void setCustomization(std::shared_ptr<FaceTecCustomization> customization) override { normal = customization; }

    void setLowLightCustomization(std::shared_ptr<FaceTecCustomization> customization) override {
        lowLight = customization;
    }

    void setOverrideResultScreenSuccessMessage(const std::string& /*message*/) override {}

    std::string createFaceTecAPIUserAgentString(const std::string& /*sessionId*/) override { return {}; }

    std::shared_ptr<platform::ViewController>
    createSessionVC(std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate> /*faceScanProcessor*/,
                    const std::string& /*sessionToken*/) override {
        return nullptr;
    }

    std::shared_ptr<platform::ViewController>
    createSessionVC(std::shared_ptr<platform::FaceTecIDScanProcessorDelegate> /*idScanProcessor*/,
                    const std::string& /*sessionToken*/) override {
        return nullptr;
    }

    std::shared_ptr<FaceTecCustomization> normal;
    std::shared_ptr<FaceTecCustomization> lowLight;
};

class VendorTheme : public test::HostScreenFixture {
protected:
    std::shared_ptr<Looks> vendor = std::make_shared<Looks>();

    void installVendor() const {
        platform::Services services;
        services.faceTec = vendor;
        platform::install(services);
    }
};

TEST_F(VendorTheme, HandsTheVendorTheThemesOwnObjectForBothLights) {
    installVendor();
    const ThemeCustomization theme;
    ASSERT_NE(theme.faceVerificationUICustomization, nullptr);
    ThemeHelpers::applyTheme(theme);
    EXPECT_EQ(vendor->normal, theme.faceVerificationUICustomization);
    EXPECT_EQ(vendor->lowLight, theme.faceVerificationUICustomization);
    EXPECT_TRUE(vendor->normal->guidanceCustomization.retryScreenSlideshowImages.empty())
        << "the host has no picture of its own";
}

TEST_F(VendorTheme, ShowsTheHostsPictureOnTheRetryScreen) {
    folder.write("Host.bundle/Host.xcassets/FaceTec_ideal_5.imageset/Contents.json",
                 R"({"images":[{"idiom":"universal","filename":"face.png","scale":"1x"}]})");
    folder.write("Host.bundle/Host.xcassets/FaceTec_ideal_5.imageset/face.png", "picture");
    installVendor();
    ThemeHelpers::applyTheme(ThemeCustomization{});
    ASSERT_NE(vendor->normal, nullptr);
    const auto& pictures = vendor->normal->guidanceCustomization.retryScreenSlideshowImages;
    ASSERT_EQ(pictures.size(), 1U);
    EXPECT_EQ(pictures.front()->name, "FaceTec_ideal_5");
}

TEST_F(VendorTheme, IsLeftOutWithoutAVendorOrACustomization) {
    const ThemeCustomization early;
    EXPECT_EQ(early.faceVerificationUICustomization, nullptr);
    ThemeHelpers::applyTheme(early);
    installVendor();
    ThemeHelpers::applyTheme(early);
    EXPECT_EQ(vendor->normal, nullptr) << "a theme made before the vendor came has nothing to hand over";
}

} // namespace
} // namespace kivo
