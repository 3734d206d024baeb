#pragma once

#include "support/TemporaryFolder.hpp"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace kivo::test {

/// The exit status and the output of a program.
struct Ended {
    int status = -1;
    std::string output;

    bool hasExitedWith(int code) const { return WIFEXITED(status) && WEXITSTATUS(status) == code; }
};

/// Runs a command of the shell and waits for its end; a hang ends with the time that the test may take.
inline Ended run(const std::string& command) {
    auto* const pipe = popen(command.c_str(), "re");
    Ended ended;
    for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe)) {
        ended.output += static_cast<char>(byte);
    }
    ended.status = pclose(pipe);
    return ended;
}

/// A folder in which lines of the shell run; the programs of this build are found by their names.
class ShellInAFolder {
public:
    /// Runs a line of the shell. The output holds standard output and standard error together.
    Ended run(const std::string& line) const {
        return test::run("cd " + folder.path().string() + " && PATH=" KIVO_TEST_PROGRAMS ":$PATH && { " + line +
                         "; } 2>&1");
    }

    const TemporaryFolder folder;
};

/// The exit status that `act` gives a forked child; -1 for a child that was killed.
inline int statusInChild(const std::function<int()>& act) {
    const auto child = fork();
    if (child == 0) {
        _exit(act());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Lowers a limit of this process for as long as the object lives.
class LowLimit {
public:
    using Resource = decltype(RLIMIT_FSIZE);

    LowLimit(Resource resource, rlim_t most)
        : resource_{resource} {
        getrlimit(resource, &former_);
        const rlimit low{.rlim_cur = most, .rlim_max = former_.rlim_max};
        setrlimit(resource, &low);
    }

    LowLimit(const LowLimit&) = delete;
    LowLimit& operator=(const LowLimit&) = delete;

    ~LowLimit() { setrlimit(resource_, &former_); }

private:
    Resource resource_;
    rlimit former_{};
};

/// Permissions do not bind the superuser, so such a process gives `owned` to a user without rights, and acts as this
/// user for as long as the object lives.
class Unprivileged {
public:
    explicit Unprivileged(const std::filesystem::path& owned) {
        if (geteuid() == 0) {
            run("chmod 755 " + owned.parent_path().string() + " && chown -R 65534:65534 " + owned.string());
            [[maybe_unused]] const int done = seteuid(65534);
        }
    }

    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

    ~Unprivileged() { [[maybe_unused]] const int done = seteuid(getuid()); }
};

/// How many threads of this process bear the name. A thread may end while its name is read, and then has none.
inline std::ptrdiff_t threadsNamed(const std::string& name) {
    return std::ranges::count_if(std::filesystem::directory_iterator{"/proc/self/task"}, [&](const auto& thread) {
        std::ifstream file{thread.path() / "comm"};
        std::string line;
        return std::getline(file, line) && line == name;
    });
}

} // namespace kivo::test
