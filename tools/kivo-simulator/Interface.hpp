#pragma once

#include "Events.hpp"
#include "Records.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <nlohmann/json_fwd.hpp>

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace simulation {

/// A request to the control interface.
struct Question {
    std::string method;
    /// Decoded, without the query.
    std::string path;
    std::map<std::string, std::string> query;
    std::string body;
};

struct Answer {
    std::string body;
    int status = 200;
    std::string contentType = "application/json";
};

/// A refusal with a sentence.
Answer refusal(int status, const std::string& sentence);

/// What the control interface does, apart from its transport and its stream of events: the routes of openapi.json.
/// Callable from any thread.
class Interface {
public:
    Interface(kivo::simulator::IdentityService& service, Records& records, Events& events)
        : service_{service}
        , records_{records}
        , events_{events} {}

    Answer answer(const Question& question);

    /// Tells the listeners of the sessions, after one was joined.
    void publishSessions();

    /// The sessions as `GET /sessions` tells them: the newest 500.
    std::string sessions() const;

private:
    using Segments = std::vector<std::string_view>;
    struct Route;

    static const std::vector<Route>& routes();

    Answer service(const Question& question, const Segments& segments);
    Answer getFaults(const Question& question, const Segments& segments);
    Answer putFault(const Question& question, const Segments& segments);
    Answer deleteFaults(const Question& question, const Segments& segments);
    Answer getCodes(const Question& question, const Segments& segments);
    Answer postCode(const Question& question, const Segments& segments);
    Answer deleteCode(const Question& question, const Segments& segments);
    Answer getPicture(const Question& question, const Segments& segments);
    Answer getSessions(const Question& question, const Segments& segments);
    Answer getRecords(const Question& question, const Segments& segments);
    Answer deleteRecords(const Question& question, const Segments& segments);

    nlohmann::ordered_json pendingFaults() const;
    nlohmann::ordered_json codes() const;
    Answer changed(std::string_view event, const nlohmann::ordered_json& state, int status = 200);

    kivo::simulator::IdentityService& service_;
    Records& records_;
    Events& events_;
    /// Held while something is changed and told, so that the events come in the order of the changes.
    std::mutex changing_;
};

} // namespace simulation
