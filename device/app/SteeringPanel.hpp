#pragma once

#include "HostLook.hpp"

#include <kivo/KivoAPI.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QTimer>
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
    /// Sets the theme of the screens that come later, and the host's colours.
    std::function<void(const std::shared_ptr<ThemeCustomization>&)> setLook;
};

/// The panel beside the phone. It sets the next behaviour of the service, the camera, the vendors and the phone, and
/// shows the behaviour that is still to come.
class SteeringPanel final : public QWidget {
public:
    explicit SteeringPanel(Steered steered, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void addService(QGroupBox& box);
    void addCamera(QGroupBox& box);
    void addVendors(QGroupBox& box);
    void addLook(QGroupBox& box);
    /// Shows which of the plans are not used up.
    void refresh();

    Steered steered_;
    QLabel* faults_ = nullptr;
    QComboBox* nextDocument_ = nullptr;
    QTimer refreshing_;
};

} // namespace kivo::device::app
