#include "platform/bundle/StringsFile.hpp"

#include "platform/base/Utf16.hpp"
#include "platform/bundle/PropertyListReader.hpp"

#include <kivo/platform/Text.hpp>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace kivo::platform {
namespace {

std::expected<std::string, std::string> toUtf8(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        return fromUtf16(bytes.substr(2), bytes.starts_with("\xFE\xFF"));
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    if (!text::isUtf8(bytes)) {
        return std::unexpected{"is neither UTF-8 nor UTF-16 with a byte order mark"};
    }
    return std::string{bytes};
}

constexpr std::size_t mostTexts = 100'000;

bool isSpace(char character) {
    return std::string_view{" \t\r\n\f\v"}.contains(character);
}

bool isBare(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || std::string_view{"_$.-/:"}.contains(character);
}

int hexDigit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const auto lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Reads the classic text form, entry by entry.
class StringsParser {
public:
    explicit StringsParser(std::string_view text)
        : text_{text} {}

    std::expected<StringTable, std::string> parse() {
        StringTable table;
        while (!problem_ && skipBlanks() && !atEnd()) {
            auto key = word("a key");
            auto value = key && skipBlanks() && take('=') && skipBlanks() ? word("a value") : key;
            if (!value || !skipBlanks()) {
                break;
            }
            if (!take(';')) {
                fail("expected ';'");
                break;
            }
            table.insert_or_assign(std::move(*key), std::move(*value));
            if (table.size() > mostTexts) {
                fail("more than 100,000 texts");
            }
        }
        if (problem_) {
            return std::unexpected{std::move(*problem_)};
        }
        return table;
    }

private:
    bool atEnd() const { return at_ == text_.size(); }

    bool take(char expected) {
        const bool found = !atEnd() && text_[at_] == expected;
        at_ += found ? 1 : 0;
        return found;
    }

    void fail(const std::string& what) {
        if (!problem_) {
            const auto line = 1 + std::ranges::count(text_.substr(0, at_), '\n');
            problem_ = "is damaged in line " + std::to_string(line) + ": " + what;
        }
    }

    // False for a comment without an end.
    bool skipBlanks() {
        for (;;) {
            const auto rest = text_.substr(at_);
            if (!rest.empty() && isSpace(rest.front())) {
                ++at_;
            } else if (rest.starts_with("//")) {
                at_ = std::min(text_.find('\n', at_), text_.size());
            } else if (rest.starts_with("/*")) {
                const auto end = text_.find("*/", at_ + 2);
                if (end == std::string_view::npos) {
                    fail("a comment has no end");
                    return false;
                }
                at_ = end + 2;
            } else {
                return true;
            }
        }
    }

    std::optional<std::string> word(const char* kind) {
        if (take('"')) {
            return quoted();
        }
        const auto start = at_;
        while (!atEnd() && isBare(text_[at_])) {
            ++at_;
        }
        if (start == at_) {
            fail(std::string{"expected "} + kind);
            return std::nullopt;
        }
        return std::string{text_.substr(start, at_ - start)};
    }

    std::optional<std::string> quoted() {
        const auto start = at_;
        std::string text;
        while (!atEnd() && text_[at_] != '"') {
            const char character = text_[at_++];
            if (character != '\\') {
                joiner_.finish(text);
                text += character;
            } else if (!atEnd()) {
                escaped(text_[at_++], text);
            }
        }
        joiner_.finish(text);
        if (!take('"')) {
            at_ = start;
            fail("a text has no closing quote");
            return std::nullopt;
        }
        return text;
    }

    void escaped(char character, std::string& text) {
        if (character == 'u' || character == 'U') {
            if (const auto unit = fourHexDigits()) {
                joiner_.append(*unit, text);
                return;
            }
        }
        joiner_.finish(text);
        switch (character) {
        case 'n':
            text += '\n';
            break;
        case 't':
            text += '\t';
            break;
        case 'r':
            text += '\r';
            break;
        default:
            text += character;
        }
    }

    std::optional<char16_t> fourHexDigits() {
        if (text_.size() - at_ < 4) {
            return std::nullopt;
        }
        int unit = 0;
        for (const char character : text_.substr(at_, 4)) {
            const int digit = hexDigit(character);
            if (digit < 0) {
                return std::nullopt;
            }
            unit = unit * 16 + digit;
        }
        at_ += 4;
        return static_cast<char16_t>(unit);
    }

    std::string_view text_;
    std::size_t at_ = 0;
    Utf16Joiner joiner_;
    std::optional<std::string> problem_;
};

bool looksLikePropertyList(std::string_view bytes) {
    const auto start = std::ranges::find_if_not(bytes, isSpace);
    const std::string_view text{start, bytes.end()};
    return text.starts_with("bplist") || text.starts_with("<?xml") || text.starts_with("<!DOCTYPE") ||
           text.starts_with("<plist");
}

std::expected<StringTable, std::string> fromPropertyList(std::string_view bytes) {
    const auto root = readPropertyList(bytes);
    if (!root) {
        return std::unexpected{root.error()};
    }
    const auto* dictionary = root->dictionary();
    if (!dictionary) {
        return std::unexpected{"does not hold a dictionary of texts"};
    }
    StringTable table;
    for (const auto& [key, value] : *dictionary) {
        if (const auto* text = value.text()) {
            table.emplace(key, *text);
        }
    }
    return table;
}

} // namespace

std::expected<StringTable, std::string> readStringsFile(std::string_view bytes) {
    if (bytes.starts_with("bplist")) {
        return fromPropertyList(bytes);
    }
    const auto text = toUtf8(bytes);
    if (!text) {
        return std::unexpected{text.error()};
    }
    return looksLikePropertyList(*text) ? fromPropertyList(*text) : StringsParser{*text}.parse();
}

} // namespace kivo::platform
