#include "graph/model/graph_ini_data.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include "graph/model/report_texts.h"
#include "graph/model/stored_form.h"
#include "support/diagnostics.h"
#include "support/fault.h"
#include "support/number_text.h"

namespace wavo {

namespace {

constexpr const char* kGeneral = "GENERAL";
/// Stored as the time range of a scale that has none, so that switching it to time by hand works.
constexpr double kStoredTimeRange = 10.0;

/// Item i of a per-axis list; its default when the list is too short.
template <typename T>
T ItemOf(const std::vector<T>& list, std::size_t i) {
    return i < list.size() ? list[i] : T{};
}

template <typename Enum>
constexpr long CodeOf(Enum value) {
    return static_cast<long>(value);
}

/// Writes one graph into its section.
class GraphWriter {
 public:
    GraphWriter(MIniData& store, const WavoGraph& graph)
        : m_store(store), m_graph(graph), m_section(std::to_string(graph.GraphNumber)) {}

    /// False when a y scale stopped it, or the store refused a value.
    bool Write() {
        WriteCoordinates();
        WriteXScale();
        if (!CheckYScales()) {
            return false;
        }
        WriteYScales();
        WriteCircle("InnerGuidingCircleDX", m_graph.InnerGuidingCircleDX);
        WriteCircle("OuterGuidingCircleDX", m_graph.OuterGuidingCircleDX);
        if (m_graph.XScale.ScaleType == ScaleTypeCode::kAxis) {
            SetDouble("FadeOutTime", m_graph.FadeOutTime);
        } else {
            // Where there is none, that is as well; the store traces it.
            (void)m_store.DeleteEntry(m_section, "FadeOutTime");
        }
        return m_all_set;
    }

    /// Whether a y scale stopped it: the graphs that follow are not written either.
    [[nodiscard]] bool Stopped() const { return m_stopped; }

 private:
    void WriteCoordinates() {
        SetLong("Mode", CodeOf(m_graph.Mode));
        SetLong("ModeAx", CodeOf(m_graph.ModeAx));
        SetLong("XCoorType", CodeOf(m_graph.XCoorType));
        if (m_graph.XCoorType == CoorType::kAxis) {
            SetString("XCoorAxName", m_graph.XCoorAxName);
        }
        SetLong("AutoCircle", m_graph.AutoCircle ? 1 : 0);
        SetLong("ZeroLines", m_graph.ZeroLines ? 1 : 0);
        SetList("YCoorAxName", [this](std::size_t i) { return m_graph.YCoorAxName[i]; });
        SetList("YCoorAxColor",
                [this](std::size_t i) { return std::to_string(ItemOf(m_graph.YCoorAxColor, i)); });
        SetList("YCoorAxDerivation", [this](std::size_t i) {
            return std::to_string(ItemOf(m_graph.YCoorAxDerivation, i));
        });
        SetList("TriggerType", [this](std::size_t i) {
            return std::to_string(CodeOf(ItemOf(m_graph.Triggers, i).TriggerType));
        });
        SetList("TriggerValue", [this](std::size_t i) {
            return FormatSixDecimals(ItemOf(m_graph.Triggers, i).TriggerValue);
        });
    }

    void WriteXScale() {
        const ScaleDefinition& scale = m_graph.XScale;
        const bool is_time = scale.ScaleType == ScaleTypeCode::kTime;
        SetLong("XScaleType", CodeOf(scale.ScaleType));
        if (!is_time) {
            const bool is_manual = scale.ScaleAx == ScaleAxCode::kManual;
            SetLong("XScaleAxType", CodeOf(is_manual ? scale.ScaleAx : ScaleAxCode::kAutomatic));
            if (is_manual) {
                const auto [minimum, maximum] = StoredBounds(scale);
                SetDouble("XScaleAxMax", maximum);
                SetDouble("XScaleAxMin", minimum);
            }
        }
        const bool has_range = is_time && scale.TimeRange >= kMinTimeRange;
        SetDouble("XScaleTime", has_range ? scale.TimeRange : kStoredTimeRange);
    }

    bool CheckYScales() {
        for (std::size_t i = 0; i < m_graph.YCoorAxName.size(); ++i) {
            if (ItemOf(m_graph.YScales, i).ScaleType != ScaleTypeCode::kAxis) {
                MERRLOG(model_texts::kBadYScaleType, m_graph.YCoorAxName[i].c_str());
                m_stopped = true;
                return false;
            }
        }
        return true;
    }

