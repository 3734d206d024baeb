#include "Interface.hpp"

#include "Options.hpp"
#include "Page.hpp"
#include "QrPicture.hpp"

#include <kivo/SdkVersions.hpp>
#include <kivo/simulator/FaultText.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <ranges>
#include <utility>

namespace simulation {
namespace {

using kivo::simulator::Endpoint;
using Json = nlohmann::ordered_json;

constexpr std::size_t mostSessions = 500;
constexpr std::size_t mostCodes = 100;
constexpr std::size_t longestFault = 1024;
constexpr int mostCalls = 1'000'000;

std::string dumped(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<Endpoint> endpointNamed(std::string_view text) {
    const auto* const found = std::ranges::find(kivo::simulator::allEndpoints, text,
                                                [](Endpoint each) { return kivo::simulator::name(each); });
    return found == kivo::simulator::allEndpoints.end() ? std::nullopt : std::optional{*found};
}

/// The object in a body; absent for anything else, or an object with other members than these.
std::optional<Json> objectIn(const std::string& body, std::initializer_list<std::string_view> members) {
    constexpr int deepest = 8;
    const auto bound = [](int depth, Json::parse_event_t, Json&) { return depth <= deepest; };
    auto json = Json::parse(body, bound, /*allow_exceptions=*/false);
    const bool isKnown = json.is_object() && std::ranges::all_of(json.items(), [&](const auto& each) {
                             return std::ranges::find(members, each.key()) != members.end();
                         });
    return isKnown ? std::optional{std::move(json)} : std::nullopt;
}

/// The number in a query; `usual` where there is none, absent for another text.
template <class Number>
std::optional<Number> numberIn(const Question& question, const std::string& name, Number usual) {
    const auto found = question.query.find(name);
    if (found == question.query.end()) {
        return usual;
    }
    const auto& text = found->second;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), usual);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional{usual} : std::nullopt;
}

std::vector<std::string_view> segmentsOf(std::string_view path) {
    std::vector<std::string_view> segments;
    while (!path.empty()) {
        path.remove_prefix(1);
        const auto end = std::min(path.find('/'), path.size());
        segments.push_back(path.substr(0, end));
        path.remove_prefix(end);
    }
    return segments;
}

} // namespace

Answer refusal(int status, const std::string& sentence) {
    return {.body = dumped({{"error", sentence}}), .status = status};
}

struct Interface::Route {
    std::string_view method;
    /// A segment "{}" stands for any text.
    std::string_view path;
    Answer (Interface::*answer)(const Question&, const Segments&);

    bool matches(const Segments& segments) const {
        return std::ranges::equal(segmentsOf(path), segments, [](std::string_view pattern, std::string_view segment) {
            return pattern == segment || (pattern == "{}" && !segment.empty());
        });
    }
};

const std::vector<Interface::Route>& Interface::routes() {
    static const std::vector<Route> all{
        {"GET", "/service", &Interface::service},
        {"GET", "/faults", &Interface::getFaults},
        {"DELETE", "/faults", &Interface::deleteFaults},
        {"PUT", "/faults/{}", &Interface::putFault},
        {"DELETE", "/faults/{}", &Interface::deleteFaults},
        {"GET", "/codes", &Interface::getCodes},
        {"POST", "/codes", &Interface::postCode},
        {"DELETE", "/codes/{}", &Interface::deleteCode},
        {"GET", "/codes/{}/picture.svg", &Interface::getPicture},
        {"GET", "/sessions", &Interface::getSessions},
        {"GET", "/records", &Interface::getRecords},
        {"DELETE", "/records", &Interface::deleteRecords},
    };
    return all;
}

Answer Interface::answer(const Question& question) {
    if (const auto* const file = pageFile(question.path)) {
        return question.method == "GET"
                   ? Answer{.body = std::string{file->content}, .contentType = std::string{file->contentType}}
                   : refusal(405, "the address takes GET only");
    }
    const auto segments = segmentsOf(question.path);
    bool isKnown = false;
    for (const auto& route : routes()) {
        if (route.matches(segments)) {
            if (route.method == question.method) {
                return (this->*route.answer)(question, segments);
            }
            isKnown = true;
        }
    }
    return isKnown ? refusal(405, "the address does not take " + question.method)
                   : refusal(404, "there is no such address; GET /openapi.json lists all");
}

Answer Interface::service(const Question& /*question*/, const Segments& /*segments*/) {
    const auto pins = service_.pins();
    return {.body = dumped({{"joinPage", service_.joinPage()},
                            {"certificate", service_.trustedCertificates().string()},
                            {"pins", {{"leaf", pins.leaf}, {"intermediate", pins.intermediate}}},
                            {"version", KIVO_SDK_VERSION}})};
}

Json Interface::pendingFaults() const {
    auto pending = Json::array();
    for (const auto& each : service_.pendingFaults()) {
        pending.push_back({{"endpoint", name(each.endpoint)},
                           {"fault", textOf(each.fault)},
                           {"callsLeft", each.callsLeft ? Json(*each.callsLeft) : Json{}}});
    }
    return {{"pending", pending}};
}

Answer Interface::changed(std::string_view event, const Json& state, int status) {
    auto text = std::make_shared<const std::string>(dumped(state));
    events_.publish(event, text);
    return {.body = *text, .status = status};
}

