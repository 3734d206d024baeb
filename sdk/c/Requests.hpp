#pragma once

#include "platform/c/Arguments.hpp"

#include <kivo/Completions.hpp>
#include <kivo/KivoAPI.hpp>
#include <kivo/c/session.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace kivo::c {

/// Where the host wants an outcome: its function, its pointer, and the session that knows the cause of a failure.
class HostAnswer;

/// A completion that tells a screen's outcomes to the host, any number of times.
IdvCompletion screenCompletion(const std::shared_ptr<KivoAPI>& session, const kivo_answer& answer, UserData user);

/// The requests under way, by the numbers that the host knows. Any thread.
class Requests {
public:
    static Requests& shared();

    /// Gives the request a number, and hands its completion to `send`. When `send` throws, the host is not answered.
    kivo_request begin(const std::shared_ptr<KivoAPI>& session, const kivo_answer& answer, UserData user,
                       const std::function<void(KivoAPI&, IdvCompletion)>& send);

    bool giveUp(kivo_request number);

private:
    struct UnderWay {
        std::shared_ptr<HostAnswer> answer;
        CancellableCompletion completion;
    };

    kivo_request nextNumber();
    /// The request, which is under way no longer; absent when it has ended.
    std::optional<UnderWay> take(kivo_request number);

    std::mutex mutex_;
    kivo_request last_ = 0;
    std::map<kivo_request, UnderWay> underWay_;
};

} // namespace kivo::c
