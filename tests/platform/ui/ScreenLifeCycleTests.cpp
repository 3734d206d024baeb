#include "support/ScreenFixture.hpp"

#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <functional>

namespace kivo::platform {
namespace {

/// Writes every step of its life into a journal that all screens of a test share.
class Screen final : public ViewController {
public:
    Screen(std::string name, std::shared_ptr<std::string> journal)
        : name_{std::move(name)}
        , journal_{std::move(journal)} {}

    ~Screen() override { note("x"); }

    void viewDidLoad() override { note("load"); }

    void viewWillAppear(bool /*animated*/) override {
        note("will+");
        navigation_ = navigationController();
        if (onWillAppear) {
            std::exchange(onWillAppear, nullptr)();
        }
    }

    void viewDidAppear(bool /*animated*/) override { note("did+"); }

    void viewWillDisappear(bool /*animated*/) override {
        note("will-");
        EXPECT_EQ(navigationController(), navigation_.lock()) << "until it has disappeared";
    }

    void viewDidDisappear(bool /*animated*/) override { note("did-"); }

    std::function<void()> onWillAppear;

private:
    void note(const std::string& step) { *journal_ += name_ + step + " "; }

    std::string name_;
    std::shared_ptr<std::string> journal_;
    std::weak_ptr<NavigationController> navigation_;
};

class ScreenLifeCycle : public test::ScreenFixture {
protected:
    std::shared_ptr<Screen> screen(const std::string& name) { return std::make_shared<Screen>(name, journal_); }

    std::function<void()> done() {
        return [this] { *journal_ += "done "; };
    }

    /// What happened since the last call.
    std::string journal() { return std::exchange(*journal_, {}); }

    /// Shows `root` in a navigation stack, settled.
    std::shared_ptr<NavigationController> navigationWith(const std::shared_ptr<ViewController>& root) {
        auto navigation = std::make_shared<NavigationController>(root);
        window_->setRootViewController(navigation);
        settle();
        journal();
        return navigation;
    }

    /// What a host does; a bar in the journal stands for the settling.
    void perform(NavigationController& navigation, const std::string& act) {
        if (act.starts_with("push")) {
            navigation.pushViewController(screen(act.substr(5)), true);
        } else if (act.starts_with("present")) {
            const auto shown = screen(act.substr(8, 1));
            if (act.ends_with("in full")) {
                shown->setModalPresentationStyle(ModalPresentationStyle::fullScreen);
            }
            navigation.present(shown, true, done());
        } else if (act == "pop") {
            navigation.popViewController(true);
        } else if (act == "dismiss") {
            navigation.dismiss(true, done());
        } else {
            *journal_ += "| ";
            settle();
        }
    }

    std::shared_ptr<std::string> journal_ = std::make_shared<std::string>();
};

TEST_F(ScreenLifeCycle, TransitionsGiveEachScreenAWholeLife) {
    const struct {
        std::vector<std::string> acts;
        std::string steps;
    } rows[] = {
        {{"push B", "settle", "pop"}, "Bload Awill- Bwill+ | Bdid+ Adid- Bwill- Awill+ | Adid+ Bdid- Bx "},
        {{"push B", "push C"}, "Bload Awill- Bwill+ Cload Bwill- Cwill+ | Adid- Cdid+ Bdid- "},
        {{"push B", "pop"}, "Bload Awill- Bwill+ Bwill- Awill+ | Adid+ Bdid- Bx "},
        {{"pop"}, "| "},
        {{"present B", "settle", "dismiss"}, "Bload Bwill+ | Bdid+ done Bwill- | Bdid- done Bx "},
        {{"present B", "dismiss"}, "Bload Bwill+ Bwill- | done Bdid- done Bx "},
        {{"present B in full", "settle", "dismiss"},
         "Bload Awill- Bwill+ | Bdid+ Adid- done Bwill- Awill+ | Adid+ Bdid- done Bx "},
        {{"present B", "present C", "settle", "dismiss"},
         "Bload Bwill+ Cload Cwill+ | Bdid+ done Cdid+ done Bwill- Cwill- | Bdid- Cdid- done Bx Cx "},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.acts));
        const auto navigation = navigationWith(screen("A"));
        for (const auto& act : row.acts) {
            perform(*navigation, act);
        }
        perform(*navigation, "settle");
        EXPECT_EQ(journal(), row.steps);
        window_->setRootViewController(nullptr);
        settle();
        journal();
    }
}

TEST_F(ScreenLifeCycle, AScreenMayPushAnotherWhileItAppears) {
    const auto navigation = navigationWith(screen("A"));
    const auto b = screen("B");
    b->onWillAppear = [&] { perform(*navigation, "push C"); };
    navigation->pushViewController(b, true);
    settle();
    EXPECT_EQ(journal(), "Bload Awill- Bwill+ Cload Bwill- Cwill+ Cdid+ Bdid- Adid- ");
}

