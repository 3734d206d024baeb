#include "Host.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <utility>
#include <vector>

namespace kivo::device::app {

/// The host's own start screen: a button for each call of the SDK, and a line for the latest success.
class HomeScreen final : public platform::ViewController {
public:
    void setTitle(const std::string& title);
    void add(const std::string& identifier, const std::string& title, std::function<void()> action);
    void say(const std::string& text);
    void setColors(const HostColors& colors);

protected:
    std::shared_ptr<platform::View> loadView() override;

private:
    std::shared_ptr<platform::StackView> list_ = std::make_shared<platform::StackView>();
    std::shared_ptr<platform::Label> outcome_ = std::make_shared<platform::Label>();
    std::vector<std::shared_ptr<platform::Button>> buttons_;
};

/// A veil over a screen, with a text and a turning wheel. The navigation bar stays free, so that a person can go back.
class Host::Progress {
public:
    Progress(platform::View& screen, const std::string& text)
        : veil_{std::make_shared<platform::View>()} {
        const auto label = std::make_shared<platform::Label>();
        label->setIdentifier("progress");
        label->setText(text);
        label->setTextColor(platform::Color::white());
        label->setTextAlignment(platform::TextAlignment::center);
        label->setFont(platform::FontMetrics::scaledFont(platform::Font::system(17)));
        label->setAdjustsFontForContentSizeCategory(true);
        const auto wheel =
            std::make_shared<platform::ActivityIndicatorView>(platform::ActivityIndicatorView::Style::large);
        wheel->setColor(platform::Color::white());
        wheel->setAccessibilityLabel(text);
        wheel->setPlacement({.top = 0, .centerX = 0});
        wheel->startAnimating();
        const auto row = std::make_shared<platform::View>();
        row->addSubview(wheel);
        const auto column = std::make_shared<platform::StackView>();
        column->setSpacing(16);
        column->setPlacement({.left = 20, .right = 20, .centerY = 0});
        column->addSubview(row);
        column->addSubview(label);
        // The wheel is told with the same text.
        label->changeAccessibility([](platform::Accessibility& accessibility) { accessibility.isHidden = true; });
        veil_->changeAccessibility([](platform::Accessibility& accessibility) { accessibility.isModal = true; });
        veil_->setBackgroundColor(platform::Color::white(0, 0.7));
        veil_->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0, .ignoresSafeArea = true});
        veil_->addSubview(column);
        screen.addSubview(veil_);
    }

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    ~Progress() { veil_->removeFromSuperview(); }

private:
    std::shared_ptr<platform::View> veil_;
};

namespace {

bool isOfPerson(ResponseCode failure) {
    using enum ResponseCode;
    return failure == CANCELLED_BY_USER || failure == USER_CANCELLED || failure == BACK_NAVIGATION ||
           failure == CANCELLED || failure == USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT;
}

} // namespace

void HomeScreen::setTitle(const std::string& title) {
    navigationItem()->setTitle(title);
}

void HomeScreen::add(const std::string& identifier, const std::string& title, std::function<void()> action) {
    const auto button = std::make_shared<platform::Button>();
    button->setIdentifier(identifier);
    button->setTitle(title);
    button->changeLayer([](platform::Layer& layer) { layer.cornerRadius = 10; });
    button->setPlacement({.minimumHeight = 46});
    button->addAction(platform::ControlEvent::touchUpInside, [action = std::move(action)](const auto&) { action(); });
    buttons_.push_back(button);
    list_->addSubview(button);
}

void HomeScreen::say(const std::string& text) {
    outcome_->setText(text);
    outcome_->scrollIntoView();
}

void HomeScreen::setColors(const HostColors& colors) {
    view()->setBackgroundColor(colors.background);
    outcome_->setTextColor(colors.text);
    for (const auto& button : buttons_) {
        button->setTextColor(colors.tint);
        button->setBackgroundColor(colors.button);
    }
}

