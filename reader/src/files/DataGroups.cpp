#include "files/DataGroups.hpp"

#include "files/Texts.hpp"
#include "tlv/Tlv.hpp"

#include <algorithm>
#include <array>

namespace kivo::reader {
namespace {

constexpr std::size_t mostOtherNames = 16;

// The value of a file that is one data object with this tag.
std::optional<ByteView> fileValue(ByteView file, std::uint32_t tag) {
    const auto object = firstTlv(file);
    return object && object->tag == tag ? std::optional{object->value} : std::nullopt;
}

std::optional<int> groupOf(std::uint8_t tag) {
    constexpr std::array<std::uint8_t, 16> tags{0x61, 0x75, 0x63, 0x76, 0x65, 0x66, 0x67, 0x68,
                                                0x69, 0x6A, 0x6B, 0x6C, 0x6D, 0x6E, 0x6F, 0x70};
    const auto* found = std::ranges::find(tags, tag);
    return found == tags.end() ? std::nullopt : std::optional{static_cast<int>(found - tags.begin()) + 1};
}

std::string digitsOf(ByteView bytes, std::uint32_t tag, std::size_t count) {
    const auto value = valueOf(bytes, tag);
    if (!value || value->size() != count || !std::ranges::all_of(*value, [](auto c) { return c >= '0' && c <= '9'; })) {
        return {};
    }
    return {value->begin(), value->end()};
}

// All values with the tag in the constructed object A0, which begins with their number.
std::vector<std::string> textsIn(ByteView group, std::uint32_t tag) {
    std::vector<std::string> texts;
    const auto list = valueOf(group, 0xA0);
    const auto objects = list ? allTlv(*list) : std::nullopt;
    if (objects) {
        for (const auto& object : *objects) {
            if (object.tag == tag && texts.size() < mostOtherNames) {
                texts.push_back(partedText(object.value));
            }
        }
    }
    return texts;
}

std::string textIn(ByteView group, std::uint32_t tag) {
    const auto value = valueOf(group, tag);
    return value ? partedText(*value) : std::string{};
}

std::string dateIn(ByteView group, std::uint32_t tag) {
    const auto value = valueOf(group, tag);
    return value ? longDate(*value) : std::string{};
}

// Reads numbers of several bytes, the highest first. Past the end every number is 0 and the cursor has failed.
class Cursor {
public:
    explicit Cursor(ByteView bytes)
        : rest(bytes) {}

    std::size_t number(std::size_t size) {
        std::size_t value = 0;
        for (const auto byte : take(size)) {
            value = value << 8 | byte;
        }
        return value;
    }

    ByteView take(std::size_t size) {
        if (hasFailed || size > rest.size()) {
            hasFailed = true;
            return {};
        }
        const auto taken = rest.first(size);
        rest = rest.subspan(size);
        return taken;
    }

