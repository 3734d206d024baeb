#pragma once

#include <kivo/reader/Card.hpp>

#include <map>
#include <optional>
#include <string>

namespace kivo::reader {

/// What a document signer signs (ICAO Doc 9303 part 10): the digests of the data groups.
struct SecurityObject {
    /// The digest function, in dotted form.
    std::string digestFunction{};
    /// By the number of the group, 1 to 16.
    std::map<int, Bytes> digests{};
};

/// Takes the object's versions 0 and 1. Absent for anything else, and where a group is named twice.
std::optional<SecurityObject> securityObjectIn(ByteView content);

} // namespace kivo::reader
