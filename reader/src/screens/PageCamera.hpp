#pragma once

#include "page/ZoneReader.hpp"

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/DispatchQueue.hpp>

#include <cstdint>
#include <functional>
#include <memory>

namespace kivo::reader {

/// The camera over a document's page, and the search for the zone in its pictures. The search has a thread of its own;
/// everything else belongs to the main thread.
class PageCamera : public std::enable_shared_from_this<PageCamera> {
public:
    using ZoneReaders = std::function<std::unique_ptr<ZoneReader>()>;
    using Seen = std::function<void(const ZoneReader::Sight&)>;

    enum class State {
        running,
        /// There is no camera.
        missing,
        /// There is a camera, which cannot be opened: the system or the person refuses.
        refused,
    };

    /// Switches the camera on. `seen` is called with each picture that was searched, until the object is gone.
    static std::shared_ptr<PageCamera> open(ZoneReaders makeReader, Seen seen);

    PageCamera(ZoneReaders makeReader, Seen seen);
    PageCamera(const PageCamera&) = delete;
    PageCamera& operator=(const PageCamera&) = delete;
    ~PageCamera();

    State state() const { return state_; }

    /// For the preview; null unless the camera runs.
    const std::shared_ptr<platform::CaptureSession>& session() const { return session_; }

private:
    /// The reader and the thread that uses it.
    struct Searcher;

    State start();
    void lookLater();
    void look();

    Seen seen_;
    std::shared_ptr<Searcher> searcher_;
    std::shared_ptr<platform::CaptureSession> session_;
    State state_ = State::missing;
    std::uint64_t lastNumber_ = 0;
    bool isSearching_ = false;
};

} // namespace kivo::reader
