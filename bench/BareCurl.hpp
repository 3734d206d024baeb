#pragma once

#include "Measuring.hpp"
#include "ServiceProcess.hpp"

#include <curl/curl.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// What a program without the SDK does: POSTs by libcurl alone.
namespace kivo::bench {

/// Lets one thread wait for another.
class Answered {
public:
    void tell(bool isGood) {
        // Notified under the lock: the waiting side destroys the object at once.
        const std::scoped_lock lock{mutex_};
        state_ = isGood ? 1 : -1;
        changed_.notify_one();
    }

    void await(const char* failure) {
        std::unique_lock lock{mutex_};
        changed_.wait(lock, [&] { return state_ != 0; });
        if (state_ < 0) {
            giveUp(failure);
        }
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int state_ = 0;
};

/// An easy handle for POSTs of one service.
class Handle {
public:
    explicit Handle(const std::string& trustedCertificates) {
        curl_easy_setopt(curl_, CURLOPT_CAINFO, trustedCertificates.c_str());
        curl_easy_setopt(curl_, CURLOPT_HTTPHEADER, headers_);
        curl_easy_setopt(curl_, CURLOPT_WRITEFUNCTION, collect);
        curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &answer_);
    }

    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    ~Handle() {
        curl_easy_cleanup(curl_);
        curl_slist_free_all(headers_);
    }

    CURL* prepare(const Post& post) {
        answer_.clear();
        curl_easy_setopt(curl_, CURLOPT_URL, post.url.c_str());
        curl_easy_setopt(curl_, CURLOPT_POSTFIELDS, post.body.data());
        curl_easy_setopt(curl_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(post.body.size()));
        return curl_;
    }

    bool isAnswered() const { return answer_.contains("\"data\""); }

private:
    static std::size_t collect(char* bytes, std::size_t size, std::size_t count, void* target) {
        static_cast<std::string*>(target)->append(bytes, size * count);
        return size * count;
    }

    CURL* curl_ = curl_easy_init();
    curl_slist* headers_ =
        curl_slist_append(curl_slist_append(nullptr, "Content-Type: application/json; charset=UTF-8"), "Expect:");
    std::string answer_;
};

inline void runLoop(Handle& handle, const std::vector<Post>& posts) {
    for (const auto& post : posts) {
        if (curl_easy_perform(handle.prepare(post)) != CURLE_OK || !handle.isAnswered()) {
            giveUp("the bare loop was refused");
        }
    }
}

/// A thread that runs blocks in their order.
class Worker {
public:
    Worker() = default;
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    ~Worker() {
        async({});
        thread_.join();
    }

    void async(std::function<void()> block) {
        const std::scoped_lock lock{mutex_};
        blocks_.push_back(std::move(block));
        changed_.notify_one();
    }

private:
    void run() {
        while (true) {
            std::unique_lock lock{mutex_};
            changed_.wait(lock, [&] { return !blocks_.empty(); });
            const auto block = std::move(blocks_.front());
            blocks_.pop_front();
            lock.unlock();
            if (!block) {
                return;
            }
            block();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> blocks_;
    std::thread thread_{[this] { run(); }};
};

/// Bare libcurl with as many threads as the SDK has.
class BareThreads {
public:
    explicit BareThreads(Handle& handle)
        : handle_{handle} {}

    BareThreads(const BareThreads&) = delete;
    BareThreads& operator=(const BareThreads&) = delete;

    ~BareThreads() {
        isEnding_ = true;
        curl_multi_wakeup(multi_);
        thread_.join();
        curl_multi_cleanup(multi_);
    }

    void run(const std::vector<Post>& posts) {
        for (const auto& post : posts) {
            Answered answered;
            order(post, answered);
            answered.await("the bare threads were refused");
        }
    }

    /// Hands a post to the thread and wakes the thread. One post at a time.
    void order(const Post& post, Answered& answered) {
        {
            const std::scoped_lock lock{mutex_};
            next_ = {&post, &answered};
        }
        curl_multi_wakeup(multi_);
    }

private:
    struct Order {
        const Post* post = nullptr;
        Answered* answered = nullptr;
    };

    void drive() {
        Order current;
        while (!isEnding_) {
            {
                const std::scoped_lock lock{mutex_};
                if (next_.post != nullptr) {
                    current = std::exchange(next_, {});
                    curl_multi_add_handle(multi_, handle_.prepare(*current.post));
                }
            }
            int count = 0;
            curl_multi_perform(multi_, &count);
            while (const auto* const message = curl_multi_info_read(multi_, &count)) {
                const bool isGood = message->data.result == CURLE_OK && handle_.isAnswered();
                curl_multi_remove_handle(multi_, message->easy_handle);
                callbacks_.async([isGood, answered = current.answered] { answered->tell(isGood); });
            }
            curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
        }
    }

    Handle& handle_;
    CURLM* const multi_ = curl_multi_init();
    Worker callbacks_;
    std::mutex mutex_;
    Order next_;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_{[this] { drive(); }};
};

} // namespace kivo::bench
