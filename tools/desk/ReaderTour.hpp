#pragma once

#include "desk/HeldPassport.hpp"

#include <kivo/platform/UrlSession.hpp>
#include <kivo/platform/VideoFrame.hpp>
#include <kivo/platform/ui/ViewController.hpp>
#include <kivo/reader/DocumentReader.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/Person.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace desk {

/// Shows every page of the document reader's screens, one after the other, as a person would reach it: for pictures and
/// for checks of the layout. Each reading begins
/// with a camera and a network of the tour's own among the services. Main thread.
class ReaderTour {
public:
    /// Called when the page of that name stands still.
    using Visit = std::function<void(const std::string& page)>;
    /// Runs the main loop until the condition holds. False where it does not hold in time.
    using Wait = std::function<bool(const std::function<bool()>&)>;

    /// What the camera sees: a page whose lines cannot be read yet, and the same page once they can.
    struct Sights {
        kivo::platform::VideoFrame unread;
        kivo::platform::VideoFrame readable;
    };

    /// `passport` has the lines that `sights` shows, and takes short commands only. The reader's screens appear over
    /// `host`.
    ReaderTour(std::shared_ptr<kivo::simulator::Passport> passport, Sights sights,
               std::shared_ptr<kivo::platform::ViewController> host, std::shared_ptr<kivo::platform::Window> window,
               kivo::simulator::Person person, Wait wait);
    ReaderTour(const ReaderTour&) = delete;
    ReaderTour& operator=(const ReaderTour&) = delete;
    ~ReaderTour();

    /// From the choice to the end, with a chip that is found at the second attempt. Throws `std::runtime_error` where a
    /// page does not come.
    void goWell(const Visit& visit);
    /// Typing, and what can go wrong.
    void goWrong(const Visit& visit);

private:
    class Network;

    void begin(const std::vector<kivo::platform::readid::DocumentType>& allowed);
    void end(std::string_view button);
    void tap(std::string_view name);
    void type(std::string_view name, const std::string& text);
    bool sees(std::string_view view) const;
    void waitForView(std::string_view view);
    /// Waits for a text of the screens in the person's language.
    void waitForText(std::string_view text);
    void waitFor(const std::function<bool()>& condition, std::string_view what);

    std::shared_ptr<kivo::simulator::Passport> passport_;
    Sights sights_;
    std::shared_ptr<kivo::platform::ViewController> host_;
    std::shared_ptr<kivo::platform::Window> window_;
    kivo::simulator::Person person_;
    Wait wait_;
    std::shared_ptr<HeldPassport> cards_ = std::make_shared<HeldPassport>(passport_);
    std::shared_ptr<kivo::simulator::Camera> camera_ = std::make_shared<kivo::simulator::Camera>();
    std::shared_ptr<Network> network_;
    kivo::reader::DocumentReader reader_{{.cards = cards_}};
    bool isOver_ = true;
};

} // namespace desk
