#pragma once

#include "platform/posix/DataFolder.hpp"

#include <kivo/platform/Diagnostics.hpp>
#include <kivo/platform/Keychain.hpp>

#include <chrono>
#include <memory>

namespace kivo::platform {

/// A keychain of two files in `folder`, which is made when first written to: a database, and the key that seals its
/// values. Processes may share them. A database that cannot be read any more is put aside, and its key destroyed. No
/// call waits for other calls and processes longer than `patience`.
std::shared_ptr<Keychain> makeSqliteKeychain(DataFolder folder, std::shared_ptr<Diagnostics> diagnostics,
                                             std::chrono::milliseconds patience = std::chrono::seconds{5});

} // namespace kivo::platform
