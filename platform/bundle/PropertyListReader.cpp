#include "platform/bundle/PropertyListReader.hpp"

#include "platform/bundle/PropertyListForms.hpp"

namespace kivo::platform {

std::expected<PropertyValue, std::string> readPropertyList(std::string_view bytes) {
    return bytes.starts_with("bplist") ? readBinaryPropertyList(bytes) : readXmlPropertyList(bytes);
}

} // namespace kivo::platform
