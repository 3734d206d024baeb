#include "Models/InterfaceVersion.hpp"

#include <kivo/SdkVersions.hpp>
#include <kivo/platform/Text.hpp>

#include <algorithm>

namespace kivo {

std::span<const std::string_view> SdkVersions::all() {
    static constexpr auto codes = [] {
        std::array<std::string_view, allInterfaceVersions.size()> all{};
        std::ranges::transform(allInterfaceVersions, all.begin(),
                               [](InterfaceVersion version) { return namesOf(version).code; });
        return all;
    }();
    return codes;
}

std::string SdkVersions::getPreciseVersion(std::string_view fromVersion) {
    return std::string{text::firstCharacters(fromVersion, 2).value_or("Invalid sdk version!")};
}

} // namespace kivo
