#pragma once

#include "passport/KeyAgreement.hpp"
#include "passport/SecureChannel.hpp"

#include <string>
#include <vector>

namespace kivo::simulator::chip {

/// The object identifier of a form of PACE, without tag and length.
Bytes paceIdentifier(const PaceOffer& offer);

/// What the chip's side of PACE needs to know.
struct PaceSecrets {
    std::vector<PaceOffer> offers{};
    std::string zoneInformation{};
    /// Empty where the document has no number.
    std::string cardAccessNumber{};
    /// The private key of chip authentication mapping, by the domain parameters; empty without the mapping.
    Bytes mappingKey{};
};

/// PACE, the chip's side (ICAO Doc 9303 part 11, 4.4).
class Pace {
public:
    explicit Pace(PaceSecrets secrets);
    ~Pace();

    /// The answer to MSE:Set AT, with which a run begins.
    Answer begin(View data);

    /// Whether a run is under way.
    bool isUnderWay() const { return run_ != nullptr; }

    /// The answer to the next GENERAL AUTHENTICATE. After the last one, where the terminal knows the password,
    /// `channel` becomes the channel of the next command.
    Answer step(View data, const Random& random, std::optional<SecureChannel>& channel);

    /// Ends a run that is under way.
    void abandon();

private:
    struct Run;

    Answer sendNonce(const Random& random);
    Answer map(View objects, const Random& random);
    Answer agree(View objects, const Random& random);
    Answer confirm(View objects, std::optional<SecureChannel>& channel);
    Bytes password() const;

    PaceSecrets secrets_;
    std::unique_ptr<Run> run_;
};

} // namespace kivo::simulator::chip
