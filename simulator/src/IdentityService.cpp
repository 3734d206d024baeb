#include "Faults.hpp"
#include "LoopbackServer.hpp"
#include "RequestLog.hpp"
#include "ServerCertificates.hpp"
#include "SessionProtocol.hpp"
#include "TlsConnections.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <httplib.h>

#include <limits>
#include <thread>

namespace kivo::simulator {
namespace {

constexpr std::size_t threads = 48;

std::vector<std::pair<std::string, std::string>> headersOf(const httplib::Request& request) {
    std::vector<std::pair<std::string, std::string>> headers;
    for (const auto& [name, value] : request.headers) {
        // The HTTP library adds headers about the peer that the client did not send.
        if (!name.starts_with("REMOTE_") && !name.starts_with("LOCAL_")) {
            headers.emplace_back(name, value);
        }
    }
    return headers;
}

} // namespace

class IdentityService::Server {
public:
    explicit Server(const IdentityServiceConfiguration& configuration)
        : hostPerEndpoint_{configuration.hostPerEndpoint}
        , certificates_{configuration.keyType}
        , protocol_{configuration, [this](Endpoint endpoint) { return base(endpoint); }}
        , log_{configuration.mostRequests}
        , http_{[this](SSL_CTX& context) { return prepare(context); }} {
        http_.new_task_queue = [] { return new httplib::ThreadPool(threads); };
        http_.set_tcp_nodelay(true);
        http_.set_keep_alive_max_count(std::numeric_limits<std::size_t>::max());
        http_.set_keep_alive_timeout(3600);
        // A client on a busy machine or in a debugger is slow in the middle of a handshake or a body.
        http_.set_read_timeout(std::chrono::minutes{1});
        http_.set_payload_max_length(largestRequest);
        const auto handle = [this](const httplib::Request& request, httplib::Response& response,
                                   const httplib::ContentReader& reader) {
            // The heads of chunks and of TLS records come on top of a body.
            TlsConnections::allow(largestRequest + largestRequest / 8);
            serve(request, response, reader);
            TlsConnections::allow(TlsConnections::mostOfHead);
        };
        const auto handleWithoutBody = [handle](const httplib::Request& request, httplib::Response& response) {
            const auto nothing = [](const auto&...) { return true; };
            handle(request, response, {nothing, nothing});
        };
        constexpr auto anywhere = ".*";
        http_.Post(anywhere, handle).Put(anywhere, handle).Delete(anywhere, handle).Get(anywhere, handleWithoutBody);
        port_ = bindToLoopback(http_, configuration.port);
        thread_ = startAnswering(http_);
    }

    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    ~Server() {
        connections_.stop();
        http_.stop();
        // A connection that was accepted in the meantime would wait for its client.
        connections_.closeAll();
        thread_.join();
    }

    std::string base(Endpoint endpoint) const {
        const auto host = hostPerEndpoint_ ? std::string{name(endpoint)} + ".localhost" : "localhost";
        return "https://" + host + ":" + std::to_string(port_);
    }

    void inject(Endpoint endpoint, Fault fault, Calls calls) {
        const bool concernsConnections = fault.kind() == Fault::Kind::certificate;
        faults_.add(endpoint, std::move(fault), calls);
        if (concernsConnections) {
            connections_.closeAll();
        }
    }

    void clearFaults(std::optional<Endpoint> endpoint) {
        if (faults_.clear(endpoint)) {
            connections_.closeAll();
        }
    }

    std::vector<PendingFault> pendingFaults() const { return faults_.pending(); }

    RequestLog& log() { return log_; }

    SessionProtocol& protocol() { return protocol_; }

    const ServerCertificates& certificates() const { return certificates_; }

    CertificatePins pins() { return certificates_.withFlaw(CertificateFlaw::none).pins; }

    int port() const { return port_; }

    std::size_t handshakes() const { return connections_.handshakes(); }

private:
    bool prepare(SSL_CTX& context) {
        connections_.follow(&context);
        certificates_.use(&context, [this](std::string_view host) { return faults_.nextFlaw(endpointOf(host)); });
        return true;
    }

    std::optional<Endpoint> endpointOf(std::string_view host) const {
        if (!hostPerEndpoint_) {
            return std::nullopt;
        }
        for (const auto endpoint : allEndpoints) {
            if (host.substr(0, host.find('.')) == name(endpoint)) {
                return endpoint;
            }
        }
        return Endpoint::join;
    }

