#include "PropertyListReader.hpp"

#include <plist/plist.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

// libplist recurses without a bound and copies shared objects, so both are limited before it sees a file.
constexpr int deepestNesting = 100;
constexpr std::uint64_t largestUnfolded = std::uint64_t{64} << 20;

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};

struct MallocDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

using Node = std::unique_ptr<void, NodeDeleter>;
template <typename T>
using Malloced = std::unique_ptr<T, MallocDeleter>;

/// Follows the object references of a binary property list to learn how deep and how large it unfolds.
class BinaryOutline {
public:
    explicit BinaryOutline(std::string_view bytes)
        : bytes_{bytes} {}

    bool isModest() {
        if (bytes_.size() < trailerSize + signatureSize) {
            return false;
        }
        const auto trailer = bytes_.size() - trailerSize;
        offsetSize_ = *number(trailer + 6, 1);
        referenceSize_ = *number(trailer + 7, 1);
        const auto objects = *number(trailer + 8, 8);
        const auto top = *number(trailer + 16, 8);
        table_ = *number(trailer + 24, 8);
        if (objects > bytes_.size()) {
            return false;
        }
        extents_.resize(objects);
        const auto extent = extentOf(top, 0);
        return extent && extent->size <= largestUnfolded;
    }

private:
    struct Extent {
        int height = 0;
        std::uint64_t size = 0; // bytes of text and data, and a little for every value
    };

    static constexpr std::size_t trailerSize = 32;
    static constexpr std::size_t signatureSize = 8;

    std::optional<std::uint64_t> number(std::uint64_t position, std::uint64_t size) const {
        if (size > 8 || position > bytes_.size() || size > bytes_.size() - position) {
            return std::nullopt;
        }
        std::uint64_t value = 0;
        for (const char byte : bytes_.substr(position, size)) {
            value = value << 8 | static_cast<unsigned char>(byte);
        }
        return value;
    }

    // Absent for a loop, a reference to nowhere and anything too deep or too large.
    std::optional<Extent> extentOf(std::uint64_t object, int depth) {
        if (object >= extents_.size() || depth > deepestNesting) {
            return std::nullopt;
        }
        if (extents_[object].height == 0) {
            const auto extent = measure(object, depth);
            if (!extent) {
                return std::nullopt;
            }
            extents_[object] = *extent;
        }
        const auto& known = extents_[object];
        return depth + known.height > deepestNesting ? std::nullopt : std::optional{known};
    }

    std::optional<Extent> measure(std::uint64_t object, int depth) {
        const auto position = number(table_ + object * offsetSize_, offsetSize_);
        const auto marker = position ? number(*position, 1) : std::nullopt;
        if (!marker) {
            return std::nullopt;
        }
        Extent extent{1, 16};
        const auto kind = *marker >> 4;
        const bool isTextOrData = kind >= 0x4 && kind <= 0x6;
        if (!isTextOrData && kind < 0xA) {
            return extent;
        }
        auto next = *position + 1;
        auto count = *marker & 0xF;
        if (count == 0xF) {
            const auto width = number(next, 1).transform([](auto form) { return std::uint64_t{1} << (form & 0x3); });
            const auto length = width ? number(next + 1, *width) : std::nullopt;
            if (!length) {
                return std::nullopt;
            }
            next += 1 + *width;
            count = *length;
        }
        if (count > bytes_.size()) {
            return std::nullopt;
        }
        if (isTextOrData) {
            extent.size += count;
            return extent;
        }
        const auto references = kind == 0xD ? count * 2 : count;
        for (std::uint64_t i = 0; i < references; ++i) {
            const auto child = number(next + i * referenceSize_, referenceSize_);
            const auto inner = child ? extentOf(*child, depth + 1) : std::nullopt;
            if (!inner) {
                return std::nullopt;
            }
            extent.height = std::max(extent.height, inner->height + 1);
            extent.size += inner->size;
            if (extent.size > largestUnfolded) {
                return std::nullopt;
            }
        }
        return extent;
    }

    std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t table_ = 0;
    std::vector<Extent> extents_;
};

/// Where the markup that begins at `at` ends, just behind it; npos when it does not.
std::size_t endOfMarkup(std::string_view xml, std::size_t at) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kinds{
        {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}, {"<", ">"}}};
    const auto rest = xml.substr(at);
    const auto kind = std::ranges::find_if(kinds, [&](const auto& each) { return rest.starts_with(each.first); });
    const auto end = xml.find(kind->second, at + kind->first.size());
    return end == xml.npos ? end : end + kind->second.size();
}

