#pragma once

#include "passport/Ciphers.hpp"

#include <functional>

namespace kivo::simulator::chip {

/// The way of the protocol T=0 (ISO 7816-3, 12.2.1) to a chip: a command carries five bytes and either data or the
/// length of the answer. The answer to a command with data is kept for GET RESPONSE, and a wrong length is refused with
/// the right one.
class ByteProtocol {
public:
    using Chip = std::function<Bytes(View command)>;

    Bytes answer(View command, const Chip& chip);

private:
    Bytes kept(std::size_t asked);

    /// The answer that waits, with its status; empty where none does.
    Bytes kept_{};
};

} // namespace kivo::simulator::chip
