// Graph definitions in an INI store: the form in which graphs are kept in files.
//
// Section "GENERAL" lists the numbers of the graphs and holds the additional text; each graph has
// a section named by its number. Lists are joined with ","; read back, all white space in them is
// removed (inside names too) and empty items are dropped. Numbers are decimal, with a point,
// whatever the locale.
//
// Invariants:
// 1. Sections of graphs that are gone, and entries that these functions do not know, stay.
// 2. Per-axis lists have one item per y axis, taken by the index of the y axis.
// 3. All numbers read are finite. Derivation orders are cut to 0 ... kHighestStoredDerivation,
//    colours to 24 bits.
// 4. Graph numbers that are read are unique: the first graph of a number counts.
// 5. What is written can be read. Y axes whose names are empty (white space aside) or hold a comma
//    or a line end are left out with all that is theirs, an x axis with a line end in its name is
//    written as none; bounds are written in ascending order, as finite numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "support/mini_data.h"

namespace wavo {

/// Orders that a file may ask for. Every sample of a stream costs as many steps as its order, and
/// a label as many characters, so a slip of the pen must not stall the program; orders above 2
/// have no use on a machine and divide by ever higher powers of the cycle time.
inline constexpr std::int32_t kHighestStoredDerivation = 8;

/// Puts the graphs, in list order, and the additional text into the store, which the caller saves.
/// A y scale that is no axis scale stops it, with an error-log entry: the graphs before that one
/// are in the store, it is there in part, the rest is not. Returns false then, and when the store
/// refused a value (a text with a line end in it); the other values are set all the same.
/// `axes_left_out` (may be null) gets the number of axes whose names cannot stand in a file; each
/// is an error-log entry.
bool GetGraphAsIniData(MIniData& store, const std::vector<WavoGraph>& graphs,
                       const std::string& add_text, std::size_t* axes_left_out = nullptr);

/// Appends the graphs of the store to `graphs` and takes the additional text. A bad graph ends
/// reading, with an error-log entry and `error_text` for the user: the graphs before it are in the
/// list; false. A fade-out time below `min_fade_out_time` (seconds; the master's cycle time)
/// becomes that.
bool CreateGraphsFromIniData(const MIniData& store, std::vector<WavoGraph>& graphs,
                             std::string& error_text, std::string& add_text,
                             double min_fade_out_time);

}  // namespace wavo
