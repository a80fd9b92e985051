#include "session/computed_axes.h"

#include <utility>

#include "session/acquisition.h"
#include "session/value_streams.h"

namespace wavo {

void ComputedAxes::Define(std::vector<computed::ComputedAxis> axes) {
    m_streams.BeginAnew(m_source.Define(std::move(axes)));
    m_acquisition.ShowHint({});  // what is wrong with them stands in the text of the source
    // At once: the next batch has other columns.
    m_acquisition.InitialiseEditor();
    m_acquisition.RebuildGraphs();
}

}  // namespace wavo
