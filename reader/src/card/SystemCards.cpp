#include "card/BoundedCalls.hpp"
#include "card/Capabilities.hpp"
#include "card/Command.hpp"

#include <kivo/reader/CardSources.hpp>

#include <winscard.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>

namespace kivo::reader {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds longestFarewell{2};
// A stop that is requested just before the service begins to wait does not end the waiting, so the wait is renewed.
constexpr std::chrono::milliseconds longestWait{1000};
constexpr const char* anyReader = "\\\\?PnP?\\Notification";
constexpr std::size_t mostReaders = 64;
constexpr DWORD statusSize = 2;

// A session with the smart card service.
class Session {
public:
    Session()
        : isOpen_{SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context_) == SCARD_S_SUCCESS} {}

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    ~Session() {
        if (isOpen_) {
            SCardReleaseContext(context_);
        }
    }

    bool isOpen() const { return isOpen_; }

    SCARDCONTEXT context() const { return context_; }

    // Absent where the service has gone.
    std::optional<std::vector<std::string>> readers() const {
        DWORD size = 0;
        auto result = SCardListReaders(context_, nullptr, nullptr, &size);
        std::string names(size, '\0');
        if (result == SCARD_S_SUCCESS) {
            result = SCardListReaders(context_, nullptr, names.data(), &size);
        }
        if (result == SCARD_E_NO_READERS_AVAILABLE) {
            return std::vector<std::string>{};
        }
        if (result ==
            SCARD_E_INSUFFICIENT_BUFFER) { // A reader came between the two calls: it shows itself as an event.
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

private:
    SCARDCONTEXT context_ = 0;
    bool isOpen_;
};

// A connected card. All calls on one thread.
class Connection {
public:
    explicit Connection(const std::string& reader) {
        if (!session_.isOpen()) {
            result_ = SCARD_E_NO_SERVICE;
            return;
        }
        const DWORD protocols = SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1;
        result_ =
            SCardConnect(session_.context(), reader.c_str(), SCARD_SHARE_EXCLUSIVE, protocols, &card_, &protocol_);
        if (result_ == SCARD_E_SHARING_VIOLATION) {
            result_ = connectShared(reader, protocols);
        }
    }

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    ~Connection() {
        if (result_ == SCARD_S_SUCCESS) {
            SCardDisconnect(card_, SCARD_RESET_CARD);
        }
    }

    LONG result() const { return result_; }

    Bytes historicalBytes() const {
        Bytes answer(MAX_ATR_SIZE);
        auto size = static_cast<DWORD>(answer.size());
        if (protocol_ == SCARD_PROTOCOL_T0 || // which carries no long messages
            SCardStatus(card_, nullptr, nullptr, nullptr, nullptr, answer.data(), &size) != SCARD_S_SUCCESS) {
            return {};
        }
        return historicalBytesOf(ByteView{answer}.first(size));
    }

    std::expected<Bytes, CardError> transmit(Bytes command) {
        if (protocol_ == SCARD_PROTOCOL_T0) {
            fitToT0(command);
        }
        buffer_.resize(MAX_BUFFER_SIZE_EXTENDED);
        auto size = static_cast<DWORD>(buffer_.size());
        const auto* const header = protocol_ == SCARD_PROTOCOL_T0 ? SCARD_PCI_T0 : SCARD_PCI_T1;
        const auto result = SCardTransmit(card_, header, command.data(), static_cast<DWORD>(command.size()), nullptr,
                                          buffer_.data(), &size);
        if (result != SCARD_S_SUCCESS || size < statusSize) {
            // A card that leaves the field while it answers looks like a failing reader, and the service learns only
            // later that the card is gone.
            return std::unexpected{CardError::gone};
        }
        return Bytes{buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(size)};
    }

private:
    LONG connectShared(const std::string& reader, DWORD protocols) {
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

    // The protocol sends lengths in one byte only, and gives the answer to a command with data when asked for it.
    static void fitToT0(Bytes& command) {
        constexpr std::size_t shortest = 5;
        if (command.size() < shortest) {
            command.push_back(0);
        } else if (command.size() == shortest + command[4] + std::size_t{1}) {
            command.pop_back();
        }
    }

    Session session_{};
    SCARDHANDLE card_ = 0;
    DWORD protocol_ = 0;
    LONG result_ = SCARD_E_NO_SERVICE;
    Bytes buffer_{};
};

class SystemCard final : public Card {
public:
    SystemCard(BoundedCalls calls, std::shared_ptr<Connection> connection)
        : calls_{std::move(calls)}
        , connection_{std::move(connection)} {}

    SystemCard(const SystemCard&) = delete;
    SystemCard& operator=(const SystemCard&) = delete;

    ~SystemCard() override {
        if (!isGone_) {
            calls_.run<bool>(longestFarewell, [connection = std::move(connection_)]() mutable {
                connection.reset();
                return true;
            });
        }
    }

    std::expected<Bytes, CardError> transmit(ByteView command) override {
        if (isGone_) {
            return std::unexpected{CardError::gone};
        }
        auto answer = calls_.run<std::expected<Bytes, CardError>>(
            longestCall, [connection = connection_, bytes = Bytes{command.begin(), command.end()}] {
                return connection->transmit(bytes);
            });
        if (!answer) {
            isGone_ = true;
            return std::unexpected{CardError::gone};
        }
        return *std::move(answer);
    }

    Bytes historicalBytes() const override {
        auto calls = calls_;
        return calls.run<Bytes>(longestCall, [connection = connection_] { return connection->historicalBytes(); })
            .value_or(Bytes{});
    }

private:
    BoundedCalls calls_;
    std::shared_ptr<Connection> connection_;
    bool isGone_ = false;
};

// The card on the reader, or what the service says about it; null where the card does not answer.
std::expected<std::unique_ptr<Card>, LONG> connected(const std::string& reader) {
    BoundedCalls calls;
    auto connection =
        calls.run<std::shared_ptr<Connection>>(longestCall, [reader] { return std::make_shared<Connection>(reader); });
    if (!connection) {
        return std::unexpected{SCARD_W_UNRESPONSIVE_CARD};
    }
    if ((*connection)->result() != SCARD_S_SUCCESS) {
        return std::unexpected{(*connection)->result()};
    }
    return std::make_unique<SystemCard>(std::move(calls), *std::move(connection));
}

class SystemCards final : public CardSource {
public:
    std::expected<std::unique_ptr<Card>, CardError> waitForCard(std::chrono::milliseconds patience,
                                                                std::stop_token stop) override {
        const auto until = steady_clock::now() + patience;
        const Session session;
        if (!session.isOpen()) {
            return std::unexpected{CardError::noService};
        }
        const std::stop_callback cancel{stop, [&session] { SCardCancel(session.context()); }};
        std::map<std::string, DWORD> known;
        while (true) {
            const auto names = session.readers();
            if (!names) {
                return std::unexpected{CardError::noService};
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - steady_clock::now());
            if (stop.stop_requested()) {
                return std::unexpected{CardError::stopped};
            }
            auto events = eventsOf(*names, known);
            const auto wait = std::clamp(left, std::chrono::milliseconds{0}, longestWait);
            const auto result = SCardGetStatusChange(session.context(), static_cast<DWORD>(wait.count()), events.data(),
                                                     static_cast<DWORD>(events.size()));
            if (result == SCARD_E_NO_SERVICE || result == SCARD_E_SERVICE_STOPPED || result == SCARD_F_COMM_ERROR) {
                return std::unexpected{CardError::noService};
            }
            if (result == SCARD_S_SUCCESS) {
                if (auto card = cardAmong(events, *names, known)) {
                    return card;
                }
            }
            if (left <= std::chrono::milliseconds{0}) {
                return std::unexpected{names->empty() ? CardError::noReader : CardError::noCard};
            }
        }
    }

    bool isAvailable() const override { return Session{}.isOpen(); }

    std::vector<std::string> readers() const override {
        const Session session;
        return session.isOpen() ? session.readers().value_or(std::vector<std::string>{}) : std::vector<std::string>{};
    }

private:
    static std::vector<SCARD_READERSTATE> eventsOf(const std::vector<std::string>& names,
                                                   const std::map<std::string, DWORD>& known) {
        std::vector<SCARD_READERSTATE> events;
        for (const auto& name : names) {
            const auto state = known.find(name);
            events.push_back(
                SCARD_READERSTATE{.szReader = name.c_str(),
                                  .pvUserData = nullptr,
                                  .dwCurrentState = state == known.end() ? DWORD{SCARD_STATE_UNAWARE} : state->second,
                                  .dwEventState = 0,
                                  .cbAtr = 0,
                                  .rgbAtr = {}});
        }
        events.push_back(SCARD_READERSTATE{.szReader = anyReader,
                                           .pvUserData = nullptr,
                                           .dwCurrentState = SCARD_STATE_UNAWARE,
                                           .dwEventState = 0,
                                           .cbAtr = 0,
                                           .rgbAtr = {}});
        return events;
    }

    // The first card that can be connected. The state of each reader is remembered, so that a card that cannot is tried
    // again when its state changes.
    static std::unique_ptr<Card> cardAmong(const std::vector<SCARD_READERSTATE>& events,
                                           const std::vector<std::string>& names, std::map<std::string, DWORD>& known) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            const auto state = events[i].dwEventState;
            const bool hasChanged = (state & SCARD_STATE_CHANGED) != 0;
            known[names[i]] = state & ~DWORD{SCARD_STATE_CHANGED};
            if (!hasChanged || (state & SCARD_STATE_PRESENT) == 0 || (state & SCARD_STATE_MUTE) != 0) {
                continue;
            }
            if (auto card = connected(names[i])) {
                return *std::move(card);
            }
        }
        return nullptr;
    }
};

} // namespace

std::shared_ptr<CardSource> systemCards() {
    return std::make_shared<SystemCards>();
}

} // namespace kivo::reader
