#include "platform/ui/TextEstimate.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <cstddef>

namespace kivo::platform {
namespace {

constexpr double lineHeight = 1.2;

struct Read {
    utf8proc_int32_t character = 0xFFFD;
    std::size_t bytes = 1;
};

/// The first character of a text that is not empty.
Read firstOf(std::string_view text) {
    utf8proc_int32_t character = 0;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                         static_cast<utf8proc_ssize_t>(text.size()), &character);
    return length < 1 ? Read{} : Read{.character = character, .bytes = static_cast<std::size_t>(length)};
}

bool isEastAsian(utf8proc_int32_t character) {
    return utf8proc_charwidth(character) == 2;
}

/// In parts of the point size.
double widthOf(utf8proc_int32_t character) {
    constexpr double narrow = 0.28;
    constexpr double common = 0.54;
    constexpr double broad = 0.84;
    if (character < 0x80) {
        const auto letter = static_cast<char>(character);
        return std::string_view{" !'(),-./:;I[]fijlrt|"}.contains(letter) ? narrow
               : std::string_view{"%@MWmw"}.contains(letter)              ? broad
                                                                          : common;
    }
    switch (utf8proc_charwidth(character)) {
    case 0:
        return 0;
    case 2:
        return 1;
    default:
        return common;
    }
}

class Lines {
public:
    explicit Lines(double limit)
        : limit_{limit} {}

    void add(double width) {
        word_ += width;
        if (line_ > 0 && line_ + space_ + word_ > limit_) {
            breakLine();
        }
        if (word_ > limit_ && word_ > width) {
            widest_ = std::max(widest_, word_ - width);
            ++count_;
            word_ = width;
        }
    }

    void addSpace(double width) {
        endWord();
        space_ += width;
    }

    void endWord() {
        if (word_ > 0) {
            line_ += word_ + (line_ > 0 ? space_ : 0);
            space_ = 0;
            word_ = 0;
        }
        widest_ = std::max(widest_, line_);
    }

    void breakLine() {
        widest_ = std::max(widest_, line_);
        ++count_;
        line_ = 0;
        space_ = 0;
    }

    double widest() const { return widest_; }

    int count() const { return count_; }

private:
    double limit_;
    double widest_ = 0;
    double line_ = 0;
    double space_ = 0;
    double word_ = 0;
    int count_ = 1;
};

} // namespace

Size estimateText(std::string_view text, double pointSize, double widthLimit) {
    Lines lines{widthLimit};
    while (!text.empty()) {
        const auto [character, bytes] = firstOf(text);
        text.remove_prefix(bytes);
        const auto width = widthOf(character) * pointSize;
        if (character == '\n') {
            lines.endWord();
            lines.breakLine();
        } else if (character == ' ') {
            lines.addSpace(width);
        } else if (isEastAsian(character)) {
            lines.endWord(); // East Asian text breaks between any two characters
            lines.add(width);
            lines.endWord();
        } else {
            lines.add(width);
        }
    }
    lines.endWord();
    return {std::min(lines.widest(), widthLimit), lines.count() * lineHeight * pointSize};
}

std::vector<std::string_view> unbrokenParts(std::string_view text) {
    std::vector<std::string_view> parts;
    std::size_t begin = 0;
    const auto endAt = [&](std::size_t end) {
        if (end > begin) {
            parts.push_back(text.substr(begin, end - begin));
        }
    };
    for (std::size_t at = 0; at < text.size();) {
        const auto [character, bytes] = firstOf(text.substr(at));
        if (character == ' ' || character == '\n') {
            endAt(at);
            begin = at + bytes;
        } else if (isEastAsian(character)) {
            endAt(at);
            begin = at;
            endAt(at + bytes);
            begin = at + bytes;
        }
        at += bytes;
    }
    endAt(text.size());
    return parts;
}

} // namespace kivo::platform
