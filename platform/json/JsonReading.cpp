#include "platform/json/Cursor.hpp"
#include "platform/json/Json.hpp"

#include <algorithm>

namespace kivo::json {

/// Makes a value of a text. Each function that returns a `bool` is false where the cursor has ended the reading.
class Reading {
public:
    Reading(std::string_view text, const Limits& limits)
        : cursor_{text, limits} {
        open_.reserve(usualDepth);
    }

    std::expected<Value, Refusal> read() {
        bool isRead = readValue(root_);
        while (isRead && !open_.empty()) {
            auto& content = open_.back()->content_;
            auto* const object = std::get_if<Object>(&content);
            isRead = object ? readMember(*object) : readElement(std::get<std::vector<Value>>(content));
        }
        if (isRead && cursor_.end()) {
            return std::move(root_);
        }
        return std::unexpected{cursor_.refusal().value_or(Refusal{})};
    }

private:
    static constexpr std::size_t usualMembers = 4;
    static constexpr std::size_t usualDepth = 8;

    /// Reads the next element of the innermost array, or the array's end.
    bool readElement(std::vector<Value>& elements) {
        return cursor_.element() ? readValue(elements.emplace_back()) : close();
    }

    /// Reads the next member of the innermost object, or the object's end.
    bool readMember(Object& object) {
        const auto name = cursor_.member();
        if (!name) {
            object.index();
            return close();
        }
        auto& members = object.members_;
        if (members.size() == members.capacity()) {
            members.reserve(usualMembers * std::max<std::size_t>(members.size(), 1));
        }
        auto& member = members.emplace_back();
        member.name = *name;
        return readValue(member.value);
    }

    bool close() {
        open_.pop_back();
        return !cursor_.refusal();
    }

    /// Reads a value; of an object or an array only the first byte. An object or array that is being read stays where
    /// the value lies in memory: the object or array around the value gets no further member until the value is whole.
    bool readValue(Value& value) {
        switch (cursor_.kind().value_or(Kind::null)) {
        case Kind::null:
            return cursor_.null();
        case Kind::boolean:
            return put(value, cursor_.boolean());
        case Kind::number:
            return put(value,
                       cursor_.number().transform([](auto digits) { return Value::Number{std::string{digits}}; }));
        case Kind::text:
            return put(value, cursor_.text().transform([](auto text) { return std::string{text}; }));
        case Kind::array:
            return open<std::vector<Value>>(value);
        case Kind::object:
            return open<Object>(value);
        }
        return false;
    }

    template <class Content>
    bool put(Value& value, std::optional<Content> content) {
        if (content) {
            value.content_.emplace<Content>(std::move(*content));
        }
        return content.has_value();
    }

    template <class Container>
    bool open(Value& value) {
        value.content_.emplace<Container>();
        open_.push_back(&value);
        return cursor_.enter();
    }

    Cursor cursor_;
    Value root_;
    /// The objects and arrays that have begun and not ended, each inside the one before.
    std::vector<Value*> open_;
};

std::expected<Value, Refusal> read(std::string_view text, const Limits& limits) {
    return Reading{text, limits}.read();
}

} // namespace kivo::json
