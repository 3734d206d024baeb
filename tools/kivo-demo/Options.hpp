#pragma once

#include <kivo/SdkVersions.hpp>
#include <kivo/platform/ui/ContentSizeCategory.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/simulator/IdentityService.hpp>

#include <array>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace demo {

struct InjectedFault {
    kivo::simulator::Endpoint endpoint;
    std::string_view name;
    kivo::simulator::Fault fault;
};

/// One way in which a vendor's screens can end a step, named by the code that the host gets.
struct ScreenOutcome {
    std::string_view screen;
    std::string_view code;
    /// The vendor's own number for the outcome.
    int status;
    /// Whether interface version 18 keeps the outcome from the host, who has seen the person leave.
    bool isLeaving = false;
};

/// A content of the host's list of pins.
struct PinChoice {
    std::string_view name;
    std::string_view meaning;
};

inline constexpr std::array pinChoices{
    PinChoice{"leaf", "the pin of the service's leaf"},
    PinChoice{"intermediate", "the pin of the service's intermediate"},
    PinChoice{"other", "the pin of another service"},
    PinChoice{"empty", "no pin"},
};

/// A simulated passport on a card reader, as the person before the display knows it.
struct PassportOnDesk {
    /// How the chip is reached, as the rest of a sentence: "through ...".
    std::string way;
    /// The values that open the chip; the dates as six digits.
    std::string documentNumber;
    std::string dateOfBirth;
    std::string dateOfExpiry;
};

struct Options {
    std::string version{kivo::SdkVersions::all().back()};
    std::vector<InjectedFault> faults;
    /// The endings of the vendors' screens; a screen without an entry ends well.
    std::vector<ScreenOutcome> outcomes;
    /// The content of the host's list of pins: a name of `pinChoices`, or a pin itself. Empty for a bundle without a
    /// list.
    std::string pin;
    /// The join page of a running service; empty for a service of the demo's own.
    std::string service;
    /// The certificates that the host trusts, of a running service; empty for those of the system.
    std::string trusted;
    /// The activation code that joins.
    std::string code = "123456";
    /// The folder for pictures of the screens; empty for no pictures.
    std::string screens;
    /// The phone in the pictures: its display in points, the person's reading size, and the appearance.
    kivo::platform::Size display{.width = 390, .height = 844};
    kivo::platform::ContentSizeCategory readingSize = kivo::platform::ContentSizeCategory::large;
    bool isDark = false;
    /// Whether the passport is read by the document reader, from a simulated chip.
    bool chip = false;
    /// Set with `chip`, once the passport lies on the reader.
    PassportOnDesk passport;
    /// Whether the right code is scanned, not typed.
    bool scan = false;
    /// The picture from which the code is scanned; empty for a picture of the simulator's.
    std::string scanFile;
    bool json = false;
    bool log = false;

    const ScreenOutcome* outcomeOf(std::string_view screen) const;

    /// Whether the interface version keeps the chosen ending of a screen from the host.
    bool withholds(std::string_view screen) const;

    /// Whether no step is to be met by a fault.
    bool isSmooth() const { return faults.empty() && pin != "other" && pin != "empty"; }
};

/// The options of the command line, or the status to end with when the help was printed or a mistake was told.
std::expected<Options, int> parse(int argc, const char* const* argv);

} // namespace demo
