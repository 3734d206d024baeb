#pragma once

#include <kivo/ResponseCode.hpp>
#include <kivo/platform/ReadID.hpp>

namespace kivo {

/// The code for a failed reading. With a document list, a person who leaves the reading only comes back to the choice.
ResponseCode readingFailureCode(platform::readid::FailureReason reason, bool isDocListAvailable);

} // namespace kivo