/// Whether the tag leaves no doubt about where it ends: a value in quotes could hold the end of a tag. A property list
/// has such values in its head alone.
bool isPlainTag(std::string_view tag) {
    return tag.starts_with("<!--") || tag.starts_with("<![CDATA[") || tag.starts_with("<?") ||
           ((tag.starts_with("<plist") || tag.starts_with("<!DOCTYPE")) && !tag.contains('[') &&
            std::ranges::count(tag, '"') % 2 == 0 && !tag.contains('\'')) ||
           tag.find_first_of("\"'") == tag.npos;
}

bool isModestXml(std::string_view xml) {
    int depth = 0;
    std::size_t end = 0;
    for (auto at = xml.find('<'); at != xml.npos; at = xml.find('<', end)) {
        end = endOfMarkup(xml, at);
        if (end == xml.npos) {
            break;
        }
        const auto tag = xml.substr(at, end - at);
        if (!isPlainTag(tag)) {
            return false;
        }
        if (tag.starts_with("</array") || tag.starts_with("</dict")) {
            --depth;
        } else if ((tag.starts_with("<array") || tag.starts_with("<dict")) && !tag.ends_with("/>")) {
            ++depth;
        }
        if (depth > deepestNesting) {
            return false;
        }
    }
    return true;
}

std::optional<PropertyValue> convert(plist_t node);

PropertyValue convertList(plist_t node) {
    PropertyValue::List list;
    list.reserve(plist_array_get_size(node));
    plist_array_iter rawIterator = nullptr;
    plist_array_new_iter(node, &rawIterator);
    const Malloced<void> iterator{rawIterator};
    plist_t item = nullptr;
    for (plist_array_next_item(node, iterator.get(), &item); item; plist_array_next_item(node, iterator.get(), &item)) {
        if (auto value = convert(item)) {
            list.push_back(std::move(*value));
        }
    }
    return {std::move(list)};
}

PropertyValue convertDictionary(plist_t node) {
    PropertyValue::Dictionary dictionary;
    plist_dict_iter rawIterator = nullptr;
    plist_dict_new_iter(node, &rawIterator);
    const Malloced<void> iterator{rawIterator};
    for (;;) {
        char* rawKey = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator.get(), &rawKey, &item);
        const Malloced<char> key{rawKey};
        if (!item) {
            return {std::move(dictionary)};
        }
        if (auto value = convert(item)) {
            dictionary.insert_or_assign(key.get(), std::move(*value));
        }
    }
}

PropertyValue convertDate(plist_t node) {
    constexpr std::time_t millennium = 978307200; // property lists count from 2001-01-01T00:00:00Z
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    const std::time_t time = millennium + seconds;
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    return {std::string{text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)}};
}

std::optional<PropertyValue> convert(plist_t node) {
    std::uint64_t length = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return PropertyValue{flag != 0};
    }
    case PLIST_UINT: {
        std::uint64_t number = 0;
        plist_get_uint_val(node, &number);
        return PropertyValue{static_cast<std::int64_t>(number)};
    }
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        return PropertyValue{number};
    }
    case PLIST_STRING: {
        const char* text = plist_get_string_ptr(node, &length);
        return PropertyValue{text ? std::string{text, length} : std::string{}};
    }
    case PLIST_DATA: {
        const char* bytes = plist_get_data_ptr(node, &length);
        return PropertyValue{PropertyValue::Bytes{bytes ? std::string{bytes, length} : std::string{}}};
    }
    case PLIST_DATE:
        return convertDate(node);
    case PLIST_ARRAY:
        return convertList(node);
    case PLIST_DICT:
        return convertDictionary(node);
    default:
        return std::nullopt;
    }
}

} // namespace

std::expected<PropertyValue, std::string> readPropertyList(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    const bool binary = bytes.starts_with("bplist00");
    if (binary ? !BinaryOutline{bytes}.isModest() : !isModestXml(bytes)) {
        return std::unexpected{"is damaged, or nested too deeply for a property list"};
    }
    plist_t raw = nullptr;
    // A copy ends in a zero byte, which keeps the XML reader inside the text.
    const std::string text{bytes};
    plist_from_memory(text.data(), static_cast<std::uint32_t>(text.size()), &raw);
    const Node root{raw};
    auto value = root ? convert(root.get()) : std::nullopt;
    if (!value) {
        return std::unexpected{"is not a well-formed XML or binary property list"};
    }
    return std::move(*value);
}

} // namespace kivo::platform