    void WriteYScales() {
        const auto bound = [this](std::size_t i, bool is_maximum) {
            const ScaleDefinition& scale = m_graph.YScales[i];
            if (scale.ScaleAx != ScaleAxCode::kManual) {
                return std::string("0.0");
            }
            const auto [minimum, maximum] = StoredBounds(scale);
            return FormatSixDecimals(is_maximum ? maximum : minimum);
        };
        SetList("YScaleType", [this](std::size_t i) {
            return std::to_string(CodeOf(m_graph.YScales[i].ScaleType));
        });
        SetList("YScaleAxType", [this](std::size_t i) {
            return std::to_string(CodeOf(m_graph.YScales[i].ScaleAx));
        });
        // All are axis scales, which have no time range.
        SetList("YScaleTime", [](std::size_t) { return std::string("0.0"); });
        SetList("YScaleAxMax", [&](std::size_t i) { return bound(i, true); });
        SetList("YScaleAxMin", [&](std::size_t i) { return bound(i, false); });
    }

    void WriteCircle(const char* name, double radius) {
        if (radius < kNoRadius) {
            SetDouble(name, radius);
        } else {
            SetString(name, {});
        }
    }

    void SetLong(const char* name, long value) {
        m_all_set &= m_store.SetLongEntry(m_section, name, value);
    }
    void SetDouble(const char* name, double value) {
        m_all_set &= m_store.SetDoubleEntry(m_section, name, value);
    }
    void SetString(const char* name, const std::string& value) {
        m_all_set &= m_store.SetStringEntry(m_section, name, value);
    }
    /// Sets a list with the item `item_of(i)` for every y axis.
    template <typename ItemText>
    void SetList(const char* name, ItemText item_of) {
        std::string list;
        for (std::size_t i = 0; i < m_graph.YCoorAxName.size(); ++i) {
            if (i != 0) {
                list += ',';
            }
            list += item_of(i);
        }
        SetString(name, list);
    }

    MIniData& m_store;
    const WavoGraph& m_graph;
    const std::string m_section;
    bool m_all_set = true;
    bool m_stopped = false;
};

/// The items of a list: white space removed everywhere, empty items dropped.
std::vector<std::string> SplitList(std::string text) {
    std::erase_if(text, IsWhiteSpace);
    std::vector<std::string> items;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        if (end > begin) {
            items.push_back(text.substr(begin, end - begin));
        }
        begin = end + 1;
    }
    return items;
}

MaybeFault FaultIf(bool is_wrong, const char* why) {
    return is_wrong ? MaybeFault(Fault{why}) : std::nullopt;
}

/// Reads one graph from its section. Its steps return what is wrong, in the words for the error log
/// and the user.
class GraphReader {
 public:
    GraphReader(const MIniData& store, const std::string& section, WavoGraph& graph)
        : m_store(store), m_section(section), m_graph(graph) {}

    MaybeFault Read(double min_fade_out_time) {
        ReadModes();
        if (MaybeFault fault = ReadYAxes()) {
            return fault;
        }
        if (MaybeFault fault = ReadXScale()) {
            return fault;
        }
        if (MaybeFault fault = ReadYScales()) {
            return fault;
        }
        KeepOneYAxisOverAnAxis();
        m_graph.InnerGuidingCircleDX = Radius("InnerGuidingCircleDX");
        m_graph.OuterGuidingCircleDX = Radius("OuterGuidingCircleDX");
        if (const std::optional<double> time = FindDouble(Text("FadeOutTime"))) {
            m_graph.FadeOutTime = std::max(*time, min_fade_out_time);
        }
        m_graph.UpdateGuidingCircles();
        return std::nullopt;
    }

 private:
    void ReadModes() {
        m_graph.Mode = Integer("Mode") == 1 ? GraphMode::kClassic : GraphMode::kContinuity;
        m_graph.ModeAx = Integer("ModeAx") == 1 ? AxisDrawMode::kLines : AxisDrawMode::kPoints;
        m_graph.AutoCircle = Integer("AutoCircle") > 0;
        m_graph.ZeroLines = Integer("ZeroLines") > 0;
        m_graph.XCoorType = Integer("XCoorType") == 1 ? CoorType::kTime : CoorType::kAxis;
        if (m_graph.XCoorType == CoorType::kAxis) {
            m_graph.XCoorAxName = Text("XCoorAxName");
        }
    }

