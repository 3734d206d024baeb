#include "services/acquisition/facemap/facetec/ScanAnswer.hpp"

#include "Models/SessionKeys.hpp"

#include <utility>

namespace kivo {

std::optional<ScanAnswer> ScanAnswer::decode(std::string_view text) {
    auto object = json::read(text, limits);
    if (!object || object->kind() != json::Kind::object) {
        return std::nullopt;
    }
    ScanAnswer answer;
    const auto* const type = object->textOf(KivoResponseKeys::responseType);
    answer.isAccepted = type != nullptr && *type == KivoResponseKeys::pass;
    auto* const data = object->find(KivoResponseKeys::responseData);
    auto* const blob = data != nullptr ? data->find(KivoResponseKeys::scanResultBlob) : nullptr;
    if (auto* const written = blob != nullptr ? blob->text() : nullptr) {
        answer.scanResultBlob = std::move(*written);
    }
    return answer;
}

} // namespace kivo
