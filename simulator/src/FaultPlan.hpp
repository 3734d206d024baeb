#pragma once

#include <kivo/simulator/IdentityService.hpp>

#include <mutex>
#include <optional>
#include <vector>

namespace kivo::simulator {

/// The faults in force, and the calls they are for. Callable from any thread.
class FaultPlan {
public:
    void add(Endpoint endpoint, Fault fault, Calls calls);
    void clear();

    /// The fault that meets the next call of an endpoint; counts the call.
    std::optional<Fault> next(Endpoint endpoint);

    /// The flaw of the certificate for a connection to one endpoint, or to any where it is absent.
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

} // namespace kivo::simulator
