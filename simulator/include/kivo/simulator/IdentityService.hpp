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
/// document reading; `biodata` is the document proxy, to which a vendor sends the documents that it has read.
enum class Endpoint { join, update, status, commit, upload, facemap, idScan, biodata };

inline constexpr std::array allEndpoints{Endpoint::join,   Endpoint::update,  Endpoint::status, Endpoint::commit,
                                         Endpoint::upload, Endpoint::facemap, Endpoint::idScan, Endpoint::biodata};

/// The enumerator's name.
std::string_view name(Endpoint endpoint);

/// The set-up of a simulated identity service.
struct IdentityServiceConfiguration {
    /// The activation codes that may join, any number of times.
    std::vector<std::string> activationCodes{"123456"};
    /// The host's key, which must follow the version prefix of a device code. Absent: every key is accepted.
    std::optional<std::string> deviceKey;
    /// The attempts that a session allows. Absent: the answer to a join names no limit. Screens then allow any number
    /// of attempts, but the SDK refuses every upload.
    std::optional<int> retryLimit;
    /// Whether sessions offer the list of documents.
    bool documentList = true;
    /// Gives every endpoint a host name of its own (update.localhost), so that a certificate fault meets that endpoint
    /// alone.
    bool hostPerEndpoint = false;
    /// The key of the server's certificate.
    KeyType keyType = KeyType::rsa2048;
};

/// A request as it was received, and its answer.
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
    /// The breach of the protocol, in a sentence that names the member.
    std::optional<std::string> violation;
    /// Requests with the same number came over the same connection.
    std::uint64_t connection = 0;
};

/// A fault that later calls meet.
struct PendingFault {
    Endpoint endpoint;
    Fault fault;
    /// How many calls the fault still meets; absent when the fault stays until it is cleared.
    std::optional<int> callsLeft;
};

/// An identity service on this machine, for tests of an integration: https on the loopback interface, under a
/// certificate authority of its own.
///
/// It joins sessions, remembers them, checks every request against the session protocol, and misbehaves on demand.
/// A request that breaks the protocol is refused with "STATUS_BAD_PROTOCOL" and kept as a violation. All operations
/// may be called from any thread. The process ignores SIGPIPE from the first service on.
class IdentityService {
public:
    /// Starts on a free port. Throws `std::runtime_error` when no port is free: this is a tool for tests.
    explicit IdentityService(IdentityServiceConfiguration configuration = {});
    IdentityService(const IdentityService&) = delete;
    IdentityService& operator=(const IdentityService&) = delete;
    /// Stops at once, also with requests under way.
    ~IdentityService();

    /// The address to install as a join page.
    std::string joinPage() const;

    /// The certificate authority's root, in a PEM file that is removed with the service.
    std::filesystem::path trustedCertificates() const;

    /// The pins of the sound certificate, to write into a host's list of pins. A flawed certificate has another key. An
    /// expired certificate, and the one for another host, have the same intermediate.
    CertificatePins pins() const;

    int port() const;

    /// Makes an endpoint misbehave. Where several faults meet a call, the last one injected counts.
    ///
    /// A certificate fault meets connections, not calls. Unless `hostPerEndpoint` is set, the fault meets connections
    /// to any endpoint. Injecting or clearing a certificate fault closes all open connections, so that the next call
    /// opens a connection.
    void inject(Endpoint endpoint, Fault fault, Calls calls = Calls::all());
    void clearFaults();

    /// The injected faults that are not used up, in the order of their injection.
    std::vector<PendingFault> pendingFaults() const;

    /// Every request to an endpoint so far, in order. A request is recorded before its answer is sent.
    std::vector<RecordedRequest> requests() const;

    /// Waits until the service has recorded that many requests in all; false when `limit` passes first.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds limit) const;

    /// The violations of all requests that broke the protocol, and a sentence for each request that went to no endpoint
    /// and was answered with 404.
    std::vector<std::string> violations() const;

    /// Sets the function that is called with every recorded request, on the connection's thread; null for none.
    void onRequest(std::function<void(const RecordedRequest&)> listener);

    /// The number of connections that completed their TLS handshake.
    std::size_t connections() const;

private:
    class Server;

    std::unique_ptr<Server> server_;
};

} // namespace kivo::simulator
