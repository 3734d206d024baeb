#include "FuzzInput.hpp"
#include "NetworkManager/PublicKeyPins.hpp"
#include "platform/bundle/PropertyListReader.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto root = kivo::platform::readPropertyList(kivo::fuzz::textOf(data, size))) {
        const auto list = kivo::pinListIn(*root);
        kivo::fuzz::require(list.isArrayOfText || list.pins.empty());
    }
    return 0;
}
