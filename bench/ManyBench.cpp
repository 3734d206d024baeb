// Many requests at once through the SDK, beside a loop around a bare multi handle that keeps as many requests under way
// as the SDK: six. The simulated service answers in a process of its own. Then the same requests through a proxy that
// offers HTTP/2, on one connection, beside a proxy that does not, on six.
//
// usage: kivo-bench-many [MOST]. The figures go to standard error: standard output is the SDK's, and is thrown away.
#include "BareCurl.hpp"
#include "BenchHost.hpp"
#include "Measuring.hpp"
#include "ProxyProcess.hpp"
#include "ServiceProcess.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/Url.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace kivo;
using namespace kivo::bench;

constexpr std::size_t underWay = 6;

/// The milliseconds until the callers have made their calls, and until all answers are there.
struct Times {
    double calls = 0;
    double answers = 0;
};

Times throughSdk(KivoAPI& session, int count) {
    Times times;
    times.answers = timed([&] {
        Answered all;
        std::atomic<int> left = count;
        times.calls = timed([&] {
            for (int i = 0; i < count; ++i) {
                session.status([&](const IdvOutcome& outcome) {
                    if (!outcome || --left == 0) {
                        all.tell(outcome.has_value());
                    }
                });
            }
        });
        all.await("one of many requests failed");
    });
    return times;
}

double bare(CURLM* multi, std::vector<std::unique_ptr<Handle>>& handles, const Post& post, int count) {
    return timed([&] {
        std::map<CURL*, Handle*> owners;
        int begun = 0;
        int ended = 0;
        for (; begun < count && owners.size() < handles.size(); ++begun) {
            auto* const handle = handles[owners.size()].get();
            owners[handle->prepare(post)] = handle;
        }
        for (const auto& [easy, handle] : owners) {
            curl_multi_add_handle(multi, easy);
        }
        while (ended < count) {
            int number = 0;
            curl_multi_perform(multi, &number);
            while (const auto* const message = curl_multi_info_read(multi, &number)) {
                auto* const easy = message->easy_handle;
                if (message->data.result != CURLE_OK || !owners[easy]->isAnswered()) {
                    giveUp("the bare loop was refused");
                }
                curl_multi_remove_handle(multi, easy);
                ++ended;
                if (begun < count) {
                    curl_multi_add_handle(multi, owners[easy]->prepare(post));
                    ++begun;
                }
            }
            if (ended < count) {
                curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
            }
        }
    });
}

/// A URL session of the platform whose requests go through a proxy.
class ThroughProxy {
public:
    ThroughProxy(const Post& post, const std::string& protocols, const std::filesystem::path& folder)
        : post_{post}
        , proxy_{portOf(post), protocols, folder}
        , session_{
              platform::linuxServices(
                  {.mainBundle = {}, .dataFolder = folder, .trustedCertificates = proxy_.trustedCertificates.string()})
                  .urlSessions->make({.responseLimit = std::size_t{1024} * 1024})} {
        run(static_cast<int>(underWay));
    }

    /// The milliseconds until `count` requests have been answered.
    double run(int count) {
        return timed([&] {
            Answered all;
            std::atomic<int> left = count;
            for (int i = 0; i < count; ++i) {
                session_->dataTask(
                    {.url = "https://localhost:" + std::to_string(proxy_.port) + post_.url.substr(pathAt(post_)),
                     .method = "POST",
                     .headers = {{"Content-Type", "application/json; charset=UTF-8"}},
                     .body = post_.body},
                    [&](const platform::UrlOutcome& outcome) {
                        const bool isGood = outcome && outcome->body && outcome->body->contains("\"data\"");
                        if (!isGood || --left == 0) {
                            all.tell(isGood);
                        }
                    });
            }
            all.await("a request through the proxy failed");
        });
    }

private:
    static std::size_t pathAt(const Post& post) { return post.url.find('/', std::string_view{"https://"}.size()); }

    static std::uint16_t portOf(const Post& post) {
        const auto url = platform::parseUrl(post.url);
        return static_cast<std::uint16_t>(url ? url->port : 0);
    }

    const Post post_;
    ProxyProcess proxy_;
    std::shared_ptr<platform::UrlSession> session_;
};

void compareProtocols(const Post& post, const std::filesystem::path& folder, int most) {
    ThroughProxy http1{post, "http/1.1", folder};
    ThroughProxy http2{post, "h2", folder};
    std::fprintf(stderr, "\n%8s  %12s  %12s\n", "at once", "HTTP/1.1 us", "HTTP/2 us");
    for (int count = 10; count <= std::min(most, 1000); count *= 10) {
        std::vector<double> six;
        std::vector<double> one;
        for (int round = std::clamp(2000 / count, 5, 30); round > 0; --round) {
            six.push_back(http1.run(count) * 1000 / count);
            one.push_back(http2.run(count) * 1000 / count);
        }
        std::fprintf(stderr, "%8d  %12.1f  %12.1f\n", count, median(six), median(one));
    }
}

} // namespace

int main(int argc, char** argv) {
    // Forked before this process has threads.
    ServiceProcess service;
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        giveUp("cannot put the SDK's own lines aside");
    }
    const int most = argc > 1 ? std::atoi(argv[1]) : 10'000;
    const TemporaryFolder folder;
    const auto session = loadAgainst(service, folder.path());
    Answered joined;
    session->join("123456", std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face"),
                  [&](const IdvOutcome& outcome) { joined.tell(outcome.has_value()); });
    joined.await("the join failed");
    throughSdk(*session, static_cast<int>(underWay));

    const auto post = service.posts().back();
    auto* const multi = curl_multi_init();
    std::vector<std::unique_ptr<Handle>> handles;
    for (std::size_t i = 0; i < underWay; ++i) {
        handles.push_back(std::make_unique<Handle>(service.trustedCertificates));
    }
    bare(multi, handles, post, static_cast<int>(underWay));
    std::fprintf(stderr, "%8s  %12s  %12s  %12s  %6s\n", "at once", "SDK us", "bare us", "caller us", "ratio");
    double worst = 0;
    for (int count = 10; count <= most; count *= 10) {
        std::vector<double> sdkTimes;
        std::vector<double> callTimes;
        std::vector<double> bareTimes;
        for (int round = std::clamp(2000 / count, 3, 30); round > 0; --round) {
            const auto times = throughSdk(*session, count);
            sdkTimes.push_back(times.answers * 1000 / count);
            callTimes.push_back(times.calls * 1000 / count);
            bareTimes.push_back(bare(multi, handles, post, count) * 1000 / count);
        }
        const double sdk = median(sdkTimes);
        const double alone = median(bareTimes);
        worst = count >= 100 ? std::max(worst, sdk / alone) : worst;
        std::fprintf(stderr, "%8d  %12.1f  %12.1f  %12.1f  %6.2f\n", count, sdk, alone, median(callTimes), sdk / alone);
        point("many", "SDK", count, sdk);
        point("many", "bare multi handle", count, alone);
        point("many", "the caller's part", count, median(callTimes));
    }
    found("many at once beside a bare multi handle", worst);
    handles.clear();
    curl_multi_cleanup(multi);
    compareProtocols(post, folder.path(), most);
    return EXIT_SUCCESS;
}
