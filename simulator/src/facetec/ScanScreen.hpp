#pragma once

#include "ScanProcessor.hpp"
#include "VendorPage.hpp"

#include <kivo/platform/FaceTec.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The state that the vendor's library and its sessions share.
struct FaceTecMemory {
    /// How the initialisation ended; absent until it has.
    std::optional<int> initializationStatus;
    std::string successMessage;
    std::vector<std::shared_ptr<ScanRecord>> sessions;
    std::vector<std::string> violations;
};

/// The vendor's screen for one session.
class ScanScreen final : public platform::ViewController {
public:
    /// `look` holds the picture of the retry page; may be null.
    ScanScreen(std::unique_ptr<ScanProcessor> processor, ScanScript script, bool waitsForPerson,
               std::shared_ptr<platform::FaceTecCustomization> look, std::shared_ptr<ScanRecord> record,
               std::shared_ptr<FaceTecMemory> memory);
    ~ScanScreen() override;

    void viewDidAppear(bool animated) override;
    void viewDidDisappear(bool animated) override;

private:
    class Verdict;

    enum class Stage { made, scanning, waiting, judged, over };

    void scan();
    void endScan(int status);
    void handOver(int status);
    bool proceed(const std::string& blob);
    void askAgain();
    void showSuccess();
    void close();

    void enter(Stage stage);
    void show(VendorPage page, std::vector<Choice> choices);
    Choice ending(const char* name, VendorText title, int status);
    void later(std::chrono::nanoseconds delay, std::function<void()> step);
    /// A function that runs `step` unless the session has moved on.
    std::function<void()> ifStillHere(std::function<void()> step);
    VendorPage page(const std::string& message, std::shared_ptr<const platform::Image> picture = {}) const;

    std::shared_ptr<ScanProcessor> processor_;
    const ScanScript script_;
    const bool waitsForPerson_;
    const std::shared_ptr<platform::FaceTecCustomization> look_;
    const std::shared_ptr<ScanRecord> record_;
    const std::shared_ptr<FaceTecMemory> memory_;
    Stage stage_ = Stage::made;
    /// Grows with every stage, so that a timer or a tap of an earlier stage is recognised.
    int turn_ = 0;
    int retriesLeft_;
    bool isOnBackSide_ = false;
    std::shared_ptr<Verdict> verdict_;
    std::optional<VendorPage> page_;
};

} // namespace kivo::simulator
