#include "platform/base/Ascii.hpp"
#include "platform/base/Number.hpp"
#include "platform/bundle/PropertyListReader.hpp"
#include "platform/posix/Files.hpp"

#include <expat.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

constexpr auto notWellFormed = "is not a well-formed XML or binary property list";

bool isXmlSpace(char character) {
    return std::string_view{" \t\r\n"}.contains(character);
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isXmlSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isXmlSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<PropertyValue> wholeNumber(std::string_view text, int base) {
    std::int64_t value{};
    const auto read = std::from_chars(text.begin(), text.end(), value, base);
    return read.ec == std::errc{} && read.ptr == text.end() ? std::optional{PropertyValue{value}} : std::nullopt;
}

std::optional<PropertyValue> integer(std::string_view text) {
    text.remove_prefix(text.starts_with('+') ? 1 : 0);
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    return isHex ? wholeNumber(text.substr(2), 16) : wholeNumber(text, 10);
}

std::optional<PropertyValue> real(std::string_view text) {
    const auto number = decimalNumber(text);
    return number ? std::optional{PropertyValue{*number}} : std::nullopt;
}

std::optional<PropertyValue> date(std::string_view text) {
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    const bool fits = std::ranges::equal(text, form, [](char character, char wanted) {
        return wanted == '0' ? ascii::isDigit(character) : character == wanted;
    });
    return fits ? std::optional{PropertyValue{std::string{text}}} : std::nullopt;
}

std::optional<PropertyValue> data(std::string_view text) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    PropertyValue::Bytes bytes;
    std::uint32_t bits = 0;
    std::size_t read = 0;
    bool isPadded = false;
    for (const char character : text) {
        const auto digit = digits.find(character);
        if (character == '=' || isXmlSpace(character)) {
            isPadded = isPadded || character == '=';
        } else if (digit == digits.npos || isPadded) {
            return std::nullopt;
        } else {
            bits = bits << 6 | static_cast<std::uint32_t>(digit);
            if (++read % 4 != 1) {
                bytes.value += static_cast<char>(bits >> (8 - read % 4 * 2) % 8);
            }
        }
    }
    return read % 4 == 1 ? std::nullopt : std::optional{PropertyValue{std::move(bytes)}};
}

PropertyValue text(std::string_view text) {
    return {std::string{text}};
}

/// Reads the text of an element; absent for a text of another form.
using Reading = std::optional<PropertyValue> (*)(std::string_view text);

/// The function that reads the element's text; null for an element without text.
Reading readingOf(std::string_view element) {
    static constexpr std::array<std::pair<std::string_view, Reading>, 8> readings{{
        {"key", [](std::string_view whole) { return std::optional{text(whole)}; }},
        {"string", [](std::string_view whole) { return std::optional{text(whole)}; }},
        {"integer", [](std::string_view whole) { return integer(trimmed(whole)); }},
        {"real", [](std::string_view whole) { return real(trimmed(whole)); }},
        {"date", [](std::string_view whole) { return date(trimmed(whole)); }},
        {"data", data},
        {"true", [](std::string_view) { return std::optional{PropertyValue{true}}; }},
        {"false", [](std::string_view) { return std::optional{PropertyValue{false}}; }},
    }};
    const auto* const found = std::ranges::find(readings, element, [](const auto& each) { return each.first; });
    return found == readings.end() ? nullptr : found->second;
}

