#include "PinsFile.hpp"

#include "platform/bundle/PropertyListReader.hpp"
#include "platform/posix/ReadFile.hpp"

#include <plist/plist.h>

#include <cstdint>
#include <fstream>
#include <system_error>

namespace pins {
namespace {

std::string asPropertyList(const std::vector<std::string>& pins) {
    auto* const array = plist_new_array();
    for (const auto& pin : pins) {
        plist_array_append_item(array, plist_new_string(pin.c_str()));
    }
    char* text = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(array, &text, &size);
    std::string xml{text, size};
    plist_to_xml_free(text);
    plist_free(array);
    return xml;
}

} // namespace

std::expected<kivo::PinList, std::string> readList(const std::filesystem::path& file) {
    const auto bytes = kivo::platform::readFile(file);
    if (!bytes || !*bytes) {
        return std::unexpected{file.string() + " " + (bytes ? "does not exist" : bytes.error())};
    }
    const auto root = kivo::platform::readPropertyList(**bytes);
    if (!root) {
        return std::unexpected{file.string() + " " + root.error()};
    }
    return kivo::pinListIn(*root);
}

std::string writeList(const std::filesystem::path& file, const std::vector<std::string>& pins) {
    auto draft = file;
    draft += ".new";
    std::ofstream stream{draft, std::ios::binary | std::ios::trunc};
    stream << asPropertyList(pins);
    stream.close();
    std::error_code error;
    if (stream) {
        std::filesystem::rename(draft, file, error);
    }
    if (stream && !error) {
        return "";
    }
    std::filesystem::remove(draft, error);
    return file.string() + " cannot be written";
}

} // namespace pins
