#include "NetworkManager/PublicKeyPins.hpp"

#include "Configuration/environment/DeploymentInForce.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace kivo {
namespace {

constexpr std::size_t digestBytes = 32;
constexpr std::array<unsigned char, 24> rsa2048Asn1Header{0x30, 0x82, 0x01, 0x22, 0x30, 0x0d, 0x06, 0x09,
                                                          0x2a, 0x86, 0x48, 0x86, 0xf7, 0x0d, 0x01, 0x01,
                                                          0x01, 0x05, 0x00, 0x03, 0x82, 0x01, 0x0f, 0x00};

std::string positionInChain(std::size_t index) {
    if (index < 2) {
        return index == 0 ? "leaf" : "intermediate";
    }
    return "certificate " + std::to_string(index + 1);
}

void appendListed(std::string& list, std::string_view item) {
    list.append(list.empty() ? "" : ", ").append(item);
}

std::string dayOf(std::chrono::sys_seconds time) {
    const std::chrono::year_month_day date{std::chrono::floor<std::chrono::days>(time)};
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text.data();
}

} // namespace

std::string publicKeyPin(const platform::Trust& trust, std::string_view externalPublicKey) {
    std::string bytes{rsa2048Asn1Header.begin(), rsa2048Asn1Header.end()};
    bytes += externalPublicKey;
    return trust.base64(trust.sha256(bytes));
}

std::optional<std::string> certificatePin(const platform::Trust& trust, std::string_view certificate) {
    const auto key = trust.externalPublicKey(certificate);
    return key ? std::optional{publicKeyPin(trust, *key)} : std::nullopt;
}

std::optional<std::string> pinFault(std::string_view text) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    // 32 bytes fill all but two bits of the last digit, so those two bits are zero.
    constexpr std::string_view lastDigits = "AEIMQUYcgkosw048";
    if (text.find_first_of(" \t\r\n") != text.npos) {
        return "has white space in it";
    }
    const auto padding = text.substr(std::min(text.find_first_not_of(digits), text.size()));
    if (text.size() % 4 != 0 || (!padding.empty() && padding != "=" && padding != "==")) {
        return "is not base64";
    }
    const auto bytes = text.size() / 4 * 3 - padding.size();
    if (bytes != digestBytes) {
        return "has " + std::to_string(bytes) + " bytes and not the " + std::to_string(digestBytes) + " of a digest";
    }
    return lastDigits.contains(text[text.size() - 2]) ? std::nullopt : std::optional<std::string>{"is not base64"};
}

PinList pinListIn(const platform::PropertyValue& root) {
    const auto* const entries = root.list();
    if (entries == nullptr) {
        return {.faults = {"its root is not an array"}};
    }
    PinList list{.isArrayOfText = true};
    for (std::size_t i = 0; i < entries->size(); ++i) {
        const auto* const text = (*entries)[i].text();
        const auto fault = text != nullptr ? pinFault(*text) : "is not text, and so the whole list counts for nothing";
        if (fault) {
            list.faults.push_back("entry " + std::to_string(i + 1) + " " + *fault);
        }
        list.isArrayOfText = list.isArrayOfText && text != nullptr;
        list.pins.push_back(text != nullptr ? *text : "");
    }
    if (list.pins.empty()) {
        list.faults.emplace_back("it is empty");
    }
    if (!list.isArrayOfText) {
        list.pins.clear();
    }
    return list;
}

bool listsPins(const platform::Bundle& bundle) {
    return bundle.pathForResource(pinsResource, "plist").has_value();
}

bool pinsAreInForce(const platform::Bundle& bundle) {
    return deploymentInForce()->requiresPins || listsPins(bundle);
}

PinList readPinList(const platform::Bundle& bundle) {
    if (const auto root = bundle.propertyList(pinsResource)) {
        return pinListIn(*root);
    }
    return {.faults = {listsPins(bundle) ? "it cannot be read as a property list"
                                         : "it is missing from the host's main bundle, where the deployment requires "
                                           "it; a host that is not started by its own name says where its bundle lies "
                                           "in platform::LinuxOptions::mainBundle"}};
}

bool isPinned(const platform::Trust& trust, const platform::Bundle& bundle, const std::vector<platform::Data>& chain) {
    return std::ranges::any_of(chain, [&](const auto& certificate) {
        const auto pin = certificatePin(trust, certificate);
        if (!pin) {
            return false;
        }
        const auto allowed = readPinList(bundle).pins;
        return std::ranges::find(allowed, *pin) != allowed.end();
    });
}

std::string mismatchReport(const platform::Trust& trust, const platform::Bundle& bundle,
                           const platform::ServerTrust& server) {
    std::string presented;
    for (std::size_t i = 0; i < server.chain.size(); ++i) {
        const auto pin = certificatePin(trust, server.chain[i]);
        appendListed(presented, positionInChain(i) + " " + pin.value_or("(neither an RSA key nor one on a curve)"));
    }
    const auto list = readPinList(bundle);
    std::string allowed;
    for (const auto& pin : list.pins) {
        appendListed(allowed, pin);
    }
    std::string faults;
    for (const auto& fault : list.faults) {
        appendListed(faults, fault);
    }
    return "No certificate of " + server.host + " is pinned. Its pins: " + presented + ". " +
           std::string{pinsResource} + ".plist allows: " + (allowed.empty() ? "none" : allowed) +
           (faults.empty() ? "" : " (" + faults + ")") +
           ". If this is the right server, add one of its pins to the list with kivo-pins --write; if not, the "
           "connection was intercepted.";
}

std::optional<std::string> leafRemark(const platform::Trust& trust, const platform::ServerTrust& server,
                                      std::chrono::sys_seconds now) {
    const auto validity = server.chain.empty() ? std::nullopt : trust.validity(server.chain.front(), server.host);
    if (!validity) {
        return std::nullopt;
    }
    std::string remark;
    if (now > validity->notAfter) {
        appendListed(remark, "expired on " + dayOf(validity->notAfter));
    } else if (now < validity->notBefore) {
        appendListed(remark, "is not valid before " + dayOf(validity->notBefore));
    }
    if (!validity->namesHost) {
        appendListed(remark, "is for another host");
    }
    return remark.empty() ? std::nullopt : std::optional{remark};
}

std::optional<CertificateDates> certificateDatesOf(SDKEnv environment) {
    using namespace std::chrono;
    constexpr auto intermediate = 2031y / March / 29;
    switch (environment) {
    case SDKEnv::PROD:
        return CertificateDates{2025y / September / 10, intermediate};
    case SDKEnv::PREPROD:
        return CertificateDates{2025y / November / 9, intermediate};
    case SDKEnv::TEST:
        return CertificateDates{2026y / June / 4, intermediate};
    case SDKEnv::DEV:
        break;
    }
    return std::nullopt;
}

std::string monthDayYear(std::chrono::year_month_day date) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02u/%02u/%04d", static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(date.year()));
    return text.data();
}

long daysUntil(std::chrono::year_month_day date, std::chrono::system_clock::time_point now) {
    return std::chrono::duration_cast<std::chrono::days>(std::chrono::sys_days{date} - now).count();
}

} // namespace kivo
