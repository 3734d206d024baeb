#include "FuzzInput.hpp"
#include "Models/ErrorManager.hpp"

#include <kivo/ActivationResponse.hpp>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto input = kivo::fuzz::textOf(data, size);
    const auto document = kivo::ErrorManager::verifyResponseForServerError(input);
    const bool isRefusal = !document || document->responseType == "fail";
    kivo::fuzz::require(kivo::ErrorManager::refusalIn(input).has_value() == isRefusal);
    if (const auto session = kivo::ActivationResponse::decode(input)) {
        kivo::fuzz::require(kivo::ActivationResponse::decode(session->encode()).has_value());
    }
    return 0;
}
