#pragma once

#include <string>
#include <utility>
#include <vector>

namespace kivo {

/// What the SDK tells the identity service about the device and the application.
struct Environment {
    using Information = std::vector<std::pair<std::string, std::string>>;

    /// The application information, put together on first use and kept for the life of the process.
    static const Information& applicationInformation();
};

} // namespace kivo
