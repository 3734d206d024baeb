#pragma once

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/AcquisitionObject.hpp>
#include <kivo/Failure.hpp>
#include <kivo/IdvResult.hpp>
#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/DispatchQueue.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <optional>
#include <string>

namespace kivo {

/// A verification session, as a host controls it. Made by `KivoSDK::load`; call its functions on the main thread.
///
/// Every request ends in exactly one call of its `response`. Requests that go to the identity service answer on the
/// SDK's transport thread, one at a time; requests that fail before they are sent (no session, no network, no
/// attempts left) answer on the calling thread before the call returns. Screens answer on the main thread. With
/// `setAnswerQueue`, or with `onMainQueue` around a `response`, every answer comes on one queue instead.
///
/// Inside the answer to a request, further requests, `resumeInBrowser` and `reset` may be called. The functions for
/// screens (`acquire`, the context, the theme) may be called only if the answer runs on the main thread. A `response`
/// is copied; its captures are destroyed with the last copy, on the calling thread or on the transport thread.
///
/// A call may wait for the keychain, which another process can hold: five seconds for each access, of which a call
/// makes up to two.
///
/// Six requests to one server are under way at once; further requests wait, within their 60 seconds, until another
/// request ends. The SDK's own notices to the service are not counted. A request is sent once and never
/// repeated.
class KIVO_EXPORT KivoAPI {
public:
    virtual ~KivoAPI() = default;

    /// The theme that screens receive; a new default theme at first.
    virtual std::shared_ptr<ThemeCustomization> sdkTheme() const = 0;
    virtual void setSdkTheme(std::shared_ptr<ThemeCustomization> theme) = 0;

    /// The view controller on which screens are shown. Without one, `acquire` shows nothing, logs a warning and does
    /// not answer; with a context in no navigation stack and in no window, `acquire` answers `UNKNOWN_ERROR`
    /// on the main queue. The session keeps the context until another context is set; null releases the context.
    virtual void setContext(std::shared_ptr<platform::ViewController> viewController) = 0;

    /// Same as `setSdkTheme`. Screens already shown keep their theme.
    virtual void setTheme(std::shared_ptr<ThemeCustomization> theme) = 0;

    /// The queue on which this session calls each `response`; also answers that would come before the call returns then
    /// come later, on the queue. Null, the default: the threads named above. `platform::services().mainQueue` is the
    /// main thread. Counts for requests and screens that begin afterwards.
    virtual void setAnswerQueue(std::shared_ptr<platform::DispatchQueue> queue) = 0;

    /// The failure that the session told last, with its cause; absent before the first failure. Inside a `response`
    /// that received a failure, the failure is the one of that `response`. The same failure stands in a warning line
    /// of the log, except for failures of screens, which are the person's choices. Callable from any thread.
    virtual std::optional<Failure> lastFailure() const = 0;

    /// Shows the screen that acquires `object`: pushed where the context is in a navigation stack (under screens that
    /// cover the stack), presented elsewhere. `config` is not read: the configuration counts with `join`.
    /// `response` may be called more than once: a person can deliver a code and then close the screen. A later
    /// `acquire` replaces the response, which is held until then. A screen that cannot be made ends in `UNKNOWN_ERROR`;
    /// the log gives the reason. Objects that are for uploads only, and `ocrScan` before interface version 16, are
    /// ignored without an answer.
    virtual void acquire(AcquisitionObject object, std::shared_ptr<AcquisitionConfig> config,
                         IdvCompletion response) = 0;

    /// Joins the session of an activation code. Succeeds with `JOIN_SESSION` and the transaction identifier. The
    /// keychain keeps one session for all interface versions, and a join replaces an earlier session even when the
    /// service refuses the join. Of two joins under way the later one counts: an answer to the earlier join that comes
    /// last fails with `INVALID_JOIN_SESSION` (`FailureKind::overtaken`). `status`, `commit`, `resumeInBrowser` and
    /// screens can use the session in another process; `update` needs a join through this object, `upload` a join in
    /// this process. Without a config, `join` fails with `INVALID_JOIN_SESSION`.
    virtual void join(std::string forCode, std::shared_ptr<AcquisitionConfig> config, IdvCompletion response) = 0;

    /// Reports an action and a message, UTF-8 texts, to the session. Succeeds with `UPDATE_SESSION`.
    virtual void update(std::string action, std::string message, IdvCompletion response) = 0;

    /// Asks for the session's status. Succeeds with `SESSION_STATUS` when the service does not refuse; the
    /// other members of the answer are not passed on.
    virtual void status(IdvCompletion response) = 0;

    /// Commits the session. Succeeds with `COMMIT_SESSION`.
    virtual void commit(IdvCompletion response) = 0;

    /// Opens the session's resume page in the person's browser. Does nothing without a session.
    virtual void resumeInBrowser() = 0;

    /// Uploads `data` as evidence of the given kind and counts one attempt. Succeeds with `UPLOAD_DOCUMENT`. `data` is
    /// UTF-8 text, such as Base64; other bytes are sent as an empty request. Fails with `RETRY_LIMIT_REACHED`
    /// when no attempt remains, and before a join of this process has set a limit.
    virtual void upload(AcquisitionObject acquisitionObject, std::string data, IdvCompletion response) = 0;

    /// Deletes the stored session and forgets the service's cookies. Requests under way continue. The activation code,
    /// the theme, the context and the remaining attempts stay, and the object is ready for another join.
    virtual void reset() = 0;
};

} // namespace kivo
