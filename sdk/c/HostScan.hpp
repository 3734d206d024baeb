#pragma once

#include <kivo/c/face_scanner.h>
#include <kivo/platform/FaceTec.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <string>
#include <variant>

namespace kivo::c {

/// The SDK's side of a scan, which takes the results.
using ScanDelegate = std::variant<std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate>,
                                  std::shared_ptr<platform::FaceTecIDScanProcessorDelegate>>;

/// The screen that stands for the vendor's screens: the scan begins when the screen appears. Main thread.
class HostScanScreen final : public platform::ViewController {
public:
    HostScanScreen(const kivo_face_scanner& scanner, ScanDelegate delegate, std::string sessionToken);

    void viewDidAppear(bool animated) override;
    void viewDidDisappear(bool animated) override;

private:
    kivo_face_scanner scanner_;
    ScanDelegate delegate_;
    std::string sessionToken_;
    std::weak_ptr<kivo_scan> scan_;
    bool hasBegun_ = false;
};

} // namespace kivo::c
