#pragma once

#include <kivo/reader/Card.hpp>
#include <kivo/simulator/Passport.hpp>

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>

namespace desk {

/// A card reader in this process, and a simulated passport that may lie on it. The one who holds the passport says when
/// it lies there, how far it is read, and why it cannot be read. Any thread.
class HeldPassport final : public kivo::reader::CardSource {
public:
    explicit HeldPassport(std::shared_ptr<kivo::simulator::Passport> passport)
        : passport_{std::move(passport)} {}

    /// Connects the reader, or takes it away; connected at first.
    void setConnected(bool connected);
    /// Lays the passport on the reader, or takes it off before it is read; not there at first.
    void setLaid(bool laid);
    /// Lets the reader refuse every card.
    void setRefusal(std::optional<kivo::reader::CardError> refusal);
    /// Holds the chip's answers back from that command on; absent for no such command.
    void setHold(std::optional<std::size_t> command);

    /// Whether an answer is held back now.
    bool isHolding() const;

    std::expected<std::unique_ptr<kivo::reader::Card>, kivo::reader::CardError>
    waitForCard(std::chrono::milliseconds patience, std::stop_token stop) override;
    std::vector<std::string> readers() const override;

private:
    class Chip;

    template <class Value>
    void set(Value& value, Value wanted);

    const std::shared_ptr<kivo::simulator::Passport> passport_;
    mutable std::mutex mutex_;
    std::condition_variable_any changed_;
    bool isConnected_ = true;
    bool isLaid_ = false;
    std::optional<kivo::reader::CardError> refusal_;
    std::optional<std::size_t> hold_;
    bool isHolding_ = false;
};

} // namespace desk
