#include "ReaderScreensFixture.hpp"

namespace kivo::test {
namespace {

using reader::TypedValues;

TEST(TypedKey, IsUnderstoodOrNamesTheFieldInFault) {
    const struct {
        TypedValues typed;
        std::string key;
        std::string TypedValues::* fault;
    } rows[] = {
        {{"L898 902-c3", "12.08.1974", "15042012", ""}, "L898902<C3 740812 120415 ", nullptr},
        {{"AB1", "1974-08-12", "20320229", ""}, "AB1 740812 320229 ", nullptr},
        {{"", "", "", "123 456"}, "   123456", nullptr},
        {{"", "12.08.1974", "15.04.2012", ""}, "", &TypedValues::documentNumber},
        {{"L8\xC3\x84", "12.08.1974", "15.04.2012", ""}, "", &TypedValues::documentNumber},
        {{std::string(23, 'A'), "12.08.1974", "15.04.2012", ""}, "", &TypedValues::documentNumber},
        {{std::string(100'000, ' ') + 'A', "12.08.1974", "15.04.2012", ""}, "", &TypedValues::documentNumber},
        {{"A", "12.8.74", "15.04.2012", ""}, "", &TypedValues::dateOfBirth},
        {{"A", "30.02.1974", "15.04.2012", ""}, "", &TypedValues::dateOfBirth},
        {{"A", "12.08.1974", "", ""}, "", &TypedValues::dateOfExpiry},
        {{"A", "12.08.1974", "15.13.2012", ""}, "", &TypedValues::dateOfExpiry},
        {{"A", "12.08.1974", "15.04.2012", "12345"}, "", &TypedValues::cardAccessNumber},
    };

    for (const auto& row : rows) {
        const auto key = reader::keyOf(row.typed);
        ASSERT_EQ(key.has_value(), row.fault == nullptr) << row.key;
        if (key) {
            EXPECT_EQ(key->documentNumber + " " + key->dateOfBirth + " " + key->dateOfExpiry + " " +
                          key->cardAccessNumber,
                      row.key);
        } else {
            EXPECT_EQ(key.error().value, row.fault);
        }
    }
}

} // namespace
} // namespace kivo::test
