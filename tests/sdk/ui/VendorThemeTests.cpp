#include "Configuration/theme/ThemeHelpers.hpp"
#include "support/HostScreenFixture.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/simulator/FaceTec.hpp>

namespace kivo {
namespace {

class VendorTheme : public test::HostScreenFixture {
protected:
    std::shared_ptr<simulator::FaceTec> vendor = std::make_shared<simulator::FaceTec>();

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
    EXPECT_EQ(vendor->customization(), theme.faceVerificationUICustomization);
    EXPECT_EQ(vendor->lowLightCustomization(), theme.faceVerificationUICustomization);
    EXPECT_TRUE(vendor->customization()->guidanceCustomization.retryScreenSlideshowImages.empty())
        << "the host has no picture of its own";
}

TEST_F(VendorTheme, ShowsTheHostsPictureOnTheRetryScreen) {
    folder.write("Host.bundle/Host.xcassets/FaceTec_ideal_5.imageset/Contents.json",
                 R"({"images":[{"idiom":"universal","filename":"face.png","scale":"1x"}]})");
    folder.write("Host.bundle/Host.xcassets/FaceTec_ideal_5.imageset/face.png", "picture");
    installVendor();
    ThemeHelpers::applyTheme(ThemeCustomization{});
    ASSERT_NE(vendor->customization(), nullptr);
    const auto& pictures = vendor->customization()->guidanceCustomization.retryScreenSlideshowImages;
    ASSERT_EQ(pictures.size(), 1U);
    EXPECT_EQ(pictures.front()->name, "FaceTec_ideal_5");
}

TEST_F(VendorTheme, IsLeftOutWithoutAVendorOrACustomization) {
    const ThemeCustomization early;
    EXPECT_EQ(early.faceVerificationUICustomization, nullptr);
    ThemeHelpers::applyTheme(early);
    installVendor();
    ThemeHelpers::applyTheme(early);
    EXPECT_EQ(vendor->customization(), nullptr) << "a theme made before the vendor came has nothing to hand over";
}

} // namespace
} // namespace kivo
