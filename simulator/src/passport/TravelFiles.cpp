#include "passport/TravelFiles.hpp"

#include "passport/Pictures.hpp"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace kivo::simulator::chip {
namespace {

struct Format {
    std::size_t lines;
    std::size_t letters;
};

Format shapeOf(DocumentFormat format) {
    switch (format) {
    case DocumentFormat::td1:
        return {.lines = 3, .letters = 30};
    case DocumentFormat::td2:
        return {.lines = 2, .letters = 36};
    case DocumentFormat::td3:
        break;
    }
    return {.lines = 2, .letters = 44};
}

std::string withoutFillers(std::string text) {
    text.erase(text.find_last_not_of('<') + 1);
    return text;
}

/// Where the zone keeps the values that open the chip.
struct Fields {
    std::string number;
    std::string numberCheck;
    std::string optional;
    std::string birth;
    std::string expiry;
    std::string name;
};

Fields fieldsOf(DocumentFormat format, const std::vector<std::string>& lines) {
    if (format == DocumentFormat::td1) {
        return {.number = lines[0].substr(5, 9),
                .numberCheck = lines[0].substr(14, 1),
                .optional = lines[0].substr(15),
                .birth = lines[1].substr(0, 7),
                .expiry = lines[1].substr(8, 7),
                .name = lines[2]};
    }
    return {.number = lines[1].substr(0, 9),
            .numberCheck = lines[1].substr(9, 1),
            .optional = lines[1].substr(28, 7),
            .birth = lines[1].substr(13, 7),
            .expiry = lines[1].substr(21, 7),
            .name = lines[0].substr(5)};
}

/// Six digits with the century: a birth lies in the past, and an expiry in this century.
std::string withCentury(const std::string& date, bool isBirth) {
    return (isBirth && date.substr(0, 2) > "26" ? "19" : "20") + date;
}

std::string issueDateBefore(const std::string& expiry) {
    const auto year = std::stoi(withCentury(expiry, false).substr(0, 4)) - 10;
    return std::to_string(year) + expiry.substr(2);
}

/// The picture of at least `size` bytes: segments of a comment fill a JPEG file, a free box fills a JPEG 2000 file.
Bytes picture(FaceEncoding encoding, std::size_t size) {
    const auto drawn = encoding == FaceEncoding::jpeg ? face_jpg : face_jp2;
    auto missing = size - std::min(size, drawn.size());
    if (encoding == FaceEncoding::jpeg2000) {
        constexpr std::size_t head = 8;
        const auto length = std::max(missing, head);
        return missing == 0 ? copied(drawn)
                            : joined({drawn, bigEndian(length, 4), viewOf("free"), Bytes(length - head)});
    }
    auto result = copied(drawn.first(2));
    while (missing > 0) {
        constexpr std::size_t head = 4;
        constexpr std::size_t most = 0xF000;
        const auto length = std::clamp(missing, head, most);
        result = joined({result, Bytes{0xFF, 0xFE}, bigEndian(length - 2, 2), Bytes(length - head)});
        missing -= std::min(missing, length);
    }
    return joined({result, drawn.subspan(2)});
}

/// A face record of ISO 19794-5 with one picture.
Bytes faceRecord(FaceEncoding encoding, View image) {
    constexpr std::uint16_t width = 360;
    constexpr std::uint16_t height = 480;
    constexpr std::size_t headerSize = 14;
    constexpr std::size_t informationSize = 20 + 12;
    const auto size = informationSize + image.size();
    const Bytes noFeatures(16);
    const auto data = joined({bigEndian(size, 4), noFeatures,
                              // A full frontal picture in JPEG or JPEG 2000, its sides, sRGB, of unknown origin.
                              Bytes{1, static_cast<std::uint8_t>(encoding == FaceEncoding::jpeg ? 0 : 1)},
                              bigEndian(width, 2), bigEndian(height, 2), Bytes{1, 0, 0, 0, 0, 0}, image});
    return joined({Bytes{'F', 'A', 'C', 0, '0', '1', '0', 0}, bigEndian(headerSize + size, 4), bigEndian(1, 2), data});
}

Bytes faceGroup(const PassportConfiguration& configuration) {
    const auto record = faceRecord(configuration.face, picture(configuration.face, configuration.faceBytes));
    const auto header = object(0xA1, joined({object(0x80, Bytes{1, 1}), object(0x81, Bytes{2}),
                                             object(0x87, Bytes{1, 1}), object(0x88, Bytes{0, 8})}));
    const auto one = object(0x02, Bytes{1});
    return object(0x75, object(0x7F61, joined({one, object(0x7F60, joined({header, object(0x5F2E, record)}))})));
}

/// A group that begins with the list of its objects.
Bytes listedGroup(std::uint32_t tag, const std::vector<std::pair<std::uint16_t, std::string>>& objects) {
    Bytes list;
    Bytes values;
    for (const auto& [each, text] : objects) {
        list = joined({list, bigEndian(each, 2)});
        values = joined({values, object(each, text)});
    }
    return object(tag, joined({object(0x5C, list), values}));
}

/// A sequence that begins with an object identifier.
Bytes info(View identifier, View rest) {
    return object(0x30, joined({object(0x06, identifier), rest}));
}

Bytes integer(std::uint8_t number) {
    return object(0x02, Bytes{number});
}

/// A set of infos, in the order that DER asks for.
Bytes set(std::vector<Bytes> infos) {
    std::ranges::sort(infos);
    return object(0x31, std::accumulate(infos.begin(), infos.end(), Bytes{},
                                        [](const Bytes& left, const Bytes& right) { return joined({left, right}); }));
}

std::vector<Bytes> paceInfos(const PassportConfiguration& configuration) {
    std::vector<Bytes> infos;
    infos.reserve(configuration.pace.size());
    for (const auto& offer : configuration.pace) {
        infos.push_back(info(paceIdentifier(offer),
                             joined({integer(2), integer(static_cast<std::uint8_t>(offer.domainParameters))})));
    }
    return infos;
}

/// 0.4.0.127.0.7.2.2.1, then the kind of key.
Bytes publicKeyIdentifier(bool isCurve) {
    return {0x04, 0x00, 0x7F, 0x00, 0x07, 0x02, 0x02, 0x01, static_cast<std::uint8_t>(isCurve ? 2 : 1)};
}

Bytes securityGroup(const PassportConfiguration& configuration, const ChipKeyRing& keys) {
    auto infos = paceInfos(configuration);
    if (keys.agreement) {
        const bool isCurve = keys.agreement->offer().domainParameters > 2;
        infos.push_back(info(keys.agreement->identifier(), integer(1)));
        infos.push_back(info(publicKeyIdentifier(isCurve), keys.agreement->publicKeyInfo()));
    }
    if (configuration.activeAuthentication == ActiveAuthentication::ecdsa) {
        constexpr std::array<std::uint8_t, 6> active{0x67, 0x81, 0x08, 0x01, 0x01, 0x05};
        // 0.4.0.127.0.7.1.1.4.1, then the digest of the plain signature.
        const Bytes algorithm{
            0x04, 0x00, 0x7F, 0x00, 0x07,
            0x01, 0x01, 0x04, 0x01, static_cast<std::uint8_t>(std::to_underlying(configuration.digest) + 1)};
        infos.push_back(info(active, joined({integer(1), object(0x06, algorithm)})));
    }
    return infos.empty() ? Bytes{} : object(0x6E, set(std::move(infos)));
}

} // namespace

