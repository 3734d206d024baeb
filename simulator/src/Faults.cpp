#include "Faults.hpp"

#include "SessionProtocol.hpp"

#include <algorithm>
#include <cstdint>
#include <ranges>
#include <utility>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;

constexpr const char* json = "application/json";

/// The most memory that a client's Content-Length reserves. The buffer of a longer body grows while the body arrives.
constexpr std::size_t mostReserved = std::size_t{16} * 1024 * 1024;

using Clock = std::chrono::steady_clock;

/// How long reading that many bytes takes at that rate.
Clock::duration timeFor(std::size_t bytes, std::size_t bytesPerSecond) {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>{static_cast<double>(bytes) / static_cast<double>(bytesPerSecond)});
}

bool isOfCertificate(const Fault& fault) {
    return fault.kind() == Fault::Kind::certificate;
}

bool sendSpaces(std::size_t, std::size_t length, httplib::DataSink& sink) {
    static const std::string spaces(std::size_t{64} * 1024, ' ');
    return sink.write(spaces.data(), std::min(length, spaces.size()));
}

} // namespace

// `Fault::anotherScan` is left out: at every call, it makes a person scan for ever.
const std::vector<NamedFault>& namedFaults() {
    using enum CertificateFlaw;
    static const std::vector<NamedFault> all{
        {"slow", "answers two seconds late", Fault::delay(2s)},
        {"slow-body", "sends its answer over two seconds", Fault::slowBody(2s)},
        {"slow-reader", "takes 64 KiB of a request in a second", Fault::slowReader(std::size_t{64} * 1024)},
        {"drop", "never answers (the SDK waits for 60 s)", Fault::drop()},
        {"reset", "resets the connection", Fault::reset()},
        {"truncate", "sends less than it promised", Fault::truncate()},
        {"garbage", "answers with bytes that are no HTTP", Fault::garbage()},
        {"html", "answers 200 with a page instead of JSON", Fault::answer("<html>Sign in to this Wi-Fi</html>")},
        {"empty", "answers 200 with an empty body", Fault::emptyBody()},
        {"204", "answers 204 without a body", Fault::noBody()},
        {"404", "answers 404", Fault::status(404)},
        {"500", "answers 500", Fault::status(500)},
        {"redirect", "redirects to a page that is not https", Fault::redirect("http://localhost/elsewhere")},
        {"huge", "answers with 100 MiB", Fault::largeBody(std::size_t{100} * 1024 * 1024)},
        {"refuse", "refuses with STATUS_AUTH_FAILED", Fault::refuse("STATUS_AUTH_FAILED")},
        {"bad-document", "refuses with STATUS_BAD_BIODATA", Fault::refuse("STATUS_BAD_BIODATA")},
        {"expired", "presents an expired certificate", Fault::certificate(expired)},
        {"not-yet-valid", "presents a certificate of tomorrow", Fault::certificate(notYetValid)},
        {"wrong-host", "presents another host's certificate", Fault::certificate(wrongHost)},
        {"self-signed", "presents a self-signed certificate", Fault::certificate(selfSigned)},
        {"untrusted", "presents an unknown authority's certificate", Fault::certificate(untrustedAuthority)},
    };
    return all;
}

void FaultPlan::add(Endpoint endpoint, Fault fault, Calls calls) {
    const std::scoped_lock lock{mutex_};
    planned_.push_back({.endpoint = endpoint, .fault = std::move(fault), .calls = calls});
}

bool FaultPlan::clear(std::optional<Endpoint> endpoint) {
    const std::scoped_lock lock{mutex_};
    const auto isMeant = [&](const Planned& each) { return !endpoint || each.endpoint == *endpoint; };
    const bool concernsConnections = std::ranges::any_of(
        planned_, [&](const Planned& each) { return isMeant(each) && isOfCertificate(each.fault); });
    std::erase_if(planned_, isMeant);
    return concernsConnections;
}

std::vector<PendingFault> FaultPlan::pending() const {
    const std::scoped_lock lock{mutex_};
    std::vector<PendingFault> pending;
    for (const auto& [endpoint, fault, calls, seen] : planned_) {
        if (const auto left = calls.left(seen); !left || *left > 0) {
            pending.push_back({.endpoint = endpoint, .fault = fault, .callsLeft = left});
        }
    }
    return pending;
}

template <class Predicate>
std::optional<Fault> FaultPlan::count(const Predicate& meets) {
    const std::scoped_lock lock{mutex_};
    std::optional<Fault> found;
    for (auto& each : planned_ | std::views::reverse) {
        if (meets(each) && each.calls.contains(++each.seen) && !found) {
            found = each.fault;
        }
    }
    return found;
}

std::optional<Fault> FaultPlan::next(Endpoint endpoint) {
    return count([&](const Planned& each) { return each.endpoint == endpoint && !isOfCertificate(each.fault); });
}

CertificateFlaw FaultPlan::nextFlaw(std::optional<Endpoint> endpoint) {
    const auto fault = count(
        [&](const Planned& each) { return (!endpoint || each.endpoint == *endpoint) && isOfCertificate(each.fault); });
    return fault ? fault->flaw() : CertificateFlaw::none;
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
    const auto take = [&](const char* data, std::size_t size) {
        if (size > largestRequest - body.size()) {
            TlsConnections::reset();
            return false;
        }
        body.append(data, size);
        if (!isSlow) {
            return true;
        }
        const auto early = start + timeFor(body.size(), fault->bytes()) - Clock::now();
        return early <= Clock::duration::zero() || connections.wait(early);
    };
    // The library hands a form over in parts only.
    const bool isWhole = request.is_multipart_form_data()
                             ? reader([](const httplib::MultipartFormData&) { return true; }, take)
                             : reader(take);
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
