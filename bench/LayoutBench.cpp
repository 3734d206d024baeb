// The time to lay out a dense screen: from scratch, and after the text of one label has changed.
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

using namespace kivo::platform;

/// Twelve rows of five views in a scroll view.
class DenseScreen {
public:
    DenseScreen() {
        const auto scroll = std::make_shared<ScrollView>();
        scroll->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
        const auto column = std::make_shared<StackView>();
        column->setPlacement({.top = 0, .left = 16, .right = 16});
        column->setSpacing(8);
        for (int i = 0; i < 12; ++i) {
            column->addSubview(row());
        }
        scroll->addSubview(column);
        screen_->view()->addSubview(scroll);
        window_->setRootViewController(screen_);
    }

    Window& window() { return *window_; }

    Label& label() { return *label_; }

private:
    std::shared_ptr<View> row() {
        auto row = std::make_shared<StackView>();
        row->setAxis(StackView::Axis::horizontal);
        row->setSpacing(4);
        const auto field = std::make_shared<TextField>();
        field->setPlaceholder("Activation code");
        const auto button = std::make_shared<Button>();
        button->setTitle("Next");
        label_ = std::make_shared<Label>();
        label_->setText("A sentence of a usual length that goes over two or three lines of a narrow column.");
        label_->setAdjustsFontForContentSizeCategory(true);
        label_->setFont(FontMetrics::scaledFont(Font::system(17)));
        row->addSubview(field);
        row->addSubview(button);
        row->addSubview(std::make_shared<View>());
        row->addSubview(label_);
        return row;
    }

    std::shared_ptr<Window> window_ = std::make_shared<Window>();
    std::shared_ptr<ViewController> screen_ = std::make_shared<ViewController>();
    std::shared_ptr<Label> label_;
};

void fromScratch(benchmark::State& state) {
    DenseScreen screen;
    auto category = ContentSizeCategory::large;
    for ([[maybe_unused]] const auto each : state) {
        // A change of the reading size makes all stored measures invalid.
        category = category == ContentSizeCategory::large ? ContentSizeCategory::small : ContentSizeCategory::large;
        screen.window().setPreferredContentSizeCategory(category);
    }
}

void afterOneChange(benchmark::State& state) {
    DenseScreen screen;
    int number = 0;
    for ([[maybe_unused]] const auto each : state) {
        screen.label().setText("Attempt " + std::to_string(++number) + " of the activation code was not accepted.");
        screen.window().layoutIfNeeded();
    }
}

BENCHMARK(fromScratch)->Unit(benchmark::kMicrosecond);
BENCHMARK(afterOneChange)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
