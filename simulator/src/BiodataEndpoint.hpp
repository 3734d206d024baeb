#pragma once

#include <nlohmann/json_fwd.hpp>

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// The document proxy of every session: takes what the vendor has read, and knows afterwards which reading sessions
/// there were. Callable from any thread; throws a `Violation` where a request breaks the protocol.
class BiodataEndpoint {
public:
    static constexpr std::string_view sessionAccessKey = "simulated-access-key";
    static constexpr std::string_view sessionEncryptKey = "simulated-encrypt-key";

    /// Judges a document and answers it with the name of its reading session.
    std::string receive(const std::string& session, std::string_view accessKey, std::string_view body);

    /// Judges the notice that a reading belongs to the session with this transaction identifier.
    void requireNotice(const std::string& session, const std::string& tid, const nlohmann::ordered_json& notice) const;

private:
    mutable std::mutex mutex_;
    /// The reading sessions by the name of the session they were made for.
    std::map<std::string, std::set<std::string>> readings_;
};

} // namespace kivo::simulator