std::vector<std::string> specimenLines(DocumentFormat format) {
    switch (format) {
    case DocumentFormat::td1:
        return {"I<UTOD231458907<<<<<<<<<<<<<<<", "7408122F1204159UTO<<<<<<<<<<<6", "ERIKSSON<<ANNA<MARIA<<<<<<<<<<"};
    case DocumentFormat::td2:
        return {"I<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<", "D231458907UTO7408122F1204159<<<<<<<6"};
    case DocumentFormat::td3:
        break;
    }
    return {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L898902C36UTO7408122F1204159ZE184226B<<<<<10"};
}

ZoneValues valuesOf(DocumentFormat format, const std::vector<std::string>& lines) {
    const auto shape = shapeOf(format);
    if (lines.size() != shape.lines ||
        !std::ranges::all_of(lines, [&](const std::string& line) { return line.size() == shape.letters; })) {
        throw std::runtime_error{"simulator: the zone's lines do not have the format of the document"};
    }
    auto fields = fieldsOf(format, lines);
    if (format != DocumentFormat::td3 && fields.numberCheck == "<") {
        // A long number goes on among the optional data, and its check digit comes behind its end.
        const auto end = fields.optional.find('<');
        const auto rest = fields.optional.substr(0, end);
        fields.number += rest.substr(0, rest.size() - std::min<std::size_t>(rest.size(), 1));
        fields.numberCheck = rest.empty() ? "<" : rest.substr(rest.size() - 1);
    }
    return {.documentNumber = withoutFillers(fields.number),
            .dateOfBirth = fields.birth.substr(0, 6),
            .dateOfExpiry = fields.expiry.substr(0, 6),
            .name = withoutFillers(fields.name),
            .information = fields.number + fields.numberCheck + fields.birth + fields.expiry};
}

FileSystem dataGroups(const PassportConfiguration& configuration, const std::vector<std::string>& lines,
                      const ChipKeyRing& keys) {
    const auto values = valuesOf(configuration.format, lines);
    const auto zone = std::accumulate(lines.begin(), lines.end(), std::string{});
    FileSystem groups{{0x0101, object(0x61, object(0x5F1F, zone))}, {faceFile, faceGroup(configuration)}};
    if (configuration.furtherGroups) {
        const auto birth = withCentury(values.dateOfBirth, true);
        const auto issued = issueDateBefore(values.dateOfExpiry);
        groups.emplace(0x0107, object(0x67, joined({integer(1), object(0x5F43, signature_jpg)})));
        groups.emplace(0x010B, listedGroup(0x6B, {{0x5F0E, values.name}, {0x5F2B, birth}, {0x5F11, "ZENITH<UTOPIA"}}));
        groups.emplace(0x010C, listedGroup(0x6C, {{0x5F19, "PASSPORT OFFICE<UTOPIA"}, {0x5F26, issued}}));
    }
    if (auto security = securityGroup(configuration, keys); !security.empty()) {
        groups.emplace(0x010E, std::move(security));
    }
    if (keys.active) {
        groups.emplace(0x010F, object(0x6F, keys.active->publicKeyInfo()));
    }
    return groups;
}

Bytes commonData(const FileSystem& groups) {
    Bytes tags;
    for (const auto& [identifier, content] : groups) {
        tags.push_back(content.front());
    }
    return object(0x60, joined({object(0x5F01, "0106"), object(0x5F36, "040000"), object(0x5C, tags)}));
}

Bytes cardAccess(const PassportConfiguration& configuration) {
    return set(paceInfos(configuration));
}

Bytes cardSecurityContent(const PassportConfiguration& configuration, const AgreementKey& mappingKey) {
    // The standardised domain parameters have numbers: 0.4.0.127.0.7.1.2.
    const Bytes standardised{0x04, 0x00, 0x7F, 0x00, 0x07, 0x01, 0x02};
    const auto number = integer(static_cast<std::uint8_t>(mappingKey.offer().domainParameters));
    const auto key =
        object(0x30, joined({info(standardised, number), object(0x03, joined({Bytes{0}, mappingKey.publicKey()}))}));
    auto infos = paceInfos(configuration);
    infos.push_back(info(publicKeyIdentifier(true), joined({key, number})));
    return set(std::move(infos));
}

Bytes cardAttributes(bool extendedLength) {
    const auto length = object(0x02, bigEndian(longestMessage, 2));
    // The first two bytes of the card's capabilities tell of selection and data, the third of lengths and chains.
    const Bytes capabilities{0xC0, 0x01, static_cast<std::uint8_t>(extendedLength ? 0xC0 : 0x80)};
    return joined({object(0x47, capabilities), extendedLength ? object(0x7F66, joined({length, length})) : Bytes{}});
}

} // namespace kivo::simulator::chip
