#pragma once

#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace kivo::simulator {

/// A card service (pcscd) for the caller alone, with one virtual reader. The machine's own service and readers stay
/// untouched: the daemon runs in a view of the file system of its own, as the superuser or as anybody who may make
/// user namespaces.
///
/// Clients find the service by the environment variable PCSCLITE_CSOCK_NAME, which holds `socket()`. Set it before
/// threads run: the C library reads the environment without a lock.
class CardService {
public:
    /// Starts the daemon, and waits until it takes clients. The error says in a sentence what is missing: the packages
    /// pcscd and vsmartcard-vpcd, or the permission.
    static std::expected<std::unique_ptr<CardService>, std::string> start();
    CardService(const CardService&) = delete;
    CardService& operator=(const CardService&) = delete;
    /// Ends the daemon, which also ends with this process.
    ~CardService();

    /// The socket of the daemon, for PCSCLITE_CSOCK_NAME.
    std::filesystem::path socket() const;

    /// The port on which the reader waits for a card, for `VirtualReader`. The driver listens on every interface of
    /// the machine: do not start it where strangers are on the network.
    int readerPort() const;

private:
    class Daemon;

    explicit CardService(std::unique_ptr<Daemon> daemon);

    std::unique_ptr<Daemon> daemon_;
};

} // namespace kivo::simulator