TEST_F(ScreenLifeCycle, CompletionsRunAlsoWhenNothingCouldBeDone) {
    const auto a = screen("A");
    a->dismiss(true, done());
    a->present(screen("B"), true, done());
    EXPECT_EQ(journal(), "Bx ");
    settle();
    EXPECT_EQ(journal(), "done done ");
    EXPECT_EQ(diagnostics_->texts().size(), 1U);

    window_->setRootViewController(a);
    a->present(a, true, done());
    settle();
    EXPECT_EQ(journal(), "Aload Awill+ Adid+ done ");
    EXPECT_EQ(diagnostics_->texts().size(), 2U);
}

TEST_F(ScreenLifeCycle, AContainerPassesItsAppearanceOnToTheChildThatShows) {
    const auto parent = screen("P");
    parent->addChild(screen("C"));
    parent->addChild(screen("D"));
    parent->view()->addSubview(parent->children()[0]->view());
    window_->setRootViewController(parent);
    settle();
    EXPECT_EQ(journal(), "Pload Cload Pwill+ Cwill+ Pdid+ Cdid+ ");
    parent->view()->addSubview(parent->children()[1]->view());
    settle();
    EXPECT_EQ(journal(), "Dload Dwill+ Ddid+ ");
    parent->children()[0]->view()->removeFromSuperview();
    settle();
    EXPECT_EQ(journal(), "Cwill- Cdid- ");
    const auto last = parent->children()[1];
    last->removeFromParent();
    settle();
    EXPECT_EQ(journal(), "Dwill- Ddid- ") << "although its view is still there";
    EXPECT_EQ(last->parent(), nullptr);
}

TEST_F(ScreenLifeCycle, ItsObserverIsToldOfEachChangeOfScreens) {
    struct Count final : WindowObserver {
        void screenDidChange() override { ++screens; }

        int screens = 0;
    };

    const auto observer = std::make_shared<Count>();
    window_->setObserver(observer);
    const auto a = screen("A");
    window_->setRootViewController(a);
    EXPECT_EQ(observer->screens, 1);
    window_->setRootViewController(a);
    a->addChild(screen("B")); // without its view
    EXPECT_EQ(observer->screens, 1);
    a->present(screen("C"), true);
    EXPECT_EQ(observer->screens, 2);
    a->dismiss(true);
    EXPECT_EQ(observer->screens, 3);
}

TEST_F(ScreenLifeCycle, AScreenMayEndItselfInItsOwnButtonsAction) {
    const auto navigation = navigationWith(screen("A"));
    auto b = screen("B");
    const std::weak_ptr weak{b};
    const auto button = std::make_shared<Button>();
    int taps = 0;
    button->addAction(ControlEvent::touchUpInside, [&](const auto& sender) {
        ++taps;
        navigation->popViewController(true);
        settle();
        sender->removeFromSuperview();
    });
    button->addAction(ControlEvent::touchUpInside, [&](const auto&) { ++taps; });
    b->view()->addSubview(button);
    navigation->pushViewController(std::exchange(b, nullptr), true);
    settle();
    EXPECT_TRUE(button->tap());
    EXPECT_EQ(taps, 2);
    EXPECT_TRUE(weak.expired());
    EXPECT_FALSE(button->tap());
}

TEST_F(ScreenLifeCycle, AnEditThatEndsWithItsScreenMayBringAnother) {
    struct Complaint final : TextFieldDelegate {
        void textFieldDidEndEditing(TextField& /*field*/) override { below->present(alert, false); }

        std::shared_ptr<ViewController> below;
        std::shared_ptr<AlertController> alert = std::make_shared<AlertController>("", "Not saved");
    };

    const auto navigation = navigationWith(screen("A"));
    const auto complaint = std::make_shared<Complaint>();
    complaint->below = navigation;
    const auto form = screen("B");
    navigation->pushViewController(form, false);
    settle();
    const auto field = std::make_shared<TextField>();
    field->setDelegate(complaint);
    form->view()->addSubview(field);
    ASSERT_TRUE(field->becomeFirstResponder());
    navigation->popViewController(false);
    settle();
    EXPECT_EQ(complaint->alert->view()->window(), window_);
}

TEST_F(ScreenLifeCycle, AnAlertCallsTheChosenAnswersHandlerOnceItHasGone) {
    const auto a = screen("A");
    window_->setRootViewController(a);
    const auto behind = std::make_shared<Button>();
    a->view()->addSubview(behind);
    auto alert = std::make_shared<AlertController>("", "Really?");
    int answered = 0;
    alert->addAction({.title = "OK", .handler = [&] { answered += 1; }});
    alert->addAction({.title = "Cancel", .handler = [&] { answered += 10; }});
    const std::weak_ptr weak{alert};
    a->present(alert, true);
    settle();
    EXPECT_FALSE(behind->tap());
    alert->present(screen("B"), true);
    alert->choose(1);
    EXPECT_TRUE(alert->presentedViewController()) << "under another screen it is not to be answered";
    alert->dismiss(true);
    settle();
    const auto cancel = alert->view()->find<Button>("Cancel");
    alert.reset();
    EXPECT_TRUE(cancel->tap());
    EXPECT_EQ(answered, 0);
    EXPECT_FALSE(cancel->tap());
    settle();
    EXPECT_EQ(answered, 10);
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(behind->tap());
}

} // namespace
} // namespace kivo::platform
