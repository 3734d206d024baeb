#include "FuzzInput.hpp"
#include "linux/CurlRequest.hpp"

/// An address with which a request may go out names a host and a port.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string address{kivo::fuzz::textOf(data, size)};
    if (!kivo::platform::faultIn({.url = address}, {})) {
        const kivo::platform::ParsedUrl url{address};
        kivo::fuzz::require(url.scheme() == "https" && !url.host().empty() && !url.port().empty());
    }
    return 0;
}