    void serve(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& reader) {
        const auto receivedAt = std::chrono::system_clock::now();
        const auto address = addressOf(request.path);
        const auto fault = address ? faults_.next(address->endpoint) : std::nullopt;
        auto body = readBody(fault, connections_, request, reader);
        if (!body) {
            return;
        }
        if (!address) {
            log_.add(StrayRequest{.method = request.method, .path = request.path, .receivedAt = receivedAt});
            response.status = 404;
            return;
        }
        if (fault && fault->kind() == Fault::Kind::delay && !connections_.wait(fault->time())) {
            return;
        }
        RecordedRequest record{.endpoint = address->endpoint,
                               .method = request.method,
                               .path = request.path,
                               .headers = headersOf(request),
                               .body = std::move(*body),
                               .answer = {},
                               .violation = {},
                               .connection = TlsConnections::currentNumber(),
                               .session = address->session,
                               .receivedAt = receivedAt,
                               .fault = fault};
        const auto finish = answerInstead(fault, connections_, record, response);
        if (!finish) {
            auto reply = replyTo(*address, request, record.body, fault);
            response.status = record.status = reply.status;
            record.answer = std::move(reply.body);
            record.violation = std::move(reply.violation);
            if (!reply.session.empty()) {
                record.session = std::move(reply.session);
            }
            setBody(fault, connections_, record.answer, response);
        }
        log_.add(std::move(record));
        if (finish) {
            finish();
        }
    }

    Reply replyTo(const Address& address, const httplib::Request& request, std::string_view body,
                  const std::optional<Fault>& fault) {
        const auto header = [&](const char* name) { return request.get_header_value(name); };
        const auto contentType = header("Content-Type");
        const auto accessKey = header("X-Access-Key");
        const auto deviceKey = header("X-Device-Key");
        const auto userAgent = header("User-Agent");
        const auto vendorUserAgent = header("X-User-Agent");
        const bool wantsAnother = fault && fault->kind() == Fault::Kind::anotherScan;
        return protocol_.answer(address,
                                {.method = request.method,
                                 .contentType = contentType,
                                 .accessKey = accessKey,
                                 .deviceKey = deviceKey,
                                 .userAgent = userAgent,
                                 .vendorUserAgent = vendorUserAgent,
                                 .body = body},
                                wantsAnother ? scanAgainBlob : scanAcceptedBlob);
    }

    const bool hostPerEndpoint_;
    TlsConnections connections_;
    FaultPlan faults_;
    ServerCertificates certificates_;
    SessionProtocol protocol_;
    RequestLog log_;
    httplib::SSLServer http_;
    int port_ = 0;
    std::thread thread_;
};

IdentityService::IdentityService(IdentityServiceConfiguration configuration)
    : server_{std::make_unique<Server>(configuration)} {}

IdentityService::~IdentityService() = default;

std::string IdentityService::joinPage() const {
    return server_->base(Endpoint::join) + std::string{joinPath};
}

std::filesystem::path IdentityService::trustedCertificates() const {
    return server_->certificates().trustFile();
}

CertificatePins IdentityService::pins() const {
    return server_->pins();
}

int IdentityService::port() const {
    return server_->port();
}

void IdentityService::inject(Endpoint endpoint, Fault fault, Calls calls) {
    server_->inject(endpoint, std::move(fault), calls);
}

void IdentityService::clearFaults() {
    server_->clearFaults(std::nullopt);
}

void IdentityService::clearFaults(Endpoint endpoint) {
    server_->clearFaults(endpoint);
}

std::vector<PendingFault> IdentityService::pendingFaults() const {
    return server_->pendingFaults();
}

std::vector<RecordedRequest> IdentityService::requests() const {
    return server_->log().requests();
}

bool IdentityService::waitForRequests(std::size_t count, std::chrono::milliseconds limit) const {
    return server_->log().wait(count, limit);
}

std::vector<std::string> IdentityService::violations() const {
    return server_->log().violations();
}

void IdentityService::onRequest(std::function<void(const RecordedRequest&)> listener) {
    server_->log().onRequest(std::move(listener));
}

void IdentityService::onStray(std::function<void(const StrayRequest&)> listener) {
    server_->log().onStray(std::move(listener));
}

std::vector<std::string> IdentityService::activationCodes() const {
    return server_->protocol().activationCodes();
}

void IdentityService::setActivationCodes(std::vector<std::string> codes) {
    server_->protocol().setActivationCodes(std::move(codes));
}

std::vector<JoinedSession> IdentityService::sessions() const {
    return server_->protocol().sessions();
}

std::size_t IdentityService::connections() const {
    return server_->handshakes();
}

} // namespace kivo::simulator
