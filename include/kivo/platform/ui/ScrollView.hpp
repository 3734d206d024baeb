#pragma once

#include <kivo/platform/ui/View.hpp>

namespace kivo::platform {

/// Shows a part of content that may be higher than itself.
class KIVO_EXPORT ScrollView : public View {
public:
    Size contentSize() const { return contentSize_; }

    /// How far the content is scrolled up.
    double contentOffset() const { return contentOffset_; }

    void setContentOffset(double offset);

    /// Scrolls as little as it takes to show `view`, which lies somewhere below this one.
    void scrollTo(const View& view);

protected:
    void layoutSubviews() override;

private:
    Size contentSize_;
    double contentOffset_ = 0;
};

} // namespace kivo::platform
