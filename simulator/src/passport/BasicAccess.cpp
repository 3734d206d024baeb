#include "passport/BasicAccess.hpp"

#include <utility>

namespace kivo::simulator::chip {
namespace {

constexpr auto des = ChipCipher::tripleDes;
constexpr std::size_t challengeSize = 8;
constexpr std::size_t secretSize = 16;
constexpr std::size_t cryptogramSize = 2 * challengeSize + secretSize;

} // namespace

BasicAccess::BasicAccess(std::string_view zoneInformation) {
    auto seed = digest(HashFunction::sha1, viewOf(zoneInformation));
    seed.resize(secretSize);
    encryptionKey_ = derivedKey(des, seed, Purpose::encryption);
    authenticationKey_ = derivedKey(des, seed, Purpose::authentication);
}

Answer BasicAccess::challenge(const Random& random) {
    challenge_ = randomBytes(random, challengeSize);
    return *challenge_;
}

Answer BasicAccess::authenticate(View data, const Random& random, std::optional<SecureChannel>& channel) {
    const auto challenge = std::exchange(challenge_, std::nullopt);
    if (!challenge) {
        return Status::conditionsNotMet;
    }
    if (data.size() != cryptogramSize + challengeSize) {
        return Status::wrongLength;
    }
    const auto cryptogram = data.first(cryptogramSize);
    const auto plain = decrypted(des, encryptionKey_, cryptogram);
    const auto theirChallenge = View{plain}.first(challengeSize);
    const auto theirSecret = View{plain}.last(secretSize);
    if (!areEqual(authenticationCode(des, authenticationKey_, cryptogram), data.subspan(cryptogramSize)) ||
        !areEqual(*challenge, View{plain}.subspan(challengeSize, challengeSize))) {
        return Status::authenticationFailed;
    }
    const auto ownSecret = randomBytes(random, secretSize);
    auto shared = ownSecret;
    for (std::size_t each = 0; each < secretSize; ++each) {
        shared[each] ^= theirSecret[each];
    }
    channel.emplace(des, shared, joined({View{*challenge}.last(4), theirChallenge.last(4)}));
    const auto answer = encrypted(des, encryptionKey_, joined({*challenge, theirChallenge, ownSecret}));
    return joined({answer, authenticationCode(des, authenticationKey_, answer)});
}

} // namespace kivo::simulator::chip
