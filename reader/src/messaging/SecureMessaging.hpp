#pragma once

#include "card/Command.hpp"
#include "crypto/Cryptography.hpp"

#include <optional>

namespace kivo::reader {

/// Secure messaging of ICAO Doc 9303 part 11, 9.8: commands are enciphered and authenticated, and answers are taken
/// only where their authentication code holds. One thread at a time.
class SecureMessaging {
public:
    explicit SecureMessaging(ChannelKeys keys)
        : keys_{std::move(keys)} {}

    /// The command as it goes to the card. Counts on.
    Command protect(const Command& command);

    /// The answer in what the card sent, to the command that was protected last. Counts on. Absent where a rule is
    /// broken; afterwards nothing more may be protected with these keys.
    std::optional<Answer> open(const Answer& received);

    const ChannelKeys& keys() const { return keys_; }

    /// The most bytes of data that an answer of `longest` bytes has room for.
    std::size_t roomIn(std::size_t longest) const;

private:
    void count();
    Bytes initialVector() const;
    Bytes codeOf(ByteView message) const;

    ChannelKeys keys_;
};

} // namespace kivo::reader
