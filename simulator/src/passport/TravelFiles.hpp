#pragma once

#include "passport/Chip.hpp"

namespace kivo::simulator::chip {

/// What a document's zone tells.
struct ZoneValues {
    std::string documentNumber{};
    std::string dateOfBirth{};
    std::string dateOfExpiry{};
    /// The name as the zone has it, without fillers at the end.
    std::string name{};
    /// Number, birth and expiry, each with its check digit: what opens the chip.
    std::string information{};
};

/// The lines of the specimen of a format.
std::vector<std::string> specimenLines(DocumentFormat format);

/// Throws `std::runtime_error` where lines have another number or length than the format.
ZoneValues valuesOf(DocumentFormat format, const std::vector<std::string>& lines);

/// The keys of a chip.
struct ChipKeyRing {
    std::shared_ptr<const AgreementKey> mapping{};
    std::shared_ptr<const AgreementKey> agreement{};
    std::shared_ptr<const ActiveKey> active{};
};

/// The files of a passport's application without COM and SOD.
FileSystem dataGroups(const PassportConfiguration& configuration, const std::vector<std::string>& lines,
                      const ChipKeyRing& keys);

/// COM, which lists the groups.
Bytes commonData(const FileSystem& groups);

/// EF.CardAccess: the forms of PACE. The same infos open EF.CardSecurity and DG14.
Bytes cardAccess(const PassportConfiguration& configuration);

/// The signed content of EF.CardSecurity.
Bytes cardSecurityContent(const PassportConfiguration& configuration, const AgreementKey& mappingKey);

/// EF.ATR/INFO, which tells the lengths of commands and answers.
Bytes cardAttributes(bool extendedLength);

} // namespace kivo::simulator::chip
