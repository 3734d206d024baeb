#include "PublicKey.hpp"

#include "NetworkManager/PublicKeyPins.hpp"
#include "platform/openssl/OpenSslObjects.hpp"
#include "platform/openssl/OpenSslTrust.hpp"

#include <openssl/core_names.h>
#include <openssl/x509v3.h>

#include <array>
#include <cstdio>
#include <memory>

namespace pins {
namespace {

using kivo::platform::OpenSslFree;

const kivo::platform::Trust& trust() {
    static const auto linuxTrust = kivo::platform::makeOpenSslTrust();
    return *linuxTrust;
}

std::string typeOf(const EVP_PKEY& key) {
    std::array<char, 64> curve{};
    if (EVP_PKEY_is_a(&key, "RSA") == 1) {
        return "RSA " + std::to_string(EVP_PKEY_get_bits(&key));
    }
    if (EVP_PKEY_is_a(&key, "EC") == 1 &&
        EVP_PKEY_get_utf8_string_param(&key, OSSL_PKEY_PARAM_GROUP_NAME, curve.data(), curve.size(), nullptr) == 1) {
        return std::string{"EC "} + curve.data();
    }
    const char* name = EVP_PKEY_get0_type_name(&key);
    return name != nullptr ? name : "unknown";
}

std::string subjectOf(const X509& certificate) {
    const std::unique_ptr<BIO, OpenSslFree<BIO_free>> memory{BIO_new(BIO_s_mem())};
    // Text beyond ASCII stays as it is; control characters, which a stranger's certificate may hold, do not.
    X509_NAME_print_ex(memory.get(), X509_get_subject_name(&certificate), 0, XN_FLAG_ONELINE & ~ASN1_STRFLGS_ESC_MSB);
    char* text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    return size > 0 ? std::string{text, static_cast<std::size_t>(size)} : "(no subject)";
}

std::string kindOf(X509& certificate) {
    if (X509_check_ca(&certificate) != 1) {
        return "leaf";
    }
    const bool namesItself =
        X509_NAME_cmp(X509_get_subject_name(&certificate), X509_get_issuer_name(&certificate)) == 0;
    return namesItself ? "root" : "intermediate";
}

std::string dateOf(std::chrono::sys_seconds time) {
    const std::chrono::year_month_day date{std::chrono::floor<std::chrono::days>(time)};
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text.data();
}

std::string fromNow(std::chrono::sys_seconds time, std::chrono::sys_seconds now) {
    const auto days = std::chrono::floor<std::chrono::days>(time - now).count();
    if (days == 0) {
        return "within a day";
    }
    return days < 0 ? "it HAS EXPIRED" : "in " + std::to_string(days) + (days == 1 ? " day" : " days");
}

} // namespace

PublicKey describe(const EVP_PKEY& key) {
    const auto form = kivo::platform::externalForm(key);
    const auto info =
        kivo::platform::derOf(&key, [](const EVP_PKEY* each, unsigned char** end) { return i2d_PUBKEY(each, end); });
    return {.kind = "key",
            .type = typeOf(key),
            .pin = form ? std::optional{kivo::publicKeyPin(trust(), *form)} : std::nullopt,
            .standardPin = trust().base64(trust().sha256(info))};
}

PublicKey describe(X509& certificate) {
    const auto* const key = X509_get0_pubkey(&certificate);
    auto description = key != nullptr ? describe(*key) : PublicKey{.kind = "", .type = "unreadable"};
    description.kind = kindOf(certificate);
    description.subject = subjectOf(certificate);
    if (const auto validity = trust().validity(kivo::platform::derOf(&certificate, i2d_X509), "")) {
        description.expires = validity->notAfter;
    }
    return description;
}

std::string text(const PublicKey& key, std::chrono::sys_seconds now) {
    auto lines = "  " + key.kind + (key.subject.empty() ? " without a certificate" : "  " + key.subject) + "\n";
    const auto add = [&](const std::string& name, const std::string& value) {
        lines.append("    ").append(name).append(10 - name.size(), ' ').append(value).append("\n");
    };
    if (key.expires) {
        add("expires", dateOf(*key.expires) + " (" + fromNow(*key.expires, now) + ")");
    }
    add("type", key.type);
    if (!key.pin) {
        add("pin", "none: the SDK pins RSA keys and keys on a curve (EC) only");
        return lines;
    }
    add("pin", *key.pin);
    if (*key.pin != key.standardPin) {
        add("", "Not the standard pin (SubjectPublicKeyInfo), which the SDK never matches for a key of this type:");
        add("", key.standardPin);
    }
    return lines;
}

} // namespace pins
