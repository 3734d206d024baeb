#pragma once

#include "Measuring.hpp"

#include <kivo/simulator/CertificateAuthority.hpp>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace kivo::bench {

/// A proxy in front of a service on this machine, which offers HTTP/2 or only HTTP/1.1: the program nghttpx.
class ProxyProcess {
public:
    ProxyProcess(std::uint16_t servicePort, const std::string& protocols, const std::filesystem::path& folder)
        : port{freePort()}
        , trustedCertificates{folder / ("root-" + std::to_string(port) + ".pem")} {
        const simulator::CertificateAuthority authority;
        const auto certificate = authority.issue({});
        const auto key = write(folder / ("key-" + std::to_string(port) + ".pem"), certificate.privateKey);
        const auto chain = write(folder / ("chain-" + std::to_string(port) + ".pem"), certificate.chain);
        write(trustedCertificates, authority.root());
        // The service answers six connections side by side.
        std::string words[] = {"nghttpx",
                               "--conf=/dev/null",
                               "--frontend=127.0.0.1," + std::to_string(port),
                               "--backend=127.0.0.1," + std::to_string(servicePort) + ";;tls",
                               "--backend-connections-per-frontend=6",
                               "--insecure",
                               "--npn-list=" + protocols,
                               "--accesslog-file=/dev/null",
                               "--errorlog-file=/dev/null",
                               key.string(),
                               chain.string()};
        char* arguments[std::size(words) + 1] = {};
        for (std::size_t i = 0; i < std::size(words); ++i) {
            arguments[i] = words[i].data();
        }
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        // nghttpx reports every start there.
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        const int error = posix_spawnp(&process_, arguments[0], &actions, &attributes, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
        if (error != 0) {
            giveUp(std::string{"cannot start nghttpx (package nghttp2-proxy): "} + std::strerror(error));
        }
        await();
    }

    ProxyProcess(const ProxyProcess&) = delete;
    ProxyProcess& operator=(const ProxyProcess&) = delete;

    ~ProxyProcess() {
        kill(-process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

    const std::uint16_t port;
    const std::filesystem::path trustedCertificates;

private:
    static sockaddr_in addressOf(std::uint16_t port) {
        return {.sin_family = AF_INET,
                .sin_port = htons(port),
                .sin_addr = {.s_addr = htonl(INADDR_LOOPBACK)},
                .sin_zero = {}};
    }

    static std::uint16_t freePort() {
        auto address = addressOf(0);
        socklen_t size = sizeof address;
        const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (bind(socket, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
            getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
            giveUp("cannot find a free port");
        }
        close(socket);
        return ntohs(address.sin_port);
    }

    static std::filesystem::path write(const std::filesystem::path& file, const std::string& text) {
        std::ofstream{file} << text;
        return file;
    }

    void await() const {
        const auto address = addressOf(port);
        for (int i = 0; i < 500; ++i) {
            const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
            const bool isThere = connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
            close(socket);
            if (isThere) {
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds{10});
        }
        giveUp("the proxy does not answer");
    }

    pid_t process_ = 0;
};

} // namespace kivo::bench