    bool failed() const { return hasFailed; }

private:
    ByteView rest;
    bool hasFailed = false;
};

std::optional<FaceRecord> faceIn(ByteView record) {
    constexpr std::array<std::uint8_t, 8> head{'F', 'A', 'C', 0, '0', '1', '0', 0};
    constexpr std::size_t factsAfterPoints = 15; // sex, eyes, hair, properties, expression, pose
    constexpr std::size_t sizeOfPoint = 8;
    constexpr std::size_t sizeOfFacts = 20;
    constexpr std::size_t sizeOfImageFacts = 12;
    Cursor cursor{record};
    if (!std::ranges::equal(cursor.take(head.size()), head)) {
        return std::nullopt;
    }
    cursor.number(4); // of the record, which the data object has bounded already
    const auto faces = cursor.number(2);
    const auto size = cursor.number(4);
    const auto points = cursor.number(2);
    cursor.take(factsAfterPoints - 1);
    const auto before = sizeOfFacts + points * sizeOfPoint + sizeOfImageFacts;
    cursor.take(points * sizeOfPoint);
    cursor.number(1); // how the face is held
    const auto kind = cursor.number(1);
    const auto width = cursor.number(2);
    const auto height = cursor.number(2);
    cursor.take(6); // colours, source, device, quality
    if (faces == 0 || size <= before || kind > 1) {
        return std::nullopt;
    }
    const auto image = cursor.take(size - before);
    if (cursor.failed()) {
        return std::nullopt;
    }
    return FaceRecord{.kind = kind == 0 ? FaceRecord::Kind::jpeg : FaceRecord::Kind::jpeg2000,
                      .width = static_cast<int>(width),
                      .height = static_cast<int>(height),
                      .image = {image.begin(), image.end()}};
}

} // namespace

std::optional<Com> comOf(ByteView com) {
    const auto value = fileValue(com, 0x60);
    const auto tags = value ? valueOf(*value, 0x5C) : std::nullopt;
    if (!tags) {
        return std::nullopt;
    }
    Com list{.ldsVersion = digitsOf(*value, 0x5F01, 4), .unicodeVersion = digitsOf(*value, 0x5F36, 6)};
    for (const auto tag : *tags) {
        const auto group = groupOf(tag);
        if (!group || std::ranges::count(list.groups, *group) > 0) {
            return std::nullopt;
        }
        list.groups.push_back(*group);
    }
    return list;
}

std::optional<Zone> zoneOf(ByteView dg1) {
    const auto value = fileValue(dg1, 0x61);
    const auto text = value ? valueOf(*value, 0x5F1F) : std::nullopt;
    if (!text) {
        return std::nullopt;
    }
    for (const std::size_t length : {44U, 36U, 30U}) {
        if (text->size() == length * (length == 30 ? 3 : 2)) {
            std::vector<std::string> lines;
            for (auto rest = *text; !rest.empty(); rest = rest.subspan(length)) {
                lines.emplace_back(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(length));
            }
            return parsedZone(lines);
        }
    }
    return std::nullopt;
}

std::optional<FaceRecord> faceOf(ByteView dg2) {
    const auto value = fileValue(dg2, 0x75);
    const auto group = value ? valueOf(*value, 0x7F61) : std::nullopt;
    const auto templates = group ? allTlv(*group) : std::nullopt;
    if (!templates) {
        return std::nullopt;
    }
    for (const auto& each : *templates) {
        for (const std::uint32_t tag : {0x5F2EU, 0x7F2EU}) {
            const auto block = each.tag == 0x7F60 ? valueOf(each.value, tag) : std::nullopt;
            if (auto face = block ? faceIn(*block) : std::nullopt) {
                return face;
            }
        }
    }
    return std::nullopt;
}

std::optional<Bytes> signatureImageOf(ByteView dg7) {
    const auto value = fileValue(dg7, 0x67);
    const auto image = value ? valueOf(*value, 0x5F43) : std::nullopt;
    return image && !image->empty() ? std::optional{Bytes{image->begin(), image->end()}} : std::nullopt;
}

std::optional<AdditionalPerson> personOf(ByteView dg11) {
    const auto value = fileValue(dg11, 0x6B);
    if (!value) {
        return std::nullopt;
    }
    return AdditionalPerson{.fullName = textIn(*value, 0x5F0E),
                            .otherNames = textsIn(*value, 0x5F0F),
                            .personalNumber = textIn(*value, 0x5F10),
                            .dateOfBirth = dateIn(*value, 0x5F2B),
                            .placeOfBirth = textIn(*value, 0x5F11),
                            .address = textIn(*value, 0x5F42),
                            .telephone = textIn(*value, 0x5F12),
                            .profession = textIn(*value, 0x5F13),
                            .title = textIn(*value, 0x5F14),
                            .summary = textIn(*value, 0x5F15),
                            .otherDocuments = textIn(*value, 0x5F17),
                            .custody = textIn(*value, 0x5F18)};
}

std::optional<AdditionalDocument> detailsOf(ByteView dg12) {
    const auto value = fileValue(dg12, 0x6C);
    if (!value) {
        return std::nullopt;
    }
    return AdditionalDocument{.authority = textIn(*value, 0x5F19),
                              .dateOfIssue = dateIn(*value, 0x5F26),
                              .otherPersons = textsIn(*value, 0x5F1A),
                              .endorsements = textIn(*value, 0x5F1B),
                              .taxAndExit = textIn(*value, 0x5F1C)};
}

} // namespace kivo::reader
