#pragma once

#include <kivo/Export.hpp>

namespace kivo::platform {

/// The host's view controller, on which acquisition screens are presented. Main thread only.
class KIVO_EXPORT ViewController {
public:
    virtual ~ViewController() = default;
};

} // namespace kivo::platform
