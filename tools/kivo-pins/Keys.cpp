#include "Keys.hpp"

#include "NetworkManager/PublicKeyPins.hpp"
#include "Source.hpp"
#include "platform/openssl/OpenSslObjects.hpp"
#include "platform/openssl/OpenSslTrust.hpp"

#include <kivo/platform/Services.hpp>

#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/store.h>
#include <openssl/ui.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <future>
#include <iterator>
#include <memory>
#include <string_view>

namespace pins {
namespace {

namespace platform = kivo::platform;
using platform::OpenSslFree;
using Entry = std::unique_ptr<OSSL_STORE_INFO, OpenSslFree<OSSL_STORE_INFO_free>>;

constexpr std::chrono::seconds patience{20};

constexpr std::string_view pemBegin = "-----BEGIN ";

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

/// A part of a file: a block of a PEM file, or a whole DER file.
struct Part {
    std::vector<PublicKey> keys{};
    bool isKnown = false;
    bool isCutOff = false;
    bool isEncrypted = false;
};

int noPassword(char* /*buffer*/, int /*size*/, int /*forWriting*/, void* wasAsked) {
    *static_cast<bool*>(wasAsked) = true;
    return -1;
}

void add(Part& part, OSSL_STORE_INFO& entry) {
    switch (OSSL_STORE_INFO_get_type(&entry)) {
    case OSSL_STORE_INFO_CERT:
        part.keys.push_back(describe(*OSSL_STORE_INFO_get0_CERT(&entry)));
        break;
    case OSSL_STORE_INFO_PUBKEY:
        part.keys.push_back(describe(*OSSL_STORE_INFO_get0_PUBKEY(&entry)));
        break;
    case OSSL_STORE_INFO_PKEY:
        part.keys.push_back(describe(*OSSL_STORE_INFO_get0_PKEY(&entry)));
        break;
    default:
        break;
    }
}

Part readPart(std::string_view bytes) {
    Part part;
    const std::unique_ptr<UI_METHOD, OpenSslFree<UI_destroy_method>> password{
        UI_UTIL_wrap_read_pem_callback(noPassword, 0)};
    const std::unique_ptr<BIO, OpenSslFree<BIO_free>> memory{
        BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size()))};
    const std::unique_ptr<OSSL_STORE_CTX, OpenSslFree<OSSL_STORE_close>> store{OSSL_STORE_attach(
        memory.get(), "file", nullptr, nullptr, password.get(), &part.isEncrypted, nullptr, nullptr, nullptr)};
    while (store && OSSL_STORE_eof(store.get()) == 0) {
        if (const Entry entry{OSSL_STORE_load(store.get())}) {
            part.isKnown = true;
            add(part, *entry);
        } else if (OSSL_STORE_error(store.get()) != 0) {
            part.isCutOff = part.isKnown && !bytes.starts_with(pemBegin);
            break;
        }
    }
    ERR_clear_error();
    return part;
}

/// The blocks of a PEM file, each with what follows it; bytes without a block as they are.
std::vector<std::string_view> partsOf(std::string_view bytes) {
    std::vector<std::string_view> parts;
    for (auto begin = bytes.find(pemBegin); begin != std::string_view::npos;) {
        const auto next = bytes.find(pemBegin, begin + pemBegin.size());
        parts.push_back(bytes.substr(begin, next - begin));
        begin = next;
    }
    return parts.empty() ? std::vector{bytes} : parts;
}

/// Why nothing was read from the bytes of a part.
std::string reason(const Part& part, std::string_view bytes) {
    if (part.isEncrypted) {
        return "is encrypted; give the certificate or the public key, which has the same pin";
    }
    if (bytes.starts_with(pemBegin) && !bytes.contains("-----END ")) {
        return "is cut off";
    }
    return "is damaged, or neither a certificate nor a key";
}

std::expected<Found, std::string> keysIn(const std::string& bytes, const std::string& name) {
    Found found;
    std::string firstReason;
    const auto parts = partsOf(bytes);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto part = readPart(parts[i]);
        std::ranges::copy(part.keys, std::back_inserter(found.keys));
        if (part.isCutOff) {
            found.leftOut.push_back("left out of " + name + ": the bytes after the last key above");
        }
        if (!part.isKnown) {
            const auto why = reason(part, parts[i]);
            firstReason = firstReason.empty() ? why : firstReason;
            auto& leftOut = found.leftOut.emplace_back("left out of " + name + ": part ");
            leftOut.append(std::to_string(i + 1)).append(" of ").append(std::to_string(parts.size()));
            leftOut.append(" ").append(why);
        }
    }
    if (!found.keys.empty()) {
        return found;
    }
    if (bytes.starts_with(pemBegin) || firstReason.starts_with("is encrypted")) {
        return std::unexpected{name + " " + firstReason};
    }
    return std::unexpected{name + " holds neither a certificate nor a key, in PEM or DER form"};
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

    bool followsUploads() const override { return false; }

    void didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>& /*task*/, std::uint64_t /*sent*/,
                         std::uint64_t /*expected*/) override {}

    std::vector<platform::Data> chain;
};

std::expected<Found, std::string> keysOfServer(const std::string& server) {
    const auto reader = std::make_shared<ChainReader>();
    const auto session = platform::services().urlSessions->make({}, reader);
    std::promise<std::string> ended;
    session->dataTask({.url = "https://" + server + "/", .timeout = patience}, [&](platform::UrlOutcome outcome) {
        ended.set_value(outcome ? "The server showed no certificate" : outcome.error().text);
    });
    const auto problem = ended.get_future().get();
    if (reader->chain.empty()) {
        return std::unexpected{problem};
    }
    Found found;
    for (const auto& der : reader->chain) {
        if (const auto certificate = platform::certificateIn(der)) {
            found.keys.push_back(describe(*certificate));
            // The first certificate is the server's own, also where it claims to be an authority.
            found.keys.back().kind = &der == &reader->chain.front() ? "leaf" : found.keys.back().kind;
        } else {
            found.leftOut.push_back("left out of " + server + ": a certificate of its chain that is damaged");
        }
    }
    return found;
}

} // namespace

std::expected<Found, std::string> keysOf(const std::string& source) {
    const auto bytes = bytesOf(source);
    if (!bytes) {
        return std::unexpected{bytes.error()};
    }
    if (*bytes) {
        return keysIn(**bytes, nameOf(source));
    }
    const auto server = serverIn(source);
    if (!server) {
        return std::unexpected{server.error()};
    }
    auto found = keysOfServer(*server);
    if (!found) {
        const auto noFile = *server == source ? "there is no file \"" + source + "\", and no server" : source;
        return std::unexpected{noFile + ": " + found.error()};
    }
    return found;
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
