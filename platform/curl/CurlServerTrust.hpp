#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <openssl/ssl.h>

#include <atomic>
#include <functional>
#include <memory>

namespace kivo::platform {

/// The question to a delegate whether one server can be trusted, and its answer, which counts once.
class TrustChallenge {
public:
    enum class Verdict { open, accepted, refused };

    /// `answered` is called with the verdict in place, on the thread that answers.
    explicit TrustChallenge(std::function<void()> answered);

    Verdict verdict() const { return verdict_; }

    void answer(Verdict verdict);

    /// The handler for the delegate. When it is dropped uncalled, the server is refused.
    static std::function<void(AuthChallengeDisposition)> handlerFor(std::shared_ptr<TrustChallenge> challenge);

private:
    std::atomic<Verdict> verdict_{Verdict::open};
    const std::function<void()> answered_;
};

/// Decides about a server's chain, as `ServerTrust` describes it. The handshake waits for the decision, and with the
/// handshake everything else on its thread: a judge who cannot decide yet refuses, and is asked again in a later
/// handshake.
class TrustJudge {
public:
    virtual bool accepts(std::vector<Data> chain) = 0;

protected:
    ~TrustJudge() = default;
};

/// Puts the connections made from `context` under `judge`, which must outlive their handshakes.
void letJudge(SSL_CTX* context, TrustJudge& judge);

} // namespace kivo::platform
