#include <kivo/AcquisitionObject.hpp>
#include <kivo/Failure.hpp>
#include <kivo/IdvEvents.hpp>
#include <kivo/SDKEnv.hpp>

#include <array>
#include <cstddef>

namespace kivo {
namespace {

template <class E, std::size_t N>
std::string_view nameIn(const std::array<std::string_view, N>& names, E value) {
    static_assert(RawValues<E>::first == 0 && RawValues<E>::last == N - 1);
    const auto index = static_cast<std::size_t>(rawValue(value));
    return index < N ? names[index] : std::string_view{};
}

} // namespace

std::string_view SDKEnvHelper::environmentName(SDKEnv from) {
    static constexpr std::array<std::string_view, 4> names{"PROD", "PREPROD", "TEST", "DEV"};
    return nameIn(names, from);
}

std::string_view IdvEventsHelper::eventName(IdvEvents from) {
    static constexpr std::array<std::string_view, 9> names{"SCAN_QR_CODE",   "JOIN_SESSION",   "UPDATE_SESSION",
                                                           "SESSION_STATUS", "COMMIT_SESSION", "UPLOAD_DOCUMENT",
                                                           "DOCUMENT_SCAN",  "FACE_SCAN",      "OCR_SCAN"};
    return nameIn(names, from);
}

std::string_view name(FailureKind kind) {
    static constexpr std::array<std::string_view, 16> names{
        "refused", "noNetwork", "connection", "timedOut",      "certificate", "pins",   "status", "answer",
        "address", "noSession", "noAttempts", "configuration", "storage",     "screen", "other",  "overtaken"};
    return nameIn(names, kind);
}

std::string_view AcquisitionObjectHelper::acquisitionObjectName(AcquisitionObject from) {
    static constexpr std::array<std::string_view, 8> names{"ACTIVATION_CODE",     "NFC_SCAN",     "MRZ_SCAN",
                                                           "FACEMAP_SCAN",        "SELFIE_IMAGE", "DOCUMENT_MAIN_IMAGE",
                                                           "DOCUMENT_BACK_IMAGE", "OCR_SCAN"};
    return nameIn(names, from);
}

} // namespace kivo
