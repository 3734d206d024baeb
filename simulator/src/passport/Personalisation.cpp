#include "passport/Personalisation.hpp"

#include "passport/Issuing.hpp"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace kivo::simulator::chip {
namespace {

bool has(const PassportConfiguration& configuration, ChipFault::Kind kind) {
    return configuration.fault && configuration.fault->kind() == kind;
}

void requirePossible(const PassportConfiguration& configuration) {
    const auto isChipMapping = [](const PaceOffer& offer) { return offer.mapping == PaceMapping::chipAuthentication; };
    for (const auto& offer : configuration.pace) {
        constexpr int p224 = 10; // its prime is not of the form 4k + 3
        const auto agreement = KeyAgreement::make(offer.domainParameters);
        const bool isPossible =
            agreement && (!isChipMapping(offer) || (agreement->isCurve() && offer.cipher != ChipCipher::tripleDes)) &&
            (offer.mapping != PaceMapping::integrated || offer.domainParameters != p224);
        if (!isPossible) {
            throw std::runtime_error{"simulator: no chip can offer PACE of this form"};
        }
    }
    if (std::ranges::count_if(configuration.pace, isChipMapping) > 1) {
        throw std::runtime_error{"simulator: a chip has one form of chip authentication mapping at most"};
    }
}

SignerState signerStateWith(const std::optional<ChipFault>& fault) {
    if (!fault) {
        return SignerState::sound;
    }
    return fault->kind() == ChipFault::Kind::expiredSigner   ? SignerState::expired
           : fault->kind() == ChipFault::Kind::revokedSigner ? SignerState::revoked
                                                             : SignerState::sound;
}

/// Changes the face's record without harm to the picture: the byte that tells the sex.
void changeFace(Bytes& group) {
    constexpr std::array<std::uint8_t, 4> mark{'F', 'A', 'C', 0};
    constexpr std::ptrdiff_t place = 14 + 6;
    const auto record = std::ranges::search(group, mark).begin();
    *(record + place) ^= 1U;
}

/// The group with a head that claims 15 MiB.
Bytes withoutEnd(const Bytes& group) {
    constexpr std::size_t head = 4;
    return joined({Bytes{0x75, 0x83, 0xF0, 0x00, 0x00}, View{group}.subspan(head)});
}

/// The files of card and application, signed.
void addFiles(ChipContents& contents, const PassportConfiguration& configuration, const ChipKeyRing& keys) {
    const auto authority = has(configuration, ChipFault::Kind::unknownCountry)
                               ? std::make_shared<const CountryAuthority>("ZZ")
                               : configuration.authority;
    const auto signer = makeSigner(*authority, configuration.signature, signerStateWith(configuration.fault));
    contents.application = dataGroups(configuration, configuration.zone, keys);
    std::map<int, Bytes> groups;
    for (const auto& [identifier, content] : contents.application) {
        groups.emplace(identifier & 0xFF, content);
    }
    contents.application.emplace(commonFile, commonData(contents.application));
    contents.application.emplace(securityFile, securityObject(signer, configuration.digest, groups));
    contents.card.emplace(attributesFile, cardAttributes(configuration.extendedLength));
    if (!configuration.pace.empty()) {
        contents.card.emplace(cardAccessFile, cardAccess(configuration));
    }
    if (keys.mapping) {
        contents.card.emplace(securityFile, cardSecurity(signer, configuration.digest,
                                                         cardSecurityContent(configuration, *keys.mapping)));
    }
}

} // namespace

void complete(PassportConfiguration& configuration) {
    requirePossible(configuration);
    if (configuration.zone.empty()) {
        configuration.zone = specimenLines(configuration.format);
    }
    if (!configuration.authority) {
        configuration.authority = std::make_shared<CountryAuthority>();
    }
}

ChipKeyRing makeKeys(const PassportConfiguration& configuration) {
    ChipKeyRing keys;
    for (const auto& offer : configuration.pace) {
        if (offer.mapping == PaceMapping::chipAuthentication) {
            keys.mapping = std::make_shared<AgreementKey>(
                ChipAuthenticationOffer{.cipher = offer.cipher, .domainParameters = offer.domainParameters},
                configuration.random);
        }
    }
    if (configuration.chipAuthentication) {
        keys.agreement = std::make_shared<AgreementKey>(*configuration.chipAuthentication, configuration.random);
    }
    if (configuration.activeAuthentication != ActiveAuthentication::none) {
        // The answer with a longer key does not fit into a short one.
        const int bits = configuration.extendedLength ? 2048 : 1024;
        keys.active = std::make_shared<ActiveKey>(configuration.activeAuthentication, configuration.digest, bits);
    }
    return keys;
}

std::shared_ptr<const ChipContents> issuedContents(const PassportConfiguration& configuration,
                                                   const ChipKeyRing& signedKeys) {
    using enum ChipFault::Kind;
    constexpr auto unknown = "a key that nobody has";
    const bool refuses = has(configuration, refusesKey);
    const auto keys = has(configuration, copy) ? makeKeys(configuration) : signedKeys;
    auto contents = std::make_shared<ChipContents>();
    addFiles(*contents, configuration, signedKeys);
    contents->basicAccess = configuration.basicAccess;
    contents->extendedLength = configuration.extendedLength;
    contents->agreementKey = keys.agreement;
    contents->activeKey = keys.active;
    contents->random = configuration.random;
    contents->secrets = {.offers = configuration.pace,
                         .zoneInformation =
                             refuses ? unknown : valuesOf(configuration.format, configuration.zone).information,
                         .cardAccessNumber = refuses ? unknown : configuration.cardAccessNumber,
                         .mappingKey = keys.mapping ? keys.mapping->secret() : Bytes{}};
    auto& face = contents->application.at(faceFile);
    if (has(configuration, falseDigest)) {
        changeFace(face);
    }
    if (has(configuration, endlessFiles)) {
        face = withoutEnd(face);
        contents->endlessFile = faceFile;
    }
    return contents;
}

} // namespace kivo::simulator::chip
