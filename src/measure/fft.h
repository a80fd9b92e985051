// The discrete Fourier transform of real values, and its inverse.
#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace wavo::measure {

using Complex = std::complex<double>;

/// Keeps what a length needs from one transform to the next.
class Fft {
 public:
    Fft();
    Fft(const Fft&) = delete;
    Fft& operator=(const Fft&) = delete;
    ~Fft();

    /// The lines 0 to n/2 of n values, not scaled. Quick for lengths without prime factors above 5.
    void Forward(std::span<const double> values, std::vector<Complex>* lines);

    /// The same of complex values: n lines of n values.
    void Forward(std::span<const Complex> values, std::vector<Complex>* lines);

    /// The n values of which `lines` (n/2 + 1 of them) are the transform.
    void Inverse(std::span<const Complex> lines, std::size_t n, std::vector<double>* values);

 private:
    struct Plans;
    std::unique_ptr<Plans> m_plans;
};

/// The largest length up to n without prime factors above 5; 0 for 0.
std::size_t GoodLengthUpTo(std::size_t n);
/// The smallest such length from n on.
std::size_t GoodLengthFrom(std::size_t n);

}  // namespace wavo::measure