    MaybeFault ReadYAxes() {
        m_graph.YCoorAxName = List("YCoorAxName");
        const std::size_t axes = m_graph.YCoorAxName.size();
        const std::vector<std::string> colors = List("YCoorAxColor");
        if (colors.size() != axes) {
            return Fault{model_texts::kColorCount};
        }
        const std::vector<std::string> derivations = List("YCoorAxDerivation");
        if (derivations.size() != axes) {
            return Fault{model_texts::kDerivationCount};
        }
        for (std::size_t i = 0; i < axes; ++i) {
            m_graph.YCoorAxColor.push_back(ReadUnsigned(colors[i]) & kColorMask);
            m_graph.YCoorAxDerivation.push_back(
                std::clamp(ReadInteger(derivations[i]), 0, kHighestStoredDerivation));
        }
        return ReadTriggers();
    }

    MaybeFault ReadTriggers() {
        const std::size_t axes = m_graph.YCoorAxName.size();
        const std::vector<std::string> values = List("TriggerValue");
        const std::vector<std::string> types = List("TriggerType");
        // Files from before there were triggers have neither list.
        const bool without_triggers = values.empty() && types.empty();
        if (!without_triggers && (values.size() != axes || types.size() != axes)) {
            return Fault{model_texts::kTriggerCount};
        }
        for (std::size_t i = 0; i < axes; ++i) {
            TriggerEntry trigger{TriggerTypeCode::kNone, 0.0, m_graph.YCoorAxName[i]};
            if (!without_triggers) {
                trigger.TriggerType = static_cast<TriggerTypeCode>(ReadInteger(types[i]));
                trigger.TriggerValue = ReadDouble(values[i]);
            }
            m_graph.Triggers.push_back(std::move(trigger));
        }
        return std::nullopt;
    }

    MaybeFault ReadXScale() {
        ScaleDefinition& scale = m_graph.XScale;
        switch (Integer("XScaleType")) {
            case CodeOf(ScaleTypeCode::kTime):
                scale.ScaleType = ScaleTypeCode::kTime;
                scale.TimeRange = ReadDouble(Text("XScaleTime"));
                return FaultIf(scale.TimeRange < kMinTimeRange, model_texts::kXTimeRange);
            case CodeOf(ScaleTypeCode::kAxis):
                scale.ScaleType = ScaleTypeCode::kAxis;
                break;
            default:
                return Fault{model_texts::kXScaleType};
        }
        switch (Integer("XScaleAxType")) {
            case CodeOf(ScaleAxCode::kAutomatic):
                scale.ScaleAx = ScaleAxCode::kAutomatic;
                return std::nullopt;
            case CodeOf(ScaleAxCode::kManual):
                scale.ScaleAx = ScaleAxCode::kManual;
                scale.Maximum = ReadDouble(Text("XScaleAxMax"));
                scale.Minimum = ReadDouble(Text("XScaleAxMin"));
                return FaultIf(scale.Maximum < scale.Minimum, model_texts::kXBounds);
            default:
                return Fault{model_texts::kXScaleType};
        }
    }

    /// The lists of the y scales as they stand in the file.
    struct YScaleLists {
        std::vector<std::string> type;
        std::vector<std::string> ax_type;
        std::vector<std::string> maximum;
        std::vector<std::string> minimum;
    };

    MaybeFault ReadYScales() {
        const std::size_t axes = m_graph.YCoorAxName.size();
        const YScaleLists lists{List("YScaleType"), List("YScaleAxType"), List("YScaleAxMax"),
                                List("YScaleAxMin")};
        if (lists.type.size() != axes) {
            return Fault{model_texts::kYScaleTypeCount};
        }
        if (lists.ax_type.size() != axes) {
            return Fault{model_texts::kYScaleAxTypeCount};
        }
        if (lists.maximum.size() != axes) {
            return Fault{model_texts::kYMaximumCount};
        }
        if (lists.minimum.size() != axes) {
            return Fault{model_texts::kYMinimumCount};
        }
        for (std::size_t i = 0; i < axes; ++i) {
            ScaleDefinition& scale = m_graph.YScales.emplace_back();
            if (MaybeFault fault = ReadYScale(lists, i, scale)) {
                return fault;
            }
        }
        return std::nullopt;
    }

