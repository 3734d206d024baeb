#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// JSON (RFC 8259), read from anywhere within bounds, and written. Any thread.
namespace kivo::json {

/// How much of a text is read. Beyond a limit the whole text is refused.
struct Limits {
    std::size_t bytes = std::size_t{1} << 20;
    /// Objects and arrays inside each other. A value is destroyed recursively, so keep this in the hundreds.
    std::size_t depth = 32;
    /// Members of all objects and elements of all arrays, altogether.
    std::size_t members = 4096;
    /// Whether `//` and `/* */` comments are skipped, for files that people write.
    bool comments = false;
};

/// Why a text was not read.
struct Refusal {
    enum class Kind { notJson, tooManyBytes, tooDeep, tooManyMembers };

    Kind kind = Kind::notJson;
    /// The byte that has no place there, the first byte of the value beyond a limit, or the text's length where more
    /// was expected.
    std::size_t offset = 0;

    /// Whether the text went beyond a limit. What such a text says is unknown, unlike that of a text that is no JSON.
    bool isBeyondLimits() const { return kind != Kind::notJson; }

    bool operator==(const Refusal&) const = default;
};

enum class Kind { null, boolean, number, text, array, object };

/// The kind in words, such as "a text".
std::string_view name(Kind kind);

class Value;
struct Member;

/// Members in the order in which they were written. Of several with one name the last counts, in the first one's place.
class Object {
public:
    Object();
    explicit Object(std::vector<Member> members);
    Object(const Object&);
    Object(Object&&) noexcept;
    Object& operator=(const Object&);
    Object& operator=(Object&&) noexcept;
    ~Object();

    std::span<const Member> members() const;

    /// Null when there is no such member. Takes time with the logarithm of the members.
    const Value* find(std::string_view name) const;
    Value* find(std::string_view name);

    /// Adds the member, or replaces its value.
    void set(std::string name, Value value);

private:
    friend class Reading;
    friend class Value;

    /// The index of a member, and a number that is the same for the same name.
    struct Place {
        std::uint32_t hash;
        std::uint32_t at;
    };

    Place placeOf(std::uint32_t member) const;
    std::vector<Place>::const_iterator firstPlaceOf(std::string_view name) const;
    void sortPlaces();
    void index();
    void dropRepeated();

    std::vector<Member> members_;
    /// By hash, then name, then index; empty for few members, which are looked through one after another.
    std::vector<Place> places_;
};

/// A JSON value. Numbers are kept as they were written and judged only when they are asked for.
class Value {
public:
    Value() = default; // null
    Value(std::string text);
    Value(std::string_view text);
    Value(const char* text);
    Value(Object object);
    Value(std::vector<Value> elements);

    template <std::same_as<bool> Boolean>
    Value(Boolean value)
        : Value{std::in_place, value} {}

    template <std::integral Integer>
        requires(!std::same_as<Integer, bool>)
    Value(Integer number)
        : Value{Number{std::to_string(number)}} {}

    /// JSON has no infinity and no NaN: both become null.
    template <std::floating_point Real>
    Value(Real number)
        : Value{ofReal(number)} {}

    /// An object of few members, which are copied; for a large text use `Object::set`.
    static Value object(std::initializer_list<Member> members);

    Kind kind() const;

    /// Each of these is absent, null or empty for a value of another kind.
    std::optional<bool> boolean() const;
    /// A number written without fraction and exponent, within 64 bits.
    std::optional<std::int64_t> integer() const;
    /// A number near enough to a `double`; absent when its size is beyond all of them.
    std::optional<double> real() const;
    /// A number as it was written.
    std::string_view digits() const;
    const std::string* text() const;
    std::string* text();
    std::span<const Value> elements() const;
    std::span<const Member> members() const;
    const Value* find(std::string_view name) const;
    Value* find(std::string_view name);
    /// Moves the members of an object out.
    std::vector<Member> takeMembers() &&;
    /// The text that is the member of that name.
    const std::string* textOf(std::string_view name) const;

private:
    friend class Reading;

    struct Number {
        std::string digits;
    };

    static Value ofReal(double number);

    explicit Value(Number number);
    Value(std::in_place_t, bool value);

    std::variant<std::monostate, bool, Number, std::string, std::vector<Value>, Object> content_;
};

struct Member {
    std::string name;
    Value value;
};

/// Reads one JSON value, in UTF-8 with or without a byte order mark, in time that hardly grows faster than the text,
/// and without recursion.
std::expected<Value, Refusal> read(std::string_view text, const Limits& limits = {});

/// The value as compact JSON; absent when a text in it is no UTF-8.
std::optional<std::string> write(const Value& value);

/// The value as compact JSON. U+FFFD replaces bytes that are not UTF-8.
std::string writeRepaired(const Value& value);

/// Appends a text in quotes to JSON; false, and nothing appended, when the text is no UTF-8.
bool append(std::string& to, std::string_view text);

/// The same for every text. U+FFFD replaces bytes that are not UTF-8.
void appendRepaired(std::string& to, std::string_view text);

} // namespace kivo::json
