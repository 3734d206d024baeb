#pragma once

#include <kivo/Export.hpp>
#include <kivo/SDKEnv.hpp>

#include <array>
#include <string>

namespace kivo {

/// Where the identity service of each environment is found, and how a host wants to reach it.
struct KIVO_EXPORT Deployment {
    /// The https address of each environment's join page, in the order of `SDKEnv`.
    std::array<std::string, 4> joinPages;

    /// Whether the face scan library runs in production mode. Default false.
    bool faceTecProduction = false;

    /// The key that the face scan library's vendor gives out for production mode; handed to the library's adapter as it
    /// is, and never logged. Default empty.
    std::string faceTecProductionKey{};

    /// Whether requests go to pinned servers even where no list of pins is found: each then ends in
    /// `UNSECURE_SERVER_PINNING_FAILED`. Default false: without a list the system's trust decides. A host that ships
    /// a list sets the member, so that a program started by another name or through a loader does not lose its pins. In
    /// "Deployment.plist" the key is "RequiresPins": any value but a plain false sets the member, and so does a
    /// Deployment.plist that is missing or cannot be read.
    bool requiresPins = false;

    /// The join page of `environment`; empty for an integer that is no environment.
    std::string joinPage(SDKEnv environment) const;

    /// Replaces the whole deployment that the SDK's bundle ships: "Deployment.plist" is not read any more, and a member
    /// that is not set has its default. Call it before the first join.
    static void install(Deployment deployment);

    /// The deployment in force: the installed one, else the bundle's "Deployment.plist". Callable from any thread.
    static Deployment current();
};

} // namespace kivo
