#pragma once

#include <kivo/reader/CardSources.hpp>

#include <chrono>

namespace kivo::reader {

/// How long one call to a card may take, so that a card that answers no more holds nothing up.
constexpr std::chrono::seconds longestCall{10};

/// The public sources of cards, with another bound than `longestCall` for the answer to a command.
std::shared_ptr<CardSource> systemCards(std::chrono::milliseconds longest);
std::shared_ptr<CardSource> cardsBehindSocket(std::string host, std::uint16_t port, std::chrono::milliseconds longest);

} // namespace kivo::reader
