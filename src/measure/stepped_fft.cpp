#include "measure/stepped_fft.h"

#include <cmath>
#include <complex>

#include "measure/units.h"

namespace wavo::measure {

namespace {

/// More values are transformed in steps.
constexpr std::size_t kMostAtOnce = 4096;

std::size_t LargestDivisorUpToRootOf(std::size_t n) {
    auto divisor = static_cast<std::size_t>(std::sqrt(static_cast<double>(n)));
    while (n % divisor != 0) {
        --divisor;
    }
    return divisor;
}

Complex Product(const Complex& a, const Complex& b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

}  // namespace

void Turns(double step, std::size_t first, std::span<Complex> turns) {
    constexpr std::size_t kTurns = 32;
    const Complex turn = std::polar(1.0, step);
    for (std::size_t i = 0; i < turns.size(); ++i) {
        turns[i] = i == 0 || (first + i) % kTurns == 0
                       ? std::polar(1.0, step * static_cast<double>(first + i))
                       : Product(turns[i - 1], turn);
    }
}

void SteppedFft::Begin(std::span<const double> values) {
    m_values = values;
    m_next = 0;
    m_at_once = values.size() <= kMostAtOnce;
    m_pairs = values.size() % 2 == 0 ? 2 : 1;
    const std::size_t count = values.size() / m_pairs;
    m_rows = m_at_once ? 0 : LargestDivisorUpToRootOf(count);
    m_columns = m_at_once ? 1 : count / m_rows;
    m_table.resize(m_at_once ? 0 : count);
    m_done.resize(m_at_once ? 0 : count);
}

Complex SteppedFft::ValueOf(std::size_t place) const {
    return m_pairs == 2 ? Complex(m_values[2 * place], m_values[2 * place + 1])
                        : Complex(m_values[place], 0.0);
}

void SteppedFft::StepColumn() {
    const std::size_t column = m_next;
    m_in.resize(m_rows);
    for (std::size_t row = 0; row < m_rows; ++row) {
        m_in[row] = ValueOf(row * m_columns + column);
    }
    m_fft.Forward(m_in, &m_out);
    m_in.resize(m_rows);
    Turns(-kFullTurn * static_cast<double>(column) / static_cast<double>(m_table.size()), 0, m_in);
    for (std::size_t row = 0; row < m_rows; ++row) {
        m_table[row * m_columns + column] = Product(m_out[row], m_in[row]);
    }
}

void SteppedFft::StepRow() {
    const std::size_t row = m_next - m_columns;
    m_fft.Forward(std::span<const Complex>(m_table).subspan(row * m_columns, m_columns), &m_out);
    for (std::size_t column = 0; column < m_columns; ++column) {
        m_done[row + column * m_rows] = m_out[column];
    }
}

bool SteppedFft::Step() {
    if (m_next == m_columns + m_rows) {
        return false;
    }
    if (m_at_once) {
        m_fft.Forward(m_values, &m_done);
    } else if (m_next < m_columns) {
        StepColumn();
    } else {
        StepRow();
    }
    ++m_next;
    return true;
}

void SteppedFft::Lines(std::size_t first, std::span<Complex> lines) {
    if (m_at_once || m_pairs == 1) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            lines[i] = m_done[first + i];
        }
        return;
    }
    // The transforms of the even and of the odd values lie in that of the pairs.
    const std::size_t count = m_done.size();
    Turns(-kFullTurn / static_cast<double>(2 * count), first, lines);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::size_t k = (first + i) % count;
        const Complex here = m_done[k];
        const Complex mirrored = std::conj(m_done[(count - k) % count]);
        const Complex even = 0.5 * (here + mirrored);
        const Complex odd = Product({0.0, -0.5}, here - mirrored);
        lines[i] = even + Product(lines[i], odd);
    }
}

}  // namespace wavo::measure
