#include "support/HostScreenFixture.hpp"

#include <fstream>
#include <iterator>

namespace kivo {
namespace {

using platform::View;
using StoryboardLayout = test::HostScreenFixture;

std::vector<std::shared_ptr<View>> viewsOf(platform::ViewController& screen) {
    std::vector<std::shared_ptr<View>> views{screen.view()};
    for (std::size_t i = 0; i < views.size(); ++i) {
        const auto subviews = views[i]->subviews();
        views.insert(views.end(), subviews.begin(), subviews.end());
    }
    return views;
}

TEST_F(StoryboardLayout, NamesEveryControlForAPersonWhoCannotSeeIt) {
    for (const auto* scene : {"QRCodeVC", "QRCodeScannerVC", "AuthMenuVCID", "LivenessCheckVCID", "FinalStatusVC"}) {
        const auto screen = instantiate(scene);
        if (const auto close = screen->view()->find<platform::Button>("closeButton")) {
            close->setTitle(""); // as a theme has it that brings a picture
        }
        for (const auto& view : viewsOf(*screen)) {
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
    int texts = 0;
    for (const auto& view : viewsOf(*instantiate("QRCodeScannerVC"))) {
        texts += view->shownText().empty() ? 0 : 1;
        EXPECT_TRUE(view->shownText().empty() || view->backgroundColor()) << view->shownText();
    }
    EXPECT_EQ(texts, 4);
}

} // namespace
} // namespace kivo
