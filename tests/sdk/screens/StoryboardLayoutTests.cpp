#include "Configuration/session/StoredSession.hpp"
#include "support/HostScreenFixture.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace kivo {
namespace {

using platform::ContentSizeCategory;
using platform::Rect;
using platform::Size;
using platform::View;

/// Everything with a text or for a tap that a person can see on the screen.
void collect(const std::shared_ptr<View>& view, std::vector<std::shared_ptr<View>>& shown) {
    if (!view->isVisible()) {
        return;
    }
    if (std::dynamic_pointer_cast<platform::TextStyled>(view)) {
        shown.push_back(view);
    }
    for (const auto& subview : view->subviews()) {
        collect(subview, shown);
    }
}

/// A button that only makes what lies below it tappable.
bool isTapArea(const View& view) {
    return view.accessibilityRole() == platform::AccessibilityRole::button && view.shownText().empty();
}

bool overlap(const Rect& a, const Rect& b) {
    return a.left() < b.right() && b.left() < a.right() && a.top() < b.bottom() && b.top() < a.bottom();
}

constexpr const char* scenes[] = {"QRCodeVC", "QRCodeScannerVC", "AuthMenuVCID", "LivenessCheckVCID", "FinalStatusVC"};

class StoryboardLayout : public test::HostScreenFixture {
protected:
    /// No line breaks inside a word.
    void expectWholeWords(const platform::Label& label) const {
        const auto font = label.fittedFont();
        std::istringstream words{label.text()};
        for (std::string word; words >> word;) {
            EXPECT_LE(fonts->measure(word, font.name, font.pointSize, 1e6).width, label.frame().size.width) << word;
        }
    }
};

TEST_F(StoryboardLayout, ReadsWellOnSmallAndLargeDisplaysAtEveryReadingSize) {
    storeJoinAnswer(R"({"app-config":{"app-doclist":"true"}})");

    struct Shown {
        const char* scene;
        bool boxed;
    };

    for (const auto& [scene, boxed] :
         {Shown{"QRCodeVC", true}, Shown{"QRCodeVC", false}, Shown{"QRCodeScannerVC", false},
          Shown{"AuthMenuVCID", false}, Shown{"LivenessCheckVCID", false}, Shown{"FinalStatusVC", false}}) {
        for (const auto size : {Size{.width = 320, .height = 568}, Size{.width = 430, .height = 932}}) {
            for (const auto category : {ContentSizeCategory::extraSmall, ContentSizeCategory::large,
                                        ContentSizeCategory::accessibilityExtraExtraExtraLarge}) {
                SCOPED_TRACE(std::string{scene} + (boxed ? " with boxes, " : ", ") + std::to_string(int(size.width)) +
                             " wide, reading size " + std::to_string(int(category)));
                window->setSize(size);
                window->setPreferredContentSizeCategory(category);
                const auto screen = instantiate(scene);
                push(screen);
                for (const auto* name : {"stackViewBoxedTextfield", "activationCodeTextField"}) {
                    if (const auto entry = screen->view()->find(name)) {
                        entry->setHidden((name == std::string_view{"stackViewBoxedTextfield"}) != boxed);
                    }
                }
                if (const auto close = screen->view()->find("closeButton")) {
                    close->setHidden(false);
                }
                window->layoutIfNeeded();
                std::vector<std::shared_ptr<View>> shown;
                collect(screen->view(), shown);
                ASSERT_GE(shown.size(), 3U);
                for (const auto& view : shown) {
                    const auto frame = view->frameOnScreen();
                    const auto what = view->identifier() + " \"" + view->shownText() + '"';
                    if (view->identifier().ends_with("itleLabel") || view->identifier() == "titleInfoLabel") {
                        expectWholeWords(dynamic_cast<const platform::Label&>(*view));
                    }
                    EXPECT_GE(frame.left(), 0) << what;
                    EXPECT_LE(frame.right(), size.width) << what;
                    EXPECT_GE(frame.top(), 0) << what;
                    // The theme sizes the close button; its title fits, if not with the usual room around it.
                    const double roomToSpare = view->identifier() == "closeButton" ? 4 : 0.01;
                    EXPECT_GE(frame.size.height + roomToSpare, view->sizeThatFits(frame.size.width).height) << what;
                    for (const auto& other : shown) {
                        EXPECT_TRUE(view == other || isTapArea(*view) || isTapArea(*other) ||
                                    !overlap(frame, other->frameOnScreen()))
                            << what << " lies over " << other->identifier();
                    }
                }
                const auto scroll = std::dynamic_pointer_cast<platform::ScrollView>(screen->view()->subviews().front());
                const auto bottom = shown.back()->frameOnScreen().bottom();
                if (!scroll) {
                    EXPECT_LE(bottom, size.height);
                } else {
                    EXPECT_LE(bottom - scroll->frameOnScreen().top(), scroll->contentSize().height);
                }
                pop();
            }
        }
    }
}

TEST_F(StoryboardLayout, NamesEveryControlForAPersonWhoCannotSeeIt) {
    for (const auto* scene : scenes) {
        const auto screen = instantiate(scene);
        if (const auto close = screen->view()->find<platform::Button>("closeButton")) {
            close->setTitle(""); // as a theme has it that brings a picture
        }
        std::vector<std::shared_ptr<View>> rest{screen->view()};
        while (!rest.empty()) {
            const auto view = rest.back();
            rest.pop_back();
            rest.insert(rest.end(), view->subviews().begin(), view->subviews().end());
            if (std::dynamic_pointer_cast<platform::Control>(view)) {
                EXPECT_NE(view->accessibilityLabel(), "") << scene << ": " << view->identifier();
            }
        }
    }
}

TEST_F(StoryboardLayout, OpensTheDocumentedExample) {
    std::ifstream file{KIVO_TEST_DATA "/../../docs/storyboards.md"};
    const std::string page{std::istreambuf_iterator{file}, {}};
    const std::string fence = "```json\n";
    const auto start = page.find(fence) + fence.size();
    folder.write("Host.bundle/ZORFramework.storyboard", page.substr(start, page.find("```", start) - start));
    const auto storyboard = platform::Storyboard::open("ZORFramework", platform::services().bundles->main());
    ASSERT_TRUE(storyboard) << storyboard.error();
    for (const auto* scene : {"LivenessCheckVCID", "Help"}) {
        const auto screen = (*storyboard)->instantiate(scene);
        ASSERT_TRUE(screen) << screen.error();
        push(*screen);
        EXPECT_EQ(navigation->topViewController(), *screen);
    }
}

TEST_F(StoryboardLayout, KeepsTextsOverTheCameraReadableOnABrightScene) {
    const auto screen = instantiate("QRCodeScannerVC");
    outlet(*screen, "closeButton")->setHidden(false);
    push(screen);
    std::vector<std::shared_ptr<View>> shown;
    collect(screen->view(), shown);
    EXPECT_EQ(shown.size(), 3U);
    for (const auto& view : shown) {
        EXPECT_TRUE(view->backgroundColor()) << view->identifier() << " " << view->shownText();
    }
}

} // namespace
} // namespace kivo
