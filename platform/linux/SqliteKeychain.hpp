#pragma once

#include <kivo/platform/Diagnostics.hpp>
#include <kivo/platform/Keychain.hpp>

#include <filesystem>
#include <memory>

namespace kivo::platform {

/// A keychain of two files in `folder`, which is made when first written to: a database, and the key that seals its
/// values. Processes may share them. A database that cannot be read any more is put aside, never deleted.
std::shared_ptr<Keychain> makeSqliteKeychain(std::filesystem::path folder, std::shared_ptr<Diagnostics> diagnostics);

} // namespace kivo::platform
