#pragma once

#include "screens/Page.hpp"
#include "screens/PageCamera.hpp"

#include <functional>
#include <memory>

namespace kivo::reader {

/// The page on which a person holds the document's page before the camera. Main thread.
class AimPage : public std::enable_shared_from_this<AimPage> {
public:
    struct Events {
        /// Called once with the zone that was read. The camera is off by then.
        std::function<void(const Zone&)> read;
        /// The person wishes to type.
        std::function<void()> type;
    };

    /// Opens the camera. `cards` tells whether the person aims at a card, whose zone has another place than that of a
    /// passport.
    static std::shared_ptr<AimPage> open(const Look& look, bool cards, PageCamera::ZoneReaders makeReader,
                                         Events events);

    AimPage(const Look& look, bool cards, Events events);

    const Page& page() const { return page_; }

    /// Whether the camera runs. A page whose camera does not run is not shown.
    PageCamera::State cameraState() const { return camera_ ? camera_->state() : PageCamera::State::missing; }

private:
    void addPreview(bool cards);
    void see(const ZoneReader::Sight& sight);
    void say(ScreenText text);

    Page page_;
    Events events_;
    std::shared_ptr<PageCamera> camera_;
    std::shared_ptr<platform::Label> hint_;
    bool hasWaited_ = false;
};

} // namespace kivo::reader
