#include "platform/base/Number.hpp"
#include "platform/json/Json.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <compare>
#include <functional>
#include <system_error>

namespace kivo::json {
namespace {

/// Up to so many members are looked through one after another, which is faster than an index.
constexpr std::size_t few = 8;

std::uint32_t hashOf(std::string_view name) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>{}(name));
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

Object::Place Object::placeOf(std::uint32_t member) const {
    return {.hash = hashOf(members_[member].name), .at = member};
}

std::vector<Object::Place>::const_iterator Object::firstPlaceOf(std::string_view name) const {
    const auto key = std::pair{hashOf(name), name};
    return std::ranges::lower_bound(places_, key, {}, [this](const Place& place) {
        return std::pair{place.hash, std::string_view{members_[place.at].name}};
    });
}

const Value* Object::find(std::string_view name) const {
    if (places_.empty()) {
        const auto member = std::ranges::find(members_, name, &Member::name);
        return member != members_.end() ? &member->value : nullptr;
    }
    const auto place = firstPlaceOf(name);
    return place != places_.end() && members_[place->at].name == name ? &members_[place->at].value : nullptr;
}

Value* Object::find(std::string_view name) {
    return const_cast<Value*>(std::as_const(*this).find(name));
}

void Object::set(std::string name, Value value) {
    if (auto* const present = find(name)) {
        *present = std::move(value);
        return;
    }
    members_.emplace_back(std::move(name), std::move(value));
    const auto place = placeOf(static_cast<std::uint32_t>(members_.size() - 1));
    if (!places_.empty()) {
        places_.insert(firstPlaceOf(members_.back().name), place);
    } else if (members_.size() > few) {
        sortPlaces();
    }
}

void Object::sortPlaces() {
    places_.clear();
    places_.reserve(members_.size());
    for (std::uint32_t at = 0; at < members_.size(); ++at) {
        places_.push_back(placeOf(at));
    }
    std::ranges::sort(places_, [this](const Place& one, const Place& other) {
        if (one.hash != other.hash) {
            return one.hash < other.hash;
        }
        const auto names = members_[one.at].name <=> members_[other.at].name;
        return names != 0 ? names < 0 : one.at < other.at;
    });
}

void Object::index() {
    if (members_.size() > few) {
        sortPlaces();
        dropRepeated();
        return;
    }
    // A member whose name is taken gives its value to the first member of that name, and goes.
    for (auto member = members_.begin(); member != members_.end();) {
        const auto first = std::ranges::find(members_.begin(), member, member->name, &Member::name);
        if (first == member) {
            ++member;
        } else {
            first->value = std::move(member->value);
            member = members_.erase(member);
        }
    }
}

void Object::dropRepeated() {
    const auto isSame = [this](const Place& one, const Place& other) {
        return one.hash == other.hash && members_[one.at].name == members_[other.at].name;
    };
    if (std::ranges::adjacent_find(places_, isSame) == places_.end()) {
        return;
    }
    // The value of the last member of a name moves to the first member of that name, and the others go.
    std::vector<bool> isRepeated(members_.size());
    for (auto first = places_.begin(); first != places_.end();) {
        const auto next =
            std::find_if(first, places_.end(), [&](const Place& place) { return !isSame(*first, place); });
        if (next - first > 1) {
            members_[first->at].value = std::move(members_[(next - 1)->at].value);
            std::for_each(first + 1, next, [&](const Place& place) { isRepeated[place.at] = true; });
        }
        first = next;
    }
    std::uint32_t at = 0;
    std::erase_if(members_, [&](const Member&) { return isRepeated[at++]; });
    sortPlaces();
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

Value Value::ofReal(double number) {
    if (!std::isfinite(number)) {
        return {};
    }
    std::array<char, 32> digits{}; // the shortest digits of a double are 24 at most
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return Value{Number{std::string{digits.data(), written.ptr}}};
}

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
    const auto written = digits();
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(written.data(), written.data() + written.size(), number);
    return error == std::errc{} && end == written.data() + written.size() ? std::optional{number} : std::nullopt;
}

std::optional<double> Value::real() const {
    return platform::decimalNumber(digits());
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

std::vector<Member> Value::takeMembers() && {
    auto* const object = std::get_if<Object>(&content_);
    return object ? std::move(object->members_) : std::vector<Member>{};
}

const std::string* Value::textOf(std::string_view name) const {
    const auto* const member = find(name);
    return member ? member->text() : nullptr;
}

} // namespace kivo::json
