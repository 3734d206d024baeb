#include "services/acquisition/Screens.hpp"

#include "services/acquisition/facemap/facetec/FinalStatusVC.hpp"
#include "services/acquisition/facemap/facetec/LiveNessCheckVC.hpp"
#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"
#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"
#include "services/acquisition/qr/inhouse/LuOTPView.hpp"
#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"
#include "services/acquisition/qr/inhouse/QRCodeVC.hpp"

#include <kivo/platform/ui/Storyboard.hpp>

#include <memory>
#include <mutex>

namespace kivo {

using platform::Storyboard;

void registerScreens() {
    static std::once_flag registered;
    std::call_once(registered, [] {
        Storyboard::registerScreen("QRCodeVC", [] { return std::make_shared<QRCodeVC>(); });
        Storyboard::registerScreen("QRCodeScannerVC", [] { return std::make_shared<QRCodeScannerVC>(); });
        Storyboard::registerScreen("LiveNessCheckVC", [] { return std::make_shared<LiveNessCheckVC>(); });
        Storyboard::registerScreen("OCRScanInitializeVC", [] { return std::make_shared<OCRScanInitializeVC>(); });
        Storyboard::registerScreen("AuthMenuVC", [] { return std::make_shared<AuthMenuVC>(); });
        Storyboard::registerScreen("FinalStatusVC", [] { return std::make_shared<FinalStatusVC>(); });
        Storyboard::registerView("QRScannerView", [] { return std::make_shared<QRScannerView>(); });
        Storyboard::registerView("LuOTPView", [] { return std::make_shared<LuOTPView>(); });
        Storyboard::registerView("LuOTPTextField", [] { return std::make_shared<LuOTPTextField>(); });
    });
}

} // namespace kivo
