#include "crypto/Groups.hpp"

#include <openssl/objects.h>

namespace kivo::reader {
namespace {

constexpr int smallestField = 192;

class EllipticGroup final : public KeyAgreement {
public:
    explicit EllipticGroup(Curve curve)
        : curve_{std::move(curve)} {}

    bool isElliptic() const override { return true; }

    std::size_t primeBits() const override { return static_cast<std::size_t>(EC_GROUP_get_degree(curve_.get())); }

    KeyPair makeKeyPair(const Randomness& randomness) const override {
        const auto* const order = EC_GROUP_get0_order(curve_.get());
        const auto secret = randomNumberBelow(order, randomness);
        const auto context = arithmetic();
        // The generator goes in as any point, because only that road is guarded against measuring the time.
        const auto point = multiplied(EC_GROUP_get0_generator(curve_.get()), secret.get(), context.get());
        return {.secretKey = bytesOf(secret.get(), static_cast<std::size_t>(BN_num_bytes(order))),
                .publicKey = encodedPoint(point.get(), context.get())};
    }

    std::optional<Secret> agree(const KeyPair& own, ByteView theirs) const override {
        const auto context = arithmetic();
        const auto point = sharedPoint(own, theirs, context.get());
        if (!point) {
            return std::nullopt;
        }
        const auto encoded = encodedPoint(point.get(), context.get());
        const auto first = ByteView{encoded}.subspan(1, encoded.size() / 2);
        return Secret{first.begin(), first.end()};
    }

    Pointer mappedGenerically(ByteView nonce, const KeyPair& own, ByteView theirs) const override {
        const auto context = arithmetic();
        const auto shared = sharedPoint(own, theirs, context.get());
        if (!shared) {
            return nullptr;
        }
        const auto scalar = numberOf(nonce);
        const auto point = multiplied(EC_GROUP_get0_generator(curve_.get()), scalar.get(), context.get());
        require(EC_POINT_add(curve_.get(), point.get(), point.get(), shared.get(), context.get()) == 1);
        return withGenerator(point.get());
    }

    Pointer mappedIntegrated(ByteView pseudoRandom) const override {
        const auto context = arithmetic();
        const auto point = encodedInCurve(pseudoRandom, context.get());
        return point ? withGenerator(point.get()) : nullptr;
    }

    bool isProduct(ByteView base, ByteView factor, ByteView product) const override {
        const auto context = arithmetic();
        const auto point = pointOf(base, context.get());
        const auto expected = pointOf(product, context.get());
        if (!point || !expected) {
            return false;
        }
        const auto scalar = numberOf(factor);
        const auto found = multiplied(point.get(), scalar.get(), context.get());
        return EC_POINT_cmp(curve_.get(), found.get(), expected.get(), context.get()) == 0;
    }

    Bytes generator() const override { return encodedPoint(EC_GROUP_get0_generator(curve_.get()), arithmetic().get()); }

private:
    Point multiplied(const EC_POINT* point, const BIGNUM* factor, BN_CTX* context) const {
        Point product{EC_POINT_new(curve_.get())};
        require(product && EC_POINT_mul(curve_.get(), product.get(), nullptr, point, factor, context) == 1);
        return product;
    }

    Bytes encodedPoint(const EC_POINT* point, BN_CTX* context) const {
        const auto form = POINT_CONVERSION_UNCOMPRESSED;
        Bytes bytes(EC_POINT_point2oct(curve_.get(), point, form, nullptr, 0, context));
        require(EC_POINT_point2oct(curve_.get(), point, form, bytes.data(), bytes.size(), context) == bytes.size());
        return bytes;
    }

    // The point of a public key with both coordinates; null for what is not on the curve, and for infinity.
    Point pointOf(ByteView bytes, BN_CTX* context) const {
        Point point{EC_POINT_new(curve_.get())};
        require(point != nullptr);
        const std::size_t size = 1 + 2 * ((primeBits() + 7) / 8);
        if (bytes.size() != size || bytes[0] != POINT_CONVERSION_UNCOMPRESSED ||
            EC_POINT_oct2point(curve_.get(), point.get(), bytes.data(), bytes.size(), context) != 1 ||
            EC_POINT_is_on_curve(curve_.get(), point.get(), context) != 1) {
            return nullptr;
        }
        return point;
    }

    Point sharedPoint(const KeyPair& own, ByteView theirs, BN_CTX* context) const {
        const auto point = areEqual(own.publicKey, theirs) ? nullptr : pointOf(theirs, context);
        if (!point) {
            return nullptr;
        }
        const auto secret = numberOf(own.secretKey);
        auto shared = multiplied(point.get(), secret.get(), context);
        return EC_POINT_is_at_infinity(curve_.get(), shared.get()) == 1 ? nullptr : std::move(shared);
    }

