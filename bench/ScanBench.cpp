// Time and memory of a face scan of 10 MiB through the processor, beside a bare libcurl post of the same bytes to the
// same simulated service, each over a new connection and in a process of its own.
//
// usage: kivo-bench-scan [ROUNDS]
#include "Configuration/session/StoredSession.hpp"
#include "Measuring.hpp"
#include "services/acquisition/facemap/facetec/ScanProcessor.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <curl/curl.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kivo;
using namespace std::chrono_literals;
using bench::giveUp;

/// In bytes; `main` sets the number once.
std::size_t scanSize = std::size_t{10} << 20;

class Scan final : public platform::FaceTecSessionResult {
public:
    int status() const override { return 0; }

    std::optional<std::string> sessionId() const override { return "bench"; }

    const std::optional<std::string>& faceScanBase64() const override { return scan_; }

    const std::vector<std::string>& auditTrailCompressedBase64() const override { return images_; }

    const std::vector<std::string>& lowQualityAuditTrailCompressedBase64() const override { return images_; }

    std::string description() const override { return "bench"; }

private:
    const std::optional<std::string> scan_ = std::string(scanSize, 'A');
    const std::vector<std::string> images_{"AAAA"};
};

class Waiting final : public platform::FaceTecFaceScanResultCallback {
public:
    std::optional<bool> isAccepted;

    bool onFaceScanResultProceedToNextStep(const std::string& /*scanResultBlob*/) override {
        isAccepted = true;
        return true;
    }

    void onFaceScanResultCancel() override { isAccepted = false; }

    void onFaceScanUploadProgress(float /*progress*/) override {}

    void onFaceScanUploadMessageOverride(const platform::AttributedText& /*message*/) override {}
};

void postThroughProcessor(const std::shared_ptr<Scan>& scan) {
    const auto waiting = std::make_shared<Waiting>();
    const auto processor = std::make_shared<EnrollmentProcessor>(std::weak_ptr<FaceScanScreen>{});
    processor->processSessionWhileFaceTecSDKWaits(scan, waiting);
    platform::RunLoop::main()->runUntil([&] { return waiting->isAccepted.has_value(); }, 60s);
    if (!waiting->isAccepted.value_or(false)) {
        giveUp("the service did not take the scan");
    }
}

std::size_t collect(char* bytes, std::size_t size, std::size_t count, void* target) {
    static_cast<std::string*>(target)->append(bytes, size * count);
    return size * count;
}

/// Makes the JSON and posts it, as a program without the SDK would.
void postBare(const Scan& scan, const std::string& endpoint, const std::string& trustedCertificates) {
    std::string body = R"({"faceScan":")";
    body.reserve(scanSize + 256);
    body += *scan.faceScanBase64();
    body += R"(","auditTrailImage":"AAAA","lowQualityAuditTrailImage":"AAAA","externalDatabaseRefID":""})";
    std::string answer;
    auto* const curl = curl_easy_init();
    curl_slist* headers = nullptr;
    for (const char* line :
         {"Content-Type: application/json", "X-Device-Key: simulated-device-key", "User-Agent: bench", "Expect:"}) {
        headers = curl_slist_append(headers, line);
    }
    curl_easy_setopt(curl, CURLOPT_URL, (endpoint + "/enrollment-3d").c_str());
    curl_easy_setopt(curl, CURLOPT_CAINFO, trustedCertificates.c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
    const auto code = curl_easy_perform(curl);
    curl_easy_cleanup(curl);
    curl_slist_free_all(headers);
    if (code != CURLE_OK || !answer.contains("\"pass\"")) {
        giveUp("the service did not take the bare post");
    }
}

/// An amount of memory in this process's status, in bytes.
double ownMemory(const std::string& name) {
    std::ifstream status{"/proc/self/status"};
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name + ":")) {
            return std::stod(line.substr(name.size() + 1)) * 1024;
        }
    }
    giveUp("this system does not tell a process about its memory");
}

struct Measured {
    double milliseconds = 0;
    /// Peak of memory above idle, as a multiple of the scan's size.
    double peak = 0;
};

