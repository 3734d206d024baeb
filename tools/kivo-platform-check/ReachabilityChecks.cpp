#include "Trial.hpp"

#include <deque>
#include <mutex>
#include <thread>

namespace kivo::check {
namespace {

using platform::ReachabilityService;
using Ref = ReachabilityService::Ref;
using Flags = std::vector<std::uint32_t>;

constexpr auto reachable = platform::kSCNetworkReachabilityFlagsReachable;

/// A watched target, and the flags that its service reported.
struct Watch {
    explicit Watch(ReachabilityService& from)
        : service{from}
        , target{from.SCNetworkReachabilityCreateWithAddress({})} {}

    void begin() {
        const auto tell = [seen = seen](const Ref&, std::uint32_t flags, const std::shared_ptr<void>&) {
            seen->push_back(flags);
        };
        service.SCNetworkReachabilitySetCallback(target, tell, {});
        service.SCNetworkReachabilitySetDispatchQueue(target, queue);
    }

    /// Whether the target has told these flags in the end.
    bool tells(const Trial& trial, const Flags& expected) const {
        return trial.await([&] {
            queue->runAll();
            return *seen == expected;
        });
    }

    ReachabilityService& service;
    Ref target;
    std::shared_ptr<HeldBlocks> queue = std::make_shared<HeldBlocks>();
    std::shared_ptr<Flags> seen = std::make_shared<Flags>();
};

std::unique_ptr<Network> networkFor(Trial& trial) {
    auto network = trial.under.takeNetwork ? trial.under.takeNetwork() : nullptr;
    if (!network) {
        trial.giveUp("the network cannot be switched here");
    }
    return network;
}

void readsFlags(Trial& trial) {
    const auto services = trial.services();
    auto& service = required(services.reachability);
    for (const auto& target : {service.SCNetworkReachabilityCreateWithName("identity.example"),
                               service.SCNetworkReachabilityCreateWithAddress({})}) {
        trial.expect(target != nullptr, "a target");
        trial.expect(service.SCNetworkReachabilityGetFlags(target).has_value(), "flags");
        trial.expectEqual("the error number", service.SCError(), 0);
    }
}

void tellsFailures(Trial& trial) {
    const auto services = trial.services();
    auto& service = required(services.reachability);

    struct Foreign final : platform::NetworkReachabilityRef {};

    trial.expect(!service.SCNetworkReachabilityCreateWithName(""), "no target without a name");
    trial.expect(service.SCError() != 0, "an error number");
    auto elsewhere = 1;
    std::thread{[&] { elsewhere = service.SCError(); }}.join();
    trial.expectEqual("the error number of another thread", elsewhere, 0);
    platform::SocketAddress strange;
    strange.family = 99;
    trial.expect(!service.SCNetworkReachabilityCreateWithAddress(strange), "no target of a strange family");
    trial.expect(service.SCNetworkReachabilityCreateWithAddress({}) != nullptr, "a target for the general internet");
    trial.expectEqual("the error number after a success", service.SCError(), 0);
    for (const Ref& target : {Ref{}, Ref{std::make_shared<Foreign>()}}) {
        trial.expect(!service.SCNetworkReachabilityGetFlags(target), "no flags of a foreign target");
        trial.expect(!service.SCNetworkReachabilitySetCallback(target, nullptr, {}), "no callback for it");
        trial.expect(!service.SCNetworkReachabilitySetDispatchQueue(target, nullptr), "no queue for it");
        trial.expect(service.SCError() != 0, "an error number");
    }
}

void keepsInfo(Trial& trial) {
    const auto services = trial.services();
    auto& service = required(services.reachability);
    const auto target = service.SCNetworkReachabilityCreateWithAddress({});
    const auto info = std::make_shared<int>(7);
    const auto ignore = [](const Ref&, std::uint32_t, const std::shared_ptr<void>&) {};
    trial.expect(service.SCNetworkReachabilitySetCallback(target, ignore, {info}), "the callback is set");
    trial.expect(info.use_count() > 1, "the info is held while the callback is set");
    trial.expect(service.SCNetworkReachabilitySetCallback(target, nullptr, {}), "the callback is cleared");
    trial.expectSoon("the info is released", [&] { return info.use_count() == 1; });
}

void pushesChanges(Trial& trial) {
    const auto network = networkFor(trial);
    const auto services = trial.services();
    Watch watch{required(services.reachability)};
    const auto flags = [&] { return watch.service.SCNetworkReachabilityGetFlags(watch.target); };
    trial.expectEqual("the flags without a network", flags(), std::uint32_t{0});
    watch.begin();
    Flags expected;
    for (const bool on : {true, false, true}) {
        if (!network->setReachable(on)) {
            trial.giveUp("the network cannot be switched here");
        }
        expected.push_back(on ? reachable : 0);
        if (!watch.tells(trial, expected)) {
            trial.fail("changes told: expected " + shown(expected) + ", came " + shown(*watch.seen));
        }
        trial.expectEqual("the flags then", flags(), expected.back());
    }
}

void tellsWhatChangedBefore(Trial& trial) {
    const auto network = networkFor(trial);
    const auto services = trial.services();
    Watch watch{required(services.reachability)};
    watch.service.SCNetworkReachabilityGetFlags(watch.target);
    network->setReachable(true);
    watch.begin();
    trial.expect(watch.tells(trial, {reachable}), "a change between reading and watching is told");
}

void handsTargetAndInfo(Trial& trial) {
    const auto network = networkFor(trial);
    const auto services = trial.services();
    Watch watch{required(services.reachability)};
    const auto told = std::make_shared<std::string>();
    watch.service.SCNetworkReachabilitySetCallback(
        watch.target,
        [told, raw = watch.target.get(), &watch](const Ref& target, std::uint32_t, const std::shared_ptr<void>& info) {
            *told = target.get() == raw && info && *std::static_pointer_cast<int>(info) == 7 ? "right" : "wrong";
            watch.service.SCNetworkReachabilitySetDispatchQueue(target, nullptr);
            watch.target.reset();
        },
        {std::make_shared<int>(7)});
    watch.service.SCNetworkReachabilitySetDispatchQueue(watch.target, watch.queue);
    const std::weak_ptr<platform::NetworkReachabilityRef> weak = watch.target;
    network->setReachable(true);
    trial.expectSoon("the callback has its target and its info", [&] {
        watch.queue->runAll();
        return *told == "right";
    });
    trial.expectSoon("a target that its own callback has ended goes", [&] { return weak.expired(); });
}

void endsItsCalls(Trial& trial) {
    const auto network = networkFor(trial);
    const auto services = trial.services();
    const std::pair<const char*, void (*)(Watch&)> ends[] = {
        {"callback", [](auto& watch) { watch.service.SCNetworkReachabilitySetCallback(watch.target, nullptr, {}); }},
        {"queue", [](auto& watch) { watch.service.SCNetworkReachabilitySetDispatchQueue(watch.target, nullptr); }},
        {"reference", [](auto& watch) { watch.target.reset(); }},
    };
    for (const auto& [name, end] : ends) {
        Watch watch{required(services.reachability)};
        watch.begin();
        network->setReachable(true);
        trial.expectSoon("a change reaches the queue", [&] { return watch.queue->size() > 0; });
        end(watch);
        watch.queue->runAll();
        trial.expectEqual(std::string{"calls after the end of the "} + name, watch.seen->size(), 0U);
        network->setReachable(false);
    }
}

} // namespace

Checks reachabilityChecks() {
    const auto* const seam = "ReachabilityService";
    return {
        {seam, "reads the flags of a name and of an address", readsFlags},
        {seam, "refuses a target that it cannot watch, with an error number for the thread", tellsFailures},
        {seam, "holds a callback's info as long as the callback", keepsInfo},
        {seam, "tells each change of the network once, on the queue", pushesChanges},
        {seam, "tells a change between reading and watching", tellsWhatChangedBefore},
        {seam, "hands target and info to the callback, which can release both", handsTargetAndInfo},
        {seam, "makes no call after the end of callback, queue or target", endsItsCalls},
    };
}

} // namespace kivo::check
