#include "platform/json/Json.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>

namespace kivo::json {
namespace {

using Refused = Refusal::Kind;

std::string repeated(std::string_view part, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += part;
    }
    return all;
}

/// The value written again, or why the text was refused and where.
std::string outcomeOf(std::string_view text, const Limits& limits = {}) {
    const auto value = read(text, limits);
    if (value) {
        return write(*value).value();
    }
    static constexpr const char* kinds[] = {"not JSON", "too many bytes", "too deep", "too many members"};
    return std::string{kinds[static_cast<int>(value.error().kind)]} + " at " + std::to_string(value.error().offset);
}

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(Json, ReadsWhatIsJsonAndNothingElse) {
    using namespace std::literals;
    const auto longNumber = std::string(400, '9');
    const std::pair<std::string_view, std::string_view> rows[] = {
        {" {\"b\" : [ true, null ], \"a\" : {} } ", R"({"b":[true,null],"a":{}})"},
        {R"("\u00e9\ud83d\ude00\/\n")", "\"\u00E9\U0001F600/\\n\""},
        {R"("a\u0000b")", R"("a\u0000b")"},
        // Numbers stay as they were written, however large.
        {"[1e400,-1E+99999999999,0.10,18446744073709551616]", "[1e400,-1E+99999999999,0.10,18446744073709551616]"},
        {longNumber, longNumber},
        // Of members with one name the last counts.
        {R"({"a":1,"b":2,"a":3,"c":4,"a":{"x":5}})", R"({"a":{"x":5},"b":2,"c":4})"},
        {"\xEF\xBB\xBF[1]", "[1]"},
        {"", "not JSON at 0"},
        {"[1] x", "not JSON at 4"},
        {"[1]\0"sv, "not JSON at 3"},
        {"{\"response-type\":\"fail\"}\0garbage"sv, "not JSON at 24"},
        {"[1,]", "not JSON at 3"},
        {"[01]", "not JSON at 2"},
        {"[1.]", "not JSON at 3"},
        {"NaN", "not JSON at 0"},
        {"{\"a\":1", "not JSON at 6"},
        {"\"\n\"", "not JSON at 1"},
        {R"("\ud800")", "not JSON at 7"},
        {R"("\udc00")", "not JSON at 6"},
        {"\"\xFF\"", "not JSON at 1"},
        {"\"\xC0\xAF\"", "not JSON at 1"},
        {"\"\xED\xA0\x80\"", "not JSON at 2"},
        {"[1] // why", "not JSON at 4"},
    };
    for (const auto& [text, outcome] : rows) {
        EXPECT_EQ(outcomeOf(text), outcome) << text;
    }
    EXPECT_EQ(outcomeOf("// why\n[1, /* two */ 2]", {.comments = true}), "[1,2]");
}

TEST(Json, RefusesWhatIsBeyondALimitAndSaysWhere) {
    const Limits limits{.bytes = 40, .depth = 3, .members = 5};
    const std::pair<std::string, std::string> rows[] = {
        {'"' + std::string(38, 'x') + '"', '"' + std::string(38, 'x') + '"'},
        {'"' + std::string(39, 'x') + '"', "too many bytes at 40"},
        {R"([{"a":[]}])", R"([{"a":[]}])"},
        {R"([{"a":[[]]}])", "too deep at 7"},
        {R"({"a":[1,2],"a":[3]})", R"({"a":[3]})"},
        {"[[],[],[1,2]]", "[[],[],[1,2]]"},
        {"[1,2,3,4,5,6]", "too many members at 12"},
        {R"({"a":{"a":1,"a":2},"b":[1,2]})", "too many members at 27"},
    };
    for (const auto& [text, outcome] : rows) {
        EXPECT_EQ(outcomeOf(text, limits), outcome) << text;
    }
    EXPECT_EQ(outcomeOf(repeated("[", 32) + repeated("]", 32)), repeated("[", 32) + repeated("]", 32));
    EXPECT_EQ(outcomeOf(repeated("[", 1 << 20)), "too deep at 32");
    EXPECT_EQ(outcomeOf('[' + repeated("{},", 1 << 18) + "{}]"), "too many members at 12289");
    EXPECT_EQ(outcomeOf(std::string((1 << 20) + 1, ' ')), "too many bytes at 1048576");
}

TEST(Json, CostsNoMoreMemoryThanItsLimitsAllow) {
    constexpr std::size_t size = std::size_t{16} << 20;
    const std::string hostile[] = {std::string(size, '['), repeated("[1,", size / 3), repeated("{\"\":", size / 4),
                                   '[' + repeated("{},", size / 3) + "0]", '[' + repeated("1,", size / 2) + "0]"};
    for (const auto& text : hostile) {
        const auto before = peakKilobytes();
        EXPECT_FALSE(read(text));
        const auto refused = read(text, {.bytes = 2 * size});
        ASSERT_FALSE(refused) << text.substr(0, 10);
        EXPECT_TRUE(refused.error().isBeyondLimits());
        EXPECT_LT(peakKilobytes() - before, 8 * 1024) << text.substr(0, 10);
    }
}

TEST(Json, FindsEveryMemberOfALargeObject) {
    constexpr int count = 80'000;
    std::string text = "{";
    for (int i = 0; i < count; ++i) {
        text += '"' + std::to_string(i * 7919 % count) + "\":" + std::to_string(i) + ',';
    }
    text += R"("0":"last"})";
    const auto object = read(text, {.bytes = text.size(), .members = count + 1});
    ASSERT_TRUE(object);
    EXPECT_EQ(object->members().size(), std::size_t{count});
    EXPECT_EQ(*object->find("0")->text(), "last");
    for (int i = 1; i < count; ++i) {
        ASSERT_EQ(object->find(std::to_string(i * 7919 % count))->integer(), i);
    }
    EXPECT_EQ(object->find("80000"), nullptr);
}

TEST(Json, JudgesANumberWhenItIsAskedFor) {
    const struct {
        const char* text;
        std::optional<std::int64_t> integer;
        std::optional<double> real;
    } rows[] = {
        {"-9223372036854775808", INT64_MIN, -9223372036854775808.0},
        {"9223372036854775808", std::nullopt, 9223372036854775808.0},
        {"3.0", std::nullopt, 3.0},
        {"1e2", std::nullopt, 100.0},
        {"-0", 0, 0.0},
        {"1e400", std::nullopt, std::nullopt},
        {"\"3\"", std::nullopt, std::nullopt},
    };

    for (const auto& row : rows) {
        const auto value = read(row.text);
        ASSERT_TRUE(value);
        EXPECT_EQ(value->integer(), row.integer) << row.text;
        EXPECT_EQ(value->real(), row.real) << row.text;
    }
}

TEST(Json, WritesMembersInOrderAndTextsAsTheyAre) {
    auto object = Value::object({{"z", 1}, {"a", "\"\\\n\x1F\u00E9"}, {"t", true}, {"z", -2}});
    EXPECT_EQ(write(object), "{\"z\":-2,\"a\":\"\\\"\\\\\\n\\u001f\u00E9\",\"t\":true}");
    EXPECT_EQ(write(Object{}), "{}");
    const auto broken = Value::object({{"a", "\xFFz"}});
    EXPECT_EQ(write(broken), std::nullopt);
    EXPECT_EQ(writeRepaired(broken), "{\"a\":\"\uFFFDz\"}");
    Object built;
    built.set("b", 1);
    built.set("a", Value{});
    built.set("b", std::string{"2"});
    EXPECT_EQ(write(built), R"({"b":"2","a":null})");
}

} // namespace
} // namespace kivo::json
