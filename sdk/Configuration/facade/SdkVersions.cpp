#include <kivo/SdkVersions.hpp>
#include <kivo/platform/Text.hpp>

namespace kivo {

std::string SdkVersions::getPreciseVersion(std::string_view fromVersion) {
    return std::string{text::firstCharacters(fromVersion, 2).value_or("Invalid sdk version!")};
}

} // namespace kivo
