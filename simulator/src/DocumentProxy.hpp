#pragma once

#include "DocumentKey.hpp"
#include "ProtocolRequest.hpp"
#include "passport/DocumentCheck.hpp"

#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// The key with which every session lets a document reader in.
inline constexpr std::string_view sessionAccessKey = "simulated-access-key";

/// The document proxy of every session: takes the documents that a reader has read, checks them, and remembers the
/// reading sessions. Callable from any thread; throws a `Violation` where a request breaks the protocol.
class DocumentProxy {
public:
    explicit DocumentProxy(const IdentityServiceConfiguration& configuration);

    /// The key for which a reader encrypts documents, as sessions hand it out; empty where it is to encrypt none.
    const std::string& encryptKey() const { return key_.text(); }

    /// Judges a document and answers with the name of its reading session.
    std::string receive(const std::string& session, const ServiceRequest& request);

    /// Judges the notice that a reading belongs to the session with this transaction identifier.
    void requireNotice(const std::string& session, const std::string& tid, const nlohmann::ordered_json& notice) const;

private:
    /// The readings of a session: how many there were, and the names of the last.
    struct Readings {
        std::size_t count = 0;
        std::deque<std::string> names{};
    };

    nlohmann::ordered_json documentIn(const nlohmann::ordered_json& request) const;

    const DocumentKey key_;
    const chip::DocumentCheck check_;
    mutable std::mutex mutex_;
    /// By the name of the session in which they were made.
    std::map<std::string, Readings> readings_;
};

} // namespace kivo::simulator
