#pragma once

#include <kivo/simulator/CertificateAuthority.hpp>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo::simulator {

/// A way in which the identity service can misbehave.
class Fault {
public:
    /// What an endpoint does; the functions below make one of each.
    enum class Kind {
        delay,
        drop,
        reset,
        truncate,
        garbage,
        answer,
        noBody,
        largeBody,
        status,
        redirect,
        slowBody,
        refuse,
        certificate,
        slowReader,
        anotherScan,
    };

    /// Answers as usual, but later.
    static Fault delay(std::chrono::milliseconds by) { return Fault{Kind::delay, by}; }

    /// Takes the request and never answers.
    static Fault drop() { return Fault{Kind::drop}; }

    /// Resets the connection instead of answering.
    static Fault reset() { return Fault{Kind::reset}; }

    /// Announces more bytes than it sends.
    static Fault truncate() { return Fault{Kind::truncate}; }

    /// Answers with bytes that are no HTTP.
    static Fault garbage() { return Fault{Kind::garbage}; }

    /// Answers every request with 200 and this body.
    static Fault answer(std::string body) { return Fault{Kind::answer, std::move(body)}; }

    /// Answers 200 with a body of no bytes.
    static Fault emptyBody() { return answer(""); }

    /// Answers 204.
    static Fault noBody() { return Fault{Kind::noBody}; }

    /// Answers 200 with a body of that many bytes. The body takes no memory: its bytes are made while they are sent.
    static Fault largeBody(std::size_t bytes) {
        Fault fault{Kind::largeBody};
        fault.bytes_ = bytes;
        return fault;
    }

    /// Answers with this status.
    static Fault status(int httpStatus, std::string body = "") {
        Fault fault{Kind::status, std::move(body)};
        fault.httpStatus_ = httpStatus;
        return fault;
    }

    /// Redirects the client to `location`.
    static Fault redirect(std::string location, int httpStatus = 302) {
        Fault fault{Kind::redirect, std::move(location)};
        fault.httpStatus_ = httpStatus;
        return fault;
    }

    /// Answers as usual, with the bytes spread over that time.
    static Fault slowBody(std::chrono::milliseconds total) { return Fault{Kind::slowBody, total}; }

    /// Refuses with the name of a response code, such as "STATUS_AUTH_FAILED".
    static Fault refuse(std::string responseCodeName, std::string message = "") {
        Fault fault{Kind::refuse, std::move(responseCodeName)};
        fault.message_ = std::move(message);
        return fault;
    }

    /// Presents a flawed certificate.
    static Fault certificate(CertificateFlaw flaw) {
        Fault fault{Kind::certificate};
        fault.flaw_ = flaw;
        return fault;
    }

    /// Takes no more than that many bytes of the request's body in a second, then answers as usual.
    static Fault slowReader(std::size_t bytesPerSecond) {
        Fault fault{Kind::slowReader};
        fault.bytes_ = bytesPerSecond;
        return fault;
    }

    /// Answers a good scan, at `Endpoint::facemap` or `Endpoint::idScan`, with the demand that the vendor's library
    /// takes another one.
    static Fault anotherScan() { return Fault{Kind::anotherScan}; }

    /// What the endpoint does.
    Kind kind() const { return kind_; }

    /// The body, the location or the response code's name.
    const std::string& text() const { return text_; }

    /// The message beside a refusal's code.
    const std::string& message() const { return message_; }

    /// The delay, or the time over which the body is sent.
    std::chrono::milliseconds time() const { return time_; }

    /// The number of bytes of an answer, or in a second.
    std::size_t bytes() const { return bytes_; }

    /// The HTTP status of an answer.
    int httpStatus() const { return httpStatus_; }

    /// The flaw of the certificate that a certificate fault presents.
    CertificateFlaw flaw() const { return flaw_; }

    bool operator==(const Fault&) const = default;

private:
    explicit Fault(Kind kind, std::string text = "")
        : kind_{kind}
        , text_{std::move(text)} {}

    Fault(Kind kind, std::chrono::milliseconds time)
        : kind_{kind}
        , time_{time} {}

    Kind kind_;
    std::string text_;
    std::string message_;
    std::chrono::milliseconds time_{0};
    std::size_t bytes_ = 0;
    int httpStatus_ = 200;
    CertificateFlaw flaw_ = CertificateFlaw::none;
};

/// A fault with a name, for a command line or a list on a screen.
struct NamedFault {
    /// One word, such as "reset".
    std::string_view name;
    /// The behaviour of the identity service, as the rest of a sentence: "resets the connection".
    std::string_view meaning;
    Fault fault;
};

/// The faults that `kivo-demo --fault` and the device offer, in the order in which they are shown. Callable from any
/// thread.
const std::vector<NamedFault>& namedFaults();

/// The calls of an endpoint that a fault meets, counted from the moment it is injected. A certificate fault meets
/// connections, which are counted instead.
class Calls {
public:
    /// Every call.
    static Calls all() { return first(std::numeric_limits<int>::max()); }

    /// The n-th call only; the next call has the number 1.
    static Calls only(int n) { return Calls{n, n}; }

    /// The first `n` calls; none when `n` is 0.
    static Calls first(int n) { return Calls{1, n}; }

    /// Whether a call belongs to these; the first has the number 1.
    bool contains(int call) const { return call >= from_ && call <= to_; }

    /// How many calls the fault still meets after `seen` calls; absent without an end.
    std::optional<int> left(int seen) const {
        return to_ == std::numeric_limits<int>::max() ? std::nullopt : std::optional{to_ - std::max(seen, from_ - 1)};
    }

private:
    Calls(int from, int to)
        : from_{from}
        , to_{to} {}

    int from_;
    int to_;
};

} // namespace kivo::simulator
