#pragma once

#include "ChosenReader.hpp"
#include "HostLook.hpp"

#include <kivo/KivoAPI.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Passport.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kivo::device::app {

/// The objects that the panel steers.
struct Steered {
    std::shared_ptr<platform::Window> window;
    std::shared_ptr<simulator::IdentityService> service;
    std::shared_ptr<simulator::Camera> camera;
    std::shared_ptr<simulator::ReadID> readID;
    std::shared_ptr<simulator::FaceTec> faceTec;
    /// The document readers to choose from, and the passport on the simulated card reader; null without one.
    std::shared_ptr<ChosenReader> documentReaders{};
    std::shared_ptr<simulator::Passport> passport{};
    /// Sets the theme of the screens that come later.
    std::function<void(const std::shared_ptr<ThemeCustomization>&)> setTheme;
    /// Sets the language of the screens that come later; empty where there is no choice.
    std::function<void(const std::string&)> speak{};
    /// Sets whether the phone moves what happens; empty where nothing moves.
    std::function<void(bool)> setAnimated{};
};

/// The panel beside the phone. It sets the next behaviour of the service, the camera, the vendors and the phone, and
/// shows the behaviour that is still to come.
class SteeringPanel final : public QWidget {
public:
    explicit SteeringPanel(Steered steered, QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Puts the parts side by side where there is room.
    void arrange();
    void addService(QGroupBox& box);
    void addCamera(QGroupBox& box);
    void addVendors(QGroupBox& box);
    void addDocumentReader(QGroupBox& box);
    void addPassport(QFormLayout& rows);
    void addLook(QGroupBox& box);
    /// Shows which of the plans are not used up.
    void refresh();

    Steered steered_;
    QGridLayout* grid_ = nullptr;
    std::vector<QGroupBox*> parts_;
    int columns_ = 0;
    QLabel* faults_ = nullptr;
    QComboBox* nextDocument_ = nullptr;
    QTimer refreshing_;
};

} // namespace kivo::device::app
