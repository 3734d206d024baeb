#include "passport/ByteProtocol.hpp"
#include "passport/Personalisation.hpp"

#include <kivo/simulator/Passport.hpp>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <numeric>
#include <utility>

namespace kivo::simulator {
namespace {

/// The files of the application, by the names of which a host hears.
constexpr std::array<std::pair<std::string_view, std::uint16_t>, 9> applicationFiles{{{"DG1", 0x0101},
                                                                                      {"DG2", 0x0102},
                                                                                      {"DG7", 0x0107},
                                                                                      {"DG11", 0x010B},
                                                                                      {"DG12", 0x010C},
                                                                                      {"DG14", 0x010E},
                                                                                      {"DG15", 0x010F},
                                                                                      {"COM", chip::commonFile},
                                                                                      {"SOD", chip::securityFile}}};

} // namespace

/// The chip, and the state in which the chip lies on a reader.
class Passport::Life {
public:
    explicit Life(PassportConfiguration configuration)
        : configuration_{std::move(configuration)} {
        chip::complete(configuration_);
        values_ = chip::valuesOf(configuration_.format, configuration_.zone);
        keys_ = chip::makeKeys(configuration_);
        issue();
    }

    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;

    ~Life() {
        std::unique_lock lock{mutex_};
        isOnReader_ = false;
        changed_.notify_all();
        changed_.wait(lock, [this] { return calls_ == 0; });
    }

    Bytes transmit(chip::View command, const std::stop_token& stop) {
        std::unique_lock lock{mutex_};
        ++calls_;
        auto answer = answerTo(command, lock, stop);
        --calls_;
        changed_.notify_all();
        return answer;
    }

    void reset() {
        const std::scoped_lock lock{mutex_};
        begin();
    }

    void setOnReader(bool isOnReader) {
        const std::scoped_lock lock{mutex_};
        isOnReader_ = isOnReader;
        begin();
        changed_.notify_all();
    }

    bool isOnReader() const {
        const std::scoped_lock lock{mutex_};
        return isOnReader_;
    }

    bool waitForReader(const std::stop_token& stop) const {
        std::unique_lock lock{mutex_};
        return changed_.wait(lock, stop, [this] { return isOnReader_; }) && !stop.stop_requested();
    }

    void setFault(std::optional<ChipFault> fault) {
        const std::scoped_lock lock{mutex_};
        configuration_.fault = fault;
        issue();
    }

    std::optional<ChipFault> fault() const {
        const std::scoped_lock lock{mutex_};
        return configuration_.fault;
    }

    Bytes file(std::string_view name) const {
        const std::scoped_lock lock{mutex_};
        const auto* const known =
            std::ranges::find(applicationFiles, name, &std::pair<std::string_view, std::uint16_t>::first);
        const bool isOfCard = name == "CardAccess" || name == "CardSecurity";
        const auto& files = isOfCard ? contents_->card : contents_->application;
        const auto identifier = name == "CardAccess"              ? chip::cardAccessFile
                                : isOfCard                        ? chip::securityFile
                                : known == applicationFiles.end() ? std::uint16_t{0}
                                                                  : known->second;
        const auto found = files.find(identifier);
        return found == files.end() ? Bytes{} : found->second;
    }

    /// Of these only the fault changes after the construction.
    const PassportConfiguration& configuration() const { return configuration_; }

    const chip::ZoneValues& values() const { return values_; }

private:
    bool has(ChipFault::Kind kind) const { return configuration_.fault && configuration_.fault->kind() == kind; }

    /// Makes the files, signed anew, and powers the chip up.
    void issue() {
        contents_ = chip::issuedContents(configuration_, keys_);
        begin();
    }

    void begin() {
        chip_.emplace(contents_);
        byBytes_ = {};
        sent_ = 0;
        former_.clear();
    }

