#pragma once

#include "passport/Ciphers.hpp"
#include "passport/Command.hpp"

namespace kivo::simulator::chip {

/// Secure messaging, the chip's side (ICAO Doc 9303 part 11, 9.8).
class SecureChannel {
public:
    /// A channel with a counter of zero and the keys that belong to a shared secret.
    SecureChannel(ChipCipher cipher, View secret);

    /// The same with a counter to begin with.
    SecureChannel(ChipCipher cipher, View secret, View counter);

    /// The command inside; the error is the status with which the channel ends.
    std::expected<Command, Status> opened(const Command& secured);

    /// The answer, secured. `isOdd` tells whether the command's instruction was odd.
    Answer secured(const Answer& answer, bool isOdd);

    /// How many bytes of data fit into a secured answer of at most `most` bytes.
    std::size_t room(std::size_t most) const;

    /// CBC with the channel's key, under the initial vector that belongs to the counter of all ones.
    Bytes encryptedOnce(View data) const;

private:
    void count();
    Bytes initialVector() const;
    Bytes code(View data) const;
    std::optional<Bytes> plainOf(View cryptogram) const;

    ChipCipher cipher_;
    Bytes encryptionKey_;
    Bytes authenticationKey_;
    Bytes counter_;
};

} // namespace kivo::simulator::chip
