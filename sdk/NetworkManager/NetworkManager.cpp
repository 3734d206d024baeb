#include "NetworkManager/NetworkManager.hpp"

#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "platform/base/Process.hpp"

namespace kivo {

NetworkManager& NetworkManager::shared() {
    return platform::Process::current().part<NetworkManager>(
        [] { return new NetworkManager{CommunicationSecurityManager::shared().serverJudge()}; });
}

void NetworkManager::forgetCookies() {
    requests_.forgetCookies();
    CommunicationSecurityManager::shared().forgetCookies();
}

} // namespace kivo
