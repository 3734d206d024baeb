#include "PinnedBundle.hpp"

#include <fstream>

namespace demo {

std::filesystem::path makePinnedBundle(const std::filesystem::path& below, const std::string& choice,
                                       const kivo::simulator::IdentityService& service) {
    std::string pin;
    if (choice == "leaf") {
        pin = service.pins().leaf;
    } else if (choice == "intermediate") {
        pin = service.pins().intermediate;
    } else if (choice == "other") {
        pin = kivo::simulator::CertificateAuthority{}.issue({}).pins.leaf;
    }
    const auto bundle = below / "Host.bundle";
    auto own = std::filesystem::read_symlink("/proc/self/exe");
    own += ".bundle";
    std::filesystem::copy(own, bundle, std::filesystem::copy_options::recursive);
    std::ofstream{bundle / "readid_certificates.plist"}
        << R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><array>)"
        << (pin.empty() ? "" : "<string>" + pin + "</string>") << "</array></plist>\n";
    return bundle;
}

} // namespace demo
