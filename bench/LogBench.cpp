// The time of a log line that is not printed, and of making a line.
#include "Configuration/logging/Log.hpp"

#include <benchmark/benchmark.h>

#include <string>

namespace {

void suppressedLine(benchmark::State& state) {
    int built = 0;
    for ([[maybe_unused]] const auto each : state) {
        kivo::log::debug("commit(response:)", [&] { return std::to_string(++built); });
        benchmark::ClobberMemory();
    }
    if (built != 0) {
        state.SkipWithError("a suppressed line built its message");
    }
}

void formattedLine(benchmark::State& state) {
    for ([[maybe_unused]] const auto each : state) {
        benchmark::DoNotOptimize(kivo::log::format(kivo::LogLevel::debug, "/sdk/impl/SessionAPI.cpp", 42,
                                                   "commit(response:)", "Calling commit"));
    }
}

BENCHMARK(suppressedLine);
BENCHMARK(formattedLine);

} // namespace

BENCHMARK_MAIN();
