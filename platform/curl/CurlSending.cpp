#include "platform/curl/CurlSending.hpp"

#include <openssl/ssl.h>

namespace kivo::platform {
namespace {

bool speaksHttp2(const curl_tlssessioninfo* tls) {
    const unsigned char* name = nullptr;
    unsigned int size = 0;
    if (tls != nullptr && tls->internals != nullptr) {
        SSL_get0_alpn_selected(static_cast<const SSL*>(tls->internals), &name, &size);
    }
    return size == 2 && name[0] == 'h' && name[1] == '2';
}

} // namespace

void CurlSending::watch(CurlOptions& options) {
    options.set(CURLOPT_OPENSOCKETDATA, this);
    options.set(
        CURLOPT_OPENSOCKETFUNCTION, +[](void* self, curlsocktype, curl_sockaddr* address) -> curl_socket_t {
            auto& sending = *static_cast<CurlSending*>(self);
            return sending.mayConnect() ? sending.sockets_.open(*address) : CURL_SOCKET_BAD;
        });
    // Connections outlive the exchange that made them, and so do the sockets.
    options.set(CURLOPT_CLOSESOCKETDATA, &sockets_);
    options.set(
        CURLOPT_CLOSESOCKETFUNCTION, +[](void* sockets, curl_socket_t socket) {
            static_cast<CurlSockets*>(sockets)->close(socket);
            return 0;
        });
    options.set(CURLOPT_PREREQDATA, this);
    options.set(
        CURLOPT_PREREQFUNCTION, +[](void* self, char* peer, char*, int, int localPort) {
            const bool maySend = static_cast<CurlSending*>(self)->maySend(peer, localPort);
            return maySend ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
        });
}

bool CurlSending::hasLeft() const {
    return sentBefore_ && info<long>(CURLINFO_REQUEST_SIZE) > *sentBefore_;
}

bool CurlSending::mayConnect() {
    wouldRepeat_ = wouldRepeat_ || hasLeft();
    sentBefore_.reset();
    return !wouldRepeat_;
}

bool CurlSending::maySend(std::string_view peer, int localPort) {
    wouldRepeat_ = wouldRepeat_ || hasLeft();
    const bool isReused = info<long>(CURLINFO_NUM_CONNECTS) == 0;
    if (!wouldRepeat_ && isReused) {
        // On HTTP/2 the server may speak without being asked.
        const bool isSilent = !speaksHttp2(info<curl_tlssessioninfo*>(CURLINFO_TLS_SSL_PTR));
        isConnectionOver_ = sockets_.hasEnded(peer, localPort, isSilent);
    }
    sentBefore_ = info<long>(CURLINFO_REQUEST_SIZE);
    return !wouldRepeat_ && !isConnectionOver_;
}

} // namespace kivo::platform
