#include "FuzzInput.hpp"
#include "platform/json/Cursor.hpp"

namespace json = kivo::json;
using kivo::fuzz::require;

namespace {

std::size_t membersOf(const json::Value& value) {
    auto count = value.elements().size() + value.members().size();
    for (const auto& element : value.elements()) {
        count += membersOf(element);
    }
    for (const auto& member : value.members()) {
        count += membersOf(member.value);
        require(value.find(member.name) != nullptr);
    }
    return count;
}

} // namespace

/// A value that was read is written, and read and written again as the same text. A text that is only judged is judged
/// alike. The first byte chooses the limits.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const json::Limits limits{
        .bytes = 4096, .depth = data[0] % 16U, .members = data[0] / 4U, .comments = data[0] % 2 == 0};
    const auto text = kivo::fuzz::textOf(data + 1, size - 1);
    const auto value = json::read(text, limits);
    require(json::refusalOf(text, limits) == (value ? std::nullopt : std::optional{value.error()}));
    if (!value) {
        require(value.error().offset < size);
        return 0;
    }
    require(membersOf(*value) <= limits.members);
    const auto written = json::write(*value);
    require(written.has_value() && *written == json::writeRepaired(*value));
    const auto again =
        json::read(*written, {.bytes = written->size(), .depth = limits.depth, .members = limits.members});
    require(again && json::write(*again) == written);
    return 0;
}
