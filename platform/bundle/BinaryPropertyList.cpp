#include "platform/base/Utf16.hpp"
#include "platform/bundle/PropertyListReader.hpp"

#include <kivo/platform/Text.hpp>

#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace kivo::platform {
namespace {

/// The fault of a file; caught in this source file.
class Refused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

[[noreturn]] void damaged() {
    throw Refused{"is a damaged binary property list"};
}

/// A date as text such as 2026-01-31T08:15:00Z.
std::string dateAfterMillennium(double seconds) {
    constexpr double yearOne = -63113904000;
    constexpr double yearTenThousand = 252423993600;
    const bool isDate = seconds >= yearOne && seconds < yearTenThousand; // false for NaN too
    if (!isDate) {
        damaged();
    }
    using namespace std::chrono;
    // Not std::time_t, which may have 32 bits and then ends in 2038.
    constexpr sys_days millennium = 2001y / 1 / 1;
    const auto time = millennium + std::chrono::seconds{static_cast<std::int64_t>(seconds)};
    const auto day = floor<days>(time);
    const year_month_day date{day};
    const hh_mm_ss clock{time - day};
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

/// Follows the references of a file, from the top object down. Every number is checked where it is used.
class BinaryReader {
public:
    explicit BinaryReader(std::string_view bytes)
        : bytes_{bytes} {}

    std::optional<PropertyValue> root() {
        constexpr std::uint64_t trailerSize = 32;
        if (!bytes_.starts_with("bplist00") || bytes_.size() < trailerSize) {
            damaged();
        }
        const auto trailer = bytes_.size() - trailerSize;
        offsetSize_ = number(trailer + 6, 1);
        referenceSize_ = number(trailer + 7, 1);
        objects_ = number(trailer + 8, 8);
        table_ = number(trailer + 24, 8);
        return value(number(trailer + 16, 8), 0);
    }

private:
    std::string_view part(std::uint64_t position, std::uint64_t size) const {
        if (position > bytes_.size() || size > bytes_.size() - position) {
            damaged();
        }
        return bytes_.substr(position, size);
    }

    std::uint64_t number(std::uint64_t position, std::uint64_t size) const {
        if (size == 0 || size > sizeof(std::uint64_t)) {
            damaged();
        }
        std::uint64_t value = 0;
        for (const char byte : part(position, size)) {
            value = value << 8 | static_cast<unsigned char>(byte);
        }
        return value;
    }

    void spend(std::size_t bytes) {
        if (!budget_.takes(bytes)) {
            throw Refused{tooLargePropertyList};
        }
    }

    /// Absent for a value for which `PropertyValue` has no type.
    std::optional<PropertyValue> value(std::uint64_t object, int depth) {
        if (depth > deepestPropertyList) {
            throw Refused{tooDeepPropertyList};
        }
        // The sum may have wrapped around; `number` refuses any position outside the file.
        const auto position = object < objects_ ? number(table_ + object * offsetSize_, offsetSize_) : bytes_.size();
        const auto marker = number(position, 1);
        const auto kind = marker >> 4;
        if (kind == 0x4 || kind == 0x5 || kind == 0x6 || kind == 0xA || kind == 0xD) {
            return counted(kind, position, marker & 0xF, depth);
        }
        spend(0);
        return single(kind, position + 1, marker & 0xF);
    }

    std::optional<PropertyValue> single(std::uint64_t kind, std::uint64_t position, std::uint64_t low) const {
        const auto size = std::uint64_t{1} << low;
        switch (kind) {
        case 0x0:
            return low == 8 || low == 9 ? std::optional{PropertyValue{low == 9}} : std::nullopt;
        case 0x1:
            if (size == 16) {
                return std::nullopt;
            }
            return PropertyValue{static_cast<std::int64_t>(number(position, size))};
        case 0x2:
            return PropertyValue{real(position, size)};
        case 0x3:
            return PropertyValue{dateAfterMillennium(real(position, size))};
        case 0x8:
            return std::nullopt;
        default:
            damaged();
        }
    }

    double real(std::uint64_t position, std::uint64_t size) const {
        const auto bits = number(position, size);
        if (size == sizeof(float)) {
            return std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        }
        if (size != sizeof(double)) {
            damaged();
        }
        return std::bit_cast<double>(bits);
    }

    /// A value with a length: text, data, a list or a dictionary.
    PropertyValue counted(std::uint64_t kind, std::uint64_t position, std::uint64_t count, int depth) {
        auto next = position + 1;
        if (count == 0xF) {
            const auto form = number(next, 1);
            const auto width = std::uint64_t{1} << (form & 0xF);
            if (form >> 4 != 0x1) {
                damaged();
            }
            count = number(next + 1, width);
            next += 1 + width;
        }
        if (count > bytes_.size()) {
            damaged();
        }
        if (kind == 0xA || kind == 0xD) {
            spend(0);
            return kind == 0xA ? list(next, count, depth) : dictionary(next, count, depth);
        }
        auto bytes = part(next, kind == 0x6 ? count * 2 : count);
        spend(bytes.size());
        return kind == 0x4 ? PropertyValue{PropertyValue::Bytes{std::string{bytes}}} : PropertyValue{text(bytes, kind)};
    }

    static std::string text(std::string_view bytes, std::uint64_t kind) {
        auto text = kind == 0x6 ? fromUtf16(bytes, /*bigEndian=*/true) : std::string{bytes};
        if (text.contains('\0') || !text::isUtf8(text)) {
            damaged();
        }
        return text;
    }

    std::optional<PropertyValue> member(std::uint64_t references, std::uint64_t index, int depth) {
        return value(number(references + index * referenceSize_, referenceSize_), depth + 1);
    }

    PropertyValue list(std::uint64_t references, std::uint64_t count, int depth) {
        PropertyValue::List list;
        for (std::uint64_t i = 0; i < count; ++i) {
            if (auto item = member(references, i, depth)) {
                list.push_back(std::move(*item));
            }
        }
        return {std::move(list)};
    }

    PropertyValue dictionary(std::uint64_t references, std::uint64_t count, int depth) {
        PropertyValue::Dictionary dictionary;
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto key = member(references, i, depth);
            auto item = member(references, count + i, depth);
            if (!key || !key->text()) {
                damaged();
            }
            if (item) {
                dictionary.insert_or_assign(*key->text(), std::move(*item));
            }
        }
        return {std::move(dictionary)};
    }

    std::string_view bytes_;
    PropertyListBudget budget_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t objects_ = 0;
    std::uint64_t table_ = 0;
};

} // namespace

std::expected<PropertyValue, std::string> readBinaryPropertyList(std::string_view bytes) {
    try {
        if (auto root = BinaryReader{bytes}.root()) {
            return std::move(*root);
        }
        damaged();
    } catch (const Refused& problem) {
        return std::unexpected{problem.what()};
    }
}

} // namespace kivo::platform
