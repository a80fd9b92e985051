#include "measure/fft.h"

#include <unsupported/Eigen/FFT>

namespace wavo::measure {

namespace {

bool IsGoodLength(std::size_t n) {
    for (const std::size_t factor : {2U, 3U, 5U}) {
        while (n % factor == 0) {
            n /= factor;
        }
    }
    return n == 1;
}

}  // namespace

struct Fft::Plans {
    Eigen::FFT<double> transform{Eigen::default_fft_impl<double>(),
                                 Eigen::FFT<double>::HalfSpectrum};
};

Fft::Fft() : m_plans(std::make_unique<Plans>()) {}
Fft::~Fft() = default;

void Fft::Forward(std::span<const double> values, std::vector<Complex>* lines) {
    lines->resize(values.size() / 2 + 1);
    if (values.size() < 2) {  // the library transforms from two values on
        lines->front() = values.empty() ? 0.0 : values.front();
        return;
    }
    m_plans->transform.fwd(lines->data(), values.data(), static_cast<Eigen::Index>(values.size()));
}

void Fft::Forward(std::span<const Complex> values, std::vector<Complex>* lines) {
    lines->assign(values.begin(), values.end());
    if (values.size() > 1) {
        m_plans->transform.fwd(lines->data(), values.data(),
                               static_cast<Eigen::Index>(values.size()));
    }
}

void Fft::Inverse(std::span<const Complex> lines, std::size_t n, std::vector<double>* values) {
    values->resize(n);
    if (n < 2) {
        if (n == 1) {
            values->front() = lines.front().real();
        }
        return;
    }
    m_plans->transform.inv(values->data(), lines.data(), static_cast<Eigen::Index>(n));
}

std::size_t GoodLengthUpTo(std::size_t n) {
    while (n > 1 && !IsGoodLength(n)) {
        --n;
    }
    return n;
}

std::size_t GoodLengthFrom(std::size_t n) {
    while (n > 1 && !IsGoodLength(n)) {
        ++n;
    }
    return n == 0 ? 1 : n;
}

}  // namespace wavo::measure
