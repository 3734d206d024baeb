#pragma once

#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace kivo::simulator {

namespace chip {
class CardRoom;
} // namespace chip

/// A card service (pcscd) for the caller alone, with one virtual reader of two slots. The machine's own service and
/// readers stay untouched, and nobody else reaches the reader: the daemon runs with a view of the file system and a
/// network of its own, as the superuser or as anybody who may make user namespaces.
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

    /// Ends the daemon and starts another at the same socket, with its reader or without; cards in the reader are found
    /// again. False where the daemon does not come back.
    bool restart(bool hasReader = true);

    /// The socket of the daemon, for PCSCLITE_CSOCK_NAME.
    std::filesystem::path socket() const;

private:
    friend class VirtualReader;
    class Daemon;

    explicit CardService(std::unique_ptr<Daemon> daemon);
    std::shared_ptr<chip::CardRoom> room() const;

    std::unique_ptr<Daemon> daemon_;
};

} // namespace kivo::simulator
