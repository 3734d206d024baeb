#pragma once

#include <kivo/reader/Card.hpp>

#include <winscard.h>

#include <optional>
#include <string>
#include <vector>

namespace kivo::reader {

/// A session with the smart card service.
class ServiceSession {
public:
    ServiceSession();
    ServiceSession(const ServiceSession&) = delete;
    ServiceSession& operator=(const ServiceSession&) = delete;
    ~ServiceSession();

    bool isOpen() const { return isOpen_; }

    SCARDCONTEXT context() const { return context_; }

    /// The names of the readers, at most 64; absent where the service has gone.
    std::optional<std::vector<std::string>> readers() const;

private:
    SCARDCONTEXT context_ = 0;
    bool isOpen_;
};

/// A connection to the card on a reader, in a session of its own. All calls on one thread.
class ServiceConnection {
public:
    explicit ServiceConnection(const std::string& reader);
    ServiceConnection(const ServiceConnection&) = delete;
    ServiceConnection& operator=(const ServiceConnection&) = delete;
    ~ServiceConnection();

    /// What the service has said to the attempt to connect.
    LONG result() const { return result_; }

    /// Of the answer to reset.
    const Bytes& historicalBytes() const { return historicalBytes_; }

    bool carriesLongMessages() const { return protocol_ != SCARD_PROTOCOL_T0; }

    std::expected<Bytes, CardError> transmit(Bytes command);

private:
    LONG connectShared(const std::string& reader, DWORD protocols);
    Bytes readHistoricalBytes() const;

    ServiceSession session_{};
    SCARDHANDLE card_ = 0;
    DWORD protocol_ = 0;
    LONG result_ = SCARD_E_NO_SERVICE;
    Bytes historicalBytes_{};
    Bytes buffer_{};
};

} // namespace kivo::reader
