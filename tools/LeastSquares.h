// The solution of more equations than unknowns that leaves the least sum of squares.
#pragma once

#include <Eigen/Core>

namespace J4Tool {

/// By a QR decomposition with pivoting, which bears equations that depend on one another.
/// @param slopes  equations by unknowns
/// @param values  one for each equation
Eigen::VectorXd SolveLeastSquares(const Eigen::MatrixXd& slopes, const Eigen::VectorXd& values);

}  // namespace J4Tool
