#include "Keys.hpp"

#include "NetworkManager/PublicKeyPins.hpp"
#include "platform/openssl/OpenSslObjects.hpp"
#include "platform/openssl/OpenSslTrust.hpp"
#include "platform/posix/Files.hpp"

#include <kivo/platform/Services.hpp>

#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/store.h>
#include <openssl/ui.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <future>
#include <memory>

namespace pins {
namespace {

namespace fs = std::filesystem;
namespace platform = kivo::platform;
using Keys = std::expected<std::vector<PublicKey>, std::string>;
using platform::OpenSslFree;
using Entry = std::unique_ptr<OSSL_STORE_INFO, OpenSslFree<OSSL_STORE_INFO_free>>;

constexpr std::chrono::seconds patience{20};

const platform::Trust& trust() {
    static const auto linuxTrust = platform::makeOpenSslTrust();
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
    // Text beyond ASCII is printed, and control characters are escaped: a stranger made the certificate.
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

PublicKey describe(const EVP_PKEY& key) {
    const auto form = platform::externalForm(key);
    const auto info =
        platform::derOf(&key, [](const EVP_PKEY* each, unsigned char** end) { return i2d_PUBKEY(each, end); });
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
    if (const auto validity = trust().validity(platform::derOf(&certificate, i2d_X509), "")) {
        description.expires = validity->notAfter;
    }
    return description;
}

std::vector<PublicKey> keysIn(const std::string& bytes) {
    std::vector<PublicKey> keys;
    const std::unique_ptr<BIO, OpenSslFree<BIO_free>> memory{
        BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size()))};
    const std::unique_ptr<OSSL_STORE_CTX, OpenSslFree<OSSL_STORE_close>> store{
        OSSL_STORE_attach(memory.get(), "file", nullptr, nullptr, UI_null(), nullptr, nullptr, nullptr, nullptr)};
    while (store && OSSL_STORE_eof(store.get()) == 0) {
        const Entry entry{OSSL_STORE_load(store.get())};
        if (!entry) {
            continue;
        }
        switch (OSSL_STORE_INFO_get_type(entry.get())) {
        case OSSL_STORE_INFO_CERT:
            keys.push_back(describe(*OSSL_STORE_INFO_get0_CERT(entry.get())));
            break;
        case OSSL_STORE_INFO_PUBKEY:
            keys.push_back(describe(*OSSL_STORE_INFO_get0_PUBKEY(entry.get())));
            break;
        case OSSL_STORE_INFO_PKEY:
            keys.push_back(describe(*OSSL_STORE_INFO_get0_PKEY(entry.get())));
            break;
        default:
            break;
        }
    }
    ERR_clear_error();
    return keys;
}

Keys keysOfFile(const std::string& path) {
    const auto bytes = platform::readFile(path);
    if (!bytes || !*bytes) {
        return std::unexpected{path + " " + (bytes ? "does not exist" : bytes.error())};
    }
    auto keys = keysIn(**bytes);
    if (!keys.empty()) {
        return keys;
    }
    if ((*bytes)->contains("ENCRYPTED")) {
        return std::unexpected{path + " is encrypted; give the certificate or the public key, which has the same pin"};
    }
    return std::unexpected{path + " holds neither a certificate nor a key, in PEM or DER form"};
}

/// Stores a server's chain, and ends the connection before a request is sent.
class ChainReader final : public platform::UrlSessionDelegate {
public:
    void didReceiveChallenge(const platform::ServerTrust* serverTrust,
                             std::function<void(platform::AuthChallengeDisposition)> completionHandler) override {
        if (serverTrust != nullptr) {
            chain = serverTrust->chain;
        }
        completionHandler(platform::AuthChallengeDisposition::cancelAuthenticationChallenge);
    }

    bool judgesServerTrust() const override { return true; }

    void didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>& /*task*/, std::uint64_t /*sent*/,
                         std::uint64_t /*expected*/) override {}

    std::vector<platform::Data> chain;
};

Keys keysOfServer(const std::string& server) {
    const auto reader = std::make_shared<ChainReader>();
    const auto session = platform::services().urlSessions->make({}, reader);
    std::promise<std::string> ended;
    session->dataTask({.url = "https://" + server + "/", .timeout = patience}, [&](platform::UrlOutcome outcome) {
        ended.set_value(outcome ? "The server showed no certificate" : outcome.error().text);
    });
    const auto problem = ended.get_future().get();
    if (reader->chain.empty()) {
        return std::unexpected{"there is no file \"" + server + "\", and no server: " + problem};
    }
    std::vector<PublicKey> keys;
    for (const auto& der : reader->chain) {
        if (const auto certificate = platform::certificateIn(der)) {
            keys.push_back(describe(*certificate));
        }
    }
    if (!keys.empty()) {
        // The first certificate is the server's own, also where it claims to be an authority.
        keys.front().kind = "leaf";
    }
    return keys;
}

/// The host of an address such as "https://host/path"; a source without a scheme as it is.
std::string serverIn(std::string source) {
    constexpr std::string_view scheme = "https://";
    if (source.starts_with(scheme)) {
        source.erase(0, scheme.size());
        source.erase(std::min(source.find('/'), source.size()));
    }
    return source;
}

} // namespace

Keys keysOf(const std::string& source) {
    std::error_code ignored;
    if (fs::exists(source, ignored)) {
        return keysOfFile(source);
    }
    const auto server = serverIn(source);
    if (server.contains('/')) {
        return std::unexpected{"there is no file \"" + source + "\""};
    }
    return keysOfServer(server);
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
