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

/// Why a text can be nobody's pin, in words that follow its name; absent when it can.
std::optional<std::string> pinFault(std::string_view text);

/// The pins a host allows, as its list says at the moment of reading.
struct PinList {
    /// Empty also for what is no array of text: then no server is the right one.
    std::vector<std::string> pins{};
    bool isArrayOfText = false;
    /// What is wrong with the list, each a clause of its own, such as "entry 2 is not base64".
    std::vector<std::string> faults{};
};

/// The list in a property list: its root is an array of text, or it lists nothing.
PinList pinListIn(const platform::PropertyValue& root);

/// Whether the host pins its servers. The list's presence alone decides: one that is unreadable or empty pins too, and
/// lets nobody through.
bool listsPins(const platform::Bundle& bundle);

/// Whether requests may go to pinned servers only: the host lists pins, or its deployment requires them.
bool pinsAreInForce(const platform::Bundle& bundle);

PinList readPinList(const platform::Bundle& bundle);

/// Whether a certificate of the chain is pinned. The list is read again for each.
bool isPinned(const platform::Trust& trust, const platform::Bundle& bundle, const std::vector<platform::Data>& chain);

/// For whoever has to mend a mismatch: the chain's pins beside those of the list, and what to do about it.
std::string mismatchReport(const platform::Trust& trust, const platform::Bundle& bundle,
                           const platform::ServerTrust& server);

/// What an evaluation would hold against the server's leaf, in words that follow "its certificate"; absent when there
/// is nothing.
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
