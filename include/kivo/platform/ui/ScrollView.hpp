#pragma once

#include <kivo/platform/ui/View.hpp>

namespace kivo::platform {

/// Shows a part of its content, which may be higher than the view.
class KIVO_EXPORT ScrollView : public View {
public:
    /// The size of what can be scrolled, known after the layout.
    Size contentSize() const { return contentSize_; }

    /// How far the content is scrolled up.
    double contentOffset() const { return contentOffset_; }

    void setContentOffset(double offset);

    /// Scrolls as little as needed to show `view`, which must be in the tree below this view.
    void scrollTo(const View& view);

protected:
    void layoutSubviews() override;

private:
    Size contentSize_;
    double contentOffset_ = 0;
};

} // namespace kivo::platform
