#pragma once

#include "platform/base/Process.hpp"

#include <atomic>

namespace kivo {

enum class DocAuthStatus { docAuthSuccess = 0, docAuthFailedOrInitialized = 1 };
enum class FaceAuthStatus { faceAuthSuccess = 0, faceAuthFailedOrInitialized = 1 };

/// Whether the current session's document and face steps have succeeded. Lives as long as the process.
class UIStateManager {
public:
    static UIStateManager& shared() {
        return platform::Process::current().part<UIStateManager>([] { return new UIStateManager; });
    }

    // Atomic, because a join's outcome resets the states on the transport's thread, and the screens read them on the
    // main thread.
    std::atomic<DocAuthStatus> docAuthState = DocAuthStatus::docAuthFailedOrInitialized;
    std::atomic<FaceAuthStatus> faceAuthState = FaceAuthStatus::faceAuthFailedOrInitialized;
};

} // namespace kivo
