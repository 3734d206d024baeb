#pragma once

#include <kivo/Export.hpp>

#include <chrono>
#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

namespace kivo::reader {

/// Bytes as chips and documents have them.
using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Why a card cannot be talked to.
enum class CardError {
    /// The card was taken away, or answers no longer.
    gone,
    /// No card was laid on a reader in time.
    noCard,
    /// No card reader is connected.
    noReader,
    /// The smart card service of the system does not run or refuses this process.
    noService,
    /// The host no longer wants the card.
    stopped,
    /// The card's answer is no answer of ISO 7816-4, or the reader fails.
    broken,
};

/// A card on a reader, held alone until the object is destroyed. One thread at a time.
class KIVO_EXPORT Card {
public:
    virtual ~Card() = default;

    /// Sends a command of ISO 7816-4, and returns the answer with its two bytes of status. Answers after 10 s at the
    /// latest: a card that has not answered by then is `gone`.
    virtual std::expected<Bytes, CardError> transmit(ByteView command) = 0;

    /// The historical bytes of the answer to reset, which tell whether the card takes long commands; empty where the
    /// transport knows none.
    virtual Bytes historicalBytes() const { return {}; }

    /// Whether the way to the card carries commands and answers of more than 256 bytes, if the card takes them. The
    /// protocol T=0 does not.
    virtual bool carriesLongMessages() const { return true; }
};

/// Where cards come from: the system's card readers, or another transport of commands. Any thread.
class KIVO_EXPORT CardSource {
public:
    virtual ~CardSource() = default;

    /// Waits for a card for at most `patience`, or until a stop is requested, and connects it.
    virtual std::expected<std::unique_ptr<Card>, CardError> waitForCard(std::chrono::milliseconds patience,
                                                                        std::stop_token stop) = 0;

    /// Whether the service behind the source runs and serves this process.
    virtual bool isAvailable() const { return true; }

    /// The readers that are connected, by the names that the system gives them.
    virtual std::vector<std::string> readers() const = 0;
};

} // namespace kivo::reader