/// Builds the value while expat reads the file.
class XmlReader {
public:
    std::expected<PropertyValue, std::string> read(std::string_view xml) {
        // Texts are UTF-8, whatever encoding the file declares.
        const std::unique_ptr<XML_ParserStruct, decltype([](XML_Parser each) { XML_ParserFree(each); })> owner{
            XML_ParserCreate("UTF-8")};
        parser_ = owner.get();
        XML_SetUserData(parser_, this);
        XML_SetElementHandler(
            parser_, [](void* self, const char* name, const char**) { in(self).begin(name); },
            [](void* self, const char*) { in(self).end(); });
        XML_SetCharacterDataHandler(parser_, [](void* self, const char* part, int size) {
            in(self).add({part, static_cast<std::size_t>(size)});
        });
        // A property list needs no entities of its own, which could unfold to far more bytes than the file has.
        XML_SetStartDoctypeDeclHandler(parser_, [](void* self, const char*, const char*, const char*, int defines) {
            in(self).refuseIf(defines != 0);
        });
        XML_SetSkippedEntityHandler(parser_, [](void* self, const char*, int) { in(self).refuseIf(true); });
        const bool isRead = xml.size() <= largestFile &&
                            XML_Parse(parser_, xml.data(), static_cast<int>(xml.size()), 1) == XML_STATUS_OK;
        if (problem_.empty() && (!isRead || !root_)) {
            problem_ = notWellFormed;
        }
        return problem_.empty() ? std::expected<PropertyValue, std::string>{std::move(*root_)}
                                : std::unexpected{problem_};
    }

private:
    /// A list or dictionary that is still being read.
    struct Open {
        PropertyValue value;
        std::optional<std::string> key{};
    };

    static XmlReader& in(void* self) { return *static_cast<XmlReader*>(self); }

    void refuseIf(bool isProblem, const char* problem = notWellFormed) {
        if (isProblem && problem_.empty()) {
            problem_ = problem;
            XML_StopParser(parser_, XML_FALSE);
        }
    }

    PropertyValue::Dictionary* openDictionary() {
        return open_.empty() ? nullptr : std::get_if<PropertyValue::Dictionary>(&open_.back().value.value);
    }

    void begin(std::string_view element) {
        ++depth_;
        if (element == "plist" && depth_ == 1) {
            return;
        }
        // Keys and values take turns in a dictionary.
        const bool isKeyDue = openDictionary() && !open_.back().key;
        const bool isStructure = element == "array" || element == "dict";
        const auto reading = readingOf(element);
        refuseIf(reading_ || root_ || isKeyDue != (element == "key") || (!isStructure && !reading));
        refuseIf(open_.size() == deepestPropertyList, tooDeepPropertyList);
        refuseIf(!budget_.takes(), tooLargePropertyList);
        if (element == "array") {
            open_.emplace_back().value.value.emplace<PropertyValue::List>();
        } else if (element == "dict") {
            open_.emplace_back().value.value.emplace<PropertyValue::Dictionary>();
        }
        reading_ = reading;
        isKey_ = isKeyDue;
    }

    void add(std::string_view part) {
        if (reading_) {
            text_ += part;
        } else {
            refuseIf(!trimmed(part).empty());
        }
    }

    void end() {
        --depth_;
        const auto text = std::exchange(text_, {});
        const auto reading = std::exchange(reading_, nullptr);
        // After a problem, the elements no longer come in pairs.
        if (!problem_.empty() || (depth_ == 0 && open_.empty() && !reading)) {
            return;
        }
        if (reading) {
            if (auto value = reading(text)) {
                keep(std::move(*value));
            } else {
                refuseIf(true);
            }
            return;
        }
        refuseIf(open_.back().key.has_value());
        auto value = std::move(open_.back().value);
        open_.pop_back();
        keep(std::move(value));
    }

    void keep(PropertyValue value) {
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (isKey_) {
            open_.back().key = *value.text();
        } else if (auto* const dictionary = openDictionary()) {
            dictionary->insert_or_assign(*std::exchange(open_.back().key, {}), std::move(value));
        } else {
            std::get<PropertyValue::List>(open_.back().value.value).push_back(std::move(value));
        }
        isKey_ = false;
    }

    XML_Parser parser_ = nullptr;
    PropertyListBudget budget_;
    std::string problem_;
    std::optional<PropertyValue> root_;
    std::vector<Open> open_;
    int depth_ = 0;
    Reading reading_ = nullptr;
    bool isKey_ = false;
    std::string text_;
};

} // namespace

std::expected<PropertyValue, std::string> readXmlPropertyList(std::string_view bytes) {
    return XmlReader{}.read(trimmed(bytes));
}

} // namespace kivo::platform
