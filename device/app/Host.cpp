#include "Host.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <utility>

namespace kivo::device::app {

/// The host's own start screen: a button for each call of the SDK, and a line for the latest outcome.
class HomeScreen final : public platform::ViewController {
public:
    void setTitle(const std::string& title);
    void add(const std::string& identifier, const std::string& title, std::function<void()> action);
    void say(const std::string& text);

protected:
    std::shared_ptr<platform::View> loadView() override;

private:
    std::shared_ptr<platform::StackView> list_ = std::make_shared<platform::StackView>();
    std::shared_ptr<platform::Label> outcome_ = std::make_shared<platform::Label>();
};

void HomeScreen::setTitle(const std::string& title) {
    navigationItem()->setTitle(title);
}

void HomeScreen::add(const std::string& identifier, const std::string& title, std::function<void()> action) {
    const auto button = std::make_shared<platform::Button>();
    button->setIdentifier(identifier);
    button->setTitle(title);
    button->setTextColor(platform::Color::systemBlue());
    button->setBackgroundColor(platform::Color::white());
    button->changeLayer([](platform::Layer& layer) { layer.cornerRadius = 10; });
    button->setPlacement({.minimumHeight = 46});
    button->addAction(platform::ControlEvent::touchUpInside, [action = std::move(action)](const auto&) { action(); });
    list_->addSubview(button);
}

void HomeScreen::say(const std::string& text) {
    outcome_->setText(text);
}

std::shared_ptr<platform::View> HomeScreen::loadView() {
    outcome_->setIdentifier("outcome");
    outcome_->setFont(platform::FontMetrics::scaledFont(platform::Font::system(17)));
    outcome_->setAdjustsFontForContentSizeCategory(true);
    outcome_->setTextAlignment(platform::TextAlignment::center);
    list_->setPlacement({.top = 0, .left = 20, .right = 20});
    list_->setMargins({.top = 16, .left = 0, .bottom = 24, .right = 0});
    list_->setSpacing(12);
    list_->insertSubview(outcome_, 0);
    const auto scroll = std::make_shared<platform::ScrollView>();
    scroll->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
    scroll->addSubview(list_);
    auto view = std::make_shared<platform::View>();
    view->setBackgroundColor(platform::Color{.red = 0.95, .green = 0.95, .blue = 0.97});
    view->addSubview(scroll);
    return view;
}

Host::Host(std::shared_ptr<platform::Window> window, const std::string& version)
    : window_{std::move(window)}
    , session_{KivoSDK::load("DEVICE", version)}
    , config_{std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT,ID_CARD", "P6M", "0.8", "UTO", "face")}
    , home_{std::make_shared<HomeScreen>()}
    , navigation_{std::make_shared<platform::NavigationController>(home_)} {}

Host::~Host() {
    // The session outlives the host and must not keep the screens.
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