    MaybeFault ReadYScale(const YScaleLists& lists, std::size_t i, ScaleDefinition& scale) {
        switch (ReadInteger(lists.type[i])) {
            case CodeOf(ScaleTypeCode::kTime):
                scale.ScaleType = ScaleTypeCode::kTime;
                scale.TimeRange = ReadDouble(Text("YScaleTime"));
                return FaultIf(scale.TimeRange < kMinTimeRange, model_texts::kYTimeRange);
            case CodeOf(ScaleTypeCode::kAxis):
                scale.ScaleType = ScaleTypeCode::kAxis;
                break;
            default:
                return Fault{model_texts::kYScaleType};
        }
        // Without bounds that are meant, the scale finds its own.
        scale.ScaleAx = ScaleAxCode::kAutomatic;
        if (ReadInteger(lists.ax_type[i]) == CodeOf(ScaleAxCode::kManual)) {
            scale.ScaleAx = ScaleAxCode::kManual;
            scale.Maximum = ReadDouble(lists.maximum[i]);
            scale.Minimum = ReadDouble(lists.minimum[i]);
        }
        return FaultIf(scale.Maximum < scale.Minimum, model_texts::kYBounds);
    }

    void KeepOneYAxisOverAnAxis() {
        if (m_graph.XCoorType != CoorType::kAxis || m_graph.YCoorAxName.size() <= 1) {
            return;
        }
        MERRLOG(model_texts::kOneYAxisAllowed);
        m_graph.YCoorAxName.resize(1);
        m_graph.YCoorAxColor.resize(1);
        m_graph.YCoorAxDerivation.resize(1);
        m_graph.Triggers.resize(1);
        m_graph.YScales.resize(1);
    }

    /// The value of an entry; empty when there is none.
    [[nodiscard]] std::string Text(const char* name) const {
        std::string value;
        (void)m_store.GetStringEntry(m_section, name, value);
        return value;
    }
    [[nodiscard]] std::vector<std::string> List(const char* name) const {
        return SplitList(Text(name));
    }
    [[nodiscard]] std::int32_t Integer(const char* name) const { return ReadInteger(Text(name)); }

    [[nodiscard]] double Radius(const char* name) const {
        const std::string text = Text(name);
        return std::all_of(text.begin(), text.end(), IsWhiteSpace) ? kNoRadius : ReadDouble(text);
    }

    const MIniData& m_store;
    const std::string& m_section;
    WavoGraph& m_graph;
};

}  // namespace

bool GetGraphAsIniData(MIniData& store, const std::vector<WavoGraph>& graphs,
                       const std::string& add_text, std::size_t* axes_left_out) {
    std::size_t left_out = 0;
    std::string numbers;
    for (const WavoGraph& graph : graphs) {
        if (!numbers.empty()) {
            numbers += ',';
        }
        numbers += std::to_string(graph.GraphNumber);
    }
    bool all_set = store.SetStringEntry(kGeneral, "Graphs", numbers);
    all_set &= store.SetStringEntry(kGeneral, "AddText", add_text);
    for (WavoGraph graph : graphs) {
        left_out += RemoveAxesWithoutAForm(graph);
        GraphWriter writer(store, graph);
        all_set &= writer.Write();
        if (writer.Stopped()) {
            return false;
        }
    }
    if (axes_left_out != nullptr) {
        *axes_left_out = left_out;
    }
    return all_set;
}

bool CreateGraphsFromIniData(const MIniData& store, std::vector<WavoGraph>& graphs,
                             std::string& error_text, std::string& add_text,
                             double min_fade_out_time) {
    error_text.clear();
    std::string numbers;
    (void)store.GetStringEntry(kGeneral, "Graphs", numbers);
    (void)store.GetStringEntry(kGeneral, "AddText", add_text);

    std::unordered_set<std::uint32_t> seen;
    for (const WavoGraph& graph : graphs) {
        seen.insert(graph.GraphNumber);
    }
    bool duplicate_reported = false;
    for (const std::string& section : SplitList(std::move(numbers))) {
        WavoGraph graph;
        graph.GraphNumber = ReadUnsigned(section);
        if (!seen.insert(graph.GraphNumber).second) {
            // Once: a damaged list could name the same graph a hundred thousand times.
            if (!std::exchange(duplicate_reported, true)) {
                MERRLOG(
                    "CreateGraphsFromIniData(): graph number %u is used more than once, "
                    "using the first graph",
                    graph.GraphNumber);
            }
            continue;
        }
        if (const MaybeFault fault = GraphReader(store, section, graph).Read(min_fade_out_time)) {
            MERRLOG(model_texts::kGraphRefused, fault->text.c_str());
            error_text = model_texts::RefusedGraph(fault->text, section);
            return false;
        }
        graphs.push_back(std::move(graph));
    }
    return true;
}

}  // namespace wavo
