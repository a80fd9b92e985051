// The curve of an axis over another axis, with its points mapped to pixels when they arrive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "graph/draw/curve/axis_curve.h"
#include "graph/draw/curve/curve.h"

namespace wavo {

class CurveOverAxis final : public LiveCurve {
 public:
    /// REQUIRES: max_points >= 1.
    explicit CurveOverAxis(std::uint64_t max_points) : m_points(max_points) {}

    // LiveCurve
    void Remap(CurvePlot& plot, const Remapping& what) override;
    void Draw(const CurvePlot& plot, const CurveStyle& style, PlotCanvas& canvas) override;
    void Clear() override;
    bool Add(const CurveBatch& batch, CurvePlot& plot) override;
    [[nodiscard]] std::uint64_t MaxPoints() const override { return m_points.MaxPoints(); }
    [[nodiscard]] std::size_t Size() const override { return m_points.Size(); }
    [[nodiscard]] LinePoint Point(std::size_t place, const CurvePlot& plot) const override;
    void CopyValues(Coordinate coordinate, std::vector<double>& out) const override;
    [[nodiscard]] MinMax FiniteExtremes(Coordinate coordinate) override;

 private:
    AxisCurve m_points;
    std::uint64_t m_version = 0;  ///< of what is drawn
};

}  // namespace wavo
