#include "passport/KeyAgreement.hpp"

#include "Cryptography.hpp"
#include "passport/Numbers.hpp"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/obj_mac.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace kivo::simulator::chip {
namespace {

using Curve = std::unique_ptr<EC_GROUP, Free<EC_GROUP_free>>;
using Point = std::unique_ptr<EC_POINT, Free<EC_POINT_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Free<EVP_PKEY_CTX_free>>;

/// The first number is 8.
constexpr std::array curves{NID_X9_62_prime192v1, NID_brainpoolP192r1, NID_secp224r1,       NID_brainpoolP224r1,
                            NID_X9_62_prime256v1, NID_brainpoolP256r1, NID_brainpoolP320r1, NID_secp384r1,
                            NID_brainpoolP384r1,  NID_brainpoolP512r1, NID_secp521r1};
constexpr int firstCurve = 8;
constexpr std::array groups{"dh_1024_160", "dh_2048_224", "dh_2048_256"};

// 1.2.840.10045.2.1 and 1.2.840.10046.2.1, with tag and length.
constexpr std::array<std::uint8_t, 9> curveKeyOid{0x06, 0x07, 0x2A, 0x86, 0x48, 0xCE, 0x3D, 0x02, 0x01};
constexpr std::array<std::uint8_t, 9> groupKeyOid{0x06, 0x07, 0x2A, 0x86, 0x48, 0xCE, 0x3E, 0x02, 0x01};

Bytes keyInfo(View algorithm, View parameters, View publicKey) {
    return object(0x30,
                  joined({object(0x30, joined({algorithm, parameters})), object(0x03, joined({Bytes{0}, publicKey}))}));
}

class CurveAgreement final : public KeyAgreement {
public:
    explicit CurveAgreement(int curve)
        : curve_{EC_GROUP_new_by_curve_name(curve)} {}

    bool isCurve() const override { return true; }

    Bytes order() const override { return bytesOf(EC_GROUP_get0_order(curve_.get())); }

    Bytes generator() const override { return *bytesIn(EC_GROUP_get0_generator(curve_.get())); }

    std::optional<Bytes> multiple(View element, View secret) const override {
        const auto point = pointIn(element);
        const Point result{EC_POINT_new(curve_.get())};
        const auto factor = numberIn(secret);
        return point && EC_POINT_mul(curve_.get(), result.get(), nullptr, point.get(), factor.get(), nullptr) == 1
                   ? bytesIn(result.get())
                   : std::nullopt;
    }

    std::optional<Bytes> sum(View left, View right) const override {
        const auto one = pointIn(left);
        const auto other = pointIn(right);
        const Point result{EC_POINT_new(curve_.get())};
        return one && other && EC_POINT_add(curve_.get(), result.get(), one.get(), other.get(), nullptr) == 1
                   ? bytesIn(result.get())
                   : std::nullopt;
    }

    /// Point encoding for primes of the form 4k + 3 (ICAO Doc 9303 part 11, appendix B).
    std::optional<Bytes> elementFrom(View pseudoRandom) const override {
        const Field field{field_()};
        const auto a = coefficient(true);
        const auto b = coefficient(false);
        const auto t = field.reduced(pseudoRandom);
        const auto alpha = field.negative(field.product(t, t));
        const auto inner = field.inverse(field.sum(alpha, field.product(alpha, alpha)));
        const auto x2 = field.product(field.negative(field.product(b, field.inverse(a))), field.sum(one(), inner));
        const auto x3 = field.product(alpha, x2);
        const auto height = [&](const Number& x) {
            return field.sum(field.sum(field.product(field.product(x, x), x), field.product(a, x)), b);
        };
        const auto h2 = height(x2);
        const auto u = field.product(field.product(field.product(t, t), t), h2);
        const auto root = field.power(h2, field.exponentOfRoot());
        const bool isSquare = areSame(field.product(field.product(root, root), h2), one());
        const Point point{EC_POINT_new(curve_.get())};
        const auto x = isSquare ? copyOf(x2) : copyOf(x3);
        const auto y = field.product(root, isSquare ? h2 : u);
        if (EC_POINT_set_affine_coordinates(curve_.get(), point.get(), x.get(), y.get(), nullptr) != 1) {
            return std::nullopt;
        }
        return bytesIn(point.get());
    }

    std::size_t fieldBits() const override { return static_cast<std::size_t>(EC_GROUP_get_degree(curve_.get())); }

    Bytes secretIn(View element) const override { return copied(element.subspan(1, element.size() / 2)); }

    Bytes publicKeyInfo(View publicKey) const override {
        // Documents spell the curve out instead of naming it.
        EC_GROUP_set_asn1_flag(curve_.get(), OPENSSL_EC_EXPLICIT_CURVE);
        unsigned char* der = nullptr;
        const int length = i2d_ECPKParameters(curve_.get(), &der);
        const std::unique_ptr<unsigned char, Free<freeMemory>> owned{der};
        if (length <= 0) {
            throw std::runtime_error{"simulator: cannot spell a curve out"};
        }
        return keyInfo(curveKeyOid, {der, static_cast<std::size_t>(length)}, publicKey);
    }

private:
    const BIGNUM* field_() const { return EC_GROUP_get0_field(curve_.get()); }

    Number coefficient(bool isFirst) const {
        auto a = newNumber();
        auto b = newNumber();
        EC_GROUP_get_curve(curve_.get(), nullptr, a.get(), b.get(), nullptr);
        return isFirst ? std::move(a) : std::move(b);
    }

