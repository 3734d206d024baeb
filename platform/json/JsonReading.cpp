#include "platform/json/Json.hpp"
#include "platform/json/PlainText.hpp"

#include <kivo/platform/Text.hpp>

#include <algorithm>

namespace kivo::json {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

constexpr bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

constexpr bool isHighSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

constexpr bool isLowSurrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

/// The length of the part at the beginning that is UTF-8.
std::size_t lengthOfUtf8(std::string_view text) {
    constexpr std::size_t longestSequence = 4;
    std::size_t at = 0;
    std::size_t length = 1;
    while (at < text.size() && length <= longestSequence) {
        const bool isSequence = text::isUtf8(text.substr(at, length));
        at += isSequence ? length : 0;
        length = isSequence ? 1 : length + 1;
    }
    return at;
}

} // namespace

/// Goes over a text once, from its beginning to its end or to what makes it no JSON. Each function that returns a
/// `bool` is false at a byte that has no place there, which is then the byte at `at_`, or at a limit.
class Reading {
public:
    Reading(std::string_view text, const Limits& limits)
        : text_{text}
        , limits_{limits} {
        open_.reserve(usualDepth);
    }

    std::expected<Value, Refusal> read() {
        if (readDocument()) {
            return std::move(root_);
        }
        return std::unexpected{Refusal{.kind = limitPassed_.value_or(Refusal::Kind::notJson), .offset = at_}};
    }

private:
    static constexpr std::size_t usualMembers = 4;
    static constexpr std::size_t usualDepth = 8;

    bool readDocument() {
        take(byteOrderMark);
        if (!skipBlanks() || !readValue()) {
            return false;
        }
        while (!open_.empty()) {
            auto& content = open_.back()->content_;
            auto* const object = std::get_if<Object>(&content);
            if (!(object ? readMember(*object) : readElement(std::get<std::vector<Value>>(content)))) {
                return false;
            }
        }
        return skipBlanks() && at_ == text_.size();
    }

    /// Reads the next element of the innermost array, or the array's end.
    bool readElement(const std::vector<Value>& elements) {
        if (!skipBlanks()) {
            return false;
        }
        if (take(']')) {
            open_.pop_back();
            return true;
        }
        return (elements.empty() || (take(',') && skipBlanks())) && readValue();
    }

    /// Reads the next member of the innermost object, or the object's end.
    bool readMember(Object& object) {
        if (!skipBlanks()) {
            return false;
        }
        auto& members = object.members_;
        if (take('}')) {
            object.index();
            open_.pop_back();
            return true;
        }
        if (!members.empty() && (!take(',') || !skipBlanks())) {
            return false;
        }
        if (members.size() == members.capacity()) {
            members.reserve(usualMembers * std::max<std::size_t>(members.size(), 1));
        }
        return next() == '"' && count() && take('"') && readText(members.emplace_back().name) && skipBlanks() &&
               take(':') && skipBlanks() && readValue();
    }

    /// Reads a value, and of an object or an array the first byte.
    bool readValue() {
        const char first = next();
        switch (first) {
        case '"': {
            auto* const text = put(std::string{});
            return text != nullptr && take('"') && readText(*text);
        }
        case '{':
            return open<Object>();
        case '[':
            return open<std::vector<Value>>();
        case 't':
            return put(true) != nullptr && takeWord("true");
        case 'f':
            return put(false) != nullptr && takeWord("false");
        case 'n':
            return put(std::monostate{}) != nullptr && takeWord("null");
        default:
            return (first == '-' || isDigit(first)) && readNumber();
        }
    }

    bool readNumber() {
        auto* const number = put(Value::Number{});
        if (number == nullptr) {
            return false;
        }
        const auto begin = at_;
        take('-');
        if (!take('0') && !takeDigits()) {
            return false;
        }
        if (take('.') && !takeDigits()) {
            return false;
        }
        if (take('e') || take('E')) {
            if (!take('+')) {
                take('-');
            }
            if (!takeDigits()) {
                return false;
            }
        }
        number->digits = text_.substr(begin, at_ - begin);
        return true;
    }

    /// Reads a text after its opening quote.
    bool readText(std::string& to) {
        while (true) {
            const auto [length, isAscii] = plainPart(text_.substr(at_));
            const auto part = text_.substr(at_, length);
            if (!isAscii && !text::isUtf8(part)) {
                at_ += lengthOfUtf8(part);
                return false;
            }
            to.append(part);
            at_ += length;
            if (take('"')) {
                return true;
            }
            if (!take('\\') || !readEscape(to)) {
                return false;
            }
        }
    }