Answer Interface::getFaults(const Question& /*question*/, const Segments& /*segments*/) {
    auto faults = pendingFaults();
    for (const auto& each : kivo::simulator::namedFaults()) {
        faults["named"].push_back({{"name", each.name}, {"meaning", each.meaning}});
    }
    for (const auto endpoint : kivo::simulator::allEndpoints) {
        faults["endpoints"].push_back(name(endpoint));
    }
    return {.body = dumped(faults)};
}

Answer Interface::putFault(const Question& question, const Segments& segments) {
    const auto endpoint = endpointNamed(segments[1]);
    if (!endpoint) {
        return refusal(404, "there is no such endpoint; GET /faults lists all");
    }
    const auto choice = objectIn(question.body, {"fault", "calls"});
    if (!choice || !choice->contains("fault") || !choice->at("fault").is_string()) {
        return refusal(400, R"(the body is no {"fault": "NAME"}, with or without "calls")");
    }
    const auto& text = choice->at("fault").get_ref<const std::string&>();
    const auto calls = choice->value("calls", Json(mostCalls));
    if (!calls.is_number_integer() || calls < 1 || calls > mostCalls) {
        return refusal(400, "\"calls\" is no number from 1 to " + std::to_string(mostCalls));
    }
    const auto fault = kivo::simulator::faultFromText(text);
    if (!fault || text.size() > longestFault) {
        return refusal(400, "\"fault\" " + (fault ? "has more than 1024 bytes" : fault.error()));
    }
    const std::scoped_lock lock{changing_};
    service_.clearFaults(*endpoint);
    service_.inject(*endpoint, *fault,
                    choice->contains("calls") ? kivo::simulator::Calls::first(calls.get<int>())
                                              : kivo::simulator::Calls::all());
    return changed("faults", pendingFaults());
}

Answer Interface::deleteFaults(const Question& /*question*/, const Segments& segments) {
    const auto endpoint = segments.size() > 1 ? endpointNamed(segments[1]) : std::nullopt;
    if (segments.size() > 1 && !endpoint) {
        return refusal(404, "there is no such endpoint; GET /faults lists all");
    }
    const std::scoped_lock lock{changing_};
    if (endpoint) {
        service_.clearFaults(*endpoint);
    } else {
        service_.clearFaults();
    }
    return changed("faults", pendingFaults());
}

Json Interface::codes() const {
    return {{"codes", service_.activationCodes()}};
}

Answer Interface::getCodes(const Question& /*question*/, const Segments& /*segments*/) {
    return {.body = dumped(codes())};
}

Answer Interface::postCode(const Question& question, const Segments& /*segments*/) {
    const auto body = objectIn(question.body, {"code"});
    if (!body || !body->contains("code") || !body->at("code").is_string()) {
        return refusal(400, R"(the body is no {"code": "123456"})");
    }
    const auto& code = body->at("code").get_ref<const std::string&>();
    if (const auto problem = problemOfCode(code); !problem.empty()) {
        return refusal(400, "\"code\" " + problem);
    }
    const std::scoped_lock lock{changing_};
    auto codes = service_.activationCodes();
    if (std::ranges::find(codes, code) != codes.end()) {
        return refusal(409, "the code may join already");
    }
    if (codes.size() >= mostCodes) {
        return refusal(409, "there are " + std::to_string(mostCodes) + " codes already");
    }
    codes.push_back(code);
    service_.setActivationCodes(std::move(codes));
    return changed("codes", this->codes(), 201);
}

Answer Interface::deleteCode(const Question& /*question*/, const Segments& segments) {
    const std::scoped_lock lock{changing_};
    auto codes = service_.activationCodes();
    if (std::erase(codes, segments[1]) == 0) {
        return refusal(404, "there is no such code");
    }
    service_.setActivationCodes(std::move(codes));
    return changed("codes", this->codes());
}

Answer Interface::getPicture(const Question& /*question*/, const Segments& segments) {
    const auto codes = service_.activationCodes();
    const auto code = std::ranges::find(codes, segments[1]);
    return code == codes.end() ? refusal(404, "there is no such code")
                               : Answer{.body = qrPicture(*code), .contentType = "image/svg+xml"};
}

std::string Interface::sessions() const {
    auto all = service_.sessions();
    auto sessions = Json::array();
    for (const auto& each : all | std::views::drop(all.size() - std::min(all.size(), mostSessions))) {
        sessions.push_back({{"name", each.name},
                            {"tid", each.tid},
                            {"interfaceVersion", each.interfaceVersion},
                            {"joinedAt", timeText(each.joinedAt)}});
    }
    return dumped({{"sessions", sessions}});
}

void Interface::publishSessions() {
    const std::scoped_lock lock{changing_};
    events_.publish("sessions", std::make_shared<const std::string>(sessions()));
}

Answer Interface::getSessions(const Question& /*question*/, const Segments& /*segments*/) {
    return {.body = sessions()};
}

Answer Interface::getRecords(const Question& question, const Segments& /*segments*/) {
    const auto after = numberIn<std::uint64_t>(question, "after", 0);
    const auto limit = numberIn<std::size_t>(question, "limit", Records::most);
    if (!after || !limit || *limit == 0 || *limit > Records::most) {
        return refusal(400, "\"after\" is a number, and \"limit\" one from 1 to " + std::to_string(Records::most));
    }
    return {.body = records_.list(*after, *limit)};
}

Answer Interface::deleteRecords(const Question& /*question*/, const Segments& /*segments*/) {
    return {.body = records_.forget()};
}

} // namespace simulation
