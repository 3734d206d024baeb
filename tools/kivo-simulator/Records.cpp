#include "Records.hpp"

#include <kivo/simulator/FaultText.hpp>
#include <kivo/simulator/Secrets.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <ctime>

namespace simulation {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t longestBody = std::size_t{16} * 1024;
constexpr std::size_t longestLine = 1000;
constexpr std::size_t mostHeaders = 64;

std::string cut(std::string text, std::size_t longest) {
    if (text.size() > longest) {
        text.resize(longest);
        text += "\u2026";
    }
    return text;
}

Json headersOf(const kivo::simulator::RecordedRequest& request) {
    auto headers = Json::array();
    for (const auto& [name, value] : request.headers) {
        if (headers.size() < mostHeaders) {
            headers.push_back(
                {{"name", cut(name, longestLine)}, {"value", kivo::simulator::headerWithoutSecrets(name, value)}});
        }
    }
    return headers;
}

Json recordOf(const kivo::simulator::RecordedRequest& request) {
    using kivo::simulator::withoutSecrets;
    return {{"number", 0},
            {"receivedAt", timeText(request.receivedAt)},
            {"endpoint", name(request.endpoint)},
            {"session", cut(request.session, longestLine)},
            {"method", request.method},
            {"path", cut(request.path, longestLine)},
            {"headers", headersOf(request)},
            {"body", cut(withoutSecrets(request.body), longestBody)},
            {"bodyBytes", request.body.size()},
            {"status", request.status == 0 ? Json{} : Json(request.status)},
            {"answer", cut(withoutSecrets(request.answer), longestBody)},
            {"violation", request.violation ? Json(cut(*request.violation, longestLine)) : Json{}},
            {"fault", request.fault ? Json(cut(textOf(*request.fault), longestLine)) : Json{}},
            {"connection", request.connection}};
}

Json recordOf(const kivo::simulator::StrayRequest& request) {
    constexpr int notFound = 404;
    return {{"number", 0},
            {"receivedAt", timeText(request.receivedAt)},
            {"endpoint", nullptr},
            {"session", ""},
            {"method", request.method},
            {"path", cut(request.path, longestLine)},
            {"headers", Json::array()},
            {"body", ""},
            {"bodyBytes", 0},
            {"status", notFound},
            {"answer", ""},
            {"violation", "the path belongs to no endpoint"},
            {"fault", nullptr},
            {"connection", 0}};
}

} // namespace

std::string timeText(std::chrono::system_clock::time_point time) {
    const auto seconds = std::chrono::system_clock::to_time_t(time);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[32];
    const auto length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    auto fraction = std::to_string(1000 + milliseconds);
    fraction.front() = '.';
    return std::string{text, length} + fraction + "Z";
}

void Records::add(const kivo::simulator::RecordedRequest& request) {
    add(recordOf(request));
}

void Records::add(const kivo::simulator::StrayRequest& request) {
    add(recordOf(request));
}

void Records::add(Json record) {
    const std::scoped_lock lock{mutex_};
    record["number"] = ++last_;
    violations_ += record["violation"].is_null() ? 0U : 1U;
    const auto text = std::make_shared<const std::string>(record.dump(-1, ' ', false, Json::error_handler_t::replace));
    records_.push_back({.number = last_, .text = text});
    if (records_.size() > most) {
        records_.pop_front();
    }
    events_.publish("request", text);
    listener_(record);
}

std::string Records::list(std::uint64_t after, std::size_t limit) const {
    const std::scoped_lock lock{mutex_};
    return listed(after, limit);
}

std::string Records::listed(std::uint64_t after, std::size_t limit) const {
    const auto later = std::ranges::find_if(records_, [&](const Numbered& each) { return each.number > after; });
    const auto first = std::max(later, records_.end() - static_cast<std::ptrdiff_t>(std::min(limit, records_.size())));
    std::string text = R"({"records":[)";
    for (auto each = first; each != records_.end(); ++each) {
        text.append(each == first ? "" : ",").append(*each->text);
    }
    return text + R"(],"last":)" + std::to_string(last_) + R"(,"violations":)" + std::to_string(violations_) + "}";
}

std::string Records::forget() {
    const std::scoped_lock lock{mutex_};
    records_.clear();
    auto text = listed(0, most);
    events_.publish("cleared", std::make_shared<const std::string>(text));
    return text;
}

std::uint64_t Records::count() const {
    const std::scoped_lock lock{mutex_};
    return last_;
}

std::uint64_t Records::violations() const {
    const std::scoped_lock lock{mutex_};
    return violations_;
}

} // namespace simulation
