#pragma once

#include <kivo/simulator/ChipFault.hpp>
#include <kivo/simulator/CountryAuthority.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::simulator {

/// The size of a document: a passport's page, or a card.
enum class DocumentFormat { td3, td1, td2 };

/// The kind of picture in which the chip holds the face.
enum class FaceEncoding { jpeg, jpeg2000 };

/// The ciphers of access and of secure messaging.
enum class ChipCipher { tripleDes, aes128, aes192, aes256 };

/// How PACE maps its nonce to a generator.
enum class PaceMapping { generic, integrated, chipAuthentication };

/// A form of PACE that a chip offers.
struct PaceOffer {
    /// The mapping, and the cipher of the dialogue and of the secure messaging after it.
    PaceMapping mapping = PaceMapping::generic;
    ChipCipher cipher = ChipCipher::aes128;
    /// The number of the standardised domain parameters: 0 to 2 are the groups of RFC 5114, 8 to 18 are curves. Chip
    /// authentication mapping asks for a curve and for AES. Integrated mapping does not exist on curve 10.
    int domainParameters = 13;

    bool operator==(const PaceOffer&) const = default;
};

/// How a chip proves by chip authentication that it is no copy.
struct ChipAuthenticationOffer {
    /// The cipher of the secure messaging that follows the proof.
    ChipCipher cipher = ChipCipher::aes128;
    /// As in `PaceOffer`.
    int domainParameters = 13;

    bool operator==(const ChipAuthenticationOffer&) const = default;
};

/// The key with which a chip answers a challenge, to prove that it is no copy.
enum class ActiveAuthentication { none, rsa, ecdsa };

/// How commands travel to the chip: in blocks, as contactless chips do (T=1), or byte by byte as with many cards that
/// have contacts (T=0), where nothing is longer than 256 bytes and an answer to a command with data is fetched with a
/// command of its own.
enum class CardProtocol { t1, t0 };

/// The set-up of a simulated passport.
struct PassportConfiguration {
    /// The size of the document, and with it the number and length of the zone's lines.
    DocumentFormat format = DocumentFormat::td3;
    /// The lines of the machine-readable zone. Empty for the specimen of the format. Invented persons only.
    std::vector<std::string> zone{};
    /// The face is drawn; a longer file than the drawing is filled up. Ignored where the drawing is longer.
    FaceEncoding face = FaceEncoding::jpeg;
    std::size_t faceBytes = std::size_t{20} * 1024;

    /// Whether the chip holds DG7, DG11 and DG12, too: signature, and details of person and document.
    bool furtherGroups = true;

    /// Whether the chip can be opened by basic access control with the values of the zone.
    bool basicAccess = true;
    /// The forms of PACE; empty for a chip without PACE.
    std::vector<PaceOffer> pace{PaceOffer{}};
    /// The number with which PACE opens, too. Empty for a document without the number.
    std::string cardAccessNumber = "500540";
    /// The proofs that the chip is no copy.
    std::optional<ChipAuthenticationOffer> chipAuthentication = ChipAuthenticationOffer{};
    ActiveAuthentication activeAuthentication = ActiveAuthentication::none;

    /// Whether the chip takes commands, and gives answers, of more than 256 bytes, where the protocol carries them.
    bool extendedLength = true;
    CardProtocol protocol = CardProtocol::t1;

    /// The digest and the signature under the files. Active authentication uses the digest, too.
    HashFunction digest = HashFunction::sha256;
    SignatureScheme signature = SignatureScheme::ecdsa;
    /// The state that issues the document; null for `CountryAuthority{}`.
    std::shared_ptr<const CountryAuthority> authority{};

    /// What is wrong from the beginning; `Passport::setFault` changes it.
    std::optional<ChipFault> fault{};

    /// Fills bytes with the chip's random numbers, for a test with fixed numbers: first its own keys, of chip
    /// authentication mapping and of chip authentication, then what the protocols ask for. Null for the system's.
    std::function<void(std::span<std::uint8_t>)> random{};
};

/// The chip of a travel document, simulated: commands of ISO 7816-4 go in, answers come out. The chip holds the files
/// of a specimen (ICAO Doc 9303 part 10), signed by a country's authority, behind the access protocols of part 11:
/// basic access control, PACE, secure messaging, chip authentication, active authentication.
///
/// Any thread, one command at a time. `VirtualReader` puts the chip into the system's card service.
class Passport {
public:
    /// Issues the document. Throws `std::runtime_error` for a configuration that no document can have, such as domain
    /// parameters without a number.
    explicit Passport(PassportConfiguration configuration = {});
    Passport(const Passport&) = delete;
    Passport& operator=(const Passport&) = delete;
    /// Calls under way end as if the chip were taken away.
    ~Passport();

    /// The chip's answer to a command: data, and two bytes of status. Empty once the chip is off the reader, or when a
    /// stop is requested while a slow or silent chip keeps the caller waiting.
    Bytes transmit(std::span<const std::uint8_t> command, const std::stop_token& stop = {});

    /// Begins a new life of the chip, as after its power was off: all access is forgotten.
    void reset();

    /// The answer to reset, as a reader for contactless cards gives it.
    Bytes answerToReset() const;

    /// Takes the chip off the reader.
    void takeAway();

    /// Lays the chip on the reader again, after `takeAway` or a fault. The bytes of `ChipFault::takenAway` are counted
    /// anew.
    void layDown();

    /// Whether the chip is on the reader; at first it is.
    bool isOnReader() const;

    /// Waits until the chip is on the reader; false when a stop is requested first.
    bool waitForReader(const std::stop_token& stop) const;

    /// Changes what is wrong, and issues the document anew. Absent for nothing.
    void setFault(std::optional<ChipFault> fault);

    /// What is wrong.
    std::optional<ChipFault> fault() const;

    /// The lines of the zone, and what opens the chip: number, dates as six digits (year,
    /// month, day, as in the zone), card access number. A person types the dates otherwise: "12.08.1974".
    const std::vector<std::string>& zone() const;
    std::string documentNumber() const;
    std::string dateOfBirth() const;
    std::string dateOfExpiry() const;
    const std::string& cardAccessNumber() const;

    /// A file as a reading of the whole file gives it: "DG1", "DG2", "DG7", "DG11", "DG12", "DG14", "DG15", "COM",
    /// "SOD", "CardAccess" or "CardSecurity". Empty where the chip has no such file.
    Bytes file(std::string_view name) const;

private:
    class Life;

    std::unique_ptr<Life> life_;
};

} // namespace kivo::simulator
