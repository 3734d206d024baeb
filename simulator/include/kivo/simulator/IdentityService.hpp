#pragma once

#include <kivo/simulator/CertificateAuthority.hpp>
#include <kivo/simulator/CountryAuthority.hpp>
#include <kivo/simulator/Fault.hpp>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
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

/// The key for which sessions ask a document reader to encrypt documents: none, 32 bytes that both sides know, or a
/// certificate with a key of RSA or on a curve.
enum class DocumentEncryption { none, sharedKey, rsaCertificate, curveCertificate };

/// The set-up of a simulated identity service.
struct IdentityServiceConfiguration {
    /// The activation codes that may join, any number of times.
    std::vector<std::string> activationCodes{"123456"};
    /// The host's key, which must follow the version prefix of a device code. Absent: every key is accepted.
    std::optional<std::string> deviceKey;
    /// The attempts that a session allows. Absent: the answer to a join names no limit. Screens then allow any number
    /// of attempts, but the SDK refuses every upload.
    std::optional<int> retryLimit;
    /// The key of the document proxy. `ReadID` encrypts for the shared key only.
    DocumentEncryption documentEncryption = DocumentEncryption::sharedKey;
    /// The states whose documents the document proxy takes; empty for `CountryAuthority{}`.
    std::vector<std::shared_ptr<const CountryAuthority>> countries{};
    /// The time at which the document proxy judges the dates of certificates; null for the machine's clock. Called on
    /// any thread.
    std::function<std::chrono::system_clock::time_point()> wallClock{};
    /// Whether sessions offer the list of documents.
    bool documentList = true;
    /// Gives every endpoint a host name of its own (update.localhost), so that a certificate fault meets that endpoint
    /// alone.
    bool hostPerEndpoint = false;
    /// The key of the server's certificate.
    KeyType keyType = KeyType::rsa2048;
    /// The port to serve on; 0 for a free one.
    int port = 0;
    /// How many requests `requests()` and `violations()` remember; older requests are forgotten. A service that runs
    /// for days needs a bound.
    std::size_t mostRequests = std::numeric_limits<std::size_t>::max();
};

/// A request as it was received, and its answer.
struct RecordedRequest {
    /// The endpoint, and the request as it came.
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
    /// The session's name in the path. Of a join the name of the session that it opened, or empty.
    std::string session{};
    std::chrono::system_clock::time_point receivedAt{};
    /// The fault that met the request. Certificate faults meet connections instead.
    std::optional<Fault> fault{};
};

/// A request that went to no endpoint and was answered with 404.
struct StrayRequest {
    /// The method and the path as they were sent, and when they came.
    std::string method;
    std::string path;
    std::chrono::system_clock::time_point receivedAt;
};

/// A session that a join has opened.
struct JoinedSession {
    /// The name in the addresses of the session, such as "s1".
    std::string name;
    /// The transaction identifier.
    std::string tid;
    /// The interface version that the device code tells, such as "18".
    std::string interfaceVersion;
    std::chrono::system_clock::time_point joinedAt;
};

/// A fault that later calls meet.
struct PendingFault {
    /// The endpoint whose calls meet the fault, and the fault.
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
    /// Throws `std::runtime_error` when the port, or every port, is taken: this is a tool for tests.
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

    /// The port on 127.0.0.1.
    int port() const;

    /// Makes an endpoint misbehave. Where several faults meet a call, the last one injected counts.
    ///
    /// A certificate fault meets connections, not calls. Unless `hostPerEndpoint` is set, the fault meets connections
    /// to any endpoint. Injecting or clearing a certificate fault closes all open connections, so that the next call
    /// opens a connection.
    void inject(Endpoint endpoint, Fault fault, Calls calls = Calls::all());
    /// Forgets every fault that is still to come.
    void clearFaults();
    /// Clears the faults of one endpoint.
    void clearFaults(Endpoint endpoint);

    /// The injected faults that are not used up, in the order of their injection.
    std::vector<PendingFault> pendingFaults() const;

    /// The activation codes that may join.
    std::vector<std::string> activationCodes() const;

    /// Replaces the activation codes for later joins. Sessions that were joined stay.
    void setActivationCodes(std::vector<std::string> codes);

    /// The sessions joined so far, in order. The service forgets the oldest of more than 100000.
    std::vector<JoinedSession> sessions() const;

    /// Every request to an endpoint so far, in order. A request is recorded before its answer is sent.
    std::vector<RecordedRequest> requests() const;

    /// Waits until the service has recorded that many requests in all; false when `limit` passes first.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds limit) const;

    /// The violations of all requests that broke the protocol, and a sentence for each request that went to no endpoint
    /// and was answered with 404.
    std::vector<std::string> violations() const;

    /// Sets the function that is called with every recorded request, on the connection's thread; null for none.
    void onRequest(std::function<void(const RecordedRequest&)> listener);

    /// Sets the function that is called with every request to no endpoint, on the connection's thread; null for none.
    void onStray(std::function<void(const StrayRequest&)> listener);

    /// The number of connections that completed their TLS handshake.
    std::size_t connections() const;

private:
    class Server;

    std::unique_ptr<Server> server_;
};

} // namespace kivo::simulator
