#pragma once

#include <kivo/simulator/CertificateAuthority.hpp>
#include <kivo/simulator/Fault.hpp>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo::simulator {

/// The addresses of the identity service, each with its own kind of request. `upload` also takes the notice of a
/// document reading; `biodata` is the document proxy, to which a vendor sends what it has read.
enum class Endpoint { join, update, status, commit, upload, facemap, idScan, biodata };

inline constexpr std::array allEndpoints{Endpoint::join,   Endpoint::update,  Endpoint::status, Endpoint::commit,
                                         Endpoint::upload, Endpoint::facemap, Endpoint::idScan, Endpoint::biodata};

/// The endpoint's name as written above.
std::string_view name(Endpoint endpoint);

/// How a simulated identity service is set up.
struct IdentityServiceConfiguration {
    /// The activation codes that may join, any number of times.
    std::vector<std::string> activationCodes{"123456"};
    /// The host's key, which must follow the version prefix of a device code. Absent: any key will do.
    std::optional<std::string> deviceKey;
    /// The attempts that a session allows. Absent: the join answer has no retry limit; screens then know
    /// none, but the SDK refuses every upload.
    std::optional<int> retryLimit;
    /// Whether sessions offer the list of documents.
    bool documentList = true;
    /// Gives every endpoint a host name of its own (update.localhost), so that a certificate fault meets it alone.
    bool hostPerEndpoint = false;
    /// The key of the server's certificate.
    KeyType keyType = KeyType::rsa2048;
};

/// A request as it came, and what it was answered.
struct RecordedRequest {
    Endpoint endpoint;
    std::string method;
    std::string path;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    /// The answer's body; empty where a fault withheld it.
    std::string answer;
    /// The answer's HTTP status; 0 where a fault withheld it.
    int status = 0;
    /// What broke the protocol, naming the member.
    std::optional<std::string> violation;
    /// Requests with the same number came over the same connection.
    std::uint64_t connection = 0;
};

/// An identity service on this machine, for tests of an integration: https on the loopback interface, under a
/// certificate authority of its own.
///
/// It joins sessions, remembers them, checks every request against the session protocol, and misbehaves on demand.
/// A request that breaks the protocol is refused with "STATUS_BAD_PROTOCOL" and kept as a violation. All operations
/// may be called from any thread. The process ignores SIGPIPE from the first service on.
class IdentityService {
public:
    /// Starts on a free port. Throws `std::runtime_error` when it cannot: this is a tool for tests.
    explicit IdentityService(IdentityServiceConfiguration configuration = {});
    IdentityService(const IdentityService&) = delete;
    IdentityService& operator=(const IdentityService&) = delete;
    /// Stops at once, also with requests under way.
    ~IdentityService();

    /// The address to install as a join page.
    std::string joinPage() const;

    /// The certificate authority's root, as a PEM file that goes with the service.
    std::filesystem::path trustedCertificates() const;

    /// The pins of the sound certificate, to write into a host's list of pins. A flawed certificate has another key,
    /// and all but the self-signed and the untrusted one have the same intermediate.
    CertificatePins pins() const;

    int port() const;

    /// Makes an endpoint misbehave. Of several faults the one injected last is looked at first.
    ///
    /// A certificate fault meets connections, not calls: unless `hostPerEndpoint` is set, every connection made
    /// while it is in force. Connections that are open are closed when one is injected or cleared.
    void inject(Endpoint endpoint, Fault fault, Calls calls = Calls::all());
    void clearFaults();

    /// Every request to an endpoint so far, in order. One is recorded before its answer is sent.
    std::vector<RecordedRequest> requests() const;

    /// Waits until that many requests have come in all; false when `limit` passes first.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds limit) const;

    /// What was wrong with requests that broke the protocol, or went to no endpoint and were answered with 404.
    std::vector<std::string> violations() const;

    /// Has `listener` called with every request, on the connection's thread.
    void onRequest(std::function<void(const RecordedRequest&)> listener);

    /// How many connections completed their TLS handshake.
    std::size_t connections() const;

private:
    class Server;

    std::unique_ptr<Server> server_;
};

} // namespace kivo::simulator
