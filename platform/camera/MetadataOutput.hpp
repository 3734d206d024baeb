#pragma once

#include <kivo/platform/CaptureSession.hpp>

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kivo::platform {

/// Remembers who wants to hear of which codes, and where. Its session's thread asks.
class MetadataOutput final : public CaptureMetadataOutput {
public:
    struct Wishes {
        std::vector<MetadataObjectType> types;
        std::weak_ptr<CaptureMetadataOutputDelegate> delegate;
        std::shared_ptr<DispatchQueue> queue;
    };

    void setDelegate(std::weak_ptr<CaptureMetadataOutputDelegate> delegate,
                     std::shared_ptr<DispatchQueue> queue) override {
        const std::scoped_lock lock{mutex_};
        wishes_.delegate = std::move(delegate);
        wishes_.queue = std::move(queue);
    }

    void setObjectTypes(std::vector<MetadataObjectType> types) override {
        const std::scoped_lock lock{mutex_};
        wishes_.types = std::move(types);
    }

    Wishes wishes() const {
        const std::scoped_lock lock{mutex_};
        return wishes_;
    }

private:
    mutable std::mutex mutex_;
    Wishes wishes_;
};

} // namespace kivo::platform
