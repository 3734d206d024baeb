#pragma once

#include <kivo/Export.hpp>
#include <kivo/RawValue.hpp>
#include <kivo/ResponseCode.hpp>

#include <string>
#include <string_view>

namespace kivo {

/// What made a request or a screen fail, finer than the `ResponseCode`, which often stands for several causes.
enum class FailureKind {
    /// The identity service received the request and refused it.
    refused,
    /// The device has no network.
    noNetwork,
    /// No connection to the server, or the connection ended before the whole answer.
    connection,
    /// No whole answer within the time limit.
    timedOut,
    /// The server's certificate is not trusted, or no secure connection came about.
    certificate,
    /// The server is none of the pinned servers, or pins are required and none is known.
    pins,
    /// The server answered with an HTTP status outside 200 to 299, or without a body.
    status,
    /// The answer cannot be used: not a session, too large, or no HTTP.
    answer,
    /// The address of the request is missing or not an https address: the deployment or the session lacks it.
    address,
    /// No session is stored, or the stored session cannot be read.
    noSession,
    /// No attempt remains.
    noAttempts,
    /// The configuration of the join is missing or names no environment.
    configuration,
    /// The keychain could not store or remove the session, for example on a full disk.
    storage,
    /// A screen ended without success; the code says how.
    screen,
    /// The device had no thread or memory for the request, or the cause is unknown.
    other,
    /// The answer to a join came after the answer to a join that began later. The session of the later join stays.
    overtaken,
};

template <>
struct RawValues<FailureKind> {
    static constexpr int first = 0;
    static constexpr int last = 15;
};

/// The kind's name as written above, for logs; empty for an integer that is no kind.
KIVO_EXPORT std::string_view name(FailureKind kind);

/// Why a request or a screen failed.
struct Failure {
    /// The code and the kind of the failure; the kind is the finer one.
    ResponseCode code = ResponseCode::UNKNOWN_ERROR;
    FailureKind kind = FailureKind::other;
    /// One sentence in English for the person who reads the host's log. Carries no secret.
    std::string text{};
};

} // namespace kivo
