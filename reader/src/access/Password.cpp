#include "access/Password.hpp"

namespace kivo::reader {
namespace {

Secret secretOf(std::string_view text) {
    return {text.begin(), text.end()};
}

} // namespace

Password passwordOfZone(std::string_view information) {
    auto value = digest(DigestKind::sha1, secretOf(information));
    Password password{.kind = Password::Kind::machineReadableZone, .value = {value.begin(), value.end()}};
    wipe(value.data(), value.size());
    return password;
}

Password passwordOfNumber(std::string_view digits) {
    return {.kind = Password::Kind::cardAccessNumber, .value = secretOf(digits)};
}

} // namespace kivo::reader
