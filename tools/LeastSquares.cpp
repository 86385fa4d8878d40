#include "tools/LeastSquares.h"

#include <Eigen/QR>

namespace J4Tool {

Eigen::VectorXd SolveLeastSquares(const Eigen::MatrixXd& slopes, const Eigen::VectorXd& values)
{
    return slopes.colPivHouseholderQr().solve(values);
}

}  // namespace J4Tool
