#include "platform/curl/CurlUrlSession.hpp"

#include "platform/curl/CurlEngine.hpp"
#include "platform/curl/CurlTransfer.hpp"
#include "platform/posix/ExitGuard.hpp"
#include "platform/posix/ProcessNumber.hpp"

#include <curl/curl.h>
#include <openssl/ssl.h>

#include <cstdlib>
#include <tuple>
#include <utility>

namespace kivo::platform {
namespace {

CurlEngine::Driver driverFor(const CurlSettings& settings) {
    using enum CurlEngine::Driver;
    if (settings.followsUploads) {
        return networkThread;
    }
    return settings.judgesServerTrust ? callbackThreadWhenConnected : callbackThread;
}

/// Room for the largest answer, or none where that is too much for each of many requests.
std::size_t answerBufferFor(const UrlSessionConfiguration& configuration) {
    constexpr std::size_t mostShared = std::size_t{1024} * 1024;
    // libcurl bounds a head at 128 KiB itself.
    constexpr std::size_t headRoom = std::size_t{256} * 1024;
    return configuration.responseLimit <= mostShared ? configuration.responseLimit + headRoom : 0;
}

class CurlUrlSession final : public UrlSession {
public:
    CurlUrlSession(std::shared_ptr<const CurlSettings> settings, std::shared_ptr<DispatchQueue> callbacks)
        : settings_{std::move(settings)}
        , engine_{CurlEngine::start(driverFor(*settings_), std::move(callbacks), settings_->answerBuffer > 0)} {}

    CurlUrlSession(const CurlUrlSession&) = delete;
    CurlUrlSession& operator=(const CurlUrlSession&) = delete;

    ~CurlUrlSession() override {
        if (isOwnProcess()) {
            engine_->stop();
        }
    }

    std::shared_ptr<UrlSessionTask> dataTask(UrlRequest request, UrlCompletion completion) override {
        auto transfer = std::make_shared<CurlTransfer>(std::move(request), std::move(completion), settings_, engine_);
        if (!isOwnProcess()) {
            transfer->findDestination();
            transfer->concludeUnsent(CURLE_FAILED_INIT);
            transfer->deliver();
            return transfer;
        }
        engine_->add(transfer);
        return transfer;
    }

    void forgetCookies() override {
        if (isOwnProcess()) {
            engine_->forgetCookies();
        }
    }

private:
    /// False in a forked child, which has neither the session's threads nor a way to release the locks they held.
    bool isOwnProcess() const { return processNumber() == process_; }

    const std::shared_ptr<const CurlSettings> settings_;
    const std::shared_ptr<CurlEngine> engine_;
    const pid_t process_ = processNumber();
};

void makeLibrariesReady() {
    static const bool areReady = [] {
        OPENSSL_init_ssl(0, nullptr);
        curl_global_init(CURL_GLOBAL_DEFAULT);
        ExitGuard::shared().runAheadOfHandlersSoFar();
        return true;
    }();
    std::ignore = areReady;
}

class CurlUrlSessions final : public UrlSessions {
public:
    explicit CurlUrlSessions(std::string trustFile)
        : trustFile_{std::move(trustFile)} {
        makeLibrariesReady();
    }

    std::shared_ptr<UrlSession> make(UrlSessionConfiguration configuration,
                                     std::shared_ptr<UrlSessionDelegate> delegate,
                                     std::shared_ptr<DispatchQueue> delegateQueue) override {
        const bool judgesServerTrust = delegate && delegate->judgesServerTrust();
        const bool followsUploads = delegate && delegate->followsUploads();
        const auto answerBuffer = answerBufferFor(configuration);
        auto settings = std::make_shared<const CurlSettings>(CurlSettings{.configuration = std::move(configuration),
                                                                          .trustFile = trustFile_,
                                                                          .delegate = std::move(delegate),
                                                                          .judgesServerTrust = judgesServerTrust,
                                                                          .followsUploads = followsUploads,
                                                                          .answerBuffer = answerBuffer});
        return std::make_shared<CurlUrlSession>(std::move(settings), std::move(delegateQueue));
    }

private:
    const std::string trustFile_;
};

} // namespace

std::shared_ptr<UrlSessions> makeCurlUrlSessions(std::filesystem::path trustedCertificates) {
    auto trustFile = trustedCertificates.string();
    if (const char* const named = trustFile.empty() ? std::getenv("SSL_CERT_FILE") : nullptr) {
        trustFile = named;
    }
    return std::make_shared<CurlUrlSessions>(std::move(trustFile));
}

} // namespace kivo::platform
