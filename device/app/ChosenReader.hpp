#pragma once

#include <kivo/platform/ReadID.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kivo::device::app {

/// The document reader that the person at the panel has chosen. Main thread.
class ChosenReader final : public platform::ReadID {
public:
    /// A reader with its name in the panel.
    struct Choice {
        std::string name;
        std::shared_ptr<platform::ReadID> reader;
    };

    /// The first choice counts until another is chosen.
    explicit ChosenReader(std::vector<Choice> choices)
        : choices_{std::move(choices)} {}

    const std::vector<Choice>& choices() const { return choices_; }

    /// The reader of the readings that begin later.
    void choose(std::size_t index) { chosen_ = index; }

    std::shared_ptr<platform::readid::UIResources> makeUIResources() override {
        return choices_.at(chosen_).reader->makeUIResources();
    }

    std::expected<void, platform::readid::ReadIDError>
    identify(const std::shared_ptr<platform::ViewController>& from,
             platform::ModalPresentationStyle modalPresentationStyle,
             const std::shared_ptr<platform::readid::NFCWithAccessControlFlow>& flow,
             std::function<void(platform::readid::ReadIDResult)> handler) override {
        return choices_.at(chosen_).reader->identify(from, modalPresentationStyle, flow, std::move(handler));
    }

private:
    const std::vector<Choice> choices_;
    std::size_t chosen_ = 0;
};

} // namespace kivo::device::app
