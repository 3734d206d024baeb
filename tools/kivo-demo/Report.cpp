#include "Report.hpp"

#include "program/Program.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

namespace demo {
namespace {

std::string milliseconds(std::chrono::microseconds took) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", static_cast<double>(took.count()) / 1000.0);
    return text;
}

std::string verdict(const Step& step) {
    if (step.isWithheld && step.asExpected()) {
        return "withheld";
    }
    if (step.answers != 1) {
        return step.answers == 0 ? "no answer" : std::to_string(step.answers) + " answers";
    }
    return step.asExpected() ? "ok" : "expected " + step.expected;
}

} // namespace

void Report::begin(const Options& options, const std::string& simulated) {
    sessions_.push_back({.version = options.version, .chip = options.passport.way});
    if (json_) {
        return;
    }
    std::fprintf(out_,
                 "%sKivo demo: one verification session, interface version %s\n"
                 "The identity service is %s%s, over real TLS%s\n"
                 "certificate authority. The network state is simulated; keychain and transport are the real ones.\n\n",
                 sessions_.size() > 1 ? "\n" : "", options.version.c_str(), simulated.empty() ? "at " : "simulated at ",
                 simulated.empty() ? options.service.c_str() : simulated.c_str(),
                 simulated.empty() ? " under a known" : " with its own");
    if (options.chip) {
        std::fprintf(out_, "The document reader is the real one. It reaches a simulated chip %s.\n\n",
                     options.passport.way.c_str());
    }
    for (const auto& each : options.faults) {
        std::fprintf(out_, "Fault: %s answers with \"%s\"\n\n", std::string{name(each.endpoint)}.c_str(),
                     std::string{each.name}.c_str());
    }
    for (const auto& choice : pinChoices) {
        if (choice.name == options.pin) {
            std::fprintf(out_, "Pinning: the host's readid_certificates.plist lists %s\n\n",
                         std::string{choice.meaning}.c_str());
        }
    }
    if (!options.pin.empty() && std::ranges::find(pinChoices, options.pin, &PinChoice::name) == pinChoices.end()) {
        std::fprintf(out_, "Pinning: the host's readid_certificates.plist lists %s\n\n", options.pin.c_str());
    }
    std::fprintf(out_, "  %-23s %-31s %9s %10s  %s\n", "step", "event or code", "sent", "time", "");
}

void Report::step(const Step& step) {
    auto& session = sessions_.back();
    ++session.steps;
    session.withheld += step.isWithheld ? 1 : 0;
    session.bytesSent += step.bytesSent;
    session.took += step.took;
    if (json_) {
        print({{"type", "step"},
               {"version", session.version},
               {"step", step.name},
               {"outcome", step.outcome},
               {"detail", step.detail},
               {"verdict", verdict(step)},
               {"bytes", step.bytesSent},
               {"microseconds", step.took.count()},
               {"ok", step.asExpected()}});
    } else {
        std::fprintf(out_, "  %-23s %-31s %7zu B %10s  %s\n", step.name.c_str(), step.outcome.c_str(), step.bytesSent,
                     milliseconds(step.took).c_str(), verdict(step).c_str());
    }
    flush();
}

void Report::end(bool allAsExpected) {
    auto& session = sessions_.back();
    session.isAsExpected = allAsExpected;
    if (json_) {
        print({{"type", "session"},
               {"version", session.version},
               {"steps", session.steps},
               {"withheld", session.withheld},
               {"bytes", session.bytesSent},
               {"microseconds", session.took.count()},
               {"chip", session.chip},
               {"ok", allAsExpected}});
        return;
    }
    std::fprintf(out_, "\n%d steps, %s%s\n", session.steps,
                 allAsExpected ? "each answered exactly once and as expected" : "NOT all as expected",
                 session.withheld > 0 ? ", but for what the session withholds" : "");
    flush();
}

void Report::summary() const {
    std::fprintf(out_, "\n  %-8s %6s %9s %12s %10s\n", "version", "steps", "withheld", "sent", "time");
    for (const auto& each : sessions_) {
        std::fprintf(out_, "  %-8s %6d %9d %10zu B %10s  %s\n", each.version.c_str(), each.steps, each.withheld,
                     each.bytesSent, milliseconds(each.took).c_str(), each.isAsExpected ? "ok" : "NOT as expected");
    }
}

void Report::close(const std::vector<std::string>& violations, int pictures, const std::string& folder, bool well) {
    if (json_) {
        print({{"type", "end"},
               {"version", version_},
               {"sessions", sessions_.size()},
               {"pictures", pictures},
               {"violations", violations},
               {"ok", well}});
        return;
    }
    if (sessions_.size() > 1) {
        summary();
    }
    if (!folder.empty()) {
        std::fprintf(out_, "%d pictures in %s\n", pictures, folder.c_str());
    }
    flush();
}

void Report::print(const nlohmann::ordered_json& line) {
    // A text that is no UTF-8 shows a replacement character; it never ends the program.
    std::fprintf(out_, "%s\n", line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    flush();
}

void Report::flush() {
    if (problem_.empty()) {
        problem_ = program::finish(out_);
    }
}

} // namespace demo
