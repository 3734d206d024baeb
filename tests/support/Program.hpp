#pragma once

#include "support/TemporaryFolder.hpp"

#include <sys/wait.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
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

/// How many threads of this process bear the name.
inline std::ptrdiff_t threadsNamed(const std::string& name) {
    return std::ranges::count_if(std::filesystem::directory_iterator{"/proc/self/task"},
                                 [&](const auto& thread) { return contentOf(thread.path() / "comm") == name + "\n"; });
}

} // namespace kivo::test
