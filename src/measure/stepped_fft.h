// The discrete Fourier transform of many real values, step by step, so that others have their turn
// in between.
//
// Two values become one complex one, and these a table of some q columns of p each: column by
// column is transformed and turned, then row by row (Cooley and Tukey). Short ones are transformed
// at once.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "measure/fft.h"

namespace wavo::measure {

class SteppedFft {
 public:
    /// Begins the transform of values, which are not owned and stay until it is done.
    void Begin(std::span<const double> values);
    /// Goes on for less than a hundred microseconds. False: it was done before.
    bool Step();
    /// Copies lines of the transform, not scaled, from line `first` on. REQUIRES: it is done, and
    /// there are lines 0 to n/2.
    void Lines(std::size_t first, std::span<Complex> lines);

 private:
    void StepColumn();
    void StepRow();
    [[nodiscard]] Complex ValueOf(std::size_t place) const;

    Fft m_fft;
    std::span<const double> m_values;
    bool m_at_once = false;   ///< the lines are in m_done
    std::size_t m_pairs = 1;  ///< values that become one: 2 where they are even in number
    std::size_t m_rows = 0;
    std::size_t m_columns = 0;
    std::size_t m_next = 0;        ///< column, behind the last row
    std::vector<Complex> m_table;  ///< row by row
    std::vector<Complex> m_done;
    std::vector<Complex> m_in;
    std::vector<Complex> m_out;
};

/// e^(i step j) for j from `first` on: each by a turn of the one before, with exact ones now and
/// then.
void Turns(double step, std::size_t first, std::span<Complex> turns);

}  // namespace wavo::measure
