#include "c/AssumedNetwork.hpp"

namespace kivo::c {
namespace {

using platform::DispatchQueue;
using platform::NetworkReachabilityRef;
using platform::ReachabilityService;

class AssumedNetwork final : public ReachabilityService {
public:
    Ref SCNetworkReachabilityCreateWithName(const std::string&) override {
        return std::make_shared<NetworkReachabilityRef>();
    }

    Ref SCNetworkReachabilityCreateWithAddress(const platform::SocketAddress&) override {
        return std::make_shared<NetworkReachabilityRef>();
    }

    bool SCNetworkReachabilitySetCallback(const Ref&, Callback, Context) override { return true; }

    bool SCNetworkReachabilitySetDispatchQueue(const Ref&, std::shared_ptr<DispatchQueue>) override { return true; }

    std::optional<std::uint32_t> SCNetworkReachabilityGetFlags(const Ref&) override {
        return platform::kSCNetworkReachabilityFlagsReachable;
    }

    std::int32_t SCError() const override { return 0; }
};

} // namespace

std::shared_ptr<ReachabilityService> assumedNetwork() {
    return std::make_shared<AssumedNetwork>();
}

} // namespace kivo::c
