#include "platform/linux/LinuxParts.hpp"
#include "support/Eventually.hpp"
#include "support/TemporaryFolder.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;
using test::eventually;

/// A `PATH` that begins with a browser which writes down how it was called.
class DesktopWorkspaceTest : public testing::Test {
protected:
    DesktopWorkspaceTest() {
        const auto program = folder / "xdg-open";
        std::ofstream{program} << "#!/bin/sh\n"
                                  "{ printf '%s|' \"$#\" \"$1\"; readlink /proc/$$/fd/0 /proc/$$/fd/1; } >"
                               << (folder / "partial") << "\nmv " << folder / "partial" << " " << folder / "called"
                               << "\n";
        fs::permissions(program, fs::perms::owner_all);
        path = std::getenv("PATH");
        setenv("PATH", (folder.string() + ":" + path).c_str(), 1);
    }

    ~DesktopWorkspaceTest() override { setenv("PATH", path.c_str(), 1); }

    /// How the browser was called; empty when it was not.
    std::string call() const { return test::contentOf(folder / "called"); }

    static bool hasNoChild() {
        siginfo_t info{};
        return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) < 0 && errno == ECHILD;
    }

    const test::TemporaryFolder temporary;
    const fs::path& folder = temporary.path();
    std::string path;
    std::shared_ptr<Workspace> workspace = makeDesktopWorkspace();
};

TEST_F(DesktopWorkspaceTest, HandsTheAddressOverAsOneArgumentAndLeavesNoChild) {
    for (const std::string url : {"https://a.example/?q=$(touch%20x)&r=$(id);'*", "HTTP://a.example"}) {
        workspace->open(url);
        ASSERT_TRUE(eventually([&] { return !call().empty(); })) << url;
        EXPECT_EQ(call(), "1|" + url + "|/dev/null\n" + (folder / "partial").string() + "\n");
        EXPECT_TRUE(eventually(hasNoChild));
        fs::remove(folder / "called");
    }
    EXPECT_FALSE(fs::exists("x"));
}

TEST_F(DesktopWorkspaceTest, OpensNothingButWebAddresses) {
    for (const std::string url :
         {"", "-x", "--help", "file:///etc/passwd", "javascript:alert(1)", "a.example", "https:a.example", "https://",
          " https://a.example", "https://a.example/\n-x", "https://a.example/\x7f"}) {
        workspace->open(url);
        EXPECT_TRUE(hasNoChild()) << url;
    }
    workspace->open(std::string{"https://a.example/\0x", 20});
    EXPECT_TRUE(hasNoChild());
    EXPECT_EQ(call(), "");
}

TEST_F(DesktopWorkspaceTest, IsSilentWithoutABrowser) {
    setenv("PATH", (folder / "empty").c_str(), 1);
    workspace->open("https://a.example");
    workspace->vibrate();
    EXPECT_TRUE(eventually(hasNoChild));
    EXPECT_EQ(call(), "");
}

} // namespace
} // namespace kivo::platform
