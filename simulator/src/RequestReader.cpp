#include "RequestReader.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace kivo::simulator {
namespace {

/// Room made on the word of a client; what is longer grows as it comes.
constexpr std::size_t mostReserved = std::size_t{16} * 1024 * 1024;

using Clock = std::chrono::steady_clock;

/// How long reading that many bytes takes at that rate.
Clock::duration timeFor(std::size_t bytes, std::size_t bytesPerSecond) {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>{static_cast<double>(bytes) / static_cast<double>(bytesPerSecond)});
}

} // namespace

std::optional<std::string> readBody(const httplib::Request& request, const httplib::ContentReader& reader,
                                    const TlsConnections& connections, std::optional<std::size_t> bytesPerSecond) {
    std::string body;
    const auto announced = request.get_header_value<std::uint64_t>("Content-Length");
    body.reserve(std::min<std::size_t>(announced, mostReserved));
    if (bytesPerSecond) {
        TlsConnections::keepReceiveBufferSmall();
    }
    const auto start = Clock::now();
    const bool isWhole = reader([&](const char* data, std::size_t size) {
        body.append(data, size);
        if (!bytesPerSecond) {
            return true;
        }
        const auto early = start + timeFor(body.size(), *bytesPerSecond) - Clock::now();
        return early <= Clock::duration::zero() || connections.wait(early);
    });
    return isWhole ? std::optional{std::move(body)} : std::nullopt;
}

} // namespace kivo::simulator
