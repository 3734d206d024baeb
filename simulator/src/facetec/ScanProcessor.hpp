#pragma once

#include <kivo/platform/FaceTec.hpp>
#include <kivo/simulator/ScanScript.hpp>

#include <functional>
#include <memory>
#include <string>

namespace kivo::simulator {

/// Takes the server's verdict on a scan from a processor.
class ScanVerdict {
public:
    virtual ~ScanVerdict() = default;

    virtual bool proceed(const std::string& blob) = 0;
    virtual void cancel() = 0;
    virtual void setProgress(float progress) = 0;
    virtual void setMessage(const platform::AttributedText& message) = 0;
};

/// The status of a finished scan, and the sides of a card that the scan shows.
struct Scan {
    int status = 0;
    bool hasFront = true;
    bool hasBack = true;
};

/// The kind of scan that a session makes, and the calls of the processor that waits for the scan.
class ScanProcessor {
public:
    /// The vendor's numbers for the endings that a person can choose.
    struct Numbers {
        int cancelled;
        int timeout;
        int contextSwitch;
        int cameraRefused;
    };

    ScanRecord::Kind kind;
    Numbers numbers;
    std::function<void(const Scan& scan, const ScanScript& script, std::shared_ptr<ScanVerdict> verdict)> process;
    std::function<void()> done;
};

std::unique_ptr<ScanProcessor>
makeScanProcessor(std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate> faceScanProcessor);
std::unique_ptr<ScanProcessor>
makeScanProcessor(std::shared_ptr<platform::FaceTecIDScanProcessorDelegate> idScanProcessor);

} // namespace kivo::simulator
