#include "PlatformCheck.hpp"

#include <kivo/simulator/Reachability.hpp>

#include <gtest/gtest.h>

#include <fstream>
#include <list>
#include <stdexcept>
#include <thread>
#include <utility>

/// The checks of the seam: sound services pass them, and each of many broken ones is found.
namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using namespace platform;

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
        auto added = item;
        if (has("ends values at a zero")) {
            added.kSecValueData = item.kSecValueData->c_str();
        }
        const auto status = has("forgets") ? errSecSuccess : real->SecItemAdd(added);
        if (has("writes values down")) {
            std::ofstream{folder / "copy"} << *item.kSecValueData;
        }
        return status;
    }

    OSStatus SecItemCopyMatching(const KeychainAttributes& query, std::string* result) override {
        auto wanted = query;
        if (has("gives another item's value")) {
            wanted.kSecAttrAccessGroup.reset();
            wanted.kSecAttrService.reset();
        }
        wanted.kSecReturnData = wanted.kSecReturnData || has("tells unasked");
        return real->SecItemCopyMatching(wanted, result);
    }

    OSStatus SecItemUpdate(const KeychainAttributes& query, const KeychainAttributes& change) override {
        auto wanted = query;
        if (has("ignores the accessibility")) {
            wanted.kSecAttrAccessible.reset();
        }
        return has("forgets changes") ? real->SecItemCopyMatching(query, nullptr) : real->SecItemUpdate(wanted, change);
    }

    OSStatus SecItemDelete(const KeychainAttributes& query) override {
        auto wanted = query;
        if (has("misses items")) {
            wanted.kSecAttrAccessGroup = query.kSecAttrAccessGroup.value_or("");
        }
        return real->SecItemDelete(wanted);
    }

    std::filesystem::path folder;
};

struct BrokenTrust final : Broken<Trust> {
    using Broken::Broken;

    std::optional<std::string> externalPublicKey(std::string_view certificate) const override {
        return has("gives the certificate for its key") ? std::string{certificate}
                                                        : real->externalPublicKey(certificate);
    }

    std::optional<CertificateValidity> validity(std::string_view certificate, const std::string& host) const override {
        return real->validity(certificate, has("names every host") ? "a.example" : host);
    }

