#pragma once

#include "platform/posix/PrivateFolder.hpp"

#include <kivo/platform/Diagnostics.hpp>
#include <kivo/platform/Keychain.hpp>

#include <chrono>
#include <memory>

namespace kivo::platform {

/// A keychain of two files in `folder`: a database, and the key that seals the database's values. The first write makes
/// both. Processes may share the files. A damaged database is put aside, and its key is destroyed. No call waits for
/// other calls and processes longer than `patience`.
std::shared_ptr<Keychain> makeSqliteKeychain(DataFolder folder, std::shared_ptr<Diagnostics> diagnostics,
                                             std::chrono::milliseconds patience = std::chrono::seconds{5});

} // namespace kivo::platform
