#pragma once

#include <openssl/ssl.h>

#include <chrono>
#include <cstddef>

namespace kivo::platform {

/// Watches the turns in which libcurl works on the connections of one engine. Engine's thread.
///
/// libcurl 7.88.1 stays inside a turn as long as a connection brings bytes without a byte of an answer, such as empty
/// frames, acknowledgements and TLS tickets. No time limit counts meanwhile, and no other request goes on. The watch
/// ends a connection that keeps a turn going for a second.
class CurlTurns {
public:
    /// The longest wait for a server's bytes after fruitless turns.
    static constexpr std::chrono::milliseconds rest{10};

    /// Watches the records of a connection. The connection must end before this object.
    void watch(SSL* tls);

    void begin();

    /// Counts an event other than a record as progress.
    void noteProgress() { hasProgress_ = true; }

    /// Whether many turns in a row have come to nothing. libcurl waits for a socket that can be written to even where
    /// the server allows no byte of a body, and such a wait ends at once.
    bool areFruitless() const { return fruitless_ >= mostFruitless; }

private:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr int mostFruitless = 200;
    /// A turn's time is counted in slices, so that a process that is stopped for a while loses a slice at most.
    static constexpr std::chrono::milliseconds slice{20};
    static constexpr int mostSlices = 50;

    void read(SSL* tls);

    bool hasProgress_ = false;
    int fruitless_ = 0;
    /// The connection that was read from last in this turn; null for none.
    const SSL* reading_ = nullptr;
    Time sliceBegin_;
    int slices_ = 0;
};

} // namespace kivo::platform
