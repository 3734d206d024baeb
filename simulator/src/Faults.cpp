#include "Faults.hpp"

#include "SessionProtocol.hpp"

#include <algorithm>
#include <cstdint>
#include <ranges>
#include <utility>

namespace kivo::simulator {
namespace {

constexpr const char* json = "application/json";

/// The most memory that is set aside on a client's word; a longer body grows as it comes.
constexpr std::size_t mostReserved = std::size_t{16} * 1024 * 1024;

using Clock = std::chrono::steady_clock;

/// How long reading that many bytes takes at that rate.
Clock::duration timeFor(std::size_t bytes, std::size_t bytesPerSecond) {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>{static_cast<double>(bytes) / static_cast<double>(bytesPerSecond)});
}

bool sendSpaces(std::size_t, std::size_t length, httplib::DataSink& sink) {
    static const std::string spaces(std::size_t{64} * 1024, ' ');
    return sink.write(spaces.data(), std::min(length, spaces.size()));
}

} // namespace

void FaultPlan::add(Endpoint endpoint, Fault fault, Calls calls) {
    const std::scoped_lock lock{mutex_};
    planned_.push_back({.endpoint = endpoint, .fault = std::move(fault), .calls = calls});
}

void FaultPlan::clear() {
    const std::scoped_lock lock{mutex_};
    planned_.clear();
}

std::optional<Fault> FaultPlan::next(Endpoint endpoint) {
    const std::scoped_lock lock{mutex_};
    std::optional<Fault> found;
    for (auto& each : planned_ | std::views::reverse) {
        if (each.endpoint == endpoint && each.fault.kind() != Fault::Kind::certificate &&
            each.calls.contains(++each.seen) && !found) {
            found = each.fault;
        }
    }
    return found;
}

CertificateFlaw FaultPlan::certificateFlaw(std::optional<Endpoint> endpoint) const {
    const std::scoped_lock lock{mutex_};
    for (const auto& each : planned_ | std::views::reverse) {
        if (each.fault.kind() == Fault::Kind::certificate && (!endpoint || each.endpoint == *endpoint)) {
            return each.fault.flaw();
        }
    }
    return CertificateFlaw::none;
}

std::optional<std::string> readBody(const std::optional<Fault>& fault, const TlsConnections& connections,
                                    const httplib::Request& request, const httplib::ContentReader& reader) {
    const bool isSlow = fault && fault->kind() == Fault::Kind::slowReader;
    if (isSlow) {
        TlsConnections::keepReceiveBufferSmall();
    }
    std::string body;
    const auto announced = request.get_header_value<std::uint64_t>("Content-Length");
    body.reserve(std::min<std::size_t>(announced, mostReserved));
    const auto start = Clock::now();
    const bool isWhole = reader([&](const char* data, std::size_t size) {
        body.append(data, size);
        if (!isSlow) {
            return true;
        }
        const auto early = start + timeFor(body.size(), fault->bytes()) - Clock::now();
        return early <= Clock::duration::zero() || connections.wait(early);
    });
    return isWhole ? std::optional{std::move(body)} : std::nullopt;
}

std::function<void()> answerInstead(const std::optional<Fault>& fault, const TlsConnections& connections,
                                    RecordedRequest& record, httplib::Response& response) {
    if (!fault) {
        return nullptr;
    }
    const auto respond = [&](int status, const std::string& body) {
        response.status = record.status = status;
        record.answer = body;
        response.set_content(body, json);
        return [] {};
    };
    switch (fault->kind()) {
    case Fault::Kind::drop:
        return [&connections] {
            connections.waitForHangUp();
            TlsConnections::reset();
        };
    case Fault::Kind::reset:
        return [] { TlsConnections::reset(); };
    case Fault::Kind::garbage:
        return [] { TlsConnections::sendAndEnd("These are not the bytes of a web server.\r\n\r\n"); };
    case Fault::Kind::truncate:
        return [] {
            TlsConnections::sendAndEnd("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"
                                       "Content-Length: 1000\r\n\r\n{\"response-type\":");
        };
    case Fault::Kind::answer:
        return respond(200, fault->text());
    case Fault::Kind::noBody:
        return respond(204, "");
    case Fault::Kind::status:
        return respond(fault->httpStatus(), fault->text());
    case Fault::Kind::refuse:
        return respond(200, SessionProtocol::refusal(fault->text(), fault->message()));
    case Fault::Kind::redirect:
        response.set_header("Location", fault->text());
        return respond(fault->httpStatus(), "");
    case Fault::Kind::largeBody:
        record.status = 200;
        response.set_content_provider(fault->bytes(), json, sendSpaces);
        return [] {};
    case Fault::Kind::delay:
    case Fault::Kind::slowBody:
    case Fault::Kind::certificate:
    case Fault::Kind::slowReader:
    case Fault::Kind::anotherScan:
        break;
    }
    return nullptr;
}

void setBody(const std::optional<Fault>& fault, const TlsConnections& connections, const std::string& body,
             httplib::Response& response) {
    if (!fault || fault->kind() != Fault::Kind::slowBody) {
        response.set_content(body, json);
        return;
    }
    const auto pause = std::chrono::nanoseconds{fault->time()} / std::max<std::ptrdiff_t>(std::ssize(body), 1);
    response.set_content_provider(
        body.size(), json, [&connections, body, pause](std::size_t offset, std::size_t, httplib::DataSink& sink) {
            return connections.wait(pause) && sink.write(body.data() + offset, 1);
        });
}

} // namespace kivo::simulator
