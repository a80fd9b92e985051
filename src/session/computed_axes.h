// The computed axes of what is shown: changing them while values flow or a recording is open.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "computed/computed_source.h"

namespace wavo {

class Acquisition;
class ValueStreams;

class ComputedAxes {
 public:
    /// None of the references is owned; all outlive this object.
    ComputedAxes(computed::ComputedSource& source, ValueStreams& streams, Acquisition& acquisition)
        : m_source(source), m_streams(streams), m_acquisition(acquisition) {}

    [[nodiscard]] const std::vector<computed::ComputedAxis>& Definitions() const {
        return m_source.Definitions();
    }
    /// Another number whenever there are other definitions.
    [[nodiscard]] std::uint64_t Generation() const { return m_source.Generation(); }
    /// The axes that are there without the computed ones.
    [[nodiscard]] const std::vector<std::string>& OtherNames() const {
        return m_source.SourceNames();
    }
    /// Those of the computed axes that are there and have one, by their names.
    [[nodiscard]] std::map<std::string, std::string> Units() const { return m_source.Units(); }

    /// Computes other axes from now on, and shows that. Axes that stay the same go on, changed ones
    /// begin anew.
    void Define(std::vector<computed::ComputedAxis> axes);

 private:
    computed::ComputedSource& m_source;
    ValueStreams& m_streams;
    Acquisition& m_acquisition;
};

}  // namespace wavo
