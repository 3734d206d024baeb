#pragma once

#include "passport/BasicAccess.hpp"
#include "passport/ChipKeys.hpp"
#include "passport/Pace.hpp"

#include <map>
#include <set>

namespace kivo::simulator::chip {

// File identifiers. Those of the groups are 0x0100 and the group's number.
inline constexpr std::uint16_t attributesFile = 0x2F01;
inline constexpr std::uint16_t cardAccessFile = 0x011C;
inline constexpr std::uint16_t securityFile = 0x011D; // EF.CardSecurity of the card, EF.SOD of the application
inline constexpr std::uint16_t commonFile = 0x011E;
inline constexpr std::uint16_t faceFile = 0x0102;

/// The length of the longest command, and of the longest answer, of a chip that takes long ones.
inline constexpr std::size_t longestMessage = 0x1000;

/// Files by their identifiers.
using FileSystem = std::map<std::uint16_t, Bytes>;

/// What is in a chip.
struct ChipContents {
    FileSystem card{};
    FileSystem application{};
    PaceSecrets secrets{};
    bool basicAccess = true;
    bool extendedLength = true;
    std::shared_ptr<const AgreementKey> agreementKey{};
    std::shared_ptr<const ActiveKey> activeKey{};
    /// A file of the application that goes on where its bytes end.
    std::optional<std::uint16_t> endlessFile{};
    Random random{};
};

/// A chip under power, from reset to reset: selection, access, files. One thread at a time.
class Chip {
public:
    explicit Chip(std::shared_ptr<const ChipContents> contents);

    /// The answer to a command, with its status.
    Bytes answer(View command);

private:
    enum class Access { none, basic, pace };

    Answer answerTo(const Command& command);
    Answer answerToSecured(const Command& command);
    Answer collect(const Command& command);
    Answer perform(const Command& command);
    Answer select(const Command& command);
    Answer read(const Command& command);
    Answer readFrom(const Command& command, std::size_t offset);
    Answer setEnvironment(const Command& command);
    Answer authenticateGenerally(const Command& command);
    Answer authenticateChip(std::optional<View> theirKey);
    Answer nextPart(const Command& command);
    Answer firstPart(Answer answer, std::size_t most);

    const FileSystem& files() const;
    bool isReadable(std::uint16_t file) const;
    /// How many bytes of a file go into the answer to the command.
    std::size_t room(const Command& command) const;
    void closeChannel();

    std::shared_ptr<const ChipContents> contents_;
    BasicAccess basicAccess_;
    Pace pace_;
    Access access_ = Access::none;
    std::optional<SecureChannel> channel_{};
    /// The channel that takes over when the answer under way has been sent.
    std::optional<SecureChannel> nextChannel_{};
    bool isInApplication_ = false;
    std::optional<std::uint16_t> file_{};
    /// The parts of a chained command so far.
    std::optional<Command> chain_{};
    /// What GET RESPONSE will give.
    Bytes rest_{};
    bool isSecured_ = false;
    bool awaitsChipKey_ = false;
};

} // namespace kivo::simulator::chip
