#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <openssl/ssl.h>

#include <atomic>
#include <functional>
#include <memory>

namespace kivo::platform {

/// Asks a delegate whether a server can be trusted. Only the first answer counts.
class TrustChallenge {
public:
    enum class Verdict { open, accepted, refused };

    /// `answered` is called on the answering thread, after the verdict is set.
    explicit TrustChallenge(std::function<void()> answered);

    Verdict verdict() const { return verdict_; }

    void answer(Verdict verdict);

    /// The handler for the delegate. A handler that is destroyed uncalled refuses the server.
    static std::function<void(AuthChallengeDisposition)> handlerFor(std::shared_ptr<TrustChallenge> challenge);

private:
    std::atomic<Verdict> verdict_{Verdict::open};
    const std::function<void()> answered_;
};

/// Decides about a server's chain, as `ServerTrust` describes the chain. The handshake waits for the decision, and so
/// does everything else on the thread. A judge that cannot decide yet refuses, and is asked again in a later handshake.
class TrustJudge {
public:
    virtual bool accepts(std::vector<Data> chain) = 0;

protected:
    ~TrustJudge() = default;
};

/// Makes `judge` decide about the connections made from `context`. The judge must outlive their handshakes.
void letJudge(SSL_CTX* context, TrustJudge& judge);

} // namespace kivo::platform
