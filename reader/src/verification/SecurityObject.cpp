#include "verification/SecurityObject.hpp"

#include "tlv/ObjectIdentifier.hpp"
#include "tlv/Tlv.hpp"

namespace kivo::reader {
namespace {

constexpr std::uint32_t integer = 0x02;
constexpr std::uint32_t octets = 0x04;
constexpr std::uint32_t sequence = 0x30;

std::optional<int> smallNumber(const Tlv& object) {
    return object.tag == integer && object.value.size() == 1 ? std::optional{int{object.value[0]}} : std::nullopt;
}

} // namespace

std::optional<SecurityObject> securityObjectIn(ByteView content) {
    const auto whole = firstTlv(content);
    const auto parts = whole && whole->tag == sequence ? allTlv(whole->value) : std::nullopt;
    if (!parts || parts->size() < 3) {
        return std::nullopt;
    }
    const auto version = smallNumber((*parts)[0]);
    const auto function = valueOf((*parts)[1].value, 0x06);
    const auto list = allTlv((*parts)[2].value);
    // Version 1 adds the versions of the data structure and of Unicode.
    if (!version || *version > 1 || parts->size() != 3U + static_cast<unsigned>(*version) || !function || !list) {
        return std::nullopt;
    }
    SecurityObject object{.digestFunction = dottedIdentifier(*function)};
    for (const auto& entry : *list) {
        const auto pair = entry.tag == sequence ? allTlv(entry.value) : std::nullopt;
        const auto group = pair && pair->size() == 2 ? smallNumber((*pair)[0]) : std::nullopt;
        if (!group || *group < 1 || *group > 16 || (*pair)[1].tag != octets ||
            !object.digests.emplace(*group, Bytes{(*pair)[1].value.begin(), (*pair)[1].value.end()}).second) {
            return std::nullopt;
        }
    }
    return object;
}

} // namespace kivo::reader
