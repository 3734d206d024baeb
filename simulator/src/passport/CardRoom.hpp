#pragma once

#include "passport/CardMessages.hpp"

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <mutex>

namespace kivo::simulator::chip {

/// A daemon of the card service (pcscd) in a room of its own: a view of the file system in which /run/pcscd is a folder
/// of the caller's, and a network in which nobody else reaches the ports of the reader's driver. A process keeps the
/// room, and ends with the object or with the caller's process. Any thread.
class CardRoom {
public:
    /// Null where the system does not permit such a room.
    static std::shared_ptr<CardRoom> open(const std::filesystem::path& folder);
    CardRoom(const CardRoom&) = delete;
    CardRoom& operator=(const CardRoom&) = delete;
    ~CardRoom();

    /// Starts the daemon with the readers that the files in `folder`/readers name. A daemon that runs is ended before.
    bool startDaemon();

    /// A socket in the room's network, not connected; without a descriptor once the room is closed.
    Socket newSocket();

    /// Ends the daemon, and waits for the end.
    void close();

private:
    CardRoom(pid_t keeper, Socket line);

    std::mutex mutex_;
    pid_t keeper_;
    Socket line_;
};

} // namespace kivo::simulator::chip
