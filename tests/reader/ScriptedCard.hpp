#pragma once

#include "crypto/Cryptography.hpp"
#include "messaging/Channel.hpp"

#include <kivo/reader/Card.hpp>

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <utility>

namespace kivo::reader {

/// The status word of a command that the card has carried out.
inline const Bytes done{0x90, 0x00};

/// A card that expects these commands, byte for byte, and gives these answers. A card without further lines is gone.
class ScriptedCard final : public Card {
public:
    struct Line {
        Bytes command;
        Bytes answer;
    };

    explicit ScriptedCard(std::deque<Line> lines)
        : lines_{std::move(lines)} {}

    std::expected<Bytes, CardError> transmit(ByteView command) override {
        if (lines_.empty()) {
            return std::unexpected{CardError::gone};
        }
        const auto line = std::move(lines_.front());
        lines_.pop_front();
        EXPECT_EQ((Bytes{command.begin(), command.end()}), line.command);
        return line.answer;
    }

    std::size_t linesLeft() const { return lines_.size(); }

private:
    std::deque<Line> lines_;
};

/// A card that a function plays.
class PlayedCard final : public Card {
public:
    using Play = std::function<std::expected<Bytes, CardError>(ByteView)>;

    explicit PlayedCard(Play play)
        : play_{std::move(play)} {}

    std::expected<Bytes, CardError> transmit(ByteView command) override { return play_(command); }

private:
    Play play_;
};

/// A channel that lasts for as long as a test may take.
inline Channel channelTo(Card& card) {
    return {card, Channel::Clock::now() + std::chrono::hours{1}, {}};
}

inline Bytes plain(const Secret& secret) {
    return {secret.begin(), secret.end()};
}

/// Randomness that gives these values, one a call, with zeros before a value that is shorter than what is asked for.
inline Randomness scriptedRandomness(std::deque<Bytes> values) {
    return [values = std::make_shared<std::deque<Bytes>>(std::move(values))](std::span<std::uint8_t> memory) {
        ASSERT_FALSE(values->empty());
        const auto value = std::move(values->front());
        values->pop_front();
        ASSERT_LE(value.size(), memory.size());
        std::ranges::fill(memory, 0);
        std::ranges::copy(value, memory.end() - static_cast<std::ptrdiff_t>(value.size()));
    };
}

} // namespace kivo::reader
