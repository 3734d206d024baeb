// The time from a program's start until its first request is answered and the program has ended: a host of libkivo that
// joins, beside a program that sends the same request by libcurl alone. The simulated service works in a process of its
// own.
//
// usage: kivo-bench-start [ROUNDS]
#include "BareCurl.hpp"
#include "Measuring.hpp"
#include "ServiceProcess.hpp"

#include <spawn.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace kivo::bench;

void run(const std::string& program, const std::string& page, const std::string& certificates,
         const std::string& folder) {
    std::string name = program;
    std::array<std::string, 3> texts{page, certificates, folder};
    std::array<char*, 5> arguments{name.data(), texts[0].data(), texts[1].data(), texts[2].data(), nullptr};
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments.data(), environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0) {
        giveUp(program + " failed");
    }
}

} // namespace

int main(int argc, char** argv) {
    ServiceProcess service;
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 40;
    const TemporaryFolder folder;
    const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const auto withSdk = (here / "kivo-start-with-sdk").string();
    const auto bare = (here / "kivo-start-bare").string();
    const auto start = [&](const std::string& program) {
        return timed([&] { run(program, service.joinPage, service.trustedCertificates, folder.path()); });
    };
    // The first host makes its keychain.
    start(withSdk);
    start(bare);
    std::vector<double> sdkTimes;
    std::vector<double> bareTimes;
    for (int i = 0; i < rounds; ++i) {
        sdkTimes.push_back(start(withSdk));
        bareTimes.push_back(start(bare));
    }
    const double more = median(sdkTimes) - median(bareTimes);
    std::printf("a program with one request, medians: SDK %.1f ms, bare %.1f ms, %.1f ms more\n", median(sdkTimes),
                median(bareTimes), more);
    found("start and first request beside a bare program", more);
    return EXIT_SUCCESS;
}
