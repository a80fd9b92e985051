// What a recording says of itself, and the numbers and times of its lines.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavo::recording {

/// Limits of an axis as the master told them. Velocity and acceleration are 0 when it did not.
struct AxisLimits {
    double lower = 0.0;         ///< position units
    double upper = 0.0;         ///< position units
    double velocity = 0.0;      ///< position units per second
    double acceleration = 0.0;  ///< position units per second squared
    double resolution = 0.0;

    friend bool operator==(const AxisLimits&, const AxisLimits&) = default;
};

struct RecordingHead {
    std::vector<std::string> axis_names;  ///< as the machine gives them; any bytes but NUL
    double cycle_time = 0.001;            ///< seconds per line
    std::uint64_t start_time = 0;         ///< of line 0, nanoseconds since the Unix epoch
    /// Per axis what is known of it; shorter when nothing is known of the last ones.
    std::vector<std::optional<AxisLimits>> limits;
    std::string program;  ///< name and version of what made the recording

    friend bool operator==(const RecordingHead&, const RecordingHead&) = default;
};

/// A graph file that a recording carries.
struct GraphFile {
    std::string name;
    std::string text;

    friend bool operator==(const GraphFile&, const GraphFile&) = default;
};

/// The times of lines: line k stands at start + k x cycle time.
class LineClock {
 public:
    /// REQUIRES: CanRecord(cycle_time).
    LineClock(double cycle_time, std::uint64_t start_time);

    /// Nanoseconds since the Unix epoch.
    [[nodiscard]] std::uint64_t TimeOf(std::uint64_t line) const;
    /// The line nearest to a time; 0 for times before the first.
    [[nodiscard]] std::uint64_t LineNear(std::uint64_t time) const;
    /// The line that has these low 32 bits and is nearest to a time.
    [[nodiscard]] std::uint64_t LineOf(std::uint32_t low_bits, std::uint64_t time) const;

    /// Whether lines with this cycle time have times of their own that fit: 1 ns to 1e6 s.
    static bool CanRecord(double cycle_time);

 private:
    std::uint64_t m_start;
    std::uint64_t m_whole;  // whole nanoseconds per line
    double m_part;          // and the part of one
};

/// The entries of the Metadata record `wavo`, with a CRC of their own among them.
std::map<std::string, std::string> ToMetadata(const RecordingHead& head);

/// Reads these entries; nothing when they are not whole or make no sense.
std::optional<RecordingHead> FromMetadata(const std::map<std::string, std::string>& entries);

/// Field names for the axes, in the same order: lower case letters, digits and single underscores,
/// first a letter, each but once.
std::vector<std::string> FieldNames(const std::vector<std::string>& axis_names);

/// Definition of a line for readers of any kind: a double per field.
std::string LineSchema(const std::vector<std::string>& axis_names);

/// The field names of such a definition; nothing when it is another one.
std::optional<std::vector<std::string>> FieldsOfSchema(std::string_view schema);

}  // namespace wavo::recording
