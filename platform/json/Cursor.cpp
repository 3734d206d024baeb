#include "platform/json/Cursor.hpp"

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

// A private function that returns a `bool` returns false at a byte that has no place in JSON. `at_` is then that byte.

Cursor::Cursor(std::string_view text, const Limits& limits)
    : begin_{text.data()}
    , at_{begin_}
    , end_{begin_ + text.size()}
    , limits_{limits} {
    if (text.size() > limits.bytes) {
        at_ += limits.bytes;
        refuse(Refusal::Kind::tooManyBytes);
        return;
    }
    take(byteOrderMark);
    skipBlanks();
}

std::optional<Kind> Cursor::otherKind() const {
    const char first = next();
    switch (first) {
    case '{':
        return Kind::object;
    case '[':
        return Kind::array;
    case 't':
    case 'f':
        return Kind::boolean;
    case 'n':
        return Kind::null;
    default:
        return first == '-' || isDigit(first) ? std::optional{Kind::number} : std::nullopt;
    }
}

bool Cursor::enter() {
    if (depth_ == limits_.depth) {
        return refuse(Refusal::Kind::tooDeep);
    }
    if (!take('{') && !take('[')) {
        return refuse();
    }
    ++depth_;
    isFirst_ = true;
    return true;
}

std::optional<std::string_view> Cursor::member() {
    if (!separate('}') || (next() == '"' && !count())) {
        return std::nullopt;
    }
    const auto name = quoted(name_);
    skipBlanks();
    if (!take(':')) {
        refuse();
        return std::nullopt;
    }
    skipBlanks();
    return name;
}

bool Cursor::element() {
    return separate(']') && count();
}

/// Whether another member or element comes next. Takes the comma before the next one, or otherwise `closing`, which
/// ends the innermost object or array.
bool Cursor::separate(char closing) {
    skipBlanks();
    if (take(closing)) {
        --depth_;
        isFirst_ = false;
        return false;
    }
    if (!isFirst_) {
        if (!take(',')) {
            return refuse();
        }
        skipBlanks();
    }
    isFirst_ = false;
    return true;
}

std::optional<std::string_view> Cursor::text() {
    const auto text = quoted(text_);
    return refusal_ ? std::nullopt : std::optional{text};
}

std::optional<std::string_view> Cursor::number() {
    const auto* const begin = at_;
    take('-');
    bool isNumber = take('0') || takeDigits();
    if (isNumber && take('.')) {
        isNumber = takeDigits();
    }
    if (isNumber && (take('e') || take('E'))) {
        if (!take('+')) {
            take('-');
        }
        isNumber = takeDigits();
    }
    if (!isNumber) {
        refuse();
        return std::nullopt;
    }
    return std::string_view{begin, at_};
}

std::optional<bool> Cursor::boolean() {
    const bool isTrue = next() == 't';
    return takeWord(isTrue ? "true" : "false") ? std::optional{isTrue} : std::nullopt;
}

bool Cursor::null() {
    return takeWord("null");
}

bool Cursor::skip() {
    std::string open; // the last bytes of the objects and arrays that were entered
    do {
        if (!open.empty() && !(open.back() == '}' ? member().has_value() : element())) {
            open.pop_back();
            continue;
        }
        switch (kind().value_or(Kind::null)) {
        case Kind::null:
            null();
            break;
        case Kind::boolean:
            boolean();
            break;
        case Kind::number:
            number();
            break;
        case Kind::text:
            text();
            break;
        case Kind::array:
        case Kind::object:
            open += next() == '{' ? '}' : ']';
            enter();
            break;
        }
    } while (!open.empty() && !refusal_);
    return !refusal_;
}

bool Cursor::end() {
    skipBlanks();
    return !refusal_ && (at_ == end_ || refuse());
}

/// Takes a text, or ends the reading. A text with escapes is put together in `unescaped`.
std::string_view Cursor::quoted(std::string& unescaped) {
    if (!take('"')) {
        refuse();
        return {};
    }
    const auto* const begin = at_;
    const auto [length, isAscii] = plainPart({begin, end_});
    const auto* const end = begin + length;
    if (isAscii && end != end_ && *end == '"') {
        at_ = end + 1;
        return {begin, length};
    }
    return quotedInParts(unescaped);
}

