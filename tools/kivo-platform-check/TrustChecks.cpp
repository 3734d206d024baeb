#include "Certificates.hpp"
#include "Trial.hpp"

namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using simulator::CertificateAuthority;
using simulator::KeyType;

void digestsAndEncodes(Trial& trial) {
    const auto services = trial.services();
    auto& trust = required(services.trust);
    trial.expectEqual("bytes of a digest", trust.sha256("").size(), 32U);
    trial.expectEqual("the digest of abc", trust.base64(trust.sha256("abc")),
                      "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=");
    trial.expectEqual("base64 of nothing", trust.base64(""), "");
    trial.expectEqual("base64 of a zero", trust.base64(std::string_view{"\0", 1}), "AA==");
    trial.expectEqual("base64 of a long text", trust.base64(std::string(90, 'a')).find('\n'), std::string::npos);
}

void exportsKeys(Trial& trial) {
    const auto services = trial.services();
    auto& trust = required(services.trust);
    const CertificateAuthority authority;
    const auto keyOf = [&](KeyType type) {
        const auto certificate = derOf(authority.issue({.keyType = type}).chain);
        auto key = trust.externalPublicKey(certificate).value_or("");
        trial.expect(!key.empty() && certificate.find(key) != std::string::npos,
                     "a key that stands in its certificate, came " + std::to_string(key.size()) + " bytes");
        return key;
    };
    // A sequence of modulus and exponent 65537.
    const auto rsa = keyOf(KeyType::rsa2048);
    trial.expectEqual("bytes of an RSA key", rsa.size(), 270U);
    trial.expect(rsa.starts_with(std::string_view{"\x30\x82\x01\x0A\x02\x82\x01\x01\x00", 9}), "an RSAPublicKey");
    trial.expect(rsa.ends_with(std::string_view{"\x02\x03\x01\x00\x01", 5}), "the exponent at its end");
    const auto point = keyOf(KeyType::ec256);
    trial.expectEqual("bytes of a point", point.size(), 65U);
    trial.expect(point.starts_with('\x04'), "an uncompressed point");
    for (const auto* text : {"", "no certificate"}) {
        trial.expect(!trust.externalPublicKey(text), "no key for " + shown(std::string_view{text}));
    }
}

void knowsHostsAndTimes(Trial& trial) {
    const auto services = trial.services();
    auto& trust = required(services.trust);
    const CertificateAuthority authority;
    const auto certificate =
        derOf(authority.issue({.names = {"a.example", "*.b.example", "127.0.0.1"}, .keyType = KeyType::ec256}).chain);
    const std::pair<const char*, bool> hosts[] = {{"a.example", true},      {"A.EXAMPLE", true}, {"x.b.example", true},
                                                  {"b.example", false},     {"127.0.0.1", true}, {"127.0.0.2", false},
                                                  {"x.y.b.example", false}, {"", false}};
    for (const auto& [host, isNamed] : hosts) {
        const auto validity = trust.validity(certificate, host);
        trial.expect(validity.has_value(), "a validity");
        trial.expectEqual("namesHost of " + shown(std::string_view{host}), validity && validity->namesHost, isNamed);
    }
    const auto now = std::chrono::system_clock::now();
    const auto fresh = trust.validity(certificate, "a.example");
    trial.expect(fresh && fresh->notBefore <= now && now < fresh->notAfter, "a time that has begun and not ended");
    const auto old = trust.validity(
        derOf(authority.issue({.keyType = KeyType::ec256, .flaw = simulator::CertificateFlaw::expired}).chain), "");
    trial.expect(old && old->notBefore < old->notAfter && old->notAfter < now, "a time that has ended");
    trial.expect(!trust.validity("no certificate", "a.example"), "no validity without a certificate");
}

} // namespace

Checks trustChecks() {
    const auto* const seam = "Trust";
    return {
        {seam, "digests with SHA-256 and encodes with base64", digestsAndEncodes},
        {seam, "gives keys in their external form", exportsKeys},
        {seam, "tells whom a certificate names and how long it is valid", knowsHostsAndTimes},
    };
}

} // namespace kivo::check
