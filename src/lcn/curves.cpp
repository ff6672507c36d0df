#include "curves.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "constants.h"
#include "errors.h"

namespace lcn
{

namespace
{

constexpr int kTerms = 4;                // coefficients of a cubic
constexpr double kZeroTolerance = 1e-8;  // [-] relative change at which the zero search of a pump has settled
constexpr int kNewtonSteps = 1000;       // of one zero search
constexpr int kMostAttempts = 100;       // rejections and the accepted zero, counted from 1

using Row = std::array<double, kTerms>;

bool isUsable(const lcnNET_pumps& curve)
{
    const int n = curve.points();
    if (n < kTerms || curve.FlowRate.size() != n || !std::isfinite(curve.RefDensity)) return false;
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(curve.FlowRate[i]) || !std::isfinite(curve.PressurePoints[i])) return false;
        if (i > 0 && curve.FlowRate[i - 1] >= curve.FlowRate[i]) return false;
    }
    return true;
}

/// Householder reflection of column j: makes the rows below j zero there, and applies it to the later columns
/// and y.
/// Returns the diagonal entry R(j, j).
double reflectColumn(std::vector<Row>& rows, std::vector<double>& y, std::size_t j)
{
    double norm2 = 0.0;
    for (std::size_t i = j; i < rows.size(); ++i)
        norm2 += rows[i][j] * rows[i][j];
    const double norm = std::sqrt(norm2);
    if (norm == 0.0) return 0.0;

    // v = x + sign(x1) |x| e1 avoids cancellation; the reflection is I - beta v v'
    const double diagonal = rows[j][j] > 0.0 ? -norm : norm;
    rows[j][j] -= diagonal;
    double vv = 0.0;
    for (std::size_t i = j; i < rows.size(); ++i)
        vv += rows[i][j] * rows[i][j];
    const double beta = 2.0 / vv;

    for (std::size_t c = j + 1; c < kTerms; ++c) {
        double vx = 0.0;
        for (std::size_t i = j; i < rows.size(); ++i)
            vx += rows[i][j] * rows[i][c];
        for (std::size_t i = j; i < rows.size(); ++i)
            rows[i][c] -= beta * vx * rows[i][j];
    }
    double vy = 0.0;
    for (std::size_t i = j; i < rows.size(); ++i)
        vy += rows[i][j] * y[i];
    for (std::size_t i = j; i < rows.size(); ++i)
        y[i] -= beta * vy * rows[i][j];
    return diagonal;
}

/// The flow [m3/s] at which a pump's stored cubic rises through zero, by Newton's method from q. Nothing when
/// the search does not settle or meets a vanishing slope.
std::optional<double> newtonZero(const lcnNET_pumps& p, double q)
{
    for (int step = 0; step < kNewtonSteps; ++step) {
        const double S = p.a + p.b * q + p.c * q * q + p.d * q * q * q;
        const double slope = p.b + 2.0 * p.c * q + 3.0 * p.d * q * q;
        if (std::fabs(slope) < kTiny) return std::nullopt;
        const double next = q - S / slope;
        if (next == q || std::fabs((q - next) / next) <= kZeroTolerance) return next;
        q = next;
    }
    return std::nullopt;
}

bool fallsThroughZero(const lcnNET_pumps& p, double q)
{
    const double slope = p.b + 2.0 * p.c * q + 3.0 * p.d * q * q;
    return q >= 0.0 && slope >= 0.0;
}

/// Flow of zero pressure rise [m3/s]; starts at 0, after the r-th rejection at largestFlow / (r + 1).
double zeroRiseFlow(const lcnNET_pumps& p, double largestFlow, lcnNET_var& var)
{
    int counter = 1;
    double guess = 0.0;
    for (int rejections = 1;; ++rejections) {
        const std::optional<double> zero = newtonZero(p, guess);
        if (++counter > kMostAttempts) lcnErrmsg(var, kCurveError, 0, 0, 0, var.InletNode);
        if (zero && fallsThroughZero(p, *zero)) return *zero;

        guess = largestFlow / (rejections + 1);
        // a restart that stands where the search just ended cannot lead anywhere else: it is the answer
        if (zero && std::fabs((*zero - guess) / guess) <= kZeroTolerance) return guess;
    }
}

}  // namespace

std::optional<std::array<double, 4>> fitCubic(const lcnNET_pumps& curve)
{
    if (!isUsable(curve)) return std::nullopt;

    const int n = curve.points();
    std::vector<Row> rows(static_cast<std::size_t>(n));
    std::vector<double> y(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const double x = curve.FlowRate[i];
        rows[static_cast<std::size_t>(i)] = {std::pow(x, 0.0), std::pow(x, 1.0), std::pow(x, 2.0),
                                             std::pow(x, 3.0)};
        y[static_cast<std::size_t>(i)] = curve.PressurePoints[i] / curve.RefDensity;
    }

    Row diagonal;
    for (std::size_t j = 0; j < kTerms; ++j)
        diagonal[j] = reflectColumn(rows, y, j);

    Row c{};
    for (std::size_t j = kTerms; j-- > 0;) {
        double sum = y[j];
        for (std::size_t m = j + 1; m < kTerms; ++m)
            sum -= rows[j][m] * c[m];
        if (diagonal[j] == 0.0) return std::nullopt;
        c[j] = sum / diagonal[j];
    }
    return c;
}

bool preparePump(lcnNET_pumps& curve, lcnNET_var& var)
{
    const auto cubic = fitCubic(curve);
    if (!cubic) return false;
    // kept: a pump stores minus the pressure rise, a loss its pressure drop; both are then "drop along the
    // flow".
    curve.a = -(*cubic)[0];
    curve.b = -(*cubic)[1];
    curve.c = -(*cubic)[2];
    curve.d = -(*cubic)[3];

    double largestFlow = curve.FlowRate[0];
    for (int i = 1; i < curve.points(); ++i)
        largestFlow = std::max(largestFlow, curve.FlowRate[i]);
    curve.qmax = zeroRiseFlow(curve, largestFlow, var);
    return true;
}

bool prepareLoss(lcnNET_pumps& curve)
{
    const auto cubic = fitCubic(curve);
    if (!cubic) return false;
    // kept: the constant term is dropped without fitting the others again; a loss has no pressure drop at
    // rest.
    curve.a = 0.0;
    curve.b = (*cubic)[1];
    curve.c = (*cubic)[2];
    curve.d = (*cubic)[3];
    curve.qmax = curve.FlowRate[curve.points() - 1];
    return true;
}

double lossCurvePressure(const lcnNET_pumps& curve, double Q)
{
    const int n = curve.points();
    if (n == 0) return 0.0;
    const double last = curve.PressurePoints[n - 1];
    if (!(Q > 0.0) || Q > curve.FlowRate[n - 1]) return last;
    if (Q <= curve.FlowRate[0]) return curve.PressurePoints[0];

    // first flow point that is not below Q
    const double* flows = &curve.FlowRate[0];
    const int i = static_cast<int>(std::lower_bound(flows, flows + n, Q) - flows);
    const double q0 = curve.FlowRate[i - 1], q1 = curve.FlowRate[i];
    const double p0 = curve.PressurePoints[i - 1], p1 = curve.PressurePoints[i];
    return p0 + (p1 - p0) * (Q - q0) / (q1 - q0);
}

}  // namespace lcn
