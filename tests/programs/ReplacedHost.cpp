// A host whose file is gone while it runs, as after an upgrade: says which bundle it finds beside where it was.

#include "platform/base/DiagnosticsRelay.hpp"
#include "platform/bundle/FolderBundles.hpp"

#include <unistd.h>

#include <cstdio>

int main(int /*argc*/, char** argv) {
    if (unlink(argv[0]) != 0) {
        return 2;
    }
    const auto bundles = kivo::platform::makeFolderBundles({}, {}, kivo::platform::standardErrorDiagnostics());
    std::fputs(bundles->main()->bundleIdentifier().value_or("none").c_str(), stdout);
}