    std::string sha256(std::string_view bytes) const override {
        return real->sha256(has("digests wrongly") ? "fixed" : bytes);
    }

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
        threads.emplace_back([act = std::move(block)] {
            std::this_thread::sleep_for(1ms);
            act();
        });
    }

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
        if (has("follows http") && request.url.starts_with("http:")) {
            request.url.insert(4, "s");
        }
        if (has("drops headers")) {
            request.headers.clear();
        }
        if (has("changes methods") && request.method == "PUT") {
            request.method = "POST";
        }
        const auto url = request.url;
        auto task = real->dataTask(std::move(request), [this, url, completion](UrlOutcome outcome) {
            if (has("answers twice")) {
                completion(outcome);
            }
            if (!outcome && has("reveals addresses")) {
                outcome.error().text += url;
            }
            if (!outcome && has("takes half an answer")) {
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
        if (has("has no bound")) {
            configuration.responseLimit = std::size_t{1} << 40;
        }
        if (has("has one time limit")) {
            configuration.requestTimeout = 60s;
        }
        if (has("asks no delegate")) {
            delegate = nullptr;
        } else if (has("trusts every server")) {
            delegate = std::make_shared<AcceptsAll>();
        }
        if (has("answers on another queue")) {
            queue = nullptr;
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

struct BrokenBundle final : Broken<Bundle> {
    using Broken::Broken;

    std::optional<std::string> bundleIdentifier() const override { return real->bundleIdentifier(); }

    std::optional<std::string> infoText(std::string_view key) const override {
        return has("lies") ? "com.example.other" : real->infoText(key);
    }

    std::optional<std::filesystem::path> pathForResource(std::string_view name, std::string_view type) const override {
        return has("leaves its folder") ? std::filesystem::path{name} : real->pathForResource(name, type);
    }

    std::optional<PropertyValue> propertyList(std::string_view name) const override {
        return has("reads texts only") ? PropertyValue{"text"} : real->propertyList(name);
    }

    std::string localizedString(std::string_view key, std::string_view table) const override {
        return has("has no texts") ? "" : real->localizedString(key, table);
    }
};

struct BrokenBundles final : Broken<Bundles> {
    using Broken::Broken;

    std::shared_ptr<Bundle> main() override { return std::make_shared<BrokenBundle>(real->main(), fault); }

    std::shared_ptr<Bundle> withIdentifier(std::string_view identifier) override {
        return real->withIdentifier(identifier);
    }
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
    Time now() const override { return real.now() - (++calls % 100 == 0 ? 1ms : 0ms); }

    bool advancesByItself() const override { return true; }

    void onAdvance(std::function<void()>) override {}

    SteadyClock real;
    mutable int calls = 0;
};

template <class Faulty, class Service>
void breakOne(std::shared_ptr<Service>& service, std::string_view fault) {
    service = std::make_shared<Faulty>(std::move(service), fault);
}

void breakSeam(Services& services, const Setting& setting, const std::string& seam, std::string_view fault) {
    if (seam == "Services") {
        services.fonts = nullptr;
    } else if (seam == "MainQueue") {
        breakOne<BrokenQueue>(services.mainQueue, fault);
    } else if (seam == "Keychain") {
        auto keychain = std::make_shared<BrokenKeychain>(services.keychain, fault);
        keychain->folder = setting.dataFolder;
        services.keychain = keychain;
    } else if (seam == "Trust") {
        breakOne<BrokenTrust>(services.trust, fault);
    } else if (seam == "UrlSession") {
        breakOne<BrokenSessions>(services.urlSessions, fault);
    } else if (seam == "ReachabilityService") {
        // A network of its own, which nothing switches.
        auto network = std::make_shared<simulator::Reachability>(true);
        network->failGetFlags(fault == "has no flags" ? 5 : 0);
        network->failSetCallback(fault == "takes no callback" ? 5 : 0);
        services.reachability = network;
    } else if (seam == "Bundle") {
        breakOne<BrokenBundles>(services.bundles, fault);
    } else if (seam == "Device") {
        breakOne<BrokenDevice>(services.device, fault);
    } else if (seam == "Workspace") {
        breakOne<BrokenWorkspace>(services.workspace, fault);
    } else if (seam == "Fonts") {
        breakOne<BrokenFonts>(services.fonts, fault);
    }
}

/// The services of this platform, with one fault.
ServicesUnderTest broken(const std::string& seam, const std::string& fault) {
    auto under = builtPlatform();
    under.patience = 300ms;
    under.make = [=, count = std::make_shared<int>(0), make = under.make](Setting setting) {
        if (fault == "has data of its own") {
            setting.dataFolder /= std::to_string(++*count);
        }
        auto services = make(setting);
        breakSeam(services, setting, seam, fault);
        return services;
    };
    under.makeCamera = [fault](auto source) {
        return makeFrameCamera(std::make_shared<BrokenSource>(std::move(source), fault));
    };
    if (seam == "DispatchQueue") {
        under.makeSerialQueue = [](const auto&) { return std::make_shared<ManyThreads>(); };
    }
    if (seam == "Clock") {
        under.makeClock = [] { return std::make_shared<BrokenClock>(); };
    }
    if (seam == "NotificationCenter") {
        under.post = [](auto&, const auto&) {};
    }
    if (seam == "Text") {
        under.characters = [](std::string_view text) { return text::characters(text.substr(0, 1)); };
    }
    if (seam == "Url") {
        under.parseUrl = [](std::string_view text) { return parseUrl(text.substr(0, text.find(':', 6))); };
    }
    return under;
}

struct Fault {
    std::string seam;
    std::string name;
    /// How the promises begin that the fault breaks.
    std::vector<std::string> broken;
};

const Fault faults[] = {
    {"Services", "lack one", {"are complete"}},
    {"MainQueue", "runs blocks out of order", {"runs blocks later, in the order"}},
    {"MainQueue", "runs blocks on the caller's stack", {"runs blocks later, in the order"}},
    {"MainQueue", "is current everywhere", {"takes blocks of every thread"}},
    {"MainQueue", "drops delayed blocks", {"runs a delayed block"}},
    {"MainQueue", "hurries", {"runs a delayed block"}},
    {"DispatchQueue", "has many threads", {"runs blocks in order", "runs one block at a time"}},
    {"Clock", "goes back", {"never goes back"}},
    {"NotificationCenter", "posts nothing", {"calls the observers"}},
    {"Text", "loses characters", {"counts characters"}},
    {"Url", "cuts ports off", {"names the server", "refuses a text"}},
    {"Keychain", "forgets", {"adds, finds", "serves many threads"}},
    {"Keychain", "forgets changes", {"adds, finds"}},
    {"Keychain", "gives another item's value", {"keeps items apart"}},
    {"Keychain", "misses items", {"takes an absent attribute"}},
    {"Keychain", "ignores the accessibility", {"matches and changes"}},
    {"Keychain", "tells unasked", {"gives a value only"}},
    {"Keychain", "ends values at a zero", {"keeps every byte"}},
    {"Keychain", "has data of its own", {"keeps every change", "shows each change"}},
    {"Keychain", "writes values down", {"leaves no value"}},
    {"Trust", "digests wrongly", {"digests with"}},
    {"Trust", "gives the certificate for its key", {"gives keys"}},
    {"Trust", "names every host", {"tells whom"}},
    {"UrlSession", "never answers", {"reports every HTTP answer"}},
    {"UrlSession", "answers twice", {"completes each request once"}},
    {"UrlSession", "answers side by side", {"completes each request once"}},
    {"UrlSession", "answers on another queue", {"completes on the given queue"}},
    {"UrlSession", "takes half an answer", {"refuses an answer"}},
    {"UrlSession", "reveals addresses", {"refuses an answer"}},
    {"UrlSession", "has no bound", {"bounds body and head"}},
    {"UrlSession", "has one time limit", {"keeps the shortest"}},
    {"UrlSession",
     "trusts every server",
     {"sends nothing to a server that it cannot", "sends nothing to a server that the delegate",
      "waits for the delegate"}},
    {"UrlSession", "sends twice", {"sends no request twice"}},
    {"UrlSession", "drops headers", {"sends the request as it is"}},
    {"UrlSession", "follows http", {"sends over https only"}},
    {"UrlSession", "changes methods", {"follows redirects with"}},
    {"UrlSession", "is the same for all", {"keeps cookies", "cancels its requests"}},
    {"UrlSession", "does not cancel", {"cancels before", "reports no answer of a request"}},
    {"UrlSession", "asks no delegate", {"asks the delegate once", "tells the delegate"}},
    {"Bundle", "lies", {"answers from the information"}},
    {"Bundle", "leaves its folder", {"finds its resources"}},
    {"Bundle", "reads texts only", {"reads every type"}},
    {"Bundle", "has no texts", {"gives texts"}},
    {"Bundle", "has no pictures", {"reads colours"}},
    {"Device", "is a stranger", {"keeps its identifier", "tells the system's version", "lists addresses"}},
    {"Workspace", "complains", {"returns at once"}},
    {"Fonts", "have and break nothing", {"take no typeface", "measure a text"}},
    {"ReachabilityService", "has no flags", {"reads the flags"}},
    {"ReachabilityService", "takes no callback", {"holds a callback's info"}},
    {"ReachabilityService",
     "sees another network",
     {"tells each change", "tells a change between", "hands target and info", "makes no call"}},
    {"Camera", "sees nothing", {"reads the newest", "shows its newest"}},
    {"Camera", "stays on", {"delivers nothing", "ends with its camera"}},
};

std::vector<std::string> seams() {
    std::vector<std::string> all;
    for (const auto& promise : promises()) {
        if (all.empty() || all.back() != promise.seam) {
            all.push_back(promise.seam);
        }
    }
    return all;
}

std::string text(const Finding& finding) {
    auto all = finding.promise.text;
    for (const auto& detail : finding.details) {
        all += "\n  " + detail;
    }
    return all;
}

class PlatformCheck : public testing::TestWithParam<std::string> {};

TEST_P(PlatformCheck, IsPassedBySoundServices) {
    for (const auto& finding : check(builtPlatform(), [](const auto& promise) { return promise.seam == GetParam(); })) {
        EXPECT_NE(finding.result, Result::broken) << text(finding);
    }
}

TEST_P(PlatformCheck, FindsEachFault) {
    // Nothing can stand in for the library's own loop.
    bool isTried = GetParam() == "RunLoop";
    for (const auto& fault : faults) {
        if (fault.seam != GetParam()) {
            continue;
        }
        isTried = true;
        for (const auto& beginning : fault.broken) {
            const auto findings = check(broken(fault.seam, fault.name), [&](const auto& promise) {
                return promise.seam == fault.seam && promise.text.starts_with(beginning);
            });
            ASSERT_EQ(findings.size(), 1U) << beginning;
            EXPECT_NE(findings.front().result, Result::kept) << fault.name << ": " << text(findings.front());
        }
    }
    EXPECT_TRUE(isTried);
}

INSTANTIATE_TEST_SUITE_P(Seams, PlatformCheck, testing::ValuesIn(seams()), [](const auto& each) { return each.param; });

} // namespace
} // namespace kivo::check
