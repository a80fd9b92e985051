// The figures of the curves at and between the cursors, for the table of measurements, and the
// curve that is looked at.
#pragma once

#include <QColor>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "measure/cursors.h"
#include "session/curve_reader.h"
#include "session/session.h"
#include "view/graph_board.h"
#include "view/graph_cursors.h"
#include "view/zoom_target.h"

namespace wavo {

/// A curve of a graph.
struct CurveId {
    std::uint32_t graph = 0;  ///< its number
    std::size_t axis = 0;     ///< of its y axes

    friend auto operator<=>(const CurveId&, const CurveId&) = default;
};

struct MeasuredCurve {
    CurveId id;
    std::string label;   ///< see Measurements::LabelOf
    std::string x_name;  ///< over an axis: of the x axis
    QColor color;        ///< that it is drawn with
    measure::CurveReading figures;
    measure::Figure x_at_a;  ///< over an axis: the x values there
    measure::Figure x_at_b;
    int decimals = 0;  ///< that its values carry
};

/// All that is measured. Times are seconds, 0 at the newest sample; in an open recording where its
/// time axis has 0.
struct MeasuredTable {
    std::optional<double> a;  ///< nothing where the cursor is not on the data
    std::optional<double> b;
    measure::Figure difference;  ///< b - a
    measure::Figure frequency;   ///< 1 / |b - a|, Hz
    int time_decimals = 0;       ///< that the cycle time carries
    std::vector<MeasuredCurve> curves;
    std::int64_t line_of_0 = 0;  ///< the line at time 0
    double cycle_time = 0.0;     ///< seconds from line to line
    bool is_whole = true;        ///< false: measured again, there is more

    [[nodiscard]] double TimeOf(std::int64_t line) const {
        return static_cast<double>(line - line_of_0) * cycle_time;
    }
};

class Measurements {
 public:
    /// None of the references is owned; all outlive this object.
    Measurements(Session& session, GraphBoard& board, GraphCursors& cursors, ZoomTarget& zooms)
        : m_session(session), m_board(board), m_cursors(cursors), m_zooms(zooms) {}

    /// Of the curves of all graphs, or of the one that is selected.
    void SetAllGraphs(bool all) { m_all_graphs = all; }
    [[nodiscard]] bool IsOfAllGraphs() const { return m_all_graphs; }

    /// Measures anew, for no longer than some milliseconds: see MeasuredTable::is_whole.
    const MeasuredTable& Renew();
    /// As it was measured last.
    [[nodiscard]] const MeasuredTable& Table() const { return m_table; }

    /// The graphs or their buffers go: forgets all that refers to them.
    void Forget() {
        m_readers.clear();
        ++m_reader_version;
    }
    /// Another number whenever readers were forgotten.
    [[nodiscard]] std::uint64_t Readers() const { return m_reader_version; }
    /// The reader of a curve; null when there is none, or nothing to read. Valid until Forget.
    [[nodiscard]] CurveReader* ReaderOf(const CurveId& curve);

    /// A time as the table has it, of now.
    [[nodiscard]] double TimeOf(std::int64_t line) const;
    /// X, X', and over an axis "Y over X".
    [[nodiscard]] static std::string LabelOf(const WavoGraph& graph, std::size_t axis);

    /// The curve that jumps of the cursors look at: that which was selected, else the first of the
    /// selected graph; nothing without curves.
    [[nodiscard]] std::optional<CurveId> SelectedCurve() const;
    void SelectCurve(const CurveId& curve) { m_selected = curve; }

    /// The next peak, valley or zero crossing of the selected curve, within some milliseconds. A
    /// peak rises out by more than a hundredth of what the scale shows.
    [[nodiscard]] LineFound Next(Landmark landmark, std::int64_t line, measure::Search search);
    /// The line at which a trigger has begun or ended the recording of a graph.
    [[nodiscard]] static std::optional<std::int64_t> TriggerLine(const GraphDraw& graph);

 private:
    /// Graphs that are measured, in their order.
    [[nodiscard]] std::vector<const GraphDraw*> Graphs() const;
    /// The reader of a stream of a graph (as in the recorder); null when there is nothing to read.
    CurveReader* ReaderOf(const GraphDraw& graph, std::size_t stream);
    /// The line at time 0; nothing without lines.
    [[nodiscard]] std::optional<std::int64_t> LineOf0() const;
    void MeasureTimes();
    void MeasureCurve(const GraphDraw& graph, std::size_t axis);

    Session& m_session;
    GraphBoard& m_board;
    GraphCursors& m_cursors;
    ZoomTarget& m_zooms;
    CurveReader::Budget m_budget;
    bool m_all_graphs = false;
    std::optional<CurveId> m_selected;
    /// By the buffer, by the stream of an open recording, or by the curve of a graph's own
    /// recording and its stream.
    std::map<std::pair<const void*, std::size_t>, CurveReader> m_readers;
    std::uint64_t m_reader_version = 0;
    MeasuredTable m_table;
};

}  // namespace wavo
