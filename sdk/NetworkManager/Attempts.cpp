#include "NetworkManager/Attempts.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "platform/base/Process.hpp"

#include <charconv>
#include <string>
#include <string_view>

namespace kivo {
namespace {

/// A signed decimal number of 64 bits; 0 for any other text.
std::int64_t numberIn(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return 0;
        }
    }
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() ? number : 0;
}

} // namespace

Attempts& Attempts::shared() {
    return platform::Process::current().part<Attempts>([] { return new Attempts; });
}

void Attempts::apply(const ActivationResponse& session) {
    const auto limit = session.idpConfig.find(KivoResponseKeys::retryLimit);
    shouldApplyRetryLimit_ = limit != session.idpConfig.end();
    if (limit == session.idpConfig.end()) {
        return;
    }
    const auto number = numberIn(limit->second);
    retryLimit_ = number;
    log::debug("setServerRetryLimit()", [&] { return "server retry limit " + std::to_string(number); });
}

std::optional<std::int64_t> Attempts::take() {
    auto remaining = retryLimit_.load();
    while (remaining >= 1) {
        if (retryLimit_.compare_exchange_weak(remaining, remaining - 1)) {
            return remaining - 1;
        }
    }
    return std::nullopt;
}

} // namespace kivo
