#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace kivo::test {

/// A test whose thread, and the threads that it starts, have a network of their own, with nothing but a loopback
/// interface.
class OwnNetwork : public testing::Test {
protected:
    void SetUp() override {
        setenv("PATH", (std::string{std::getenv("PATH")} + ":/usr/sbin:/sbin").c_str(), 1);
        home_ = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
        if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
            GTEST_SKIP() << "This user may not make a network namespace";
        }
        if (std::system("ip link show lo >/dev/null 2>&1") != 0) {
            GTEST_SKIP() << "The program ip is not installed";
        }
        ip("link set lo up");
    }

    void TearDown() override {
        setns(home_, CLONE_NEWNET);
        close(home_);
    }

    static void ip(const std::string& arguments) {
        ASSERT_EQ(std::system(("ip " + arguments).c_str()), 0) << arguments;
    }

private:
    int home_ = -1;
};

} // namespace kivo::test
