// A host whose file is gone while it runs, as after an upgrade: says which bundle it finds beside where it was.

#include "platform/bundle/FolderBundles.hpp"

#include <kivo/platform/Diagnostics.hpp>

#include <unistd.h>

#include <cstdio>
#include <memory>

namespace {

class Silent final : public kivo::platform::Diagnostics {
public:
    void report(std::string_view, std::string_view) override {}
};

} // namespace

int main(int /*argc*/, char** argv) {
    if (unlink(argv[0]) != 0) {
        return 2;
    }
    const auto bundles = kivo::platform::makeFolderBundles({}, {}, std::make_shared<Silent>());
    std::fputs(bundles->main()->bundleIdentifier().value_or("none").c_str(), stdout);
}
