#include "FuzzInput.hpp"
#include "Models/ErrorManager.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto input = kivo::fuzz::textOf(data, size);
    const auto document = kivo::ErrorManager::verifyResponseForServerError(input);
    kivo::fuzz::require(kivo::ErrorManager::refusalIn(input).has_value() == (document.responseType == "fail"));
    return 0;
}
