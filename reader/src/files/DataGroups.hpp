#pragma once

#include "files/Zone.hpp"

#include <kivo/reader/Card.hpp>

#include <optional>
#include <string>
#include <vector>

/// The data groups of an electronic travel document (ICAO Doc 9303 part 10), taken apart. Each function takes a file as
/// the chip gave it, tag and length included, and returns nothing for a file that is no such group. Personal data:
/// never logged.
namespace kivo::reader {

/// What the chip says that it holds. Nobody has signed this list.
struct Com {
    /// Four and six digits, such as "0107" and "040000".
    std::string ldsVersion{};
    std::string unicodeVersion{};
    /// The numbers of the data groups, 1 to 16, in the chip's order.
    std::vector<int> groups{};
};

std::optional<Com> comOf(ByteView com);

/// The zone of DG1, where its check digits agree.
std::optional<Zone> zoneOf(ByteView dg1);

/// The first face of DG2 (ISO/IEC 19794-5), still encoded.
struct FaceRecord {
    enum class Kind { jpeg, jpeg2000 };
    /// As the record says. The image itself is what decides.
    Kind kind = Kind::jpeg;
    int width = 0;
    int height = 0;
    Bytes image{};
};

std::optional<FaceRecord> faceOf(ByteView dg2);

/// The first picture of the signature or usual mark of DG7, still encoded.
std::optional<Bytes> signatureImageOf(ByteView dg7);

/// What DG11 adds about the person. A text that is absent is empty; no text is longer than 1024 bytes of UTF-8. The
/// parts of a name or an address are apart by commas.
struct AdditionalPerson {
    std::string fullName{};
    std::vector<std::string> otherNames{};
    std::string personalNumber{};
    /// Eight digits: year, month, day.
    std::string dateOfBirth{};
    std::string placeOfBirth{};
    std::string address{};
    std::string telephone{};
    std::string profession{};
    std::string title{};
    std::string summary{};
    std::string otherDocuments{};
    std::string custody{};
};

std::optional<AdditionalPerson> personOf(ByteView dg11);

/// What DG12 adds about the document, in texts as of `AdditionalPerson`.
struct AdditionalDocument {
    std::string authority{};
    /// Eight digits: year, month, day.
    std::string dateOfIssue{};
    std::vector<std::string> otherPersons{};
    std::string endorsements{};
    std::string taxAndExit{};
};

std::optional<AdditionalDocument> detailsOf(ByteView dg12);

} // namespace kivo::reader
