#include "access/SecurityInfos.hpp"

#include "tlv/Tlv.hpp"

#include <algorithm>
#include <array>

namespace kivo::reader {
namespace {

constexpr std::uint32_t set = 0x31;
constexpr std::uint32_t sequence = 0x30;
constexpr std::uint32_t integer = 0x02;
constexpr std::uint32_t objectIdentifier = 0x06;

// bsi-de protocols(2) smartcard(2): 0.4.0.127.0.7.2.2
constexpr std::array<std::uint8_t, 7> protocols{0x04, 0x00, 0x7F, 0x00, 0x07, 0x02, 0x02};
constexpr std::uint8_t publicKeyProtocol = 1;
constexpr std::uint8_t chipAuthenticationProtocol = 3;
constexpr std::uint8_t paceProtocol = 4;

std::optional<Cipher> cipherOf(std::uint8_t number) {
    switch (number) {
    case 1:
        return Cipher::tripleDes;
    case 2:
        return Cipher::aes128;
    case 3:
        return Cipher::aes192;
    case 4:
        return Cipher::aes256;
    default:
        return std::nullopt;
    }
}

std::optional<int> smallNumber(const Tlv& object) {
    if (object.tag != integer || object.value.size() != 1 || object.value[0] > 0x7F) {
        return std::nullopt;
    }
    return object.value[0];
}

Bytes copyOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

// PACEInfo: protocol, version, number of the domain parameters. The variants are told apart by the last two numbers of
// the protocol.
void addPace(SecurityInfos& infos, ByteView protocol, ByteView arcs, const std::vector<Tlv>& members) {
    struct Variant {
        Mapping mapping;
        bool isElliptic;
    };

    constexpr std::array<std::optional<Variant>, 7> variants{std::nullopt,
                                                             Variant{Mapping::generic, false},
                                                             Variant{Mapping::generic, true},
                                                             Variant{Mapping::integrated, false},
                                                             Variant{Mapping::integrated, true},
                                                             std::nullopt,
                                                             Variant{Mapping::chipAuthentication, true}};
    infos.offersPace = true;
    if (arcs.size() != 2 || arcs[0] >= variants.size() || !variants[arcs[0]] || members.size() < 3) {
        return;
    }
    const auto cipher = cipherOf(arcs[1]);
    const auto version = smallNumber(members[1]);
    const auto parameter = smallNumber(members[2]);
    const auto& variant = *variants[arcs[0]];
    if (!cipher || version != 2 || !parameter ||
        (variant.mapping == Mapping::chipAuthentication && *cipher == Cipher::tripleDes)) {
        return;
    }
    infos.pace.push_back({.protocol = copyOf(protocol),
                          .mapping = variant.mapping,
                          .isElliptic = variant.isElliptic,
                          .cipher = *cipher,
                          .parameter = *parameter});
}

std::optional<Bytes> keyNumberIn(const std::vector<Tlv>& members) {
    return members.size() > 2 && members[2].tag == integer ? std::optional{copyOf(members[2].value)} : std::nullopt;
}

void addChipAuthentication(SecurityInfos& infos, ByteView protocol, ByteView arcs, const std::vector<Tlv>& members) {
    const auto cipher = arcs.size() == 2 && (arcs[0] == 1 || arcs[0] == 2) ? cipherOf(arcs[1]) : std::nullopt;
    if (cipher && members.size() >= 2 && smallNumber(members[1]) == 1) {
        infos.chipAuthentication.push_back({.protocol = copyOf(protocol),
                                            .isElliptic = arcs[0] == 2,
                                            .cipher = *cipher,
                                            .keyNumber = keyNumberIn(members)});
    }
}

void addKey(SecurityInfos& infos, ByteView arcs, const std::vector<Tlv>& members) {
    if (arcs.size() == 1 && (arcs[0] == 1 || arcs[0] == 2) && members.size() >= 2 && members[1].tag == sequence) {
        infos.keys.push_back({.subjectPublicKeyInfo = encodedTlv(sequence, members[1].value),
                              .isElliptic = arcs[0] == 2,
                              .keyNumber = keyNumberIn(members)});
    }
}

} // namespace

std::optional<SecurityInfos> securityInfosIn(ByteView bytes) {
    const auto whole = firstTlv(bytes);
    const auto objects = whole && whole->tag == set ? allTlv(whole->value) : std::nullopt;
    if (!objects) {
        return std::nullopt;
    }
    SecurityInfos infos;
    for (const auto& object : *objects) {
        const auto members = object.tag == sequence ? allTlv(object.value) : std::nullopt;
        if (!members || members->empty() || (*members)[0].tag != objectIdentifier) {
            return std::nullopt;
        }
        const auto protocol = (*members)[0].value;
        if (protocol.size() <= protocols.size() || !std::ranges::equal(protocol.first(protocols.size()), protocols)) {
            continue;
        }
        const auto kind = protocol[protocols.size()];
        const auto arcs = protocol.subspan(protocols.size() + 1);
        if (kind == paceProtocol) {
            addPace(infos, protocol, arcs, *members);
        } else if (kind == chipAuthenticationProtocol) {
            addChipAuthentication(infos, protocol, arcs, *members);
        } else if (kind == publicKeyProtocol) {
            addKey(infos, arcs, *members);
        }
    }
    return infos;
}

} // namespace kivo::reader
