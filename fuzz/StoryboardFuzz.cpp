#include "FuzzInput.hpp"
#include "platform/bundle/FolderBundle.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/platform/ui/View.hpp>

using namespace kivo::platform;

/// The scene "entry" is shown when there is one.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto& folder = *new kivo::test::TemporaryFolder;
    static const auto bundle = std::make_shared<FolderBundle>(folder.path(), FolderBundle::Presence::expected,
                                                              std::vector<std::string>{}, nullptr);
    folder.write("a.storyboard", kivo::fuzz::textOf(data, size));
    const auto storyboard = Storyboard::open("a", bundle);
    if (!storyboard) {
        kivo::fuzz::require(!storyboard.error().empty());
    } else if (const auto screen = (*storyboard)->instantiate("entry")) {
        (*screen)->view()->setFrame({{0, 0}, {375, 667}});
        (*screen)->view()->layoutIfNeeded();
    }
    RunLoop::main()->drain();
    return 0;
}
