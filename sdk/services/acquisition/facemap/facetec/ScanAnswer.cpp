#include "services/acquisition/facemap/facetec/ScanAnswer.hpp"

#include "Models/SessionKeys.hpp"

#include <nlohmann/json.hpp>

#include <utility>

namespace kivo {

std::optional<ScanAnswer> ScanAnswer::decode(std::string_view text) {
    auto object = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) {
        return std::nullopt;
    }
    ScanAnswer answer;
    const auto type = object.find(KivoResponseKeys::responseType);
    answer.isAccepted = type != object.end() && *type == KivoResponseKeys::pass;
    const auto data = object.find(KivoResponseKeys::responseData);
    if (data != object.end() && data->is_object()) {
        const auto blob = data->find(KivoResponseKeys::scanResultBlob);
        if (blob != data->end() && blob->is_string()) {
            answer.scanResultBlob = std::move(blob->get_ref<std::string&>());
        }
    }
    return answer;
}

} // namespace kivo
