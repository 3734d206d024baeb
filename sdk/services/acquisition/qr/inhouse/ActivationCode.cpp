#include "services/acquisition/qr/inhouse/ActivationCode.hpp"

#include "platform/json/Json.hpp"

namespace kivo {

std::optional<QRCodeData> QRCodeData::decode(std::string_view text) {
    const auto payload = json::read(text);
    const auto* const code = payload ? payload->textOf("code") : nullptr;
    return code ? std::optional{QRCodeData{.code = *code}} : std::nullopt;
}

std::string QRCodeData::encode() const {
    return json::writeRepaired(json::Value::object({{"code", code}}));
}

} // namespace kivo