/// Takes the rest of a text, after its first quote. The text has escapes, or characters that are not ASCII.
std::string_view Cursor::quotedInParts(std::string& unescaped) {
    unescaped.clear();
    while (const auto part = plain()) {
        unescaped += *part;
        if (take('"')) {
            return unescaped;
        }
        if (!take('\\') || !unescape(unescaped)) {
            refuse();
            break;
        }
    }
    return {};
}

/// Takes the bytes up to the next quote, backslash or control character.
std::optional<std::string_view> Cursor::plain() {
    const auto [length, isAscii] = plainPart({at_, end_});
    const std::string_view part{at_, length};
    if (!isAscii && !text::isUtf8(part)) {
        at_ += lengthOfUtf8(part);
        refuse();
        return std::nullopt;
    }
    at_ += length;
    return part;
}

/// Takes what follows a backslash.
bool Cursor::unescape(std::string& to) {
    constexpr std::string_view letters = "\"\\/bfnrt";
    constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
    if (take('u')) {
        return unescapeUnits(to);
    }
    const auto letter = letters.find(next());
    if (letter == letters.npos) {
        return false;
    }
    to += characters[letter];
    ++at_;
    return true;
}

/// Takes the four digits after `\u`, and the second half of a surrogate pair where the digits are the first half.
bool Cursor::unescapeUnits(std::string& to) {
    std::uint32_t character = 0;
    if (!takeUnit(character) || isLowSurrogate(character)) {
        return false;
    }
    if (isHighSurrogate(character)) {
        std::uint32_t low = 0;
        if (!take('\\') || !take('u') || !takeUnit(low) || !isLowSurrogate(low)) {
            return false;
        }
        character = 0x10000 + ((character - 0xD800) << 10U) + (low - 0xDC00);
    }
    appendCharacter(to, character);
    return true;
}

bool Cursor::takeUnit(std::uint32_t& unit) {
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

bool Cursor::take(std::string_view bytes) {
    const bool isNext = std::string_view{at_, end_}.starts_with(bytes);
    at_ += isNext ? bytes.size() : 0;
    return isNext;
}

/// Takes the word. A word that is not whole ends the reading at its first wrong byte.
bool Cursor::takeWord(std::string_view word) {
    return std::ranges::all_of(word, [this](char letter) { return take(letter); }) || refuse();
}

/// Takes digits; false where there is none.
bool Cursor::takeDigits() {
    const auto* const begin = at_;
    while (isDigit(next())) {
        ++at_;
    }
    return at_ != begin;
}

void Cursor::skipBlanksAndComments() {
    while (true) {
        const char byte = next();
        if (byte == '/' && limits_.comments) {
            skipComment();
        } else if (byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r') {
            ++at_;
        } else {
            return;
        }
    }
}

/// Takes a comment. A comment without an end ends the reading at the end of the text.
void Cursor::skipComment() {
    const std::string_view rest{at_, end_};
    if (rest.starts_with("//")) {
        at_ += std::min(rest.find_first_of("\r\n"), rest.size());
    } else if (rest.starts_with("/*")) {
        const auto last = rest.find("*/", 2);
        at_ = last == rest.npos ? end_ : at_ + last + 2;
        if (last == rest.npos) {
            refuse();
        }
    } else {
        refuse();
    }
}

bool Cursor::count() {
    return ++members_ <= limits_.members || refuse(Refusal::Kind::tooManyMembers);
}

/// Ends the reading at `at_`, and returns false.
bool Cursor::refuse(Refusal::Kind kind) {
    if (!refusal_) {
        refusal_ = {.kind = kind, .offset = static_cast<std::size_t>(at_ - begin_)};
    }
    end_ = at_;
    return false;
}

std::optional<Refusal> refusalOf(std::string_view text, const Limits& limits) {
    Cursor cursor{text, limits};
    return cursor.skip() && cursor.end() ? std::nullopt : cursor.refusal();
}

} // namespace kivo::json