    /// Null for bytes that are no point of the curve with both coordinates.
    Point pointIn(View element) const {
        Point point{EC_POINT_new(curve_.get())};
        const bool isWhole = !element.empty() && element.front() == POINT_CONVERSION_UNCOMPRESSED;
        return isWhole && EC_POINT_oct2point(curve_.get(), point.get(), element.data(), element.size(), nullptr) == 1
                   ? std::move(point)
                   : nullptr;
    }

    std::optional<Bytes> bytesIn(const EC_POINT* point) const {
        if (EC_POINT_is_at_infinity(curve_.get(), point) == 1) {
            return std::nullopt;
        }
        Bytes bytes(1 + 2 * ((fieldBits() + 7) / 8));
        EC_POINT_point2oct(curve_.get(), point, POINT_CONVERSION_UNCOMPRESSED, bytes.data(), bytes.size(), nullptr);
        return bytes;
    }

    Curve curve_;
};

class GroupAgreement final : public KeyAgreement {
public:
    explicit GroupAgreement(const char* name) {
        const KeyContext context{EVP_PKEY_CTX_new_from_name(nullptr, "DHX", nullptr)};
        std::string group = name;
        const std::array parameters{OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, group.data(), 0),
                                    OSSL_PARAM_construct_end()};
        EVP_PKEY* made = nullptr;
        if (EVP_PKEY_keygen_init(context.get()) != 1 ||
            EVP_PKEY_CTX_set_params(context.get(), parameters.data()) != 1 ||
            EVP_PKEY_generate(context.get(), &made) != 1) {
            throw std::runtime_error{"simulator: a group of numbers is missing"};
        }
        const Key key{made};
        modulus_ = parameterOf(key.get(), OSSL_PKEY_PARAM_FFC_P);
        order_ = parameterOf(key.get(), OSSL_PKEY_PARAM_FFC_Q);
        generator_ = parameterOf(key.get(), OSSL_PKEY_PARAM_FFC_G);
    }

    bool isCurve() const override { return false; }

    Bytes order() const override { return bytesOf(order_.get()); }

    Bytes generator() const override { return bytesIn(generator_); }

    std::optional<Bytes> multiple(View element, View secret) const override {
        const auto base = elementIn(element);
        return base ? checked(Field{modulus_.get()}.power(base, numberIn(secret))) : std::nullopt;
    }

    std::optional<Bytes> sum(View left, View right) const override {
        const auto one = elementIn(left);
        const auto other = elementIn(right);
        return one && other ? checked(Field{modulus_.get()}.product(one, other)) : std::nullopt;
    }

    std::optional<Bytes> elementFrom(View pseudoRandom) const override {
        const Field field{modulus_.get()};
        return checked(field.power(field.reduced(pseudoRandom), field.cofactor(order_)));
    }

    std::size_t fieldBits() const override { return static_cast<std::size_t>(BN_num_bits(modulus_.get())); }

    Bytes secretIn(View element) const override { return copied(element); }

    Bytes publicKeyInfo(View publicKey) const override {
        const auto integer = [](const BIGNUM* number) {
            const auto bytes = bytesOf(number);
            const bool hasSign = (bytes.front() & 0x80U) != 0;
            return object(0x02, joined({hasSign ? Bytes{0} : Bytes{}, bytes}));
        };
        const auto domain =
            object(0x30, joined({integer(modulus_.get()), integer(generator_.get()), integer(order_.get())}));
        return keyInfo(groupKeyOid, domain, integer(numberIn(publicKey).get()));
    }

private:
    static Number parameterOf(const EVP_PKEY* key, const char* name) {
        BIGNUM* number = nullptr;
        EVP_PKEY_get_bn_param(key, name, &number);
        return Number{number};
    }

    /// Null for a number that is not between 1 and the modulus minus 1, both left out.
    Number elementIn(View element) const {
        auto number = numberIn(element);
        const auto last = Field{modulus_.get()}.negative(one());
        const bool isInside = element.size() <= bytesOf(modulus_.get()).size() &&
                              BN_cmp(number.get(), one().get()) > 0 && BN_cmp(number.get(), last.get()) < 0;
        return isInside ? std::move(number) : nullptr;
    }

    std::optional<Bytes> checked(const Number& number) const {
        return BN_is_one(number.get()) || BN_is_zero(number.get()) ? std::nullopt : std::optional{bytesIn(number)};
    }

    Bytes bytesIn(const Number& number) const {
        Bytes bytes(bytesOf(modulus_.get()).size());
        BN_bn2binpad(number.get(), bytes.data(), static_cast<int>(bytes.size()));
        return bytes;
    }

    Number modulus_;
    Number order_;
    Number generator_;
};

} // namespace

std::unique_ptr<KeyAgreement> KeyAgreement::make(int domainParameters) {
    if (domainParameters >= 0 && std::cmp_less(domainParameters, groups.size())) {
        return std::make_unique<GroupAgreement>(groups[static_cast<std::size_t>(domainParameters)]);
    }
    const auto index = domainParameters - firstCurve;
    return index >= 0 && std::cmp_less(index, curves.size())
               ? std::make_unique<CurveAgreement>(curves[static_cast<std::size_t>(index)])
               : nullptr;
}

Bytes KeyAgreement::newSecret(const Random& random) const {
    const auto end = numberIn(order());
    for (;;) {
        auto secret = randomBytes(random, order().size());
        const auto number = numberIn(secret);
        if (!BN_is_zero(number.get()) && BN_cmp(number.get(), end.get()) < 0) {
            return secret;
        }
    }
}

Bytes KeyAgreement::quotient(View left, View right) const {
    const auto modulus = numberIn(order());
    const Field field{modulus.get()};
    const auto result = field.product(numberIn(left), field.inverse(numberIn(right)));
    Bytes bytes(order().size());
    BN_bn2binpad(result.get(), bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

} // namespace kivo::simulator::chip
