#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace kivo {

/// The interface versions that a host can ask for, oldest first.
enum class InterfaceVersion { v140, v150, v160, v170, v180 };

inline constexpr std::array allInterfaceVersions{InterfaceVersion::v140, InterfaceVersion::v150, InterfaceVersion::v160,
                                                 InterfaceVersion::v170, InterfaceVersion::v180};

struct InterfaceVersionNames {
    /// The first two characters of a version text that asks for this version.
    std::string_view code;
    /// What the device code begins with; the host's key follows.
    std::string_view deviceCodePrefix;
    std::string_view sessionApi;
    std::string_view backendClient;
};

constexpr InterfaceVersionNames namesOf(InterfaceVersion version) {
    switch (version) {
    case InterfaceVersion::v140:
        return {"14", "1401", "KivoAPI_140", "KivoBE_140"};
    case InterfaceVersion::v150:
        return {"15", "1501", "KivoAPI_150", "KivoBE_150"};
    case InterfaceVersion::v160:
        return {"16", "1601", "KivoAPI_160", "KivoBE_160"};
    case InterfaceVersion::v170:
        return {"17", "1701", "KivoAPI_170", "KivoBE_170"};
    case InterfaceVersion::v180:
        break;
    }
    return {"18", "1801", "KivoAPI_180", "KivoBE_180"};
}

} // namespace kivo
