#include "platform/json/Cursor.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/resource.h>

#include <cmath>
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
    EXPECT_EQ(refusalOf(text, limits), value ? std::nullopt : std::optional{value.error()}) << text.substr(0, 100);
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
        {"{\"a\":1", "not JSON at 6"},
        {R"("\ud800")", "not JSON at 7"},
        {"\"\xFF\"", "not JSON at 1"},
        {"[1] // why", "not JSON at 4"},
    };
    for (const auto& [text, outcome] : rows) {
        EXPECT_EQ(outcomeOf(text), outcome) << text;
    }
    EXPECT_EQ(outcomeOf("// why\n[1, /* two */ 2]", {.comments = true}), "[1,2]");
}

/// What the text says for another reader, or "refused"; absent where that reader has limits of its own.
std::optional<std::string> judgedByAnother(const std::string& text) {
    try {
        return nlohmann::json::parse(text).dump();
    } catch (const nlohmann::json::out_of_range&) {
        return std::nullopt; // a number beyond all of `double`
    } catch (const nlohmann::json::parse_error&) {
        return "refused";
    }
}

TEST(Json, AgreesWithAnotherReaderAboutEveryTextThatIsNearlyJson) {
    using namespace std::literals;
    const std::string sound[] = {
        R"({"a":[1,-20.5e+3,0,true],"long enough for words":{"b":null,"a":false}} )",
        R"(["\u00e9\uD83d\uDe00\"\\\/","\b\f\n\r\t","plain, long enough for words",[[],{}]])",
        "\xEF\xBB\xBF[\"\u00E9\u20AC\U0001F600\", 1E-7,\t\"\xF4\x8F\xBF\xBF\xED\x9F\xBF\"]\r\n",
    };
    const auto bytes = "\"\\/{}[],: \t\n\r\x1F\x7F-+.eE019aAuUntfdD\x80\x8F\x90\xA0\xC1\xC2\xE0\xED\xF0\xF4\xF5\xFF"sv;
    int accepted = 0;
    int refused = 0;
    const auto compare = [&](const std::string& text) {
        const auto value = read(text);
        EXPECT_EQ(refusalOf(text), value ? std::nullopt : std::optional{value.error()}) << text;
        ++(value ? accepted : refused);
        if (const auto expected = judgedByAnother(text)) {
            // Written again, because the other one keeps members in another order and numbers in another form.
            EXPECT_EQ(value ? judgedByAnother(write(*value).value()) : "refused", expected) << text;
        }
    };
    for (const auto& text : sound) {
        for (std::size_t at = 0; at <= text.size(); ++at) {
            compare(text.substr(0, at));
            compare(std::string{text}.erase(at, 1));
            for (const char byte : bytes) {
                compare(std::string{text}.insert(at, 1, byte));
                if (at < text.size()) {
                    compare(std::string{text}.replace(at, 1, 1, byte));
                }
            }
        }
    }
    EXPECT_GT(accepted, 1000);
    EXPECT_GT(refused, 1000);
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
        {"[1,2,3,4,5,6]", "too many members at 11"},
        {R"({"a":{"a":1,"a":2},"b":[1,2]})", "too many members at 26"},
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
    EXPECT_EQ(write(std::vector<Value>{0.1, -1e300, 50.0, HUGE_VAL, false, "\\"}),
              R"([0.1,-1e+300,50,null,false,"\\"])");
    const auto broken = Value::object({{"a", "\xFFz"}});
    EXPECT_EQ(write(broken), std::nullopt);
    EXPECT_EQ(writeRepaired(broken), "{\"a\":\"\uFFFDz\"}");
    // Two bytes that are not looked at together.
    const auto lengthy = std::string(16 * 1024 - 1, 'x') + "\u00E9\n";
    EXPECT_EQ(write(lengthy), '"' + lengthy.substr(0, lengthy.size() - 1) + "\\n\"");
    std::string written = "[";
    EXPECT_FALSE(append(written, lengthy + '\xC3'));
    EXPECT_EQ(written, "[");
    Object built;
    built.set("b", 1);
    built.set("a", Value{});
    built.set("b", std::string{"2"});
    EXPECT_EQ(write(built), R"({"b":"2","a":null})");
}

} // namespace
} // namespace kivo::json
