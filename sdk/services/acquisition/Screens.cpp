#include "Configuration/environment/SdkBundle.hpp"
#include "services/acquisition/facemap/facetec/LiveNessCheckVC.hpp"
#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"
#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"
#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"
#include "services/acquisition/qr/inhouse/QRCodeVC.hpp"

#include <kivo/FinalStatusVC.hpp>
#include <kivo/LuOTPView.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <memory>

namespace kivo::platform {
namespace {

template <class T>
std::shared_ptr<T> make() {
    return std::make_shared<T>();
}

} // namespace

StoryboardClasses libraryClasses() {
    return {.screens = {{"QRCodeVC", make<QRCodeVC>},
                        {"QRCodeScannerVC", make<QRCodeScannerVC>},
                        {"LiveNessCheckVC", make<LiveNessCheckVC>},
                        {"OCRScanInitializeVC", make<OCRScanInitializeVC>},
                        {"AuthMenuVC", make<AuthMenuVC>},
                        {"FinalStatusVC", make<FinalStatusVC>}},
            .views = {{"QRScannerView", make<QRScannerView>},
                      {"LuOTPView", make<LuOTPView>},
                      {"LuOTPTextField", make<LuOTPTextField>}},
            .bundle = [] { return sdkBundle(); }};
}

} // namespace kivo::platform
