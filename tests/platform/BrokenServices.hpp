#pragma once

#include <kivo/platform/Clock.hpp>
#include <kivo/platform/FrameSource.hpp>
#include <kivo/platform/Services.hpp>

#include <fstream>
#include <list>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

/// Services that keep all promises but one. A name says which: the fault that the object has.
namespace kivo::platform::broken {

/// Hands every call on to a sound service but where its fault meets it.
template <class Service>
struct Broken : Service {
    Broken(std::shared_ptr<Service> sound, std::string_view name)
        : real{std::move(sound)}
        , fault{name} {}

    bool has(std::string_view name) const { return fault == name; }

    std::shared_ptr<Service> real;
    std::string fault;
};

struct BrokenQueue final : Broken<MainQueue> {
    using Broken::Broken;

    void async(std::function<void()> block) override {
        if (has("runs blocks on the caller's stack")) {
            block();
        } else if (!has("runs blocks out of order")) {
            real->async(std::move(block));
        } else if (auto former = std::exchange(held, std::move(block))) {
            real->async(std::exchange(held, nullptr));
            real->async(std::move(former));
        }
    }

    void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> block) override {
        if (!has("drops delayed blocks")) {
            real->asyncAfter(has("hurries") ? delay / 2 : delay, std::move(block));
        }
    }

    bool isCurrent() const override { return has("is current everywhere") || real->isCurrent(); }

    std::function<void()> held;
};

struct BrokenKeychain final : Broken<Keychain> {
    using Broken::Broken;

    OSStatus SecItemAdd(const KeychainAttributes& item) override {
        if (!has("stores values carelessly")) {
            return has("forgets") ? errSecSuccess : real->SecItemAdd(item);
        }
        auto cut = item;
        cut.kSecValueData = item.kSecValueData->c_str();
        const auto status = real->SecItemAdd(cut);
        std::ofstream{folder / "copy"} << *item.kSecValueData;
        return status;
    }

    OSStatus SecItemCopyMatching(const KeychainAttributes& query, std::string* result) override {
        auto wanted = query;
        if (has("reads queries loosely")) {
            wanted.kSecAttrAccessGroup.reset();
            wanted.kSecAttrService.reset();
            wanted.kSecReturnData = true;
        }
        return real->SecItemCopyMatching(wanted, result);
    }

    OSStatus SecItemUpdate(const KeychainAttributes& query, const KeychainAttributes& change) override {
        auto wanted = query;
        if (has("reads queries loosely")) {
            wanted.kSecAttrAccessible.reset();
        }
        return has("forgets changes") ? real->SecItemCopyMatching(query, nullptr) : real->SecItemUpdate(wanted, change);
    }

    OSStatus SecItemStoreAll(std::span<const KeychainAttributes> items, KeychainDurability durability) override {
        return real->SecItemStoreAll(
            has("stores one of several") ? items.first(std::min<std::size_t>(items.size(), 1)) : items, durability);
    }

    OSStatus SecItemDelete(const KeychainAttributes& query) override {
        auto wanted = query;
        if (has("reads queries loosely")) {
            wanted.kSecAttrAccessGroup = query.kSecAttrAccessGroup.value_or("");
        }
        return real->SecItemDelete(wanted);
    }

    std::filesystem::path folder;
};

struct BrokenTrust final : Broken<Trust> {
    using Broken::Broken;

    std::optional<std::string> externalPublicKey(std::string_view certificate) const override {
        return std::string{certificate};
    }

    std::optional<CertificateValidity> validity(std::string_view certificate, const std::string&) const override {
        return real->validity(certificate, "a.example");
    }

    std::string sha256(std::string_view) const override { return real->sha256("fixed"); }

    std::string base64(std::string_view bytes) const override { return real->base64(bytes); }
};

using Task = std::shared_ptr<UrlSessionTask>;

struct CannotCancel final : UrlSessionTask {
    void cancel() override {}
};

struct AcceptsAll final : UrlSessionDelegate {
    void didReceiveChallenge(const ServerTrust*, std::function<void(AuthChallengeDisposition)> answer) override {
        answer(AuthChallengeDisposition::useCredential);
    }

    bool judgesServerTrust() const override { return true; }

    void didSendBodyData(const Task&, std::uint64_t, std::uint64_t) override {}
};

/// A serial queue in name: each block has a thread of its own.
struct ManyThreads final : DispatchQueue {
    void async(std::function<void()> block) override {
        const std::scoped_lock lock{mutex};
        threads.emplace_back([act = std::move(block)] {
            std::this_thread::sleep_for(std::chrono::milliseconds{1});
            act();
        });
    }

    std::mutex mutex;
    std::list<std::jthread> threads;
};

struct BrokenSession final : Broken<UrlSession> {
    using Broken::Broken;

