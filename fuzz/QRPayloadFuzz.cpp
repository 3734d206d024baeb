#include "FuzzInput.hpp"
#include "services/acquisition/qr/inhouse/ActivationCode.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto payload = kivo::QRCodeData::decode(kivo::fuzz::textOf(data, size))) {
        const auto again = kivo::QRCodeData::decode(payload->encode());
        kivo::fuzz::require(again && again->code == payload->code);
    }
    return 0;
}
