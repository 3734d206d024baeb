#pragma once

#include "passport/SecureChannel.hpp"

#include <string_view>

namespace kivo::simulator::chip {

/// Basic access control, the chip's side (ICAO Doc 9303 part 11, 4.3).
class BasicAccess {
public:
    /// `zoneInformation` is number, birth and expiry of the zone, each with its check digit.
    explicit BasicAccess(std::string_view zoneInformation);

    /// The answer to GET CHALLENGE.
    Answer challenge(const Random& random);

    /// The answer to EXTERNAL AUTHENTICATE. Where the terminal knows the key, `channel` becomes the channel of the next
    /// command.
    Answer authenticate(View data, const Random& random, std::optional<SecureChannel>& channel);

private:
    Bytes encryptionKey_;
    Bytes authenticationKey_;
    /// The challenge that awaits its answer.
    std::optional<Bytes> challenge_;
};

} // namespace kivo::simulator::chip
