// What the long run shows, and what its user does: 16 graphs over a fixed set of streams of 64
// axes, and steps that depend on nothing but a seed.
//
// Invariant: no step asks for a stream or a time range that the first graphs did not have, so that
// the buffers never grow again.
#pragma once

#include <QString>
#include <QStringList>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "view/wavo_view.h"

namespace wavo::testing {

inline constexpr std::size_t kSoakAxes = 64;
inline constexpr std::size_t kSoakGraphs = 16;
inline constexpr double kSoakCycleTime = 0.00025;  // s

/// Names of the axes, in column order.
std::vector<std::string> SoakAxisNames();

/// Writes a recording of all axes: one period of slow sines, each with its own phase.
void WriteSoakRecording(const QString& path);

/// The graphs: four streams each, every fourth one over an axis, one in two with a trigger.
std::vector<WavoGraph> SoakGraphs();

class SoakUser {
 public:
    SoakUser(CWavoView& view, unsigned seed) : m_view(view), m_random(seed) {}

    /// Does one thing that a user may do.
    void Step();

    [[nodiscard]] std::uint64_t Edits() const { return m_edits; }
    [[nodiscard]] std::uint64_t Zooms() const { return m_zooms; }
    [[nodiscard]] std::uint64_t Arms() const { return m_arms; }

 private:
    std::size_t Below(std::size_t count) { return m_random() % count; }
    void Edit();
    void Zoom();
    void Arm();

    CWavoView& m_view;
    std::mt19937 m_random;
    std::uint64_t m_edits = 0;
    std::uint64_t m_zooms = 0;
    std::uint64_t m_arms = 0;
};

}  // namespace wavo::testing
