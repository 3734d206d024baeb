#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace kivo::test {

/// Sessions whose requests wait for the test to answer them.
class ScriptedUrlSessions final : public platform::UrlSessions {
public:
    class Request {
    public:
        platform::UrlRequest request;
        platform::UrlSessionConfiguration configuration;

        /// Whether its session still exists; the last one to go cancels.
        bool isWanted() const { return !session_.expired(); }

        bool isPinned() const { return delegate_ && delegate_->judgesServerTrust(); }

        void answer(platform::UrlOutcome outcome) const {
            if (!queue_) {
                completion_(std::move(outcome));
                return;
            }
            queue_->async([completion = completion_, outcome = std::move(outcome)] { completion(outcome); });
        }

        void answer(std::string body, int status = 200) const {
            answer(platform::UrlResponse{.status = status, .headers = {}, .body = std::move(body)});
        }

        void sent(std::uint64_t bytes, std::uint64_t of) const {
            queue_->async([delegate = delegate_, bytes, of] { delegate->didSendBodyData(nullptr, bytes, of); });
        }

    private:
        friend class ScriptedUrlSessions;

        platform::UrlCompletion completion_;
        std::shared_ptr<platform::UrlSessionDelegate> delegate_;
        std::shared_ptr<platform::DispatchQueue> queue_;
        std::weak_ptr<platform::UrlSession> session_;
    };

    std::vector<Request> requests;
    /// Called when a request is sent.
    std::function<void(const platform::UrlRequest&)> onRequest;
    /// Whether the machine has no thread left for a session.
    bool isExhausted = false;

    std::shared_ptr<platform::UrlSession> make(platform::UrlSessionConfiguration configuration,
                                               std::shared_ptr<platform::UrlSessionDelegate> delegate,
                                               std::shared_ptr<platform::DispatchQueue> queue) override {
        if (isExhausted) {
            throw std::system_error{std::make_error_code(std::errc::resource_unavailable_try_again)};
        }
        Request request;
        request.configuration = std::move(configuration);
        request.delegate_ = std::move(delegate);
        request.queue_ = std::move(queue);
        return std::make_shared<Session>(*this, std::move(request));
    }

private:
    class Session final : public platform::UrlSession, public std::enable_shared_from_this<Session> {
    public:
        Session(ScriptedUrlSessions& owner, Request unsent)
            : owner_{owner}
            , unsent_{std::move(unsent)} {}

        std::shared_ptr<platform::UrlSessionTask> dataTask(platform::UrlRequest request,
                                                           platform::UrlCompletion completion) override {
            auto& kept = owner_.requests.emplace_back(unsent_);
            kept.request = std::move(request);
            kept.completion_ = std::move(completion);
            kept.session_ = weak_from_this();
            if (owner_.onRequest) {
                owner_.onRequest(kept.request);
            }
            return nullptr;
        }

    private:
        ScriptedUrlSessions& owner_;
        const Request unsent_;
    };
};

} // namespace kivo::test
