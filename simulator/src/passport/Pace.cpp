#include "passport/Pace.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace kivo::simulator::chip {
namespace {

constexpr std::size_t nonceSize = 16;
constexpr std::uint32_t dynamicTag = 0x7C;
constexpr std::uint8_t zonePassword = 1;
constexpr std::uint8_t numberPassword = 2;

/// The constants with which integrated mapping stretches its nonces, for blocks of 128 and of 256 bits.
constexpr std::array<std::uint8_t, 16> shortFirst{0xA6, 0x68, 0x89, 0x2A, 0x7C, 0x41, 0xE3, 0xCA,
                                                  0x73, 0x9F, 0x40, 0xB0, 0x57, 0xD8, 0x59, 0x04};
constexpr std::array<std::uint8_t, 16> shortSecond{0xA4, 0xE1, 0x36, 0xAC, 0x72, 0x5F, 0x73, 0x8B,
                                                   0x01, 0xC1, 0xF6, 0x02, 0x17, 0xC1, 0x88, 0xAD};
constexpr std::array<std::uint8_t, 32> longFirst{0xD4, 0x63, 0xD6, 0x52, 0x34, 0x12, 0x4E, 0xF7, 0x89, 0x70, 0x54,
                                                 0x98, 0x6D, 0xCA, 0x0A, 0x17, 0x4E, 0x28, 0xDF, 0x75, 0x8C, 0xBA,
                                                 0xA0, 0x3F, 0x24, 0x06, 0x16, 0x41, 0x4D, 0x5A, 0x16, 0x76};
constexpr std::array<std::uint8_t, 32> longSecond{0x54, 0xBD, 0x72, 0x55, 0xF0, 0xAA, 0xF8, 0x31, 0xBE, 0xC3, 0x42,
                                                  0x3F, 0xCF, 0x39, 0xD6, 0x9B, 0x6C, 0xBF, 0x06, 0x66, 0x77, 0xD0,
                                                  0xFA, 0xAE, 0x5A, 0xAD, 0xD9, 0x9D, 0xF8, 0xE5, 0x35, 0x17};

/// The bytes of chance to which integrated mapping stretches the chip's nonce under the terminal's.
Bytes stretched(ChipCipher cipher, View nonce, View theirs, std::size_t fieldBits) {
    const bool isLong = keySize(cipher) > nonceSize;
    const auto first = isLong ? View{longFirst} : View{shortFirst};
    const auto second = isLong ? View{longSecond} : View{shortSecond};
    Bytes result;
    auto key = encrypted(cipher, theirs, nonce);
    while (result.size() * 8 < fieldBits + 64) {
        key.resize(keySize(cipher));
        const auto part = encrypted(cipher, key, second);
        result.insert(result.end(), part.begin(), part.end());
        key = encrypted(cipher, key, first);
    }
    return result;
}

/// The value with the tag inside the one dynamic authentication object.
std::optional<View> dynamicValue(View data, std::uint32_t tag) {
    const auto outer = dataObjects(data);
    const auto inner = outer && outer->size() == 1 ? valueOf(*outer, dynamicTag) : std::nullopt;
    const auto objects = inner ? dataObjects(*inner) : std::nullopt;
    return objects ? valueOf(*objects, tag) : std::nullopt;
}

} // namespace

Bytes paceIdentifier(const PaceOffer& offer) {
    const bool isCurve = offer.domainParameters > 2;
    std::uint8_t kind = isCurve ? 2 : 1;
    if (offer.mapping == PaceMapping::integrated) {
        kind = isCurve ? 4 : 3;
    } else if (offer.mapping == PaceMapping::chipAuthentication) {
        kind = 6;
    }
    // 0.4.0.127.0.7.2.2.4, then mapping and cipher.
    return {0x04, 0x00, 0x7F, 0x00, 0x07,
            0x02, 0x02, 0x04, kind, static_cast<std::uint8_t>(std::to_underlying(offer.cipher) + 1)};
}

/// A run that has begun.
struct Pace::Run {
    enum class Step { nonce, mapping, agreement, confirmation };

    PaceOffer offer;
    std::uint8_t password;
    std::unique_ptr<KeyAgreement> agreement;
    Step next = Step::nonce;
    Bytes nonce{};
    Bytes generator{};
    Bytes mappingSecret{};
    Bytes theirKey{};
    Bytes ownKey{};
    Bytes shared{};

    Bytes token(View publicKey) const {
        const auto covered = object(0x7F49, joined({object(0x06, paceIdentifier(offer)),
                                                    object(agreement->isCurve() ? 0x86 : 0x84, publicKey)}));
        return authenticationCode(offer.cipher, derivedKey(offer.cipher, shared, Purpose::authentication), covered);
    }
};

Pace::Pace(PaceSecrets secrets)
    : secrets_{std::move(secrets)} {}

Pace::~Pace() = default;

