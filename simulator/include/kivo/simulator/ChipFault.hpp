#pragma once

#include <chrono>
#include <cstddef>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::simulator {

/// A way in which a simulated chip, or the state that issued the chip, can misbehave.
class ChipFault {
public:
    /// What is wrong; the functions below make one of each.
    enum class Kind {
        refusesKey,
        takenAway,
        falseDigest,
        expiredSigner,
        unknownCountry,
        revokedSigner,
        slow,
        silent,
        garbage,
        replay,
        shortAnswers,
        endlessFiles,
        copy,
    };

    /// Refuses every key, also the right one.
    static ChipFault refusesKey() { return ChipFault{Kind::refusesKey}; }

    /// Is taken off the reader as soon as its answers have that many bytes in all, in the middle of an answer where the
    /// number says so.
    static ChipFault takenAway(std::size_t afterBytes) {
        ChipFault fault{Kind::takenAway};
        fault.bytes_ = afterBytes;
        return fault;
    }

    /// Holds a face that was changed after the document was signed.
    static ChipFault falseDigest() { return ChipFault{Kind::falseDigest}; }

    /// Was signed with a certificate that had run out.
    static ChipFault expiredSigner() { return ChipFault{Kind::expiredSigner}; }

    /// Was issued by a state whose authority nobody knows.
    static ChipFault unknownCountry() { return ChipFault{Kind::unknownCountry}; }

    /// Was signed with a certificate that is on the authority's revocation list.
    static ChipFault revokedSigner() { return ChipFault{Kind::revokedSigner}; }

    /// Takes that long for every answer.
    static ChipFault slow(std::chrono::milliseconds each) {
        ChipFault fault{Kind::slow};
        fault.time_ = each;
        return fault;
    }

    /// Never answers a READ BINARY. The call waits until the chip is taken away or destroyed.
    static ChipFault silent() { return ChipFault{Kind::silent}; }

    /// Answers READ BINARY with bytes of chance.
    static ChipFault garbage() { return ChipFault{Kind::garbage}; }

    /// Answers every READ BINARY but the first with its former answer.
    static ChipFault replay() { return ChipFault{Kind::replay}; }

    /// Leaves the second half of its answers to READ BINARY out.
    static ChipFault shortAnswers() { return ChipFault{Kind::shortAnswers}; }

    /// Holds a face file that claims 15 MiB, and gives bytes for as long as they are read.
    static ChipFault endlessFiles() { return ChipFault{Kind::endlessFiles}; }

    /// Is a copy: the signed files are right, but the chip lacks the private keys that belong to them.
    static ChipFault copy() { return ChipFault{Kind::copy}; }

    /// What is wrong.
    Kind kind() const { return kind_; }

    /// The bytes of the answers before the chip is taken away.
    std::size_t bytes() const { return bytes_; }

    /// The time that a slow chip takes for an answer.
    std::chrono::milliseconds time() const { return time_; }

    bool operator==(const ChipFault&) const = default;

private:
    explicit ChipFault(Kind kind)
        : kind_{kind} {}

    Kind kind_;
    std::size_t bytes_ = 0;
    std::chrono::milliseconds time_{0};
};

/// A chip's fault with a name, for a command line or a list on a screen.
struct NamedChipFault {
    /// One word, such as "garbage".
    std::string_view name;
    /// The behaviour of the chip, as the rest of a sentence: "answers with bytes of chance".
    std::string_view meaning;
    ChipFault fault;
};

/// The faults of a chip that programs offer, in the order in which they are shown. Callable from any thread.
const std::vector<NamedChipFault>& namedChipFaults();

/// The fault that a text names: a name of `namedChipFaults()`, or `taken-away:4096` with a number of bytes, or
/// `slow:250ms` with a time of at most ten minutes. The error is the end of a sentence that begins with the text's
/// origin: "takes ...". Callable from any thread.
std::expected<ChipFault, std::string> chipFaultFromText(std::string_view text);

} // namespace kivo::simulator
