#pragma once

#include <kivo/KivoAPI.hpp>
#include <kivo/c/session.h>

#include <memory>
#include <string_view>

namespace kivo::c {

/// Whether `openedSession` knows the version.
bool isVersion(std::string_view version);

/// The handle of an interface version; null for a version that `KivoSDK::load` rejects. Empty stands for the newest.
kivo_session* openedSession(std::string_view key, std::string_view version);

/// The session behind a pointer of the host. Refuses a pointer that is no session, and never reads through the pointer.
const std::shared_ptr<KivoAPI>& sessionOf(const kivo_session* handle);

/// Notes whether the host shows the session's screens on a display.
void setHasDisplay(const kivo_session* handle, bool hasDisplay);

/// Refuses what the session API would pass over without an answer: an object without a screen in the interface version,
/// and a session without a display.
void requireScreen(const kivo_session* handle, AcquisitionObject object);

} // namespace kivo::c
