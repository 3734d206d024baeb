#include "platform/base/Number.hpp"

#include <cmath>
#include <locale>
#include <sstream>
#include <string>

namespace kivo::platform {

// Not std::from_chars: some standard libraries read whole numbers only with it.
std::optional<double> decimalNumber(std::string_view text) {
    std::istringstream stream{std::string{text}};
    stream.imbue(std::locale::classic());
    double number = 0;
    stream >> std::noskipws >> number;
    const bool isWhole = !stream.fail() && stream.peek() == std::istringstream::traits_type::eof();
    return isWhole && std::isfinite(number) ? std::optional{number} : std::nullopt;
}

} // namespace kivo::platform
