#include "platform/json/Json.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <exception>
#include <iterator>
#include <map>

namespace kivo::json {
namespace {

/// Where the library keeps the value of a number that is no 64-bit integer. The library refuses a text for one number
/// that no `double` can hold; this one can be any, since only the digits are taken over.
class AnyNumber {
public:
    constexpr AnyNumber() = default;

    constexpr AnyNumber(double /*value*/) {}

    operator double&() { return ignored_; }

    constexpr operator double() const { return 0; }

private:
    double ignored_ = 0;
};

using Library = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t, std::uint64_t, AnyNumber>;

/// Goes over a text and tells how far it came.
struct Cursor {
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    const char* at = nullptr;
    const char** furthest = nullptr;

    reference operator*() const { return *at; }

    Cursor& operator++() {
        *furthest = ++at;
        return *this;
    }

    bool operator==(const Cursor& other) const { return at == other.at; }
};

using IllFormed = nlohmann::json::error_handler_t;

void appendText(std::string& to, std::string_view text, IllFormed illFormed) {
    const bool isPlain = std::ranges::none_of(text, [](char c) { return c < ' ' || c > '~' || c == '"' || c == '\\'; });
    if (isPlain) {
        to.append(1, '"').append(text).append(1, '"');
    } else {
        to.append(nlohmann::json(text).dump(-1, ' ', /*ensure_ascii=*/false, illFormed));
    }
}

void append(std::string& to, const Value& value, IllFormed illFormed) {
    switch (value.kind()) {
    case Kind::null:
        to += "null";
        break;
    case Kind::boolean:
        to += *value.boolean() ? "true" : "false";
        break;
    case Kind::number:
        to += value.digits();
        break;
    case Kind::text:
        appendText(to, *value.text(), illFormed);
        break;
    case Kind::array:
        to += '[';
        for (const auto& element : value.elements()) {
            to += to.back() == '[' ? "" : ",";
            append(to, element, illFormed);
        }
        to += ']';
        break;
    case Kind::object:
        to += '{';
        for (const auto& member : value.members()) {
            to += to.back() == '{' ? "" : ",";
            appendText(to, member.name, illFormed);
            to += ':';
            append(to, member.value, illFormed);
        }
        to += '}';
        break;
    }
}

} // namespace

/// Builds the value from the events of the library's parser, as long as the limits allow.
class Reading {
public:
    explicit Reading(const Limits& limits)
        : limits_{limits} {}

    Value takeRoot() { return std::move(root_); }

    /// Absent where the text is no JSON.
    std::optional<Refusal::Kind> limitPassed() const { return limitPassed_; }

    std::size_t positionOfError() const { return positionOfError_; }

    bool null() { return put(Value{}) != nullptr; }

    bool boolean(bool value) { return add(value); }

    bool number_integer(std::int64_t number) { return add(number); }

    bool number_unsigned(std::uint64_t number) { return add(number); }

    bool number_float(AnyNumber /*value*/, const std::string& digits) {
        Value::Number number{digits};
        // The library writes the decimal point as the C locale in use does.
        std::ranges::replace_if(
            number.digits, [](char c) { return (c < '0' || c > '9') && !std::string_view{"+-eE"}.contains(c); }, '.');
        return add(Value{std::move(number)});
    }

    bool string(std::string& text) { return add(std::move(text)); }

    bool binary(const Library::binary_t& /*bytes*/) { return false; }

    bool start_object(std::size_t /*unknown*/) { return open(Object{}); }

    bool key(std::string& name) {
        openObject().members_.emplace_back(std::move(name));
        return count();
    }

    bool end_object() {
        openObject().index();
        open_.pop_back();
        return true;
    }

    bool start_array(std::size_t /*unknown*/) { return open(std::vector<Value>{}); }

    bool end_array() {
        open_.pop_back();
        return true;
    }

    bool parse_error(std::size_t position, const std::string& /*token*/, const std::exception& /*error*/) {
        positionOfError_ = position;
        return false;
    }

private:
    bool refuse(Refusal::Kind limit) {
        limitPassed_ = limit;
        return false;
    }

    bool count() { return ++members_ <= limits_.members || refuse(Refusal::Kind::tooManyMembers); }

    Object& openObject() { return std::get<Object>(open_.back()->content_); }

    /// Puts a value where it belongs; it stays there until the object or array around it goes on. Null at the limit.
    Value* put(Value value) {
        if (open_.empty()) {
            return &(root_ = std::move(value));
        }
        auto& around = open_.back()->content_;
        if (auto* const elements = std::get_if<std::vector<Value>>(&around)) {
            return count() ? &elements->emplace_back(std::move(value)) : nullptr;
        }
        return &(std::get<Object>(around).members_.back().value = std::move(value));
    }

    bool add(Value value) { return put(std::move(value)) != nullptr; }

    bool open(Value value) {
        if (open_.size() == limits_.depth) {
            return refuse(Refusal::Kind::tooDeep);
        }
        auto* const container = put(std::move(value));
        open_.push_back(container);
        return container != nullptr;
    }

    const Limits limits_;
    Value root_;
    std::vector<Value*> open_;
    std::size_t members_ = 0;
    std::optional<Refusal::Kind> limitPassed_;
    std::size_t positionOfError_ = 0;
};

std::expected<Value, Refusal> read(std::string_view text, const Limits& limits) {
    if (text.size() > limits.bytes) {
        return std::unexpected{Refusal{.kind = Refusal::Kind::tooManyBytes, .offset = limits.bytes}};
    }
    // A zero byte has no place in JSON, and would end the text early for the library.
    if (const auto zero = text.find('\0'); zero != std::string_view::npos) {
        return std::unexpected{Refusal{.offset = zero}};
    }
    const std::span bytes{text};
    const auto* furthest = bytes.data();
    Reading reading{limits};
    const bool isRead =
        Library::sax_parse(Cursor{bytes.data(), &furthest}, Cursor{bytes.data() + bytes.size(), &furthest}, &reading,
                           Library::input_format_t::json, /*strict=*/true, /*ignore_comments=*/limits.comments);
    if (isRead) {
        return reading.takeRoot();
    }
    const auto limit = reading.limitPassed();
    const auto count = limit ? static_cast<std::size_t>(furthest - bytes.data()) : reading.positionOfError();
    return std::unexpected{Refusal{.kind = limit.value_or(Refusal::Kind::notJson),
                                   .offset = std::min(std::max<std::size_t>(count, 1) - 1, text.size())}};
}

std::optional<std::string> write(const Value& value) {
    std::string text;
    try {
        append(text, value, IllFormed::strict);
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
    return text;
}

std::string writeRepaired(const Value& value) {
    std::string text;
    append(text, value, IllFormed::replace);
    return text;
}

void appendRepaired(std::string& to, std::string_view text) {
    appendText(to, text, IllFormed::replace);
}

} // namespace kivo::json
