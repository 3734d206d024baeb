#pragma once

#include "TlsConnections.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <httplib.h>

#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The faults in force, and the calls that each of them meets. Callable from any thread.
class FaultPlan {
public:
    void add(Endpoint endpoint, Fault fault, Calls calls);

    /// Drops the faults of an endpoint, or all. Returns whether one of them concerned connections.
    bool clear(std::optional<Endpoint> endpoint);

    /// The faults that later calls or connections meet.
    std::vector<PendingFault> pending() const;

    /// Counts a call of an endpoint, and returns the fault that meets the call.
    std::optional<Fault> next(Endpoint endpoint);

    /// Counts a connection to `endpoint`, or to any endpoint where `endpoint` is absent, and returns the flaw of its
    /// certificate.
    CertificateFlaw nextFlaw(std::optional<Endpoint> endpoint);

private:
    struct Planned {
        Endpoint endpoint;
        Fault fault;
        Calls calls;
        int seen = 0;
    };

    /// Counts a call or a connection that `meets` a fault, and returns the fault that counts.
    template <class Predicate>
    std::optional<Fault> count(const Predicate& meets);

    mutable std::mutex mutex_;
    std::vector<Planned> planned_;
};

/// The bytes of the largest body that is read.
inline constexpr std::size_t largestRequest = std::size_t{64} * 1024 * 1024;

/// Reads a request's body, at the rate of the fault where the fault is a slow reader. Absent when the body ends too
/// early; the HTTP library has then set the status. A body that turns out to be too large, unpacked or without a
/// length, ends the connection.
std::optional<std::string> readBody(const std::optional<Fault>& fault, const TlsConnections& connections,
                                    const httplib::Request& request, const httplib::ContentReader& reader);

/// Answers in the place of the service where the fault demands it: fills `response`, and the answer's members of
/// `record`. The caller runs the returned function after it has stored the record. A null function means that the
/// service itself answers.
std::function<void()> answerInstead(const std::optional<Fault>& fault, const TlsConnections& connections,
                                    RecordedRequest& record, httplib::Response& response);

/// Makes `body` the answer. A slow body is sent over the time of the fault.
void setBody(const std::optional<Fault>& fault, const TlsConnections& connections, const std::string& body,
             httplib::Response& response);

} // namespace kivo::simulator