std::shared_ptr<platform::View> HomeScreen::loadView() {
    outcome_->setIdentifier("outcome");
    outcome_->changeAccessibility([](platform::Accessibility& accessibility) { accessibility.isLive = true; });
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
    home_->add("enterCode", "Enter the activation code", call([](Host& host) { host.enterCode(); }));
    home_->add("readDocument", "Read a document",
               call([](Host& host) { host.acquire(AcquisitionObject::nfcScan, "The document was read."); }));
    home_->add("scanFace", "Scan the face",
               call([](Host& host) { host.acquire(AcquisitionObject::facemapScan, "The face was scanned."); }));
    home_->add("scanCard", "Scan another card",
               call([](Host& host) { host.acquire(AcquisitionObject::ocrScan, "The card was scanned."); }));
    home_->add("update", "Update", call([](Host& host) {
                   host.session_->update("inform", "The person is on the way",
                                         host.request("Sending the update", "The service has the update."));
               }));
    home_->add("status", "Status", call([](Host& host) {
                   host.session_->status(host.request("Asking for the status", "The session is in order."));
               }));
    home_->add("commit", "Commit", call([](Host& host) {
                   host.session_->commit(host.request("Completing the session", "The session is complete."));
               }));
    home_->add("finish", "Show the closing screen", call([](Host& host) { host.showClosingScreen(); }));
    home_->add("reset", "Reset", call([](Host& host) {
                   host.session_->reset();
                   host.home_->say("The session is forgotten.");
               }));
    home_->say("No session yet. The service knows the code 123456.");
    window_->setRootViewController(navigation_);
    session_->setContext(home_);
}

void Host::setColors(const HostColors& colors) {
    home_->setColors(colors);
    navigation_->setNavigationBarColors(colors.bar, colors.text);
    navigation_->navigationBar()->setTintColor(colors.tint);
}

void Host::returnToStart() {
    navigation_->dismiss(/*animated=*/false);
    navigation_->popToViewController(home_, /*animated=*/false);
}

IdvCompletion Host::onMain(Step then) {
    return [weak = weak_from_this(), then = std::move(then)](const IdvOutcome& outcome) {
        platform::services().mainQueue->async([weak, then, outcome] {
            if (const auto self = weak.lock()) {
                then(*self, outcome);
            }
        });
    };
}

void Host::acquire(AcquisitionObject object, const std::string& success) {
    session_->acquire(object, config_, onMain([success](Host& host, const IdvOutcome& outcome) {
                          if (outcome) {
                              host.succeed(success);
                          } else {
                              host.tellFailure("That did not work", outcome.error());
                          }
                      }));
}

void Host::enterCode() {
    session_->acquire(AcquisitionObject::activationCode, config_, onMain([](Host& host, const IdvOutcome& outcome) {
                          if (outcome) {
                              host.join((*outcome)->data());
                          } else {
                              host.tellFailure("That was no code", outcome.error());
                          }
                      }));
}

void Host::join(const std::string& code) {
    session_->join(code, config_, request("Joining the session", "You have joined the session."));
}

IdvCompletion Host::request(const std::string& progress, const std::string& success) {
    // The host holds the veil, because the last copy of a completion may end on the transport's thread.
    const auto asking = navigation_->topViewController();
    const auto veil = std::make_shared<const Progress>(*asking->view(), progress);
    progress_.insert(veil);
    return onMain([weakVeil = std::weak_ptr{veil}, weakAsking = std::weak_ptr{asking},
                   success](Host& host, const IdvOutcome& outcome) {
        host.progress_.erase(weakVeil.lock());
        if (outcome && host.navigation_->topViewController() != weakAsking.lock()) {
            // The person has gone on to another screen, which stays.
            host.home_->say(success);
        } else if (outcome) {
            host.succeed(success);
        } else {
            host.tellFailure("That did not work", outcome.error());
        }
    });
}

void Host::succeed(const std::string& text) {
    navigation_->popToViewController(home_, /*animated=*/true);
    home_->say(text);
}

void Host::tellFailure(const std::string& title, ResponseCode failure) const {
    if (!isOfPerson(failure)) {
        tell(title, std::string{message(failure)});
    }
}

void Host::tell(const std::string& title, const std::string& message) const {
    const auto alert = std::make_shared<platform::AlertController>(title, message);
    alert->addAction({.title = "OK"});
    navigation_->present(alert, /*animated=*/true);
}

void Host::showClosingScreen() {
    const auto storyboard = platform::Storyboard::open("ZORFramework", platform::services().bundles->main());
    const auto screen = storyboard ? (*storyboard)->instantiate("FinalStatusVC") : std::unexpected{storyboard.error()};
    if (screen) {
        if (const auto closing = std::dynamic_pointer_cast<FinalStatusVC>(*screen)) {
            closing->themeObj = session_->sdkTheme();
        }
        navigation_->present(*screen, /*animated=*/true);
    } else {
        tell("There is no closing screen", screen.error());
    }
}

} // namespace kivo::device::app
