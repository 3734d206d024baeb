#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <functional>
#include <memory>

namespace kivo {

/// A scan on its way to the vendor's server, over a session of its own.
///
/// The server must be a pinned one where the identity service must. Letting the
/// upload go cancels it, and then nobody is told.
class ScanUpload {
public:
    /// Called on the main queue.
    struct Listener {
        /// Bytes sent so far, as a fraction of all.
        std::function<void(float fraction)> progress;
        /// Once.
        std::function<void(platform::UrlOutcome outcome)> completion;
    };

    ScanUpload(platform::UrlRequest request, Listener listener);
    ScanUpload(const ScanUpload&) = delete;
    ScanUpload& operator=(const ScanUpload&) = delete;
    ~ScanUpload();

private:
    class Follower;

    std::shared_ptr<Follower> follower_;
    std::shared_ptr<platform::UrlSession> session_;
};

} // namespace kivo
