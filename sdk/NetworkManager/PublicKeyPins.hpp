#pragma once

#include <kivo/SDKEnv.hpp>
#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/Trust.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo {

/// The resource in the host's main bundle that lists the pins.
inline constexpr std::string_view pinsResource = "readid_certificates";

/// The pin of a public key in its external form: SHA-256, as base64, over the key behind the header of an RSA 2048-bit
/// SubjectPublicKeyInfo. The header is the same for every key, so only an RSA 2048-bit key has its pin of RFC 7469.
std::string publicKeyPin(const platform::Trust& trust, std::string_view externalPublicKey);

/// The pin of a certificate in DER form; absent when it has no key that can be pinned.
std::optional<std::string> certificatePin(const platform::Trust& trust, std::string_view certificate);

/// The reason why a text cannot be a pin, in words that follow the text's name; absent for a possible pin.
std::optional<std::string> pinFault(std::string_view text);

/// The pins that a host allows, as read from its list.
struct PinList {
    /// Empty also for a list that is not an array of text; no server is accepted then.
    std::vector<std::string> pins{};
    bool isArrayOfText = false;
    /// The faults of the list, each as a clause, such as "entry 2 is not base64".
    std::vector<std::string> faults{};
};

/// The pins in a property list, whose root must be an array of text.
PinList pinListIn(const platform::PropertyValue& root);

/// Whether the host pins its servers. The presence of the list alone decides: with an unreadable or empty list, no
/// server is accepted.
bool listsPins(const platform::Bundle& bundle);

/// Whether requests may go to pinned servers only: the host lists pins, or its deployment requires them.
bool pinsAreInForce(const platform::Bundle& bundle);

PinList readPinList(const platform::Bundle& bundle);

/// Whether a certificate of the chain is pinned. The list is read again for each certificate.
bool isPinned(const platform::Trust& trust, const platform::Bundle& bundle, const std::vector<platform::Data>& chain);

/// The log text for a mismatch: the pins of the chain, the pins of the list, and the remedy.
std::string mismatchReport(const platform::Trust& trust, const platform::Bundle& bundle,
                           const platform::ServerTrust& server);

/// The faults of the server's leaf certificate that a pin overrides, in words that follow "its certificate"; absent
/// without a fault.
std::optional<std::string> leafRemark(const platform::Trust& trust, const platform::ServerTrust& server,
                                      std::chrono::sys_seconds now);

/// When the certificates of an environment's identity service expire.
struct CertificateDates {
    std::chrono::year_month_day leaf;
    std::chrono::year_month_day intermediate;
};

/// The dates of an environment; absent where none are known.
std::optional<CertificateDates> certificateDatesOf(SDKEnv environment);

/// A date as the identity service reads it, such as 03/29/2031.
std::string monthDayYear(std::chrono::year_month_day date);

/// Whole days from `now` until `date` begins; negative once it is past.
long daysUntil(std::chrono::year_month_day date, std::chrono::system_clock::time_point now);

} // namespace kivo
