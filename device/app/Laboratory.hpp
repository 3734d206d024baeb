#pragma once

#include "ChosenReader.hpp"
#include "Host.hpp"
#include "HostLook.hpp"
#include "program/Temporary.hpp"

#include <kivo/device/MainLoop.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Passport.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <filesystem>
#include <memory>
#include <string>

namespace kivo::device::app {

/// A host on a phone, with everything simulated that the phone meets. Making a laboratory installs the process's
/// services, so there is one in a process. Main thread, after Qt's application was made.
class Laboratory {
public:
    /// `version` is the interface version that the host loads; data is stored in `folder`.
    Laboratory(const std::string& version, const program::TemporaryFolder& folder);
    Laboratory(const Laboratory&) = delete;
    Laboratory& operator=(const Laboratory&) = delete;
    ~Laboratory();

    /// Shows the host's start screen.
    void start();

    /// Returns to the start screen, and has the SDK's and the vendors' screens speak that language from then on: a name
    /// such as "de", or an empty text for the desktop's language.
    void speak(const std::string& language);

    std::shared_ptr<simulator::IdentityService> service;
    std::shared_ptr<simulator::Camera> camera;
    std::shared_ptr<simulator::ReadID> readID;
    std::shared_ptr<simulator::FaceTec> faceTec;
    /// What reads documents, and the passport on a simulated card reader; null where the document reader is not built.
    std::shared_ptr<ChosenReader> documentReaders;
    std::shared_ptr<simulator::Passport> passport;
    std::shared_ptr<platform::Window> window;
    std::shared_ptr<Host> host;

private:
    /// Adds the document reader, where it is built, to the simulated vendor's.
    void makeDocumentReaders(const program::TemporaryFolder& folder);

    const std::filesystem::path dataFolder_;
    /// The simulated card reader.
    std::shared_ptr<void> desk_;
    std::unique_ptr<device::MainLoop> mainLoop_;
};

} // namespace kivo::device::app
