#pragma once

#include "platform/json/Json.hpp"

#include <kivo/platform/UrlSession.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo {

/// A member of a scan's body; left out without a text.
struct ScanMember {
    std::string_view name;
    const std::string* text;
};

/// The first picture of a list; null when there is none.
inline const std::string* firstOf(const std::vector<std::string>& pictures) {
    return pictures.empty() ? nullptr : &pictures.front();
}

/// The text of an optional text; null when absent.
inline const std::string* textOf(const std::optional<std::string>& text) {
    return text ? &*text : nullptr;
}

/// The JSON object with these members, written once into the bytes that travel: a scan may be many megabytes.
platform::Data scanBody(std::initializer_list<ScanMember> members);

/// The user agent that the vendor's server expects: the vendor's name for this application and a session.
std::string scanUserAgent(const std::optional<std::string>& sessionId);

/// The request that takes a body to the vendor's server, under the session's device key.
platform::UrlRequest scanRequest(std::string url, const std::string& userAgent, platform::Data body);

/// The answer of the vendor's server to a scan.
struct ScanAnswer {
    bool isAccepted = false;
    /// For the vendor's library; empty when the server sent none.
    std::string scanResultBlob;

    /// The vendor decides the size of the text for the vendor's library, so an answer may have many megabytes.
    static constexpr json::Limits limits{.bytes = std::size_t{16} << 20};

    /// Absent when the text is no JSON object, or is beyond the limits.
    static std::optional<ScanAnswer> decode(std::string_view text);
};

/// A scan on its way to the vendor's server, over a session of its own.
///
/// Where pins are in force for the identity service, the vendor's server must be pinned as well. Releasing the object
/// cancels the upload; the listener is not called then.
class ScanUpload {
public:
    /// Called on the main queue.
    struct Listener {
        /// Runs after each part, with the share of the bytes sent so far.
        std::function<void(float fraction)> progress;
        /// Runs once.
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
