#pragma once

#include <kivo/platform/ui/View.hpp>

#include <memory>
#include <vector>

namespace kivo::platform {

/// Places its visible subviews one after the other; their own placement counts for width and height only.
class KIVO_EXPORT StackView : public View {
public:
    enum class Axis { horizontal, vertical };
    /// Across the axis.
    enum class Alignment { fill, leading, center, trailing };
    /// Along the axis: each what it needs, with the last one of no fixed length taking the rest; or all the same.
    enum class Distribution { fill, fillEqually };

    Axis axis() const { return axis_; }

    void setAxis(Axis axis);

    double spacing() const { return spacing_; }

    void setSpacing(double spacing);

    Alignment alignment() const { return alignment_; }

    void setAlignment(Alignment alignment);

    Distribution distribution() const { return distribution_; }

    void setDistribution(Distribution distribution);

    const EdgeInsets& margins() const { return margins_; }

    void setMargins(const EdgeInsets& margins);

    Size sizeThatFits(double widthLimit) override;

protected:
    void layoutSubviews() override;

private:
    using Views = std::vector<std::shared_ptr<View>>;

    std::vector<double> widthsInRow(const Views& views, double available) const;
    static std::vector<double> heightsInColumn(const Views& views, double width);
    void shareRest(const Views& views, std::vector<double>& lengths, double available) const;
    double lengthAcross(const View& view, double needed, double available) const;
    double offsetAcross(double length, double available) const;

    Axis axis_ = Axis::vertical;
    double spacing_ = 0;
    Alignment alignment_ = Alignment::fill;
    Distribution distribution_ = Distribution::fill;
    EdgeInsets margins_;
};

} // namespace kivo::platform
