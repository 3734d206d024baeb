#pragma once

#include <kivo/platform/ReadID.hpp>

#include <string>
#include <vector>

namespace kivo::simulator {

/// A document of the state that exists in specimens only.
struct SpecimenDocument {
    /// Its kind, in the words of the simulated document proxy.
    std::string kind;
    /// The lines of the machine readable zone (ICAO 9303).
    std::vector<std::string> mrz;

    /// The chip's data groups with the machine readable zone and with the portrait.
    std::string dg1() const;
    static std::string dg2();
    /// The chip's signature over its data groups.
    static std::string sod();
};

SpecimenDocument specimenDocument(platform::readid::DocumentType type);

} // namespace kivo::simulator
