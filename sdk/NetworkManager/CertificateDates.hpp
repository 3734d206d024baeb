#pragma once

#include <kivo/SDKEnv.hpp>

#include <chrono>
#include <optional>
#include <string>

namespace kivo {

/// When the certificates of an environment's identity service expire.
struct CertificateDates {
    std::chrono::year_month_day leaf;
    std::chrono::year_month_day intermediate;
};

/// The dates of an environment; absent where none are known.
std::optional<CertificateDates> certificateDatesOf(SDKEnv environment);

/// A date as the identity service reads it, such as 03/29/2031.
std::string monthDayYear(std::chrono::year_month_day date);

/// Whole days from `now` until `date` begins; negative once it is past.
long daysUntil(std::chrono::year_month_day date, std::chrono::system_clock::time_point now);

} // namespace kivo
