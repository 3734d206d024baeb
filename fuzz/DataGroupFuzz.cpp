#include "FuzzInput.hpp"
#include "files/DataGroups.hpp"
#include "files/FaceImage.hpp"

using namespace kivo::reader;

namespace {

void requireText(const std::string& text) {
    kivo::fuzz::require(text.size() <= 1024);
    for (const char letter : text) {
        kivo::fuzz::require(static_cast<unsigned char>(letter) >= 0x20 && letter != 0x7F);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes{data, size};
    if (const auto com = comOf(bytes)) {
        kivo::fuzz::require(com->groups.size() <= 16);
    }
    if (const auto zone = zoneOf(bytes)) {
        for (const auto& line : zone->lines) {
            kivo::fuzz::require(checkDigit(line).has_value()); // has a zone's letters only
        }
        kivo::fuzz::require(parsedZone(zone->lines)->documentNumber == zone->documentNumber);
        kivo::fuzz::require(repairedZone(zone->lines)->lines == zone->lines);
    }
    if (const auto face = faceOf(bytes)) {
        kivo::fuzz::require(!face->image.empty() && face->image.size() < size);
    }
    if (const auto person = personOf(bytes)) {
        for (const auto* text : {&person->fullName, &person->address, &person->telephone, &person->dateOfBirth}) {
            requireText(*text);
        }
        kivo::fuzz::require(person->otherNames.size() <= 16);
    }
    if (const auto details = detailsOf(bytes)) {
        requireText(details->authority);
    }
    if (const auto image = signatureImageOf(bytes)) {
        kivo::fuzz::require(image->size() < size);
    }
    // The same bytes as lines that were recognised.
    std::vector<std::string> lines(1);
    for (const auto byte : bytes) {
        if (byte == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += static_cast<char>(byte);
        }
    }
    if (const auto zone = repairedZone(lines)) {
        kivo::fuzz::require(parsedZone(zone->lines).has_value());
    }
    return 0;
}
