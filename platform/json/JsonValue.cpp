#include "platform/json/Json.hpp"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <system_error>

namespace kivo::json {
namespace {

template <class Number>
std::optional<Number> parsed(std::string_view digits) {
    Number number{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc{} && end == digits.data() + digits.size() ? std::optional{number} : std::nullopt;
}

} // namespace

std::string_view name(Kind kind) {
    switch (kind) {
    case Kind::null:
        return "null";
    case Kind::boolean:
        return "true or false";
    case Kind::number:
        return "a number";
    case Kind::text:
        return "a text";
    case Kind::array:
        return "an array";
    case Kind::object:
        break;
    }
    return "an object";
}

Object::Object() = default;
Object::Object(const Object&) = default;
Object::Object(Object&&) noexcept = default;
Object& Object::operator=(const Object&) = default;
Object& Object::operator=(Object&&) noexcept = default;
Object::~Object() = default;

Object::Object(std::vector<Member> members)
    : members_{std::move(members)} {
    index();
}

std::span<const Member> Object::members() const {
    return members_;
}

std::vector<std::uint32_t>::const_iterator Object::placeOf(std::string_view name) const {
    return std::ranges::lower_bound(byName_, name, {},
                                    [this](std::uint32_t at) { return std::string_view{members_[at].name}; });
}

const Value* Object::find(std::string_view name) const {
    const auto place = placeOf(name);
    return place != byName_.end() && members_[*place].name == name ? &members_[*place].value : nullptr;
}

Value* Object::find(std::string_view name) {
    return const_cast<Value*>(std::as_const(*this).find(name));
}

void Object::set(std::string name, Value value) {
    if (auto* const present = find(name)) {
        *present = std::move(value);
        return;
    }
    byName_.insert(placeOf(name), static_cast<std::uint32_t>(members_.size()));
    members_.emplace_back(std::move(name), std::move(value));
}

void Object::index() {
    const auto sort = [this] {
        byName_.resize(members_.size());
        std::iota(byName_.begin(), byName_.end(), 0U);
        std::ranges::sort(byName_, {},
                          [this](std::uint32_t at) { return std::pair{std::string_view{members_[at].name}, at}; });
    };
    sort();
    const auto isSame = [this](std::uint32_t one, std::uint32_t other) {
        return members_[one].name == members_[other].name;
    };
    if (std::ranges::adjacent_find(byName_, isSame) == byName_.end()) {
        return;
    }
    // Each name's last value moves to the name's first place, and the places that it leaves go.
    std::vector<bool> isRepeated(members_.size());
    for (auto first = byName_.begin(); first != byName_.end();) {
        const auto next = std::find_if(first, byName_.end(), [&](std::uint32_t at) { return !isSame(*first, at); });
        if (next - first > 1) {
            members_[*first].value = std::move(members_[*(next - 1)].value);
            std::for_each(first + 1, next, [&](std::uint32_t at) { isRepeated[at] = true; });
        }
        first = next;
    }
    std::uint32_t at = 0;
    std::erase_if(members_, [&](const Member&) { return isRepeated[at++]; });
    sort();
}

Value::Value(std::string text)
    : content_{std::move(text)} {}

Value::Value(std::string_view text)
    : content_{std::string{text}} {}

Value::Value(const char* text)
    : content_{std::string{text}} {}

Value::Value(Object object)
    : content_{std::move(object)} {}

Value::Value(std::vector<Value> elements)
    : content_{std::move(elements)} {}

Value::Value(Number number)
    : content_{std::move(number)} {}

Value::Value(std::in_place_t, bool value)
    : content_{value} {}

Value Value::object(std::initializer_list<Member> members) {
    return Object{std::vector<Member>{members}};
}

Kind Value::kind() const {
    return static_cast<Kind>(content_.index());
}

std::optional<bool> Value::boolean() const {
    const auto* const value = std::get_if<bool>(&content_);
    return value ? std::optional{*value} : std::nullopt;
}

std::optional<std::int64_t> Value::integer() const {
    return parsed<std::int64_t>(digits());
}

std::optional<double> Value::real() const {
    return parsed<double>(digits());
}

std::string_view Value::digits() const {
    const auto* const number = std::get_if<Number>(&content_);
    return number ? std::string_view{number->digits} : std::string_view{};
}

const std::string* Value::text() const {
    return std::get_if<std::string>(&content_);
}

std::string* Value::text() {
    return std::get_if<std::string>(&content_);
}

std::span<const Value> Value::elements() const {
    const auto* const elements = std::get_if<std::vector<Value>>(&content_);
    return elements ? std::span<const Value>{*elements} : std::span<const Value>{};
}

std::span<const Member> Value::members() const {
    const auto* const object = std::get_if<Object>(&content_);
    return object ? object->members() : std::span<const Member>{};
}

const Value* Value::find(std::string_view name) const {
    const auto* const object = std::get_if<Object>(&content_);
    return object ? object->find(name) : nullptr;
}

Value* Value::find(std::string_view name) {
    auto* const object = std::get_if<Object>(&content_);
    return object ? object->find(name) : nullptr;
}

const std::string* Value::textOf(std::string_view name) const {
    const auto* const member = find(name);
    return member ? member->text() : nullptr;
}

} // namespace kivo::json
