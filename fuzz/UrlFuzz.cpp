#include "FuzzInput.hpp"

#include <kivo/platform/Url.hpp>

#include <curl/curl.h>

#include <algorithm>
#include <memory>

namespace {

std::string partOf(CURLU& url, CURLUPart part) {
    char* text = nullptr;
    kivo::fuzz::require(curl_url_get(&url, part, &text, CURLU_DEFAULT_PORT) == CURLUE_OK);
    const std::unique_ptr<char, decltype(&curl_free)> owner{text, &curl_free};
    return text;
}

bool isNumeric(const std::string& host) {
    return host.find_first_not_of("0123456789.") == host.npos || host.starts_with('[');
}

} // namespace

/// For every address to which a request may go, libcurl and `parseUrl` find the same server.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string address{kivo::fuzz::textOf(data, size)};
    const auto url = kivo::platform::parseUrl(address);
    if (!url || url->scheme != "https") {
        return 0;
    }
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> read{curl_url(), &curl_url_cleanup};
    kivo::fuzz::require(curl_url_set(read.get(), CURLUPART_URL, address.c_str(), 0) == CURLUE_OK);
    kivo::fuzz::require(partOf(*read, CURLUPART_PORT) == std::to_string(url->port));
    auto host = partOf(*read, CURLUPART_HOST);
    std::ranges::transform(host, host.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    // libcurl writes numeric addresses in another form.
    kivo::fuzz::require(host == url->host || isNumeric(host));
    return 0;
}