    Pointer withGenerator(const EC_POINT* point) const {
        if (EC_POINT_is_at_infinity(curve_.get(), point) == 1) {
            return nullptr;
        }
        Curve mapped{EC_GROUP_dup(curve_.get())};
        require(mapped && EC_GROUP_set_generator(mapped.get(), point, EC_GROUP_get0_order(curve_.get()),
                                                 EC_GROUP_get0_cofactor(curve_.get())) == 1);
        return std::make_shared<EllipticGroup>(std::move(mapped));
    }

    // The map of Brier, Coron, Icart, Madore, Randriam and Tibouchi for primes that leave 3 when divided by 4, as ICAO
    // Doc 9303 part 11 writes it out. Null for other primes.
    Point encodedInCurve(ByteView pseudoRandom, BN_CTX* context) const {
        const BigNumber p{BN_new()};
        const BigNumber a{BN_new()};
        const BigNumber b{BN_new()};
        require(p && a && b && EC_GROUP_get_curve(curve_.get(), p.get(), a.get(), b.get(), context) == 1);
        if (BN_is_bit_set(p.get(), 0) == 0 || BN_is_bit_set(p.get(), 1) == 0) {
            return nullptr;
        }
        const auto made = [&](auto&& calculate) {
            BigNumber result{BN_new()};
            require(result && calculate(result.get()) == 1);
            return result;
        };
        const auto product = [&](const BigNumber& one, const BigNumber& other) {
            return made([&](BIGNUM* r) { return BN_mod_mul(r, one.get(), other.get(), p.get(), context); });
        };
        const auto sum = [&](const BigNumber& one, const BigNumber& other) {
            return made([&](BIGNUM* r) { return BN_mod_add(r, one.get(), other.get(), p.get(), context); });
        };
        const auto negative = [&](const BigNumber& one) {
            return made([&](BIGNUM* r) { return BN_mod_sub(r, p.get(), one.get(), p.get(), context); });
        };
        const auto inverse = [&](const BigNumber& one) {
            BigNumber result{BN_mod_inverse(nullptr, one.get(), p.get(), context)};
            return result;
        };
        const auto curveAt = [&](const BigNumber& x) { return sum(sum(product(product(x, x), x), product(a, x)), b); };

        const auto number = numberOf(pseudoRandom);
        const auto t = made([&](BIGNUM* r) { return BN_nnmod(r, number.get(), p.get(), context); });
        const auto alpha = negative(product(t, t));
        const auto inverseOfAlpha = inverse(sum(alpha, product(alpha, alpha)));
        const auto inverseOfA = inverse(a);
        if (!inverseOfAlpha || !inverseOfA) {
            return nullptr;
        }
        const BigNumber one{BN_dup(BN_value_one())};
        const auto x2 = product(negative(product(b, inverseOfA)), sum(one, inverseOfAlpha));
        const auto x3 = product(alpha, x2);
        const auto h2 = curveAt(x2);
        const auto u = product(product(product(t, t), t), h2);
        // A is h2 to the power of p - 1 - (p + 1) / 4.
        const auto exponent = made([&](BIGNUM* r) {
            const BigNumber quarter{BN_dup(p.get())};
            return quarter && BN_add_word(quarter.get(), 1) == 1 && BN_rshift(quarter.get(), quarter.get(), 2) == 1 &&
                   BN_sub(r, p.get(), quarter.get()) == 1 && BN_sub_word(r, 1) == 1;
        });
        const auto root = made([&](BIGNUM* r) {
            return BN_mod_exp_mont_consttime(r, h2.get(), exponent.get(), p.get(), context, nullptr);
        });
        const bool isSquare = BN_is_one(product(product(root, root), h2).get()) == 1;
        const auto x = isSquare ? BigNumber{BN_dup(x2.get())} : BigNumber{BN_dup(x3.get())};
        const auto y = product(root, isSquare ? h2 : u);
        Point point{EC_POINT_new(curve_.get())};
        require(point != nullptr);
        if (EC_POINT_set_affine_coordinates(curve_.get(), point.get(), x.get(), y.get(), context) != 1) {
            return nullptr;
        }
        return multiplied(point.get(), EC_GROUP_get0_cofactor(curve_.get()), context);
    }

    Curve curve_;
};

} // namespace

KeyAgreement::Pointer ellipticGroup(int number) {
    Curve curve{EC_GROUP_new_by_curve_name(number)};
    if (!curve || EC_GROUP_get_field_type(curve.get()) != NID_X9_62_prime_field ||
        EC_GROUP_get_degree(curve.get()) < smallestField) {
        return nullptr;
    }
    return std::make_shared<EllipticGroup>(std::move(curve));
}

KeyAgreement::Pointer ellipticGroup(const char* name) {
    const int number = OBJ_txt2nid(name);
    return number == NID_undef ? nullptr : ellipticGroup(number);
}

} // namespace kivo::reader
