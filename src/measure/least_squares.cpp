#include "measure/least_squares.h"

#include <Eigen/Dense>
#include <algorithm>
#include <limits>

namespace wavo::measure {

namespace {

/// Rows that are reduced at a time: with ten columns they stay in the nearest cache.
constexpr std::size_t kRowsAtATime = 256;
/// Below this share of the largest a diagonal entry counts as none.
constexpr double kRankTolerance = 1e-12;

}  // namespace

LeastSquares::LeastSquares(std::size_t unknowns)
    : m_unknowns(unknowns),
      m_stride(unknowns + 1 + kRowsAtATime),
      m_block(m_stride * (unknowns + 1)) {}

void LeastSquares::Add(std::span<const double> row) {
    double* to = NextRow();
    for (std::size_t i = 0; i <= m_unknowns; ++i) {
        to[i * m_stride] = row[i];
    }
}

/// Householder's reflections, column by column. What is below the triangle becomes free for rows.
void LeastSquares::Reduce() {
    const std::size_t columns = m_unknowns + 1;
    const std::size_t rows = m_row;
    for (std::size_t pivot = 0; pivot < std::min(columns, rows); ++pivot) {
        double* column = m_block.data() + pivot * m_stride;
        const std::size_t below = rows - pivot - 1;
        Eigen::Map<Eigen::VectorXd> tail(column + pivot + 1, static_cast<Eigen::Index>(below));
        const double squares = tail.squaredNorm();
        if (squares == 0.0) {
            continue;
        }
        const double head = column[pivot];
        const double norm = std::sqrt(head * head + squares);
        const double diagonal = head > 0.0 ? -norm : norm;
        const double factor =
            1.0 / (diagonal * (diagonal - head));  // 2 / |v|^2, v = (head - diagonal, tail)
        for (std::size_t other = pivot + 1; other < columns; ++other) {
            double* target = m_block.data() + other * m_stride;
            Eigen::Map<Eigen::VectorXd> rest(target + pivot + 1, static_cast<Eigen::Index>(below));
            const double share = ((head - diagonal) * target[pivot] + tail.dot(rest)) * factor;
            target[pivot] -= share * (head - diagonal);
            rest -= share * tail;
        }
        column[pivot] = diagonal;
        tail.setZero();
    }
    m_row = std::min(columns, rows);
}

LeastSquares::Solution LeastSquares::Solve() {
    Reduce();
    const auto size = static_cast<Eigen::Index>(m_unknowns);
    const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> block(
        m_block.data(), size + 1, size + 1,
        Eigen::OuterStride<>(static_cast<Eigen::Index>(m_stride)));
    Solution solution;
    solution.unknowns.assign(m_unknowns, 0.0);
    solution.variance.assign(m_unknowns, 0.0);
    solution.condition = std::numeric_limits<double>::infinity();
    solution.residual = block(size, size) * block(size, size);
    if (m_row < m_unknowns) {
        return solution;
    }
    Eigen::MatrixXd triangle = block.topLeftCorner(size, size).triangularView<Eigen::Upper>();
    Eigen::VectorXd lengths = triangle.colwise().norm();
    for (Eigen::Index i = 0; i < size; ++i) {
        lengths[i] = lengths[i] > 0.0 ? lengths[i] : 1.0;
    }
    triangle = triangle * lengths.cwiseInverse().asDiagonal();
    const Eigen::JacobiSVD<Eigen::MatrixXd> values(triangle);
    const auto& singular = values.singularValues();
    solution.rank = static_cast<std::size_t>(
        (singular.array() > kRankTolerance * std::max(singular[0], 1e-300)).count());
    if (solution.rank < m_unknowns) {
        return solution;
    }
    solution.condition = singular[0] / singular[size - 1];
    const Eigen::VectorXd scaled =
        triangle.triangularView<Eigen::Upper>().solve(Eigen::VectorXd(block.col(size).head(size)));
    const Eigen::MatrixXd inverse =
        triangle.triangularView<Eigen::Upper>().solve(Eigen::MatrixXd::Identity(size, size));
    for (Eigen::Index i = 0; i < size; ++i) {
        const auto place = static_cast<std::size_t>(i);
        solution.unknowns[place] = scaled[i] / lengths[i];
        solution.variance[place] = inverse.row(i).squaredNorm() / (lengths[i] * lengths[i]);
    }
    return solution;
}

}  // namespace wavo::measure
