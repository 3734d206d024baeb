#pragma once

#include <kivo/reader/Card.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace kivo::reader {

/// The cards on the readers that are connected to this system, through its smart card service (PC/SC). Readers may come
/// and go while a card is waited for. A card is used by nobody else while its object lives, and is reset afterwards.
KIVO_EXPORT std::shared_ptr<CardSource> systemCards();

/// A card behind a TCP socket, for a simulated chip on a machine without the smart card service. Each command and each
/// answer is two bytes of length, the higher first, and as many bytes. A message of the byte 2 resets the card and has
/// no answer; the answer to a message of the byte 4 is the answer to reset. The card is laid on the reader while
/// something listens at the port, and taken away when the connection is closed.
KIVO_EXPORT std::shared_ptr<CardSource> cardsBehindSocket(std::string host, std::uint16_t port);

} // namespace kivo::reader
