#pragma once

#include <kivo/IdvResult.hpp>

#include <utility>

namespace kivo {

/// A completion that can be called whatever the host passed.
inline IdvCompletion callable(IdvCompletion response) {
    return response ? std::move(response) : [](const IdvOutcome&) {};
}

} // namespace kivo
