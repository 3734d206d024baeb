#include "platform/base/DiagnosticsRelay.hpp"

#include "platform/base/Process.hpp"

#include <cstdio>
#include <mutex>
#include <string>
#include <utility>

namespace kivo::platform {
namespace {

class StandardErrorDiagnostics final : public Diagnostics {
public:
    void report(std::string_view component, std::string_view text) override {
        std::string line{"kivo: "};
        line.append(component).append(": ").append(text).append("\n");
        std::fwrite(line.data(), 1, line.size(), stderr);
    }
};

class Relay final : public Diagnostics {
public:
    void report(std::string_view component, std::string_view text) override { receiver()->report(component, text); }

    void passOnTo(std::shared_ptr<Diagnostics> diagnostics) {
        const std::scoped_lock lock{mutex_};
        receiver_ = std::move(diagnostics);
    }

private:
    std::shared_ptr<Diagnostics> receiver() {
        const std::scoped_lock lock{mutex_};
        return receiver_;
    }

    std::mutex mutex_;
    std::shared_ptr<Diagnostics> receiver_ = std::make_shared<StandardErrorDiagnostics>();
};

const std::shared_ptr<Relay>& relay() {
    using Shared = std::shared_ptr<Relay>;
    return Process::current().part<Shared>([] { return new Shared{std::make_shared<Relay>()}; });
}

} // namespace

std::shared_ptr<Diagnostics> relayedDiagnostics() {
    return relay();
}

std::shared_ptr<Diagnostics> standardErrorDiagnostics() {
    return std::make_shared<StandardErrorDiagnostics>();
}

void relayTo(std::shared_ptr<Diagnostics> diagnostics) {
    // The relay itself would pass on to itself for ever.
    if (diagnostics && diagnostics != relay()) {
        relay()->passOnTo(std::move(diagnostics));
    }
}

} // namespace kivo::platform
