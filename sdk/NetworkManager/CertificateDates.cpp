#include "NetworkManager/CertificateDates.hpp"

#include <array>
#include <cstdio>

namespace kivo {

std::optional<CertificateDates> certificateDatesOf(SDKEnv environment) {
    using namespace std::chrono;
    constexpr auto intermediate = 2031y / March / 29;
    switch (environment) {
    case SDKEnv::PROD:
        return CertificateDates{2025y / September / 10, intermediate};
    case SDKEnv::PREPROD:
        return CertificateDates{2025y / November / 9, intermediate};
    case SDKEnv::TEST:
        return CertificateDates{2026y / June / 4, intermediate};
    case SDKEnv::DEV:
        break;
    }
    return std::nullopt;
}

std::string monthDayYear(std::chrono::year_month_day date) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02u/%02u/%04d", static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(date.year()));
    return text.data();
}

long daysUntil(std::chrono::year_month_day date, std::chrono::system_clock::time_point now) {
    return std::chrono::duration_cast<std::chrono::days>(std::chrono::sys_days{date} - now).count();
}

} // namespace kivo
