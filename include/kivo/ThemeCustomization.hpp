#pragma once

#include <kivo/CodeTextFieldStyle.hpp>
#include <kivo/DocumentListConfigurationStatus.hpp>
#include <kivo/Export.hpp>
#include <kivo/ZorCloseButtonAppearance.hpp>
#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/FaceTec.hpp>
#include <kivo/platform/ReadID.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/ContentSizeCategory.hpp>
#include <kivo/platform/ui/Font.hpp>

#include <memory>
#include <optional>
#include <string>

namespace kivo {

/// The looks and texts of the SDK's screens; all screens share the theme object. Main thread only.
///
/// Make a theme, change its properties, and set the theme on the session before the first screen is shown. A screen
/// reads the theme when the screen appears, so a later change takes effect the next time. Lengths are in points.
///
/// - An empty text leaves the storyboard's own text in place.
/// - A colour whose comment names an asset comes from the host's asset catalogue when the theme is made, and is the
///   other colour where the catalogue has no such name.
/// - A font that is not installed is absent; the screens then use the system font of the same size.
class KIVO_EXPORT ThemeCustomization {
public:
    /// A theme with every default.
    ThemeCustomization();

    // Every screen.

    /// Whether texts follow the reading size that the person has set on the device, within the two limits. Where false,
    /// every text has its usual size, those of the layout included.
    bool enableDynamicTextSizes = true;
    platform::ContentSizeCategory minimumContentSizeCategoryLimit = platform::ContentSizeCategory::medium;
    platform::ContentSizeCategory maximumContentSizeCategoryLimit = platform::ContentSizeCategory::accessibilityMedium;

    /// Where the document reading screens find their resources and texts; the host's main bundle. Never null at first.
    std::shared_ptr<platform::Bundle> appBundle;
    /// Never null at first; null leaves the close buttons of the storyboard unchanged.
    std::shared_ptr<ZorCloseButtonAppearance> zorCloseButtonAppearance;
    /// Whether the document screen shows the activity overlay while the service is notified of a reading.
    bool enableActivityIndicator = true;

    /// "Karbon-Medium" at 32 points, absent where that font is not installed. Without this font a title has the
    /// system's font at 32 points, but on the last screen (`FinalStatusVC`) at 22.
    std::optional<platform::Font> screenTitleFont;
    /// "Kivo.HeaderTextColor", else system blue.
    platform::Color screenTitleColor;
    /// "Karbon-Regular" at 17 points.
    std::optional<platform::Font> descriptionInfoFont;
    /// "Kivo.black", else black.
    platform::Color screenDescriptionInfoTextColor;

    /// "Karbon-Bold" at 17 points.
    std::optional<platform::Font> primaryButtonFont;
    /// The outline of each screen's main button.
    double primaryButtonCornerRadius = 25;
    platform::Color primaryButtonBorderColor = platform::Color::clear();
    double primaryButtonBorderWidth = 0;

    // Activation code screen.

    /// Six boxes, or one field for the whole code.
    CodeTextFieldStyle codeTextFieldStyle = CodeTextFieldStyle::boxed;
    /// The screen's title.
    std::string codeScreenGetStartedTitle;
    /// Shown in the empty field of the single style.
    std::string codeScreenTextfieldPlaceholder;
    /// Shown between the code field and the scan button.
    std::string codeScreenOrText;
    /// The button that leads to the scanning screen, and the colour of its title.
    std::string codeScreenScanQRCodeButtonTitle;
    platform::Color codeScreenScanQRButtonTitleColor = platform::Color::white();
    /// "Kivo.Button.BackgroundColor", else system blue.
    platform::Color codeScreenScanQRButtonBackgroundColor;
    /// "Karbon-Regular" at 17 points; for the single field and the boxes.
    std::optional<platform::Font> codeTextFieldFont;
    /// The outline of the six boxes.
    double boxedActivationCodeTextFieldCornerRadius = 4;
    double boxedActivationCodeTextFieldBorderWidth = 2;

    // QR scanning screen.

    /// The button that leads back to the code screen, and the colour of its title.
    std::string codeScreenEnterCodeManuallyButtonTitle;
    platform::Color qrScanScreenEnterManuallyButtonTitleColor = platform::Color::white();
    /// "Kivo.Button.BackgroundColor", else system blue.
    platform::Color qrScanScreenEnterManuallyButtonBackgroundColor;

    // Document screen.

    /// The screen's title and description, and the names of the documents to choose from.
    std::string selectIDTitleText;
    std::string selectIDDescriptionText;
    std::string selectIDPassportOptionText;
    std::string selectIDResidentCardOptionText;
    std::string selectIDOtherCardOptionText;
    /// No screen has this button; kept for hosts that set it.
    std::string selectIDNextButtonTitle;
    /// "Kivo.Button.BackgroundColor", else system blue. No screen has this button; kept for hosts that set it.
    platform::Color selectIDNextButtonBackgroundColor;
    /// "Karbon-Regular" at 17 points.
    std::optional<platform::Font> documentOptionsTitleFont;
    /// The number of failed readings of the chip after which a person may continue without the chip.
    int allowNFCSkipReadingAfterAttempts = 2;

    // Face scan screen.

    /// The screen's title and description, and the button that begins the scan.
    std::string faceScanIntroTitle;
    std::string faceScanIntroDescription;
    std::string faceScanIntroNextButtonTitle;
    platform::Color faceScanIntroNextButtonTitleColor = platform::Color::white();
    /// "Kivo.Button.BackgroundColor", else system blue.
    platform::Color faceScanIntroNextButtonBackgroundColor;
    /// Shown by the vendor's screen when an upload takes longer than six seconds.
    std::string faceScanUploadMessage;
    /// Shown by the vendor's screen after a successful scan.
    std::string faceScanSuccessMessageText;
    /// The look of the vendor's face and ID scan screens. The vendor's defaults at first; null without a vendor.
    std::shared_ptr<platform::FaceTecCustomization> faceVerificationUICustomization;

    // One value for the whole SDK.

    /// The looks and texts of the vendor's document reading screens; shared by all sessions, never null. The vendor's
    /// adapter makes them on first use, so install the adapter before; without an adapter they have plain values. The
    /// document screen sets the bundle, and takes the buttons' font and corners from its theme.
    static const std::shared_ptr<platform::readid::UIResources>& passportScanViewCustomization();

    /// Whether the last document screen found a document list; written by the screen, read by a host.
    static DocumentListConfigurationStatus documentListConfigurationStatus();
    static void setDocumentListConfigurationStatus(DocumentListConfigurationStatus status);
};

} // namespace kivo
