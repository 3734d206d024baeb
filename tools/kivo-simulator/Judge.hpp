#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <nlohmann/json.hpp>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace simulation {

/// A breach of the protocol.
struct Finding {
    std::string step;
    /// What the service did, as the beginning of a sentence.
    std::string found;
    std::string expected;
};

/// Judges the answers of a service, and tells every breach of the protocol.
class Judge {
public:
    using Json = nlohmann::ordered_json;
    using Tell = std::function<void(const Finding&)>;

    /// `patience` is how long each answer was waited for.
    Judge(std::chrono::seconds patience, Tell tell)
        : patience_{patience}
        , tell_{std::move(tell)} {}

    /// A refusal, or the answer that accepts; the object is empty for a body of no bytes. Absent when the answer breaks
    /// the protocol.
    struct Verdict {
        std::string refusedWith;
        Json answer = Json::object();
    };

    /// The answer to an operation of the session.
    std::optional<Verdict> session(const std::string& step, const kivo::platform::UrlOutcome& outcome);

    /// The answer to a scan, whose status does not count.
    std::optional<Verdict> scan(const std::string& step, const kivo::platform::UrlOutcome& outcome);

    /// The answer to a request that must be refused, with the named error where `name` is not empty.
    void refusal(const std::string& step, const kivo::platform::UrlOutcome& outcome, const std::string& name);

    /// The description of a session in the answer to a join. Returns whether the session can be walked.
    bool description(const Json& answer);

    void tell(const std::string& step, const std::string& found, const std::string& expected) {
        tell_({.step = step, .found = found, .expected = expected});
    }

private:
    bool exchange(const std::string& step, const kivo::platform::UrlOutcome& outcome);
    std::optional<Verdict> object(const std::string& step, const std::string& body);

    const std::chrono::seconds patience_;
    const Tell tell_;
};

} // namespace simulation
