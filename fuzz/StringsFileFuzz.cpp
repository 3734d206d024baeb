#include "FuzzInput.hpp"
#include "platform/bundle/StringsFile.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto table = kivo::platform::readStringsFile(kivo::fuzz::textOf(data, size));
    kivo::fuzz::require(table || !table.error().empty());
    return 0;
}
