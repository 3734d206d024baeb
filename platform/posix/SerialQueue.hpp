#pragma once

#include <kivo/platform/DispatchQueue.hpp>

#include <memory>
#include <string>

namespace kivo::platform {

/// A serial queue whose destruction does not wait, so that a callback may release the last reference: the blocks still
/// waiting run, and then the thread ends by itself. Throws `std::system_error` when the system has no more threads.
///
/// `label` names the thread for debuggers.
std::shared_ptr<DispatchQueue> makeCallbackQueue(std::string label);

} // namespace kivo::platform
