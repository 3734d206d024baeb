#include "platform/curl/CurlTurns.hpp"

namespace kivo::platform {

void CurlTurns::watch(SSL* tls) {
    SSL_set_msg_callback_arg(tls, this);
    SSL_set_msg_callback(
        tls, +[](int isWritten, int, int type, const void*, std::size_t, SSL* connection, void* self) {
            auto& turns = *static_cast<CurlTurns*>(self);
            turns.noteProgress();
            if (isWritten == 0 && type == SSL3_RT_HEADER) {
                turns.read(connection);
            }
        });
}

void CurlTurns::begin() {
    fruitless_ = hasProgress_ ? 0 : fruitless_ + 1;
    hasProgress_ = false;
    reading_ = nullptr;
}

void CurlTurns::read(SSL* tls) {
    const auto now = std::chrono::steady_clock::now();
    if (reading_ != tls) {
        reading_ = tls;
        sliceBegin_ = now;
        slices_ = 0;
    } else if (now - sliceBegin_ >= slice) {
        sliceBegin_ = now;
        // As if the server had said goodbye: the rest of what has come is thrown away.
        if (++slices_ >= mostSlices) {
            SSL_set_shutdown(tls, SSL_get_shutdown(tls) | SSL_RECEIVED_SHUTDOWN);
        }
    }
}

} // namespace kivo::platform
