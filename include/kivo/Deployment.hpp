#pragma once

#include <kivo/Export.hpp>
#include <kivo/SDKEnv.hpp>

#include <string>

namespace kivo {

/// The https address of each environment's join page. A host names the environments that it joins; a join to an
/// environment without a page fails.
struct JoinPages {
    /// The join page of the environment with the member's name. An environment with an empty page cannot be joined.
    std::string PROD{};
    std::string PREPROD{};
    std::string TEST{};
    std::string DEV{};

    bool operator==(const JoinPages&) const = default;
};

/// The addresses of the identity service of each environment, and the host's rules for reaching the service.
struct KIVO_EXPORT Deployment {
    /// By default empty.
    JoinPages joinPages{};

    /// Whether the face scan library runs in production mode. Default false.
    bool faceTecProduction = false;

    /// The key that the face scan library's vendor gives out for production mode; passed to the library's adapter
    /// unchanged, and never logged. Default empty.
    std::string faceTecProductionKey{};

    /// Whether pins are required even where no list of pins is found: each request then ends in
    /// `UNSECURE_SERVER_PINNING_FAILED`. Default false: without a list the system's trust decides. A host that ships
    /// a list sets the member, so that a program started by another name or through a loader does not lose its pins. In
    /// "Deployment.plist" the key is "RequiresPins": any value but a plain false sets the member, and so does a
    /// Deployment.plist that is missing or cannot be read.
    bool requiresPins = false;

    /// The join page of `environment`; empty for an integer that is not an environment.
    std::string joinPage(SDKEnv environment) const;

    /// Replaces the whole deployment of the SDK's bundle: "Deployment.plist" is no longer read, and a member that is
    /// not set has its default. Call `install` before the first join.
    static void install(Deployment deployment);

    /// The deployment in force: the installed deployment, otherwise the bundle's "Deployment.plist". Callable from any
    /// thread.
    static Deployment current();
};

} // namespace kivo
