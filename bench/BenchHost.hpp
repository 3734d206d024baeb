#pragma once

#include "Measuring.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <filesystem>
#include <memory>

namespace kivo::bench {

/// A session whose requests go to the service, of which the join page and the certificates are needed, over the
/// system's own services, with its data in the folder.
template <class Service>
std::shared_ptr<KivoAPI> loadAgainst(const Service& service, const std::filesystem::path& folder) {
    auto services = platform::linuxServices(
        {.mainBundle = {}, .dataFolder = folder, .trustedCertificates = service.trustedCertificates});
    services.reachability = std::make_shared<simulator::Reachability>();
    platform::install(services);
    const auto& page = service.joinPage;
    Deployment::install({.joinPages = {page, page, page, page}});
    KivoSDK::setLogLevel(LogLevel::error);
    return KivoSDK::load("BENCH", "18");
}

} // namespace kivo::bench
