#include "FaultPlan.hpp"

#include <ranges>
#include <utility>

namespace kivo::simulator {

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

} // namespace kivo::simulator
