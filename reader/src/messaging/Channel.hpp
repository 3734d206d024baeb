#pragma once

#include "card/Capabilities.hpp"
#include "messaging/SecureMessaging.hpp"

#include <chrono>
#include <expected>
#include <optional>
#include <stop_token>

namespace kivo::reader {

/// Why the chip cannot be talked to any further, or will not do what it is asked for.
enum class ChipFault {
    /// The card was taken away.
    gone,
    /// The chip refuses the password.
    denied,
    /// The chip cannot do what is asked for.
    unsupported,
    /// An answer of the chip breaks a rule.
    broken,
    tookTooLong,
    stopped,
};

/// The way to a chip: first plain, then protected. After a broken answer the channel carries nothing more. One thread
/// at a time.
class Channel {
public:
    using Clock = std::chrono::steady_clock;

    /// `card` outlives the channel. Commands that come after `until` or after the stop are not sent.
    Channel(Card& card, Clock::time_point until, std::stop_token stop);

    /// The answer, whatever its status says.
    std::expected<Answer, ChipFault> send(const Command& command);

    /// Sends data in parts where the chip takes no long commands. `command.classByte` stays as it is in the last part.
    std::expected<Answer, ChipFault> sendInParts(const Command& command);

    /// From now on everything is protected with these keys.
    void protect(ChannelKeys keys) { messaging_.emplace(std::move(keys)); }

    /// The keys in use; null while the channel is plain.
    const ChannelKeys* keys() const { return messaging_ ? &messaging_->keys() : nullptr; }

    Capabilities& capabilities() { return capabilities_; }

    /// Takes what EF.ATR/INFO tells about the lengths that the card can do, where the way to the card carries them.
    void learn(ByteView atrInfo);

    /// The most bytes of data that an answer can have.
    std::size_t longestData() const;

private:
    std::expected<Answer, ChipFault> broken();

    Card& card_;
    Clock::time_point until_;
    std::stop_token stop_;
    Capabilities capabilities_;
    std::optional<SecureMessaging> messaging_{};
    bool isBroken_ = false;
};

} // namespace kivo::reader
