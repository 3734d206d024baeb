#pragma once

#include "TlsConnections.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <httplib.h>

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
    void clear();

    /// The fault that meets the next call of an endpoint; counts the call.
    std::optional<Fault> next(Endpoint endpoint);

    /// The flaw of the certificate for a connection to `endpoint`, or to any endpoint where `endpoint` is absent.
    CertificateFlaw certificateFlaw(std::optional<Endpoint> endpoint) const;

private:
    struct Planned {
        Endpoint endpoint;
        Fault fault;
        Calls calls;
        int seen = 0;
    };

    mutable std::mutex mutex_;
    std::vector<Planned> planned_;
};

/// Reads a request's body, as slowly as a slow reader does. Absent when the body ends too early; the HTTP library has
/// set the status then.
std::optional<std::string> readBody(const std::optional<Fault>& fault, const TlsConnections& connections,
                                    const httplib::Request& request, const httplib::ContentReader& reader);

/// Answers in the place of the service where the fault says so: fills `response`, and the answer's part of `record`.
/// The function that is returned must be called once the request is recorded; it is null where the service itself
/// answers.
std::function<void()> answerInstead(const std::optional<Fault>& fault, const TlsConnections& connections,
                                    RecordedRequest& record, httplib::Response& response);

/// Makes `body` the answer, as slowly as the fault says.
void setBody(const std::optional<Fault>& fault, const TlsConnections& connections, const std::string& body,
             httplib::Response& response);

} // namespace kivo::simulator
