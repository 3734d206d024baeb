#include "Sources.hpp"

#include "platform/openssl/OpenSslObjects.hpp"
#include "platform/posix/ReadFile.hpp"

#include <kivo/platform/Services.hpp>

#include <openssl/err.h>
#include <openssl/store.h>
#include <openssl/ui.h>

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

/// Takes a server's chain down and lets nothing else happen.
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
        // Whatever it says of itself, it is what the server speaks with.
        keys.front().kind = "leaf";
    }
    return keys;
}

/// An address in the place of a server is meant well: what counts of it is the host.
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

} // namespace pins
