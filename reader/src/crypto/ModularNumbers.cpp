#include "crypto/Groups.hpp"

#include <algorithm>

namespace kivo::reader {
namespace {

constexpr int smallestPrime = 1024;
constexpr int largestPrime = 4096;

class ModularGroup final : public KeyAgreement {
public:
    ModularGroup(BigNumber prime, BigNumber generator, BigNumber order)
        : prime_{std::move(prime)}
        , generator_{std::move(generator)}
        , order_{std::move(order)} {}

    bool isElliptic() const override { return false; }

    std::size_t primeBits() const override { return static_cast<std::size_t>(BN_num_bits(prime_.get())); }

    KeyPair makeKeyPair(const Randomness& randomness) const override {
        const BigNumber last{BN_dup(prime_.get())};
        require(last && BN_sub_word(last.get(), 1) == 1);
        const auto* const bound = order_ ? order_.get() : last.get();
        const auto secret = randomNumberBelow(bound, randomness);
        const auto power = raised(generator_.get(), secret.get());
        return {.secretKey = bytesOf(secret.get(), static_cast<std::size_t>(BN_num_bytes(bound))),
                .publicKey = encodedNumber(power.get())};
    }

    std::optional<Secret> agree(const KeyPair& own, ByteView theirs) const override {
        const auto shared = sharedNumber(own, theirs);
        return shared ? std::optional{bytesOf(shared.get(), primeBytes())} : std::nullopt;
    }

    Pointer mappedGenerically(ByteView nonce, const KeyPair& own, ByteView theirs) const override {
        const auto shared = sharedNumber(own, theirs);
        if (!shared) {
            return nullptr;
        }
        const auto power = raised(generator_.get(), numberOf(nonce).get());
        BigNumber mapped{BN_new()};
        require(mapped && BN_mod_mul(mapped.get(), power.get(), shared.get(), prime_.get(), arithmetic().get()) == 1);
        return withGenerator(std::move(mapped));
    }

    Pointer mappedIntegrated(ByteView pseudoRandom) const override {
        if (!order_) {
            return nullptr;
        }
        const auto context = arithmetic();
        const BigNumber cofactor{BN_dup(prime_.get())};
        const auto number = numberOf(pseudoRandom);
        require(cofactor && BN_sub_word(cofactor.get(), 1) == 1 &&
                BN_div(cofactor.get(), nullptr, cofactor.get(), order_.get(), context.get()) == 1 &&
                BN_nnmod(number.get(), number.get(), prime_.get(), context.get()) == 1);
        return withGenerator(raised(number.get(), cofactor.get()));
    }

    bool isProduct(ByteView base, ByteView factor, ByteView product) const override {
        const auto number = elementOf(base);
        const auto expected = elementOf(product);
        return number && expected && BN_cmp(raised(number.get(), numberOf(factor).get()).get(), expected.get()) == 0;
    }

    Bytes generator() const override { return encodedNumber(generator_.get()); }

private:
    std::size_t primeBytes() const { return static_cast<std::size_t>(BN_num_bytes(prime_.get())); }

    static Bytes encodedNumber(const BIGNUM* number) {
        const auto bytes = bytesOf(number, static_cast<std::size_t>(BN_num_bytes(number)));
        return {bytes.begin(), bytes.end()};
    }

    BigNumber raised(const BIGNUM* base, const BIGNUM* exponent) const {
        BigNumber power{BN_new()};
        require(power &&
                BN_mod_exp_mont_consttime(power.get(), base, exponent, prime_.get(), arithmetic().get(), nullptr) == 1);
        return power;
    }

    // A number of 2 to p - 2 that lies in the subgroup, where the subgroup is known.
    BigNumber elementOf(ByteView bytes) const {
        if (bytes.size() > primeBytes()) {
            return nullptr;
        }
        auto number = numberOf(bytes);
        const BigNumber last{BN_dup(prime_.get())};
        require(last && BN_sub_word(last.get(), 1) == 1);
        if (BN_is_zero(number.get()) == 1 || BN_is_one(number.get()) == 1 || BN_cmp(number.get(), last.get()) >= 0 ||
            (order_ && BN_is_one(raised(number.get(), order_.get()).get()) != 1)) {
            return nullptr;
        }
        return number;
    }

    BigNumber sharedNumber(const KeyPair& own, ByteView theirs) const {
        const auto number = elementOf(theirs);
        if (!number || BN_cmp(number.get(), numberOf(own.publicKey).get()) == 0) {
            return nullptr;
        }
        auto shared = raised(number.get(), numberOf(own.secretKey).get());
        return BN_is_one(shared.get()) == 1 ? nullptr : std::move(shared);
    }

    Pointer withGenerator(BigNumber generator) const {
        if (BN_is_zero(generator.get()) == 1 || BN_is_one(generator.get()) == 1) {
            return nullptr;
        }
        BigNumber prime{BN_dup(prime_.get())};
        BigNumber order{order_ ? BN_dup(order_.get()) : nullptr};
        require(prime && (order || !order_));
        return std::make_shared<ModularGroup>(std::move(prime), std::move(generator), std::move(order));
    }

    BigNumber prime_;
    BigNumber generator_;
    BigNumber order_;
};

} // namespace

KeyAgreement::Pointer modularGroup(BigNumber prime, BigNumber generator, BigNumber order) {
    const int bits = BN_num_bits(prime.get());
    if (bits < smallestPrime || bits > largestPrime || BN_is_odd(prime.get()) != 1 ||
        BN_is_negative(prime.get()) == 1 || BN_is_negative(generator.get()) == 1 || BN_is_zero(generator.get()) == 1 ||
        BN_is_one(generator.get()) == 1 || BN_cmp(generator.get(), prime.get()) >= 0) {
        return nullptr;
    }
    if (order &&
        (BN_is_negative(order.get()) == 1 || BN_num_bits(order.get()) < 160 || BN_cmp(order.get(), prime.get()) >= 0)) {
        return nullptr;
    }
    return std::make_shared<ModularGroup>(std::move(prime), std::move(generator), std::move(order));
}

} // namespace kivo::reader
