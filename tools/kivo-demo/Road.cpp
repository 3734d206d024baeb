#include "Road.hpp"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace demo {
namespace {

using namespace std::chrono_literals;
using namespace kivo;
using Call = std::function<void(IdvCompletion)>;

constexpr auto patience = 75s;

/// The answers to one call. They arrive on the transport's thread and are read on the main one.
struct Answers {
    std::mutex mutex;
    int count = 0;
    IdvOutcome last = std::unexpected{ResponseCode::NO_RESPONSE};
};

void describe(Step& step, const IdvOutcome& outcome) {
    if (outcome) {
        step.outcome = IdvEventsHelper::eventName((*outcome)->responseType());
        step.detail = (*outcome)->data();
    } else {
        step.outcome = name(outcome.error());
        step.detail = message(outcome.error());
    }
}

class Walker {
public:
    Walker(simulator::IdentityService& service, const std::function<void(const Step&)>& report, bool faulty)
        : service_{service}
        , report_{report}
        , faulty_{faulty} {}

    void step(std::string name, std::string_view expected, const Call& call) {
        Step step{
            .name = std::move(name), .outcome = "", .detail = "", .expected = faulty_ ? "" : std::string{expected}};
        const auto before = service_.requests().size();
        const auto& answers = answers_.emplace_back(std::make_shared<Answers>());
        const auto start = std::chrono::steady_clock::now();
        call([answers](const IdvOutcome& outcome) {
            {
                const std::scoped_lock lock{answers->mutex};
                ++answers->count;
                answers->last = outcome;
            }
            platform::RunLoop::main()->async([] {});
        });
        platform::RunLoop::main()->runUntil(
            [&] {
                const std::scoped_lock lock{answers->mutex};
                return answers->count > 0;
            },
            patience);
        step.took = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
        {
            const std::scoped_lock lock{answers->mutex};
            step.answers = answers->count;
            if (step.answers > 0) {
                describe(step, answers->last);
            }
        }
        const auto requests = service_.requests();
        for (auto i = before; i < requests.size(); ++i) {
            step.bytesSent += requests[i].body.size();
        }
        allAsExpected_ = allAsExpected_ && step.asExpected();
        report_(step);
    }

    /// Asked at the very end, so that a late second answer is noticed.
    bool allAsExpected() const {
        return allAsExpected_ && std::ranges::all_of(answers_, [](const auto& answers) {
                   const std::scoped_lock lock{answers->mutex};
                   return answers->count == 1;
               });
    }

private:
    simulator::IdentityService& service_;
    const std::function<void(const Step&)>& report_;
    const bool faulty_;
    bool allAsExpected_ = true;
    std::vector<std::shared_ptr<Answers>> answers_;
};

} // namespace

bool walk(const Options& options, simulator::IdentityService& service, const std::function<void(const Step&)>& report) {
    const auto session = KivoSDK::load("DEMO", options.version);
    if (!session) {
        return false;
    }
    const auto config =
        std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT,ID_CARD", "P6M", "0.8", "UTO", "face");
    const auto image = std::string(std::size_t{48} * 1024, 'A');

    Walker walker{service, report, !options.isSmooth()};
    walker.step("join with a wrong code", "STATUS_INVALID_ACTIVATION_CODE",
                [&](auto response) { session->join("000000", config, response); });
    walker.step("join", "JOIN_SESSION", [&](auto response) { session->join("123456", config, response); });
    walker.step("update", "UPDATE_SESSION",
                [&](auto response) { session->update("inform", "The person has the document at hand", response); });
    walker.step("upload an image", "UPLOAD_DOCUMENT",
                [&](auto response) { session->upload(AcquisitionObject::documentMainImage, image, response); });
    walker.step("status", "SESSION_STATUS", [&](auto response) { session->status(response); });
    walker.step("commit", "COMMIT_SESSION", [&](auto response) { session->commit(response); });
    session->reset();
    walker.step("status after reset", "INVALID_STATUS_SESSION", [&](auto response) { session->status(response); });
    return walker.allAsExpected();
}

} // namespace demo
