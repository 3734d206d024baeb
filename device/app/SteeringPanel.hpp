#pragma once

#include "HostLook.hpp"

#include <kivo/KivoAPI.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <QGroupBox>
#include <QWidget>
#include <functional>
#include <memory>

namespace kivo::device::app {

/// The objects that the panel steers.
struct Steered {
    std::shared_ptr<platform::Window> window;
    std::shared_ptr<simulator::IdentityService> service;
    std::shared_ptr<simulator::Camera> camera;
    std::shared_ptr<simulator::ReadID> readID;
    std::shared_ptr<simulator::FaceTec> faceTec;
    std::shared_ptr<HostLook> look;
    /// Sets the theme of the screens that come later.
    std::function<void(const std::shared_ptr<ThemeCustomization>&)> setTheme;
};

/// The panel beside the phone. It sets the next behaviour of the service, the camera, the vendors and the phone.
class SteeringPanel final : public QWidget {
public:
    explicit SteeringPanel(Steered steered, QWidget* parent = nullptr);

private:
    void addService(QGroupBox& box);
    void addCamera(QGroupBox& box);
    void addVendors(QGroupBox& box);
    void addLook(QGroupBox& box);

    Steered steered_;
};

} // namespace kivo::device::app