    Task dataTask(UrlRequest request, UrlCompletion completion) override {
        if (has("never answers")) {
            return nullptr;
        }
        if (has("sends twice")) {
            real->dataTask(request, [](const auto&) {});
        }
        if (has("changes requests")) {
            request.headers.clear();
            request.url = request.url.starts_with("http:") ? "https" + request.url.substr(4) : request.url;
            request.method = request.method == "PUT" ? "POST" : request.method;
        }
        const auto url = request.url;
        // The answer may come after the session has gone.
        auto task = real->dataTask(std::move(request), [name = fault, url, completion](UrlOutcome outcome) {
            if (name == "answers twice") {
                completion(outcome);
            }
            if (!outcome && name == "reveals addresses") {
                outcome.error().text += url;
            }
            if (!outcome && name == "takes half an answer") {
                outcome = UrlResponse{.status = 200, .headers = {}, .body = "half"};
            }
            completion(std::move(outcome));
        });
        return has("does not cancel") ? std::make_shared<CannotCancel>() : task;
    }

    void forgetCookies() override { real->forgetCookies(); }
};

struct BrokenSessions final : Broken<UrlSessions> {
    using Broken::Broken;

    std::shared_ptr<UrlSession> make(UrlSessionConfiguration configuration,
                                     std::shared_ptr<UrlSessionDelegate> delegate,
                                     std::shared_ptr<DispatchQueue> queue) override {
        if (has("has limits of its own")) {
            configuration.responseLimit = std::size_t{1} << 40;
            configuration.requestTimeout = std::chrono::seconds{60};
        } else if (has("ignores delegate and queue")) {
            delegate = nullptr;
            queue = nullptr;
        } else if (has("trusts every server")) {
            delegate = std::make_shared<AcceptsAll>();
        } else if (has("answers side by side")) {
            queue = std::make_shared<ManyThreads>();
        }
        if (has("is the same for all")) {
            return kept ? kept : kept = real->make(std::move(configuration), std::move(delegate), std::move(queue));
        }
        return std::make_shared<BrokenSession>(
            real->make(std::move(configuration), std::move(delegate), std::move(queue)), fault);
    }

    std::shared_ptr<UrlSession> kept;
};

struct BrokenBundle final : Bundle {
    std::optional<std::string> bundleIdentifier() const override { return "com.example.app"; }

    std::optional<std::string> infoText(std::string_view) const override { return "com.example.other"; }

    std::optional<std::filesystem::path> pathForResource(std::string_view name, std::string_view) const override {
        return name;
    }

    std::optional<PropertyValue> propertyList(std::string_view) const override { return PropertyValue{"text"}; }

    std::string localizedString(std::string_view, std::string_view) const override { return ""; }
};

struct BrokenBundles final : Broken<Bundles> {
    using Broken::Broken;

    std::shared_ptr<Bundle> main() override { return std::make_shared<BrokenBundle>(); }

    std::shared_ptr<Bundle> withIdentifier(std::string_view) override { return main(); }
};

struct BrokenDevice final : Broken<Device> {
    using Broken::Broken;

    std::string systemVersion() override { return real->systemVersion(); }

    std::optional<std::string> identifierForVendor() override { return std::to_string(++calls); }

    std::vector<InterfaceAddress> interfaceAddresses() override {
        return {{.interfaceName = "en0", .family = AddressFamily::ipv6, .numericHost = "192.0.2.7"}};
    }

    std::string machine() override { return ""; }

    int calls = 0;
};

struct BrokenWorkspace final : Broken<Workspace> {
    using Broken::Broken;

    void open(const std::string&) override { throw std::runtime_error{"there is no browser"}; }

    void vibrate() override {}
};

struct BrokenFonts final : Broken<Fonts> {
    using Broken::Broken;

    bool isInstalled(std::string_view) override { return true; }

    Size measure(std::string_view text, std::string_view name, double pointSize, double) override {
        return real->measure(text, name, pointSize, 1e6);
    }
};

/// A source of pictures that loses some of the camera's calls.
struct BrokenSource final : Broken<FrameSource> {
    using Broken::Broken;

    void start(std::shared_ptr<FrameSink> sink) override {
        if (!has("sees nothing")) {
            real->start(std::move(sink));
        }
    }

    void stop() override {
        if (!has("stays on")) {
            real->stop();
        }
    }
};

struct BrokenClock final : Clock {
    Time now() const override { return real.now() - std::chrono::milliseconds{++calls % 100 == 0 ? 1 : 0}; }

    bool advancesByItself() const override { return true; }

    void onAdvance(std::function<void()>) override {}

    SteadyClock real;
    mutable int calls = 0;
};

} // namespace kivo::platform::broken
