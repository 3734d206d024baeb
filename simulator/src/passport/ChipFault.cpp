#include "FaultNumbers.hpp"

#include <kivo/simulator/ChipFault.hpp>

#include <algorithm>
#include <cstdint>
#include <optional>

namespace kivo::simulator {
namespace {

constexpr std::uint64_t mostBytesToTheRemoval = std::uint64_t{16} * 1024 * 1024;

} // namespace

const std::vector<NamedChipFault>& namedChipFaults() {
    using namespace std::chrono_literals;
    static const std::vector<NamedChipFault> all{
        {"wrong-key", "refuses the key of its page", ChipFault::refusesKey()},
        {"taken-away", "is taken off the reader after 4096 bytes", ChipFault::takenAway(4096)},
        {"false-digest", "holds a face that was changed after the signature", ChipFault::falseDigest()},
        {"expired-signer", "was signed with a certificate that had run out", ChipFault::expiredSigner()},
        {"unknown-country", "was issued by a state that nobody knows", ChipFault::unknownCountry()},
        {"revoked-signer", "was signed with a revoked certificate", ChipFault::revokedSigner()},
        {"slow", "takes a quarter of a second for every answer", ChipFault::slow(250ms)},
        {"silent", "never answers a reading", ChipFault::silent()},
        {"garbage", "answers with bytes of chance", ChipFault::garbage()},
        {"replay", "gives the same secured answer again", ChipFault::replay()},
        {"short", "leaves half of its answers out", ChipFault::shortAnswers()},
        {"endless", "holds a face of 15 MiB", ChipFault::endlessFiles()},
        {"copy", "is a copy without the private keys", ChipFault::copy()},
    };
    return all;
}

std::expected<ChipFault, std::string> chipFaultFromText(std::string_view text) {
    const auto& named = namedChipFaults();
    if (const auto found = std::ranges::find(named, text, &NamedChipFault::name); found != named.end()) {
        return found->fault;
    }
    constexpr std::string_view takenAway = "taken-away:";
    constexpr std::string_view slow = "slow:";
    if (text.starts_with(takenAway)) {
        if (const auto bytes = numberFrom(text.substr(takenAway.size()), mostBytesToTheRemoval)) {
            return ChipFault::takenAway(*bytes);
        }
    } else if (text.starts_with(slow)) {
        if (const auto time = timeFrom(text.substr(slow.size()))) {
            return ChipFault::slow(*time);
        }
    }
    return std::unexpected{"takes a fault of the chip such as garbage, taken-away:4096 or slow:250ms, not \"" +
                           std::string{text} + "\""};
}

} // namespace kivo::simulator