/// Posts once to measure the memory, then `rounds` times to measure the time.
Measured measure(int rounds, const std::function<void(const std::shared_ptr<Scan>&)>& post) {
    std::ofstream{"/proc/self/clear_refs"} << "5"; // resets the peak
    const double idle = ownMemory("VmRSS");
    const auto scan = std::make_shared<Scan>();
    post(scan);
    Measured measured{.peak = (ownMemory("VmHWM") - idle) / static_cast<double>(scanSize)};
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        times.push_back(bench::timed([&] { post(scan); }));
    }
    measured.milliseconds = bench::median(times);
    return measured;
}

void installPlatform(const std::string& folder, const std::string& trustedCertificates) {
    auto services =
        platform::linuxServices({.mainBundle = {}, .dataFolder = folder, .trustedCertificates = trustedCertificates});
    services.reachability = std::make_shared<simulator::Reachability>();
    services.faceTec = std::make_shared<simulator::FaceTec>();
    platform::install(services);
    KivoSDK::setLogLevel(LogLevel::error);
}

/// The measured process. Its server is in the other process, and its joined session in the folder.
int measureHere(const std::vector<std::string>& arguments) {
    const auto& which = arguments[0];
    const int rounds = std::stoi(arguments[1]);
    const auto& trustedCertificates = arguments[3];
    scanSize = std::stoul(arguments[4]);
    installPlatform(arguments[2], trustedCertificates);
    const auto endpoint = Config::facemapBaseURL();
    const auto measured = measure(rounds, [&](const std::shared_ptr<Scan>& scan) {
        if (which == "sdk") {
            postThroughProcessor(scan);
        } else {
            postBare(*scan, endpoint, trustedCertificates);
        }
    });
    std::printf("%f %f\n", measured.milliseconds, measured.peak);
    return EXIT_SUCCESS;
}

Measured measureElsewhere(const std::string& which, int rounds, const std::string& folder,
                          const std::string& trustedCertificates) {
    const auto command = std::filesystem::read_symlink("/proc/self/exe").string() + " measure " + which + ' ' +
                         std::to_string(rounds) + ' ' + folder + ' ' + trustedCertificates + ' ' +
                         std::to_string(scanSize);
    Measured measured;
    auto* const output = popen(command.c_str(), "r");
    const bool isRead =
        output != nullptr && std::fscanf(output, "%lf %lf", &measured.milliseconds, &measured.peak) == 2;
    if (output == nullptr || pclose(output) != 0 || !isRead) {
        giveUp("the measured process failed");
    }
    return measured;
}

void join(const simulator::IdentityService& service) {
    const auto page = service.joinPage();
    Deployment::install({.joinPages = {page, page, page, page}});
    std::promise<bool> joined;
    KivoSDK::load("BENCH", "18")
        ->join("123456", std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face"),
               [&](const IdvOutcome& outcome) { joined.set_value(outcome.has_value()); });
    if (!joined.get_future().get()) {
        giveUp("the join failed");
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 7 && std::string_view{argv[1]} == "measure") {
        return measureHere({argv + 2, argv + argc});
    }
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 9;
    const bench::TemporaryFolder folder;
    const simulator::IdentityService service;
    const auto trusted = service.trustedCertificates().string();
    installPlatform(folder.path(), trusted);
    join(service);
    Measured sdk;
    Measured bare;
    for (const std::size_t kibibytes : {40U, 160U, 640U, 2560U, 10240U}) {
        scanSize = kibibytes << 10;
        sdk = measureElsewhere("sdk", rounds, folder.path(), trusted);
        bare = measureElsewhere("bare", rounds, folder.path(), trusted);
        bench::point("bodies", "SDK", static_cast<double>(kibibytes), sdk.milliseconds);
        bench::point("bodies", "bare libcurl", static_cast<double>(kibibytes), bare.milliseconds);
    }
    if (!service.violations().empty()) {
        giveUp(service.violations().front());
    }
    bench::found("a body of 10 MiB beside a bare post", sdk.milliseconds / bare.milliseconds);
    bench::found("memory of a body of 10 MiB beyond a bare post", sdk.peak - bare.peak);
    std::printf("a face scan of 10 MiB, median of %d, and the peak of memory above idle with the library's own copy\n"
                "  processor     %8.1f ms  %5.2f x the scan\n"
                "  bare libcurl  %8.1f ms  %5.2f x the scan\n"
                "  ratio         %8.2f\n",
                rounds, sdk.milliseconds, sdk.peak, bare.milliseconds, bare.peak, sdk.milliseconds / bare.milliseconds);
    return EXIT_SUCCESS;
}
