#include "TlsConnections.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <tuple>

namespace kivo::simulator {

/// The SSL object owns its connection.
struct TlsConnections::Connection {
    TlsConnections* owner;
    SSL* ssl;
    int socket;
    std::uint64_t number;
};

namespace {

thread_local SSL* currentSsl = nullptr;
thread_local int currentSocket = -1;
thread_local std::uint64_t currentConnection = 0;
thread_local std::size_t allowed = 0;

timespec timespecOf(std::chrono::nanoseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return {.tv_sec = seconds.count(), .tv_nsec = (time - seconds).count()};
}

/// Closes the connection's socket and puts an unconnected one under the same number. The HTTP library keeps the number,
/// and finds out that it can send nothing more.
void replaceSocket() {
    const int unconnected = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    dup3(unconnected, currentSocket, O_CLOEXEC);
    close(unconnected);
}

/// Counts what comes over the current connection, and takes nothing once too much has come.
long onBytes(BIO* /*socket*/, int operation, const char* /*to*/, std::size_t /*room*/, int /*unused*/,
             long /*argument*/, int result, std::size_t* received) {
    if (operation != (BIO_CB_READ | BIO_CB_RETURN) || result <= 0) {
        return result;
    }
    if (*received > allowed) {
        *received = 0;
        return -1;
    }
    allowed -= *received;
    return result;
}

int contextIndex() {
    static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

} // namespace

TlsConnections::TlsConnections()
    : stopped_{eventfd(0, EFD_CLOEXEC)} {}

TlsConnections::~TlsConnections() {
    close(stopped_);
}

void TlsConnections::follow(SSL_CTX* context) {
    SSL_CTX_set_ex_data(context, contextIndex(), this);
    SSL_CTX_set_info_callback(context, onInfo);
}

void TlsConnections::onInfo(const SSL* ssl, int where, int /*result*/) {
    static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, onFree);
    auto* const own = static_cast<TlsConnections*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(ssl), contextIndex()));
    if ((where & SSL_CB_HANDSHAKE_START) != 0 && SSL_get_ex_data(ssl, index) == nullptr) {
        auto connection = std::make_unique<Connection>(
            Connection{.owner = own, .ssl = const_cast<SSL*>(ssl), .socket = SSL_get_fd(ssl), .number = ++own->count_});
        currentSsl = connection->ssl;
        currentSocket = connection->socket;
        currentConnection = connection->number;
        allow(mostOfHead);
        BIO_set_callback_ex(SSL_get_rbio(ssl), onBytes);
        {
            const std::scoped_lock lock{own->mutex_};
            own->open_.insert(connection->socket);
        }
        auto* const of = connection->ssl;
        SSL_set_ex_data(of, index, connection.release());
    }
    if ((where & SSL_CB_HANDSHAKE_DONE) != 0) {
        ++own->handshakes_;
    }
}

void TlsConnections::onFree(void* /*parent*/, void* data, CRYPTO_EX_DATA* /*all*/, int /*index*/, long /*argument*/,
                            void* /*pointer*/) {
    const std::unique_ptr<Connection> connection{static_cast<Connection*>(data)};
    if (connection) {
        const std::scoped_lock lock{connection->owner->mutex_};
        connection->owner->open_.erase(connection->socket);
    }
}

std::uint64_t TlsConnections::currentNumber() {
    return currentConnection;
}

void TlsConnections::sendAndEnd(std::string_view bytes) {
    SSL_write(currentSsl, bytes.data(), static_cast<int>(bytes.size()));
    SSL_shutdown(currentSsl);
    replaceSocket();
}

void TlsConnections::reset() {
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    setsockopt(currentSocket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    replaceSocket();
}

void TlsConnections::allow(std::size_t bytes) {
    allowed = bytes;
}

void TlsConnections::keepReceiveBufferSmall() {
    // A buffer below a few segments of the loopback interface (64 KiB each) makes the connection crawl.
    constexpr int bytes = 256 * 1024;
    setsockopt(currentSocket, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
}

void TlsConnections::waitForHangUp() const {
    std::array<pollfd, 2> wanted{pollfd{.fd = stopped_, .events = POLLIN, .revents = 0},
                                 pollfd{.fd = currentSocket, .events = POLLRDHUP, .revents = 0}};
    poll(wanted.data(), wanted.size(), -1);
}

bool TlsConnections::wait(std::chrono::nanoseconds time) const {
    pollfd wanted{.fd = stopped_, .events = POLLIN, .revents = 0};
    const auto patience = timespecOf(time);
    return ppoll(&wanted, 1, &patience, nullptr) == 0;
}

void TlsConnections::closeAll() {
    const std::scoped_lock lock{mutex_};
    for (const int socket : open_) {
        shutdown(socket, SHUT_RDWR);
    }
}

void TlsConnections::stop() {
    const std::uint64_t one = 1;
    std::ignore = write(stopped_, &one, sizeof one);
    closeAll();
}

} // namespace kivo::simulator
