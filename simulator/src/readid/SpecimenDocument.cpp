#include "SpecimenDocument.hpp"

#include <numeric>

namespace kivo::simulator {
namespace {

constexpr std::size_t portraitSize = std::size_t{15} * 1024;
constexpr std::size_t signatureSize = 1900;

/// Bytes that look like nothing in particular and are the same every time.
std::string filler(std::size_t size, unsigned seed) {
    std::string bytes(size, '\0');
    for (auto& byte : bytes) {
        seed = seed * 1103515245U + 12345U;
        byte = static_cast<char>(seed >> 16U);
    }
    return bytes;
}

} // namespace

std::string SpecimenDocument::dg1() const {
    const auto zone = std::accumulate(mrz.begin(), mrz.end(), std::string{});
    // Tag and length of the data group, then of the zone in it; no zone is longer than one length byte can tell.
    const auto length = static_cast<char>(zone.size());
    return std::string{'\x61', static_cast<char>(zone.size() + 3), '\x5f', '\x1f', length} + zone;
}

std::string SpecimenDocument::dg2() {
    return filler(portraitSize, 2);
}

std::string SpecimenDocument::sod() {
    return filler(signatureSize, 3);
}

SpecimenDocument specimenDocument(platform::readid::DocumentType type) {
    using enum platform::readid::DocumentType;
    switch (type) {
    case identityCardTD1:
        return {.kind = "identityCardTD1",
                .mrz = {"I<UTOD231458907<<<<<<<<<<<<<<<", "7408122F1204159UTO<<<<<<<<<<<6",
                        "ERIKSSON<<ANNA<MARIA<<<<<<<<<<"}};
    case identityCardTD2:
        return {.kind = "identityCardTD2",
                .mrz = {"I<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<", "D231458907UTO7408122F1204159<<<<<<<6"}};
    case passport:
        break;
    }
    return {.kind = "passport",
            .mrz = {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L898902C36UTO7408122F1204159ZE184226B<<<<<10"}};
}

} // namespace kivo::simulator
