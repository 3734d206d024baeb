#include "card/BoundedCalls.hpp"
#include "card/BoundedSources.hpp"
#include "card/ServiceSession.hpp"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

namespace kivo::reader {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds longestFarewell{2};
// A stop that is requested just before the service begins to wait does not end the waiting, so the wait is renewed.
constexpr std::chrono::milliseconds longestWait{1000};
// A service that an update or an administrator restarts is back within this time, and its readers with it.
constexpr std::chrono::seconds longestRestart{10};
constexpr std::chrono::milliseconds pauseOfRestart{100};
constexpr const char* anyReader = "\\\\?PnP?\\Notification";

class SystemCard final : public Card {
public:
    SystemCard(BoundedCalls calls, std::shared_ptr<ServiceConnection> connection, std::chrono::milliseconds longest)
        : calls_{std::move(calls)}
        , connection_{std::move(connection)}
        , longest_{longest}
        , historicalBytes_{connection_->historicalBytes()}
        , carriesLongMessages_{connection_->carriesLongMessages()} {}

    SystemCard(const SystemCard&) = delete;
    SystemCard& operator=(const SystemCard&) = delete;

    ~SystemCard() override {
        if (connection_) {
            calls_.run<bool>(longestFarewell, [connection = std::move(connection_)]() mutable {
                connection.reset();
                return true;
            });
        }
    }

    std::expected<Bytes, CardError> transmit(ByteView command) override {
        if (!connection_) {
            return std::unexpected{CardError::gone};
        }
        auto answer = calls_.run<std::expected<Bytes, CardError>>(
            longest_, [connection = connection_, bytes = Bytes{command.begin(), command.end()}] {
                return connection->transmit(bytes);
            });
        if (!answer) {
            connection_ = nullptr; // From now on the call that was given up holds the card, until it returns.
            return std::unexpected{CardError::gone};
        }
        return *std::move(answer);
    }

    Bytes historicalBytes() const override { return historicalBytes_; }

    bool carriesLongMessages() const override { return carriesLongMessages_; }

private:
    BoundedCalls calls_;
    std::shared_ptr<ServiceConnection> connection_;
    std::chrono::milliseconds longest_;
    Bytes historicalBytes_;
    bool carriesLongMessages_;
};

class SystemCards final : public CardSource {
public:
    explicit SystemCards(std::chrono::milliseconds longest)
        : longest_{longest} {}

    std::expected<std::unique_ptr<Card>, CardError> waitForCard(std::chrono::milliseconds patience,
                                                                std::stop_token stop) override {
        const auto until = steady_clock::now() + patience;
        while (true) {
            auto card = cardOfOneSession(until, stop);
            if (card || card.error() != CardError::noService || !mayRestart()) {
                return card;
            }
            if (steady_clock::now() >= until) {
                return std::unexpected{CardError::noReader};
            }
            std::mutex mutex;
            std::unique_lock lock{mutex};
            std::condition_variable_any{}.wait_for(lock, stop, pauseOfRestart, [] { return false; });
            if (stop.stop_requested()) {
                return std::unexpected{CardError::stopped};
            }
        }
    }

    bool isAvailable() const override { return ServiceSession{}.isOpen(); }

    std::vector<std::string> readers() const override {
        const ServiceSession session;
        return session.isOpen() ? session.readers().value_or(std::vector<std::string>{}) : std::vector<std::string>{};
    }

private:
    bool mayRestart() const { return steady_clock::now() - lastSeen_.load() < longestRestart; }

    std::expected<std::unique_ptr<Card>, CardError> cardOfOneSession(steady_clock::time_point until,
                                                                     const std::stop_token& stop) {
        const ServiceSession session;
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
            lastSeen_ = steady_clock::now();
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
    // again when its state changes; a reader that has gone is forgotten.
    std::unique_ptr<Card> cardAmong(const std::vector<SCARD_READERSTATE>& events, const std::vector<std::string>& names,
                                    std::map<std::string, DWORD>& known) const {
        std::map<std::string, DWORD> seen;
        for (std::size_t i = 0; i < names.size(); ++i) {
            const auto state = events[i].dwEventState;
            const bool hasChanged = (state & SCARD_STATE_CHANGED) != 0;
            seen[names[i]] = state & ~DWORD{SCARD_STATE_CHANGED};
            if (!hasChanged || (state & SCARD_STATE_PRESENT) == 0 || (state & SCARD_STATE_MUTE) != 0) {
                continue;
            }
            if (auto card = connected(names[i])) {
                return card;
            }
        }
        known = std::move(seen);
        return nullptr;
    }

    // The card on the reader; null where the card cannot be connected, or does not answer in time.
    std::unique_ptr<Card> connected(const std::string& reader) const {
        BoundedCalls calls;
        auto connection = calls.run<std::shared_ptr<ServiceConnection>>(
            longestCall, [reader] { return std::make_shared<ServiceConnection>(reader); });
        if (!connection || (*connection)->result() != SCARD_S_SUCCESS) {
            return nullptr;
        }
        return std::make_unique<SystemCard>(std::move(calls), *std::move(connection), longest_);
    }

    const std::chrono::milliseconds longest_;
    // At first the start of the machine.
    std::atomic<steady_clock::time_point> lastSeen_{};
};

} // namespace

std::shared_ptr<CardSource> systemCards() {
    return systemCards(longestCall);
}

std::shared_ptr<CardSource> systemCards(std::chrono::milliseconds longest) {
    return std::make_shared<SystemCards>(longest);
}

} // namespace kivo::reader
