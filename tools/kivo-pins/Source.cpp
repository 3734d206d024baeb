#include "Source.hpp"

#include "platform/posix/Files.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <system_error>

namespace pins {
namespace {

namespace platform = kivo::platform;

std::unexpected<std::string> cannotBeRead(const std::string& source) {
    return std::unexpected{nameOf(source) + " cannot be read (" + std::generic_category().message(errno) + ")"};
}

bool isIPv6(const std::string& host) {
    in6_addr address{};
    return inet_pton(AF_INET6, host.substr(0, host.find('%')).c_str(), &address) == 1;
}

} // namespace

std::string nameOf(const std::string& source) {
    return source == "-" ? "standard input" : source;
}

std::expected<std::optional<std::string>, std::string> bytesOf(const std::string& source) {
    const platform::FileDescriptor file{source == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                                      : open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)};
    if (!file) {
        return errno == ENOENT || errno == ENOTDIR
                   ? std::expected<std::optional<std::string>, std::string>{std::nullopt}
                   : cannotBeRead(source);
    }
    // Room for one byte more than a file may have.
    std::string bytes(platform::largestFile + 1, '\0');
    std::size_t size = 0;
    for (ssize_t count = -1; count != 0 && size < bytes.size();) {
        count = read(file.get(), bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno != EINTR) {
            return cannotBeRead(source);
        }
        size += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    if (size == bytes.size()) {
        return std::unexpected{nameOf(source) + " is larger than 4 MiB"};
    }
    bytes.resize(size);
    return bytes;
}

std::expected<std::string, std::string> serverIn(const std::string& source) {
    const auto schemeEnd = source.find("://");
    auto server = source;
    if (schemeEnd != std::string::npos) {
        const auto scheme = source.substr(0, schemeEnd);
        if (strcasecmp(scheme.c_str(), "https") != 0) {
            return std::unexpected{"\"" + source + "\": only https:// has certificates, and " + scheme +
                                   ":// shows none"};
        }
        server = source.substr(schemeEnd + 3);
        server.erase(std::min(server.find_first_of("/?#"), server.size()));
    } else if (source.contains('/')) {
        return std::unexpected{"there is no file \"" + source + "\""};
    }
    if (isIPv6(server)) {
        return std::unexpected{"\"" + server + "\": write an IPv6 address in brackets, with or without a port: [" +
                               server + "] or [" + server + "]:443"};
    }
    if (server.empty()) {
        return std::unexpected{"\"" + source + "\" names neither a file nor a server"};
    }
    return server;
}

} // namespace pins
