#include "reading/FileReader.hpp"

#include "tlv/Tlv.hpp"

#include <algorithm>

namespace kivo::reader {
namespace {

constexpr std::size_t largestFile = std::size_t{200} * 1024;
constexpr std::size_t mostOfAll = std::size_t{1024} * 1024;
// What tells the length of a file: tag and length are at most this long, and every file is longer.
constexpr std::size_t headSize = 8;
// An offset beyond needs a command of its own, whose answer carries tag and length before the bytes.
constexpr std::size_t lastShortOffset = 0x7FFF;
constexpr std::size_t wrapping = 4;
constexpr std::size_t longestShort = 256;
constexpr std::uint32_t offsetObject = 0x54;
constexpr std::uint32_t contentObject = 0x53;
constexpr std::uint16_t atrInfo = 0x2F01;

struct Place {
    std::uint16_t identifier;
    std::uint32_t tag;
};

Place placeOf(DocumentFile file) {
    switch (file) {
    case DocumentFile::cardAccess:
        return {0x011C, 0x31};
    case DocumentFile::cardSecurity:
        return {0x011D, 0x30};
    case DocumentFile::com:
        return {0x011E, 0x60};
    case DocumentFile::sod:
        return {0x011D, 0x77};
    case DocumentFile::dg1:
        return {0x0101, 0x61};
    case DocumentFile::dg2:
        return {0x0102, 0x75};
    case DocumentFile::dg7:
        return {0x0107, 0x67};
    case DocumentFile::dg11:
        return {0x010B, 0x6B};
    case DocumentFile::dg12:
        return {0x010C, 0x6C};
    case DocumentFile::dg14:
        return {0x010E, 0x6E};
    case DocumentFile::dg15:
        return {0x010F, 0x6F};
    }
    return {};
}

Command readBinary(std::size_t offset, std::size_t size) {
    const auto high = static_cast<std::uint8_t>(offset >> 8);
    const auto low = static_cast<std::uint8_t>(offset);
    if (offset <= lastShortOffset) {
        return {.instruction = 0xB0, .parameter1 = high, .parameter2 = low, .expected = size};
    }
    Bytes value{high, low};
    if (offset > 0xFFFF) {
        value.insert(value.begin(), static_cast<std::uint8_t>(offset >> 16));
    }
    // The tag and the length of the answer count, too.
    const std::size_t around = size > 0xFF ? wrapping : size > 0x7F ? wrapping - 1 : wrapping - 2;
    return {.instruction = 0xB1, .data = encodedTlv(offsetObject, value), .expected = size + around};
}

} // namespace

std::expected<bool, ChipFault> FileReader::select(std::uint16_t identifier) {
    const auto answer =
        channel_.send({.instruction = 0xA4,
                       .parameter1 = 0x02,
                       .parameter2 = 0x0C,
                       .data = {static_cast<std::uint8_t>(identifier >> 8), static_cast<std::uint8_t>(identifier)}});
    if (!answer) {
        return std::unexpected{answer.error()};
    }
    return answer->status == status::success;
}

std::size_t FileReader::longestPart(std::size_t offset) const {
    const auto most = channel_.longestData() - (offset <= lastShortOffset ? 0 : wrapping);
    return std::min(most, longestAnswered_.value_or(largestFile));
}

std::expected<Bytes, ChipFault> FileReader::readPart(std::size_t offset, std::size_t size) {
    const auto answer = channel_.send(readBinary(offset, size));
    if (!answer) {
        return std::unexpected{answer.error()};
    }
    auto& capabilities = channel_.capabilities();
    if (answer->status == status::wrongLength && capabilities.takesLongMessages) {
        capabilities.takesLongMessages = false;
        return readPart(offset, std::min(size, longestPart(offset)));
    }
    if (answer->status == status::securityNotSatisfied) {
        return std::unexpected{ChipFault::denied};
    }
    ByteView data = answer->data;
    if (offset > lastShortOffset && !data.empty()) {
        const auto content = firstTlv(data);
        if (!content || content->tag != contentObject || content->size != data.size()) {
            return std::unexpected{ChipFault::broken};
        }
        // A chip that counts tag and length in another way may give a byte or two more.
        data = content->value.first(std::min(size, content->value.size()));
    }
    // The end of the file may be told with the last bytes.
    if ((answer->status != status::success && answer->status != status::endOfFile) || data.empty() ||
        data.size() > size) {
        return std::unexpected{ChipFault::broken};
    }
    // A chip that answers with less than it is asked for never gives more. The end of a short command's room tells
    // nothing.
    const bool isLong = size > longestShort || !capabilities.takesLongMessages;
    if (data.size() < size && isLong) {
        longestAnswered_ = std::max(data.size(), 2 * wrapping);
    }
    return Bytes{data.begin(), data.end()};
}

std::expected<std::optional<Bytes>, ChipFault> FileReader::read(DocumentFile file, const Progress& progress) {
    const auto place = placeOf(file);
    const auto isThere = select(place.identifier);
    if (!isThere) {
        return std::unexpected{isThere.error()};
    }
    if (!*isThere) {
        return std::nullopt;
    }
    auto content = readPart(0, headSize);
    if (!content) {
        return std::unexpected{content.error()};
    }
    const auto head = firstHead(*content);
    if (!head || head->tag != place.tag || head->valueSize > largestFile - head->size) {
        return std::unexpected{ChipFault::broken};
    }
    const auto all = head->size + head->valueSize;
    readInAll_ += all;
    if (readInAll_ > mostOfAll) {
        return std::unexpected{ChipFault::broken};
    }
    content->reserve(all);
    while (content->size() < all) {
        if (progress) {
            progress(content->size(), all);
        }
        const auto offset = content->size();
        const auto part = readPart(offset, std::min(all - offset, longestPart(offset)));
        if (!part) {
            return std::unexpected{part.error()};
        }
        content->insert(content->end(), part->begin(), part->end());
    }
    content->resize(all);
    if (progress) {
        progress(all, all);
    }
    return *std::move(content);
}

std::expected<Bytes, ChipFault> FileReader::readAtrInfo() {
    const auto isThere = select(atrInfo);
    if (!isThere) {
        return std::unexpected{isThere.error()};
    }
    if (!*isThere) {
        return Bytes{};
    }
    const auto answer = channel_.send(readBinary(0, 256));
    if (!answer) {
        return std::unexpected{answer.error()};
    }
    return answer->data;
}

} // namespace kivo::reader