    Bytes answerTo(chip::View command, std::unique_lock<std::mutex>& lock, const std::stop_token& stop) {
        using enum ChipFault::Kind;
        const auto isGone = [this] { return !isOnReader_; };
        const bool isReading = command.size() > 1 && (command[1] & 0xFEU) == 0xB0U;
        if (has(slow)) {
            changed_.wait_for(lock, stop, configuration_.fault->time(), isGone);
        }
        if (has(silent) && isReading) {
            changed_.wait(lock, stop, isGone);
        }
        if (isGone() || stop.stop_requested()) {
            return {};
        }
        const auto ofChip = [&](chip::View whole) {
            auto answer = chip_->answer(whole);
            if (isReading) {
                spoil(answer, (command[0] & 0x0CU) != 0);
            }
            return answer;
        };
        auto answer = configuration_.protocol == CardProtocol::t0 ? byBytes_.answer(command, ofChip) : ofChip(command);
        sent_ += answer.size();
        if (has(takenAway) && sent_ > configuration_.fault->bytes()) {
            isOnReader_ = false;
            begin();
            changed_.notify_all();
            return {};
        }
        return answer;
    }

    /// Does to the answer to READ BINARY what the fault says.
    void spoil(Bytes& answer, bool isSecured) {
        using enum ChipFault::Kind;
        if (has(garbage)) {
            answer = chip::randomBytes({}, answer.size());
        } else if (has(replay) && isSecured) {
            // The first answer is kept for all others.
            answer = former_.empty() ? answer : former_;
            former_ = answer;
        } else if (has(shortAnswers)) {
            answer.resize(answer.size() / 2);
        }
    }

    mutable std::mutex mutex_;
    mutable std::condition_variable_any changed_;
    PassportConfiguration configuration_;
    chip::ZoneValues values_;
    chip::ChipKeyRing keys_;
    std::shared_ptr<const chip::ChipContents> contents_;
    std::optional<chip::Chip> chip_;
    chip::ByteProtocol byBytes_;
    bool isOnReader_ = true;
    /// The bytes of all answers since the chip was laid down.
    std::size_t sent_ = 0;
    Bytes former_;
    int calls_ = 0;
};

Passport::Passport(PassportConfiguration configuration)
    : life_{std::make_unique<Life>(std::move(configuration))} {}

Passport::~Passport() = default;

Bytes Passport::transmit(std::span<const std::uint8_t> command, const std::stop_token& stop) {
    return life_->transmit(command, stop);
}

void Passport::reset() {
    life_->reset();
}

Bytes Passport::answerToReset() const {
    const auto& configuration = life_->configuration();
    const auto lengths = static_cast<std::uint8_t>(configuration.extendedLength ? 0xC0 : 0x80);
    if (configuration.protocol == CardProtocol::t0) {
        return {0x3B, 0x05, 0x80, 0x73, 0xC0, 0x01, lengths};
    }
    // T=0 and T=1, and five historical bytes: what the chip can do. The last byte checks the others but the first.
    Bytes answer{0x3B, 0x85, 0x80, 0x01, 0x80, 0x73, 0xC0, 0x01, lengths};
    answer.push_back(std::accumulate(answer.begin() + 1, answer.end(), std::uint8_t{0}, std::bit_xor{}));
    return answer;
}

void Passport::takeAway() {
    life_->setOnReader(false);
}

void Passport::layDown() {
    life_->setOnReader(true);
}

bool Passport::isOnReader() const {
    return life_->isOnReader();
}

bool Passport::waitForReader(const std::stop_token& stop) const {
    return life_->waitForReader(stop);
}

void Passport::setFault(std::optional<ChipFault> fault) {
    life_->setFault(fault);
}

std::optional<ChipFault> Passport::fault() const {
    return life_->fault();
}

const std::vector<std::string>& Passport::zone() const {
    return life_->configuration().zone;
}

std::string Passport::documentNumber() const {
    return life_->values().documentNumber;
}

std::string Passport::dateOfBirth() const {
    return life_->values().dateOfBirth;
}

std::string Passport::dateOfExpiry() const {
    return life_->values().dateOfExpiry;
}

const std::string& Passport::cardAccessNumber() const {
    return life_->configuration().cardAccessNumber;
}

Bytes Passport::file(std::string_view name) const {
    return life_->file(name);
}

} // namespace kivo::simulator
