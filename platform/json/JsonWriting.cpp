#include "platform/json/Json.hpp"
#include "platform/json/ObjectText.hpp"
#include "platform/json/PlainText.hpp"

#include <kivo/platform/Text.hpp>

#include <array>

namespace kivo::json {
namespace {

/// What stands for each byte in a text: 0 for the byte itself, 'u' for its number, otherwise the letter after a
/// backslash.
constexpr auto escapes = [] {
    std::array<char, 256> table{};
    for (std::size_t control = 0; control < ' '; ++control) {
        table[control] = 'u';
    }
    table['\b'] = 'b';
    table['\t'] = 't';
    table['\n'] = 'n';
    table['\f'] = 'f';
    table['\r'] = 'r';
    table['"'] = '"';
    table['\\'] = '\\';
    return table;
}();

char escapeOf(char byte) {
    return escapes[static_cast<unsigned char>(byte)];
}

/// Appends a text in quotes. Stops at a part that is not UTF-8, and returns false.
bool appendQuoted(std::string& to, std::string_view text) {
    // Each part is judged and then copied. A part of this size is still in the processor's cache when it is copied.
    // From 4 KiB on, the C library copies by an instruction that takes some processors several times as long behind the
    // quote, at an odd address.
    constexpr std::size_t atOnce = 512;
    to += '"';
    while (!text.empty()) {
        auto [plain, isAscii] = plainPart(text.substr(0, atOnce));
        if (!isAscii) {
            // The end of the part may cut a character of several bytes.
            plain = plainPart(text).length;
            if (!text::isUtf8(text.substr(0, plain))) {
                return false;
            }
        }
        to.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty() || escapeOf(text.front()) == 0) {
            continue;
        }
        const char escape = escapeOf(text.front());
        to.append({'\\', escape});
        if (escape == 'u') {
            constexpr std::string_view digits = "0123456789abcdef";
            const auto byte = static_cast<unsigned char>(text.front());
            to.append({'0', '0', digits[byte / 16], digits[byte % 16]});
        }
        text.remove_prefix(1);
    }
    to += '"';
    return true;
}

/// The text with U+FFFD in place of each byte that is not UTF-8.
std::string repaired(std::string_view text) {
    constexpr std::size_t longestSequence = 4;
    std::string sound;
    while (!text.empty()) {
        std::size_t length = 1;
        while (length < longestSequence && length < text.size() && !text::isUtf8(text.substr(0, length))) {
            ++length;
        }
        const bool isSequence = text::isUtf8(text.substr(0, length));
        sound += isSequence ? text.substr(0, length) : "\uFFFD";
        text.remove_prefix(isSequence ? length : 1);
    }
    return sound;
}

/// Appends JSON, with each text through `appendText`. False when a text was not appended.
template <class AppendText>
bool append(std::string& to, const Value& value, const AppendText& appendText) {
    bool isWritten = true;
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
        isWritten = appendText(to, *value.text());
        break;
    case Kind::array:
        to += '[';
        for (const auto& element : value.elements()) {
            to += to.back() == '[' ? "" : ",";
            isWritten = append(to, element, appendText) && isWritten;
        }
        to += ']';
        break;
    case Kind::object:
        to += '{';
        for (const auto& member : value.members()) {
            to += to.back() == '{' ? "" : ",";
            isWritten = appendText(to, member.name) && isWritten;
            to += ':';
            isWritten = append(to, member.value, appendText) && isWritten;
        }
        to += '}';
        break;
    }
    return isWritten;
}

} // namespace

bool append(std::string& to, std::string_view text) {
    const auto former = to.size();
    const bool isValid = appendQuoted(to, text);
    if (!isValid) {
        to.resize(former);
    }
    return isValid;
}

void appendRepaired(std::string& to, std::string_view text) {
    if (!append(to, text)) {
        append(to, repaired(text));
    }
}

std::optional<std::string> write(const Value& value) {
    std::string text;
    const bool isWritten = append(text, value, [](std::string& to, std::string_view part) { return append(to, part); });
    return isWritten ? std::optional{std::move(text)} : std::nullopt;
}

std::string writeRepaired(const Value& value) {
    std::string text;
    append(text, value, [](std::string& to, std::string_view part) {
        appendRepaired(to, part);
        return true;
    });
    return text;
}

ObjectText::ObjectText(std::size_t expected) {
    text_.reserve(expected);
}

void ObjectText::begin(std::string_view name) {
    if (text_.size() > 1) {
        text_ += ',';
    }
    isValid_ = append(text_, name) && isValid_;
    text_ += ':';
}

ObjectText& ObjectText::add(std::string_view name, std::string_view text) {
    begin(name);
    isValid_ = append(text_, text) && isValid_;
    return *this;
}

ObjectText& ObjectText::add(std::string_view name, std::int64_t number) {
    begin(name);
    text_ += std::to_string(number);
    return *this;
}

ObjectText& ObjectText::add(std::string_view name, ObjectText object) {
    begin(name);
    isValid_ = object.isValid_ && isValid_;
    text_ += object.text_;
    text_ += '}';
    return *this;
}

std::optional<std::string> ObjectText::take() && {
    text_ += '}';
    return isValid_ ? std::optional{std::move(text_)} : std::nullopt;
}

} // namespace kivo::json
