#include "passport/Numbers.hpp"

namespace kivo::simulator::chip {

Number newNumber() {
    return Number{BN_new()};
}

Number one() {
    auto number = newNumber();
    BN_one(number.get());
    return number;
}

Number numberIn(View bytes) {
    return Number{BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr)};
}

Number copyOf(const Number& number) {
    return Number{BN_dup(number.get())};
}

Bytes bytesOf(const BIGNUM* number) {
    Bytes bytes(static_cast<std::size_t>(BN_num_bytes(number)));
    BN_bn2bin(number, bytes.data());
    return bytes;
}

bool areSame(const Number& left, const Number& right) {
    return BN_cmp(left.get(), right.get()) == 0;
}

Number Field::reduced(View bytes) const {
    auto result = newNumber();
    BN_nnmod(result.get(), numberIn(bytes).get(), modulus_, scratch_.get());
    return result;
}

Number Field::sum(const Number& left, const Number& right) const {
    auto result = newNumber();
    BN_mod_add(result.get(), left.get(), right.get(), modulus_, scratch_.get());
    return result;
}

Number Field::product(const Number& left, const Number& right) const {
    auto result = newNumber();
    BN_mod_mul(result.get(), left.get(), right.get(), modulus_, scratch_.get());
    return result;
}

Number Field::negative(const Number& number) const {
    auto result = newNumber();
    BN_mod_sub(result.get(), newNumber().get(), number.get(), modulus_, scratch_.get());
    return result;
}

Number Field::inverse(const Number& number) const {
    auto result = newNumber();
    BN_mod_inverse(result.get(), number.get(), modulus_, scratch_.get());
    return result;
}

Number Field::power(const Number& base, const Number& exponent) const {
    auto result = newNumber();
    BN_mod_exp(result.get(), base.get(), exponent.get(), modulus_, scratch_.get());
    return result;
}

Number Field::exponentOfRoot() const {
    auto quarter = newNumber();
    BN_add(quarter.get(), modulus_, one().get());
    BN_rshift(quarter.get(), quarter.get(), 2);
    auto result = newNumber();
    BN_sub(result.get(), modulus_, one().get());
    BN_sub(result.get(), result.get(), quarter.get());
    return result;
}

Number Field::cofactor(const Number& order) const {
    auto less = newNumber();
    BN_sub(less.get(), modulus_, one().get());
    auto result = newNumber();
    BN_div(result.get(), nullptr, less.get(), order.get(), scratch_.get());
    return result;
}

} // namespace kivo::simulator::chip
