#pragma once

#include "platform/json/Json.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::json {

/// Goes over a JSON text once, from its beginning to its end, and keeps nothing of the text. The caller takes one value
/// after another, and enters objects and arrays.
///
/// The first byte that has no place in JSON ends the reading, and so does a limit: from then on every function answers
/// that nothing more comes. What was taken before counts only where `end` is true after the outermost value.
class Cursor {
public:
    explicit Cursor(std::string_view text, const Limits& limits = {});

    /// The kind of the next value, by its first byte; absent where no value begins.
    std::optional<Kind> kind() const { return next() == '"' ? std::optional{Kind::text} : otherKind(); }

    /// Takes the first byte of an object or an array, whose members or elements come next.
    bool enter();

    /// Takes the name of the next member, whose value comes next; absent at the end of the object, which is taken. The
    /// name is valid until the next name is taken.
    std::optional<std::string_view> member();

    /// Whether the value of another element comes next. At the end of the array, which is taken, false.
    bool element();

    /// Takes a text, which is valid until the next text is taken.
    std::optional<std::string_view> text();

    /// Takes a number as it was written.
    std::optional<std::string_view> number();

    std::optional<bool> boolean();
    bool null();

    /// Takes a value of any kind, with all that is in it.
    bool skip();

    /// Whether the outermost value was taken and nothing follows.
    bool end();

    /// Why the reading ended early; absent while the text may still be JSON.
    const std::optional<Refusal>& refusal() const { return refusal_; }

private:
    std::optional<Kind> otherKind() const;

    char next() const { return at_ != end_ ? *at_ : '\0'; }

    bool take(char byte) {
        const bool isNext = at_ != end_ && *at_ == byte;
        at_ += isNext ? 1 : 0;
        return isNext;
    }

    bool take(std::string_view bytes);
    bool takeWord(std::string_view word);
    bool takeDigits();

    void skipBlanks() {
        if (at_ != end_ && (*at_ <= ' ' || *at_ == '/')) {
            skipBlanksAndComments();
        }
    }

    [[gnu::noinline]] void skipBlanksAndComments();
    void skipComment();
    bool separate(char closing);
    std::string_view quoted(std::string& unescaped);
    [[gnu::noinline]] std::string_view quotedInParts(std::string& unescaped);
    std::optional<std::string_view> plain();
    bool unescape(std::string& to);
    bool unescapeUnits(std::string& to);
    bool takeUnit(std::uint32_t& unit);
    bool count();
    [[gnu::noinline]] bool refuse(Refusal::Kind kind = Refusal::Kind::notJson);

    const char* begin_;
    const char* at_;
    const char* end_;
    Limits limits_;
    std::size_t depth_ = 0;
    std::size_t members_ = 0;
    /// Whether the innermost object or array has only begun.
    bool isFirst_ = false;
    std::optional<Refusal> refusal_;
    std::string name_;
    std::string text_;
};

/// Why the text is not read; absent when the text is JSON within the limits.
std::optional<Refusal> refusalOf(std::string_view text, const Limits& limits = {});

} // namespace kivo::json
