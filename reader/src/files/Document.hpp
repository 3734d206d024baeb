#pragma once

#include <kivo/reader/Card.hpp>

#include <cstdint>
#include <map>
#include <string_view>

namespace kivo::reader {

/// The files of an electronic travel document that a reading knows (ICAO Doc 9303 part 10).
enum class DocumentFile { cardAccess, cardSecurity, com, sod, dg1, dg2, dg7, dg11, dg12, dg14, dg15 };

/// The files that were read, each as the chip gave it, tag and length included.
using Files = std::map<DocumentFile, Bytes>;

} // namespace kivo::reader
