#pragma once

#include "Options.hpp"
#include "Road.hpp"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace demo {

/// Prints the road as a table for people, or as JSON lines for machines.
class Report {
public:
    /// `out` stays open. `version` is the wanted interface version, or "all".
    Report(std::FILE* out, bool json, std::string version)
        : out_{out}
        , json_{json}
        , version_{std::move(version)} {}

    /// `simulated` is the join page of the demo's own service; empty where the options name another.
    void begin(const Options& options, const std::string& simulated);
    void step(const Step& step);
    void end(bool allAsExpected);

    /// Ends the report of all sessions. `folder` is where the pictures are; empty for none.
    void close(const std::vector<std::string>& violations, int pictures, const std::string& folder, bool well);

    /// The reason why a line could not be written, as a sentence; empty when all lines are written.
    const std::string& problem() const { return problem_; }

private:
    void summary() const;
    void print(const nlohmann::ordered_json& line);
    /// Writes the lines so far out.
    void flush();

    struct Session {
        std::string version;
        /// How the chip was reached; empty without a chip.
        std::string chip{};
        int steps = 0;
        int withheld = 0;
        std::size_t bytesSent = 0;
        std::chrono::microseconds took{};
        bool isAsExpected = false;
    };

    std::FILE* const out_;
    const bool json_;
    const std::string version_;
    std::vector<Session> sessions_;
    std::string problem_;
};

} // namespace demo
