#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

/// Helpers of the benchmarks that are programs of their own.
namespace kivo::bench {

/// Ends the program with a sentence on standard error.
[[noreturn]] inline void giveUp(const std::string& why) {
    std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, why.c_str());
    std::exit(EXIT_FAILURE);
}

/// The time that `run` takes, in milliseconds.
template <class Run>
double timed(const Run& run) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    run();
    return std::chrono::duration<double, std::milli>{Clock::now() - start}.count();
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

/// Appends a line to the file that KIVO_BENCH_RESULTS names, from which tools/bench-report makes its table and curves.
/// Nothing happens without the variable.
inline void note(std::string line) {
    const char* const results = std::getenv("KIVO_BENCH_RESULTS");
    if (auto* const file = results != nullptr ? std::fopen(results, "a") : nullptr) {
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), file);
        std::fclose(file);
    }
}

/// A figure of the table. `name` is one of those in tools/bench-report, which knows the aims.
inline void found(const std::string& name, double figure) {
    note("figure\t" + name + "\t" + std::to_string(figure));
}

/// A point of a curve: a line `series` in the picture `curve`.
inline void point(const std::string& curve, const std::string& series, double x, double y) {
    note("point\t" + curve + "\t" + series + "\t" + std::to_string(x) + "\t" + std::to_string(y));
}

/// A new folder, removed with the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        auto pattern = (std::filesystem::temp_directory_path() / "kivo-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            giveUp("cannot make a folder " + pattern);
        }
        path_ = pattern;
    }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

} // namespace kivo::bench
