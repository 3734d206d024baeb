#include "c/Requests.hpp"
#include "c/Sessions.hpp"
#include "c/Values.hpp"
#include "platform/c/Arguments.hpp"

#include <kivo/KivoAPI.hpp>
#include <kivo/c/session.h>
#include <kivo/platform/Services.hpp>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace {

using namespace kivo;

kivo_request begin(const char* function, const kivo_session* session, const kivo_answer& answer,
                   const std::function<void(KivoAPI&, IdvCompletion)>& send) noexcept {
    c::UserData user{answer.user, answer.release};
    return c::resultOf(function, kivo_request{0}, [&] {
        return c::Requests::shared().begin(c::sessionOf(session), answer, std::move(user), send);
    });
}

/// A failure for the host to free, with the text that it points to.
struct OwnedFailure : kivo_failure {
    explicit OwnedFailure(Failure failure)
        : kivo_failure{c::failureFor(failure)}
        , text{std::move(failure.text)} {
        cause = c::textOf(text);
    }

    std::string text;
};

} // namespace

extern "C" {

kivo_session* kivo_session_open(kivo_text key, kivo_text version) {
    return c::resultOf(__func__, static_cast<kivo_session*>(nullptr),
                       [&] { return c::openedSession(c::viewOf(key, "key"), c::viewOf(version, "version")); });
}

kivo_status kivo_session_set_answer_queue(kivo_session* session, kivo_answer_queue queue) {
    return c::statusOf(__func__, [&] {
        const auto& api = c::sessionOf(session);
        switch (queue) {
        case KIVO_ANSWER_ON_MAIN_QUEUE:
            return api->setAnswerQueue(platform::services().mainQueue);
        case KIVO_ANSWER_ON_TRANSPORT:
            return api->setAnswerQueue(nullptr);
        }
        throw c::Misuse{"queue has no such value"};
    });
}

kivo_request kivo_session_join(kivo_session* session, kivo_text activation_code, const kivo_config* config,
                               kivo_answer answer) {
    return begin(__func__, session, answer, [&](KivoAPI& api, IdvCompletion response) {
        api.join(c::stringOf(activation_code, "activation_code"),
                 std::make_shared<AcquisitionConfig>(c::configurationOf(config)), std::move(response));
    });
}

kivo_request kivo_session_update(kivo_session* session, kivo_text action, kivo_text message, kivo_answer answer) {
    return begin(__func__, session, answer, [&](KivoAPI& api, IdvCompletion response) {
        api.update(c::stringOf(action, "action"), c::stringOf(message, "message"), std::move(response));
    });
}

kivo_request kivo_session_status(kivo_session* session, kivo_answer answer) {
    return begin(__func__, session, answer,
                 [](KivoAPI& api, IdvCompletion response) { api.status(std::move(response)); });
}

kivo_request kivo_session_upload(kivo_session* session, kivo_object object, kivo_text data, kivo_answer answer) {
    return begin(__func__, session, answer, [&](KivoAPI& api, IdvCompletion response) {
        api.upload(c::enumeratorOf<AcquisitionObject>(object, "object"), c::stringOf(data, "data"),
                   std::move(response));
    });
}

kivo_request kivo_session_commit(kivo_session* session, kivo_answer answer) {
    return begin(__func__, session, answer,
                 [](KivoAPI& api, IdvCompletion response) { api.commit(std::move(response)); });
}

bool kivo_request_give_up(kivo_request request) {
    return c::resultOf(__func__, false, [&] { return c::Requests::shared().giveUp(request); });
}

kivo_status kivo_session_resume_in_browser(kivo_session* session) {
    return c::statusOf(__func__, [&] { c::sessionOf(session)->resumeInBrowser(); });
}

kivo_status kivo_session_reset(kivo_session* session) {
    return c::statusOf(__func__, [&] { c::sessionOf(session)->reset(); });
}

kivo_failure* kivo_session_last_failure(const kivo_session* session) {
    return c::resultOf(__func__, static_cast<kivo_failure*>(nullptr), [&]() -> kivo_failure* {
        auto last = c::sessionOf(session)->lastFailure();
        return last ? new OwnedFailure{*std::move(last)} : nullptr;
    });
}

void kivo_failure_free(kivo_failure* failure) {
    delete static_cast<OwnedFailure*>(failure);
}

kivo_request kivo_join(const kivo_join_request* request, kivo_answer answer, kivo_session** session) {
    c::UserData user{answer.user, answer.release};
    kivo_session* opened = nullptr;
    const auto number = c::resultOf(__func__, kivo_request{0}, [&] {
        const auto given = c::structureOf(request, "request");
        auto code = c::stringOf(given.activation_code, "activation_code");
        auto config = std::make_shared<AcquisitionConfig>(c::configurationOf(given.config));
        const auto key = c::viewOf(given.key, "key");
        const auto version = c::viewOf(given.version, "version");
        if (!c::isVersion(version)) {
            throw c::Misuse{"there is no such version"};
        }
        if (given.deployment != nullptr) {
            Deployment::install(c::deploymentOf(given.deployment));
        }
        opened = c::openedSession(key, version);
        const auto& api = c::sessionOf(opened);
        api->setAnswerQueue(platform::services().mainQueue);
        if (session != nullptr) {
            *session = opened;
        }
        return c::Requests::shared().begin(api, answer, std::move(user), [&](KivoAPI& joining, IdvCompletion response) {
            joining.join(std::move(code), std::move(config), std::move(response));
        });
    });
    if (number == 0 && session != nullptr) {
        *session = nullptr;
    }
    return number;
}
}
