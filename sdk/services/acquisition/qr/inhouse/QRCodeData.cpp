#include "services/acquisition/qr/inhouse/QRCodeData.hpp"

#include <nlohmann/json.hpp>

namespace kivo {

using nlohmann::json;

std::optional<QRCodeData> QRCodeData::decode(std::string_view text) {
    const auto payload = json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!payload.is_object()) {
        return std::nullopt;
    }
    const auto code = payload.find("code");
    if (code == payload.end() || !code->is_string()) {
        return std::nullopt;
    }
    return QRCodeData{.code = code->get<std::string>()};
}

std::string QRCodeData::encode() const {
    return json{{"code", code}}.dump(-1, ' ', /*ensure_ascii=*/false, json::error_handler_t::replace);
}

} // namespace kivo
