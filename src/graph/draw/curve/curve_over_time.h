// A curve over time: samples whose times follow from their places, and what they look like.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "graph/draw/curve/curve.h"
#include "graph/draw/curve/curve_shape.h"
#include "graph/draw/curve/time_curve.h"

namespace wavo {

class CurveOverTime final : public LiveCurve {
 public:
    explicit CurveOverTime(std::unique_ptr<TimeCurve> samples);

    // LiveCurve
    void Remap(CurvePlot& plot, const Remapping& what) override;
    void Draw(const CurvePlot& plot, const CurveStyle& style, PlotCanvas& canvas) override;
    void Clear() override { m_samples->Clear(); }
    bool Add(const CurveBatch& batch, CurvePlot& plot) override;
    [[nodiscard]] std::uint64_t MaxPoints() const override { return m_samples->MaxPoints(); }
    [[nodiscard]] std::size_t Size() const override;
    [[nodiscard]] LinePoint Point(std::size_t place, const CurvePlot& plot) const override;
    void CopyValues(Coordinate coordinate, std::vector<double>& out) const override;
    [[nodiscard]] MinMax FiniteExtremes(Coordinate coordinate) override;
    [[nodiscard]] TimeCurve* OverTime() override { return m_samples.get(); }

 private:
    std::unique_ptr<TimeCurve> m_samples;
    CurveShape m_shape;
    ColumnSpans m_dashed;  ///< what is painted of the shape where it is dashed
};

}  // namespace wavo
