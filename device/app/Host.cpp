#include "Host.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <utility>

namespace kivo::device::app {

Host::Host(std::shared_ptr<platform::Window> window, const std::string& version)
    : window_{std::move(window)}
    , session_{KivoSDK::load("DEVICE", version)}
    , config_{std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT,ID_CARD", "P6M", "0.8", "UTO", "face")} {}

Host::~Host() {
    // The session lives on and must not keep the screens.
    session_->setContext(nullptr);
}

void Host::start() {
    const auto call = [weak = weak_from_this()](void (*action)(Host&)) {
        return [weak, action] {
            if (const auto self = weak.lock()) {
                action(*self);
            }
        };
    };
    home_->setTitle("Your application");
    home_->add("enterCode", "Enter the activation code",
               call([](Host& host) { host.acquire(AcquisitionObject::activationCode); }));
    home_->add("readDocument", "Read a document", call([](Host& host) { host.acquire(AcquisitionObject::nfcScan); }));
    home_->add("scanFace", "Scan the face", call([](Host& host) { host.acquire(AcquisitionObject::facemapScan); }));
    home_->add("scanCard", "Scan another card", call([](Host& host) { host.acquire(AcquisitionObject::ocrScan); }));
    home_->add("update", "Update", call([](Host& host) {
                   host.session_->update("inform", "The person is on the way", host.report("Update"));
               }));
    home_->add("status", "Status", call([](Host& host) { host.session_->status(host.report("Status")); }));
    home_->add("commit", "Commit", call([](Host& host) { host.session_->commit(host.report("Commit")); }));
    home_->add("finish", "Show the closing screen", call([](Host& host) { host.showClosingScreen(); }));
    home_->add("reset", "Reset", call([](Host& host) {
                   host.session_->reset();
                   host.home_->say("The session is forgotten.");
               }));
    home_->say("No session yet. The service knows the code 123456.");
    window_->setRootViewController(navigation_);
    session_->setContext(home_);
}

IdvCompletion Host::onMain(std::function<void(Host&, const IdvOutcome&)> then) {
    return [weak = weak_from_this(), then = std::move(then)](const IdvOutcome& outcome) {
        platform::services().mainQueue->async([weak, then, outcome] {
            if (const auto self = weak.lock()) {
                then(*self, outcome);
            }
        });
    };
}

IdvCompletion Host::report(const std::string& what) {
    return onMain([what](Host& host, const IdvOutcome& outcome) {
        host.home_->say(outcome ? what + ": " + std::string{IdvEventsHelper::eventName((*outcome)->responseType())}
                                : what + " failed: " + std::string{name(outcome.error())});
    });
}

void Host::acquire(AcquisitionObject object) {
    if (object == AcquisitionObject::activationCode) {
        session_->acquire(object, config_,
                          onMain([](Host& host, const IdvOutcome& outcome) { host.codeEntered(outcome); }));
    } else {
        session_->acquire(object, config_, report(std::string{AcquisitionObjectHelper::acquisitionObjectName(object)}));
    }
}

void Host::codeEntered(const IdvOutcome& outcome) {
    if (!outcome) {
        if (outcome.error() != ResponseCode::CANCELLED_BY_USER) {
            tell("That was no code", std::string{message(outcome.error())});
        }
        return;
    }
    session_->join((*outcome)->data(), config_, onMain([](Host& host, const IdvOutcome& joined) {
                       if (joined) {
                           host.navigation_->popToViewController(host.home_, /*animated=*/true);
                           host.home_->say("Joined.");
                       } else {
                           host.tell("Not joined", std::string{message(joined.error())});
                       }
                   }));
}

void Host::tell(const std::string& title, const std::string& message) const {
    if (std::dynamic_pointer_cast<platform::AlertController>(navigation_->presentedViewController())) {
        return;
    }
    const auto alert = std::make_shared<platform::AlertController>(title, message);
    alert->addAction({.title = "OK"});
    navigation_->present(alert, /*animated=*/true);
}

void Host::showClosingScreen() {
    const auto storyboard = platform::Storyboard::open("ZORFramework", platform::services().bundles->main());
    const auto screen = storyboard ? (*storyboard)->instantiate("FinalStatusVC") : std::unexpected{storyboard.error()};
    if (screen) {
        navigation_->present(*screen, /*animated=*/true);
    } else {
        home_->say(screen.error());
    }
}

} // namespace kivo::device::app
