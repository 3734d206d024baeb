#pragma once

#include "reading/ChipReading.hpp"
#include "screens/ScreenText.hpp"

#include <kivo/platform/ReadID.hpp>

namespace kivo::reader {

/// A failed step, for the host and for the person.
struct FailedStep {
    platform::readid::FailureReason reason = platform::readid::FailureReason::other;
    /// What happened, and what to do.
    ScreenText title{};
    ScreenText sentence{};
    /// Whether the same step can succeed when it is taken again.
    bool isWorthRetrying = true;
    /// Whether other values may open the chip.
    bool isOfKey = false;
};

/// Why the chip was not read.
FailedStep failedStep(ChipFailure failure);

/// Why the document was not sent.
FailedStep failedSending(platform::readid::FailureReason reason);

/// The document is of a kind that the host does not allow.
FailedStep wrongDocument();

} // namespace kivo::reader
