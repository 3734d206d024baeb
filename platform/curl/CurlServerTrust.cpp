#include "platform/curl/CurlServerTrust.hpp"

#include "platform/openssl/CertificateChain.hpp"
#include "platform/openssl/OpenSslObjects.hpp"

#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include <utility>

namespace kivo::platform {
namespace {

// Owned by all copies of a delegate's handler together.
class TrustAnswer {
public:
    explicit TrustAnswer(std::shared_ptr<TrustChallenge> challenge)
        : challenge_{std::move(challenge)} {}

    TrustAnswer(const TrustAnswer&) = delete;
    TrustAnswer& operator=(const TrustAnswer&) = delete;

    ~TrustAnswer() { challenge_->answer(TrustChallenge::Verdict::refused); }

    void give(AuthChallengeDisposition disposition) const {
        challenge_->answer(disposition == AuthChallengeDisposition::useCredential ? TrustChallenge::Verdict::accepted
                                                                                  : TrustChallenge::Verdict::refused);
    }

private:
    const std::shared_ptr<TrustChallenge> challenge_;
};

// The leaf is the certificate whose key the handshake proves, not merely the first that was presented.
std::vector<Data> chainOf(X509_STORE_CTX* context) {
    std::vector<Data> chain;
    for (auto* const certificate :
         linkedChain(X509_STORE_CTX_get0_cert(context), X509_STORE_CTX_get0_untrusted(context))) {
        chain.push_back(derOf(certificate, i2d_X509));
    }
    return chain;
}

int verify(X509_STORE_CTX* context, void* judge) {
    const bool isAccepted = static_cast<TrustJudge*>(judge)->accepts(chainOf(context));
    X509_STORE_CTX_set_error(context, isAccepted ? X509_V_OK : X509_V_ERR_APPLICATION_VERIFICATION);
    return isAccepted ? 1 : 0;
}

} // namespace

TrustChallenge::TrustChallenge(std::function<void()> answered)
    : answered_{std::move(answered)} {}

void TrustChallenge::answer(Verdict verdict) {
    auto expected = Verdict::open;
    if (verdict_.compare_exchange_strong(expected, verdict)) {
        answered_();
    }
}

std::function<void(AuthChallengeDisposition)> TrustChallenge::handlerFor(std::shared_ptr<TrustChallenge> challenge) {
    return [answer = std::make_shared<const TrustAnswer>(std::move(challenge))](AuthChallengeDisposition disposition) {
        answer->give(disposition);
    };
}

void letJudge(SSL_CTX* context, TrustJudge& judge) {
    // A later handshake on the same connection would ask a judge that may be gone.
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION);
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    SSL_CTX_set_cert_verify_callback(context, &verify, &judge);
}

} // namespace kivo::platform
