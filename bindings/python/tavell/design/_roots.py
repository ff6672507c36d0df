"""Where a function of one number is zero."""

from __future__ import annotations

import sys
from typing import Callable, Optional, Tuple

Function = Callable[[float], float]

# Steps; bisection alone needs about 60 for a number in double precision.
_MOST_STEPS = 100


def find_root(function: Function, a: float, b: float, accuracy: float) -> float:
    """A zero of a function between a and b, where its signs differ, to an accuracy in its argument: by
    scipy.optimize.brentq when SciPy is there, else by the same method here."""
    try:
        from scipy.optimize import brentq
    except ImportError:
        return brent(function, a, b, accuracy)
    rounding = 4.0 * sys.float_info.epsilon
    return float(brentq(function, a, b, xtol=accuracy, rtol=rounding, maxiter=_MOST_STEPS, disp=False))


def brent(function: Function, a: float, b: float, accuracy: float) -> float:
    """Inverse quadratic interpolation guarded by bisection (Brent, Algorithms for Minimization without
    Derivatives, 1973, chapter 4)."""
    fa, fb = function(a), function(b)
    if fa == 0.0:
        return a
    c, fc = a, fa
    step = last_step = b - a
    for _ in range(_MOST_STEPS):
        if (fb > 0.0) == (fc > 0.0):
            c, fc = a, fa
            step = last_step = b - a
        if abs(fc) < abs(fb):
            a, b, c = b, c, b
            fa, fb, fc = fb, fc, fb
        tolerance = 2.0 * sys.float_info.epsilon * abs(b) + 0.5 * accuracy
        middle = 0.5 * (c - b)
        if fb == 0.0 or abs(middle) <= tolerance:
            return b
        trial = _interpolated((a, fa), (b, fb), (c, fc))
        is_good = trial is not None and abs(trial) < min(
            1.5 * abs(middle) - 0.5 * tolerance, 0.5 * abs(last_step)
        )
        if trial is not None and is_good and trial * middle > 0.0:
            last_step, step = step, trial
        else:
            last_step = step = middle
        a, fa = b, fb
        b += step if abs(step) > tolerance else (tolerance if middle > 0.0 else -tolerance)
        fb = function(b)
    return b


Point = Tuple[float, float]


def _interpolated(a: Point, b: Point, c: Point) -> Optional[float]:
    """The step from b to the zero of the parabola in the function's value through three points, of the
    straight line where two of them are one; None where there is none."""
    (xa, fa), (xb, fb), (xc, fc) = a, b, c
    if abs(fa) <= abs(fb):
        return None
    s = fb / fa
    if xa == xc:
        p, q = (xc - xb) * s, 1.0 - s
    else:
        r, t = fb / fc, fa / fc
        p = s * ((xc - xb) * t * (t - r) - (xb - xa) * (r - 1.0))
        q = -(t - 1.0) * (r - 1.0) * (s - 1.0)
    return p / q if q != 0.0 else None