    /// Reads what follows a backslash.
    bool readEscape(std::string& to) {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
        if (take('u')) {
            return readCodeUnits(to);
        }
        const auto letter = letters.find(next());
        if (letter == letters.npos) {
            return false;
        }
        to += characters[letter];
        ++at_;
        return true;
    }

    /// Reads the four digits after `\u`, and what follows them where they are half of a character.
    bool readCodeUnits(std::string& to) {
        std::uint32_t character = 0;
        if (!takeCodeUnit(character) || isLowSurrogate(character)) {
            return false;
        }
        if (isHighSurrogate(character)) {
            std::uint32_t low = 0;
            if (!take('\\') || !take('u') || !takeCodeUnit(low) || !isLowSurrogate(low)) {
                return false;
            }
            character = 0x10000 + ((character - 0xD800) << 10U) + (low - 0xDC00);
        }
        appendCharacter(to, character);
        return true;
    }

    bool takeCodeUnit(std::uint32_t& unit) {
        for (int digit = 0; digit < 4; ++digit) {
            const char byte = next();
            const char letter = static_cast<char>(byte | 0x20);
            if (!isDigit(byte) && (letter < 'a' || letter > 'f')) {
                return false;
            }
            unit = unit * 16 + static_cast<std::uint32_t>(isDigit(byte) ? byte - '0' : letter - 'a' + 10);
            ++at_;
        }
        return true;
    }

    /// The next byte; zero, which has no place anywhere in JSON, at the end.
    char next() const { return at_ < text_.size() ? text_[at_] : '\0'; }

    bool take(char byte) {
        const bool isNext = at_ < text_.size() && text_[at_] == byte;
        at_ += isNext ? 1 : 0;
        return isNext;
    }

    bool take(std::string_view bytes) {
        const bool isNext = text_.substr(at_).starts_with(bytes);
        at_ += isNext ? bytes.size() : 0;
        return isNext;
    }

    /// Takes the part of the word that is there.
    bool takeWord(std::string_view word) {
        return std::ranges::all_of(word, [this](char letter) { return take(letter); });
    }

    /// Takes digits; false where there is none.
    bool takeDigits() {
        const auto begin = at_;
        while (isDigit(next())) {
            ++at_;
        }
        return at_ > begin;
    }

    bool skipBlanks() {
        while (true) {
            switch (next()) {
            case ' ':
            case '\t':
            case '\n':
            case '\r':
                ++at_;
                break;
            case '/':
                if (!limits_.comments || !skipComment()) {
                    return false;
                }
                break;
            default:
                return true;
            }
        }
    }

    bool skipComment() {
        const auto passed = [this](std::size_t end, std::size_t length) {
            at_ = end == text_.npos ? text_.size() : end + length;
            return end != text_.npos;
        };
        if (take("//")) {
            passed(text_.find_first_of("\r\n", at_), 1);
            return true;
        }
        return take("/*") && passed(text_.find("*/", at_), 2);
    }

    bool refuse(Refusal::Kind limit) {
        limitPassed_ = limit;
        return false;
    }

    bool count() { return ++members_ <= limits_.members || refuse(Refusal::Kind::tooManyMembers); }

    /// The place of the next value, which stays where it is until the object or array around it goes on. Null at the
    /// limit.
    Value* place() {
        if (open_.empty()) {
            return &root_;
        }
        auto& around = open_.back()->content_;
        if (auto* const elements = std::get_if<std::vector<Value>>(&around)) {
            return count() ? &elements->emplace_back() : nullptr;
        }
        return &std::get<Object>(around).members_.back().value;
    }

    /// Puts a value into its place; null at the limit.
    template <class Content>
    Content* put(Content content) {
        auto* const value = place();
        return value ? &value->content_.emplace<Content>(std::move(content)) : nullptr;
    }

    template <class Container>
    bool open() {
        if (open_.size() == limits_.depth) {
            return refuse(Refusal::Kind::tooDeep);
        }
        auto* const value = place();
        if (value == nullptr) {
            return false;
        }
        value->content_.emplace<Container>();
        open_.push_back(value);
        ++at_;
        return true;
    }

    const std::string_view text_;
    const Limits limits_;
    std::size_t at_ = 0;
    Value root_;
    /// The objects and arrays that have begun and not ended, each inside the one before.
    std::vector<Value*> open_;
    std::size_t members_ = 0;
    std::optional<Refusal::Kind> limitPassed_;
};

std::expected<Value, Refusal> read(std::string_view text, const Limits& limits) {
    if (text.size() > limits.bytes) {
        return std::unexpected{Refusal{.kind = Refusal::Kind::tooManyBytes, .offset = limits.bytes}};
    }
    return Reading{text, limits}.read();
}

} // namespace kivo::json
