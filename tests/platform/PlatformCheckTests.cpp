#include "PlatformCheck.hpp"

#include "BrokenServices.hpp"

#include <kivo/simulator/Reachability.hpp>

#include <gtest/gtest.h>

#include <utility>

/// The checks of the seam: each of many broken services is found. The tool itself shows that sound ones pass.
namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using namespace platform;
using namespace platform::broken;

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
ServicesUnderTest servicesWith(const std::string& seam, const std::string& fault) {
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
    {"Keychain", "stores one of several", {"stores the values of several"}},
    {"Keychain",
     "reads queries loosely",
     {"keeps items apart", "takes an absent attribute", "matches and changes", "gives a value only"}},
    {"Keychain", "stores values carelessly", {"keeps every byte", "leaves no value"}},
    {"Keychain", "has data of its own", {"keeps every change", "shows each change"}},
    {"Trust", "trusts too easily", {"digests with", "gives keys", "tells whom"}},
    {"UrlSession", "never answers", {"reports every HTTP answer"}},
    {"UrlSession", "answers twice", {"completes each request once"}},
    {"UrlSession", "answers side by side", {"completes each request once"}},
    {"UrlSession", "takes half an answer", {"refuses an answer"}},
    {"UrlSession", "reveals addresses", {"refuses an answer"}},
    {"UrlSession", "has limits of its own", {"bounds body and head", "keeps the shortest"}},
    {"UrlSession",
     "trusts every server",
     {"sends nothing to a server that it cannot", "sends nothing to a server that the delegate",
      "waits for the delegate"}},
    {"UrlSession", "sends twice", {"sends no request twice"}},
    {"UrlSession",
     "changes requests",
     {"sends the request as it is", "sends over https only", "follows redirects with"}},
    {"UrlSession", "is the same for all", {"keeps cookies", "cancels its requests"}},
    {"UrlSession", "does not cancel", {"cancels before", "reports no answer of a request"}},
    {"UrlSession",
     "ignores delegate and queue",
     {"asks the delegate once", "tells the delegate", "completes on the given queue"}},
    {"Bundle",
     "answers the same whatever its folder holds",
     {"answers from the information", "is empty", "finds its resources", "reads every type", "gives texts",
      "reads colours"}},
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

TEST_P(PlatformCheck, FindsEachFault) {
    // Nothing can stand in for the library's own loop.
    bool isTried = GetParam() == "RunLoop";
    for (const auto& fault : faults) {
        if (fault.seam != GetParam()) {
            continue;
        }
        isTried = true;
        for (const auto& beginning : fault.broken) {
            const auto findings = check(servicesWith(fault.seam, fault.name), [&](const auto& promise) {
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