Answer Pace::begin(View data) {
    run_.reset();
    const auto objects = dataObjects(data);
    const auto identifier = objects ? valueOf(*objects, 0x80) : std::nullopt;
    const auto password = objects ? valueOf(*objects, 0x83) : std::nullopt;
    if (!identifier || !password || password->size() != 1) {
        return Status::wrongData;
    }
    const auto parameters = valueOf(*objects, 0x84);
    const auto offer = std::ranges::find_if(secrets_.offers, [&](const PaceOffer& each) {
        return areEqual(paceIdentifier(each), *identifier) &&
               (!parameters || (parameters->size() == 1 && parameters->front() == each.domainParameters));
    });
    if (offer == secrets_.offers.end()) {
        return Status::wrongData;
    }
    const auto reference = password->front();
    if (reference != zonePassword && (reference != numberPassword || secrets_.cardAccessNumber.empty())) {
        return Status::dataNotFound;
    }
    run_ = std::make_unique<Run>(
        Run{.offer = *offer, .password = reference, .agreement = KeyAgreement::make(offer->domainParameters)});
    return Status::done;
}

Answer Pace::step(View data, const Random& random, std::optional<SecureChannel>& channel) {
    if (!run_) {
        return Status::conditionsNotMet;
    }
    using enum Run::Step;
    const auto step = run_->next;
    run_->next = static_cast<Run::Step>(std::to_underlying(step) + 1);
    auto answer = step == nonce       ? sendNonce(random)
                  : step == mapping   ? map(data, random)
                  : step == agreement ? agree(data, random)
                                      : confirm(data, channel);
    if (answer.status != Status::done || step == confirmation) {
        run_.reset();
    }
    return answer;
}

void Pace::abandon() {
    run_.reset();
}

Answer Pace::sendNonce(const Random& random) {
    const auto cipher = run_->offer.cipher;
    const bool isLong = run_->offer.mapping == PaceMapping::integrated && keySize(cipher) > nonceSize;
    run_->nonce = randomBytes(random, isLong ? 2 * nonceSize : nonceSize);
    return object(dynamicTag,
                  object(0x80, encrypted(cipher, derivedKey(cipher, password(), Purpose::password), run_->nonce)));
}

Answer Pace::map(View data, const Random& random) {
    const auto& agreement = *run_->agreement;
    const auto theirs = dynamicValue(data, 0x81);
    if (!theirs) {
        return Status::wrongData;
    }
    if (run_->offer.mapping == PaceMapping::integrated) {
        if (theirs->size() != keySize(run_->offer.cipher)) {
            return Status::wrongData;
        }
        const auto generator =
            agreement.elementFrom(stretched(run_->offer.cipher, run_->nonce, *theirs, agreement.fieldBits()));
        if (!generator) {
            return Status::wrongData;
        }
        run_->generator = *generator;
        return object(dynamicTag, object(0x82, View{}));
    }
    run_->mappingSecret = agreement.newSecret(random);
    const auto shared = agreement.multiple(*theirs, run_->mappingSecret);
    const auto start = agreement.multiple(agreement.generator(), run_->nonce);
    const auto generator = shared && start ? agreement.sum(*start, *shared) : std::nullopt;
    const auto own = agreement.multiple(agreement.generator(), run_->mappingSecret);
    if (!generator || !own) {
        return Status::wrongData;
    }
    run_->generator = *generator;
    return object(dynamicTag, object(0x82, *own));
}

Answer Pace::agree(View data, const Random& random) {
    const auto& agreement = *run_->agreement;
    const auto theirs = dynamicValue(data, 0x83);
    const auto secret = agreement.newSecret(random);
    const auto own = agreement.multiple(run_->generator, secret);
    const auto element = theirs ? agreement.multiple(*theirs, secret) : std::nullopt;
    if (!own || !element || *own == copied(*theirs)) {
        return Status::wrongData;
    }
    run_->theirKey = copied(*theirs);
    run_->ownKey = *own;
    run_->shared = agreement.secretIn(*element);
    return object(dynamicTag, object(0x84, *own));
}

Answer Pace::confirm(View data, std::optional<SecureChannel>& channel) {
    const auto token = dynamicValue(data, 0x85);
    if (!token) {
        return Status::wrongData;
    }
    if (!areEqual(*token, run_->token(run_->ownKey))) {
        return Status::authenticationFailed;
    }
    channel.emplace(run_->offer.cipher, run_->shared);
    auto objects = object(0x86, run_->token(run_->theirKey));
    if (run_->offer.mapping == PaceMapping::chipAuthentication) {
        const auto proof = run_->agreement->quotient(run_->mappingSecret, secrets_.mappingKey);
        objects = joined({objects, object(0x8A, channel->encryptedOnce(proof))});
    }
    return object(dynamicTag, objects);
}

Bytes Pace::password() const {
    return run_->password == zonePassword ? digest(HashFunction::sha1, viewOf(secrets_.zoneInformation))
                                          : copied(viewOf(secrets_.cardAccessNumber));
}

} // namespace kivo::simulator::chip
