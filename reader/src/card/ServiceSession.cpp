#include "card/ServiceSession.hpp"

#include "card/Capabilities.hpp"

namespace kivo::reader {
namespace {

constexpr std::size_t mostReaders = 64;
constexpr DWORD statusSize = 2;

// The protocol sends lengths in one byte only, and gives the answer to a command with data when asked for it.
void fitToT0(Bytes& command) {
    constexpr std::size_t shortest = 5;
    if (command.size() < shortest) {
        command.push_back(0);
    } else if (command.size() == shortest + command[4] + std::size_t{1}) {
        command.pop_back();
    }
}

} // namespace

ServiceSession::ServiceSession()
    : isOpen_{SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context_) == SCARD_S_SUCCESS} {}

ServiceSession::~ServiceSession() {
    if (isOpen_) {
        SCardReleaseContext(context_);
    }
}

std::optional<std::vector<std::string>> ServiceSession::readers() const {
    DWORD size = 0;
    auto result = SCardListReaders(context_, nullptr, nullptr, &size);
    std::string names(size, '\0');
    if (result == SCARD_S_SUCCESS) {
        result = SCardListReaders(context_, nullptr, names.data(), &size);
    }
    if (result == SCARD_E_NO_READERS_AVAILABLE) {
        return std::vector<std::string>{};
    }
    if (result == SCARD_E_INSUFFICIENT_BUFFER) { // A reader came between the two calls: it shows itself as an event.
        return std::vector<std::string>{};
    }
    if (result != SCARD_S_SUCCESS) {
        return std::nullopt;
    }
    std::vector<std::string> found;
    for (const char* name = names.c_str(); *name != '\0' && found.size() < mostReaders;
         name += found.back().size() + 1) {
        found.emplace_back(name);
    }
    return found;
}

ServiceConnection::ServiceConnection(const std::string& reader) {
    if (!session_.isOpen()) {
        return;
    }
    const DWORD protocols = SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1;
    result_ = SCardConnect(session_.context(), reader.c_str(), SCARD_SHARE_EXCLUSIVE, protocols, &card_, &protocol_);
    if (result_ == SCARD_E_SHARING_VIOLATION) {
        result_ = connectShared(reader, protocols);
    }
    if (result_ == SCARD_S_SUCCESS) {
        historicalBytes_ = readHistoricalBytes();
    }
}

ServiceConnection::~ServiceConnection() {
    if (result_ == SCARD_S_SUCCESS) {
        SCardDisconnect(card_, SCARD_RESET_CARD);
    }
}

Bytes ServiceConnection::readHistoricalBytes() const {
    Bytes answer(MAX_ATR_SIZE);
    auto size = static_cast<DWORD>(answer.size());
    if (SCardStatus(card_, nullptr, nullptr, nullptr, nullptr, answer.data(), &size) != SCARD_S_SUCCESS) {
        return {};
    }
    return historicalBytesOf(ByteView{answer}.first(size));
}

std::expected<Bytes, CardError> ServiceConnection::transmit(Bytes command) {
    if (protocol_ == SCARD_PROTOCOL_T0) {
        fitToT0(command);
    }
    buffer_.resize(MAX_BUFFER_SIZE_EXTENDED);
    auto size = static_cast<DWORD>(buffer_.size());
    const auto* const header = protocol_ == SCARD_PROTOCOL_T0 ? SCARD_PCI_T0 : SCARD_PCI_T1;
    const auto result = SCardTransmit(card_, header, command.data(), static_cast<DWORD>(command.size()), nullptr,
                                      buffer_.data(), &size);
    if (result != SCARD_S_SUCCESS || size < statusSize) {
        // A card that leaves the field while it answers looks like a failing reader, and the service learns only later
        // that the card is gone.
        return std::unexpected{CardError::gone};
    }
    return Bytes{buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(size)};
}

LONG ServiceConnection::connectShared(const std::string& reader, DWORD protocols) {
    const auto shared =
        SCardConnect(session_.context(), reader.c_str(), SCARD_SHARE_SHARED, protocols, &card_, &protocol_);
    if (shared != SCARD_S_SUCCESS) {
        return shared;
    }
    const auto begun = SCardBeginTransaction(card_); // Ends with the connection.
    if (begun != SCARD_S_SUCCESS) {
        SCardDisconnect(card_, SCARD_LEAVE_CARD);
    }
    return begun;
}

} // namespace kivo::reader
