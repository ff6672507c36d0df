"""Random numbers whose bits depend on nothing but seed, stream and place.

Draw k of stream i is output number k of the generator Philox 4x64 with ten rounds (Salmon, Moraes, Dror & Shaw
2011) with the key (seed, i), as NumPy has it. Its upper 52 bits m make u = (m + 1/2) / 2^52, which is exact, above 0
and below 1. Distributions are functions of u that use +, -, *, / and square roots of doubles alone, which IEEE
754 gives to the last bit: logarithms and exponentials of a mathematical library may differ between processors, so
they are made here.
"""

from __future__ import annotations

import math
from typing import Any, Callable, Dict, List, Sequence, Tuple

import numpy as np
import numpy.typing as npt

from .._arrays import Floats

GENERATOR = "philox4x64"

_OUTPUTS_OF_A_COUNT = 4  # of Philox 4x64
_LN2_HIGH = 6.93147180369123816490e-01  # its last 32 bits are 0, so that whole multiples are exact
_LN2_LOW = 1.90821492927058770002e-10
_LATTICE = 2**52


def raw(seed: int, stream: int, start: int, count: int) -> npt.NDArray[np.uint64]:
    """Outputs start to start + count - 1 of a stream."""
    generator = np.random.Philox(key=np.array([seed, stream], dtype=np.uint64))
    generator.advance(start // _OUTPUTS_OF_A_COUNT)
    skipped = start % _OUTPUTS_OF_A_COUNT
    numbers: npt.NDArray[np.uint64] = generator.random_raw(skipped + count)[skipped:]
    return numbers


def uniform(seed: int, stream: int, start: int, count: int) -> Floats:
    """Draws above 0 and below 1."""
    lattice = (raw(seed, stream, start, count) >> np.uint64(12)).astype(np.float64)
    draws: Floats = (lattice + 0.5) / _LATTICE
    return draws


def _polynomial(coefficients: Sequence[float], x: Floats) -> Floats:
    """Horner's rule; the coefficient of the highest power comes first."""
    value = np.full_like(x, coefficients[0])
    for coefficient in coefficients[1:]:
        value = value * x
        value = value + coefficient
    return value


def log(x: Floats) -> Floats:
    """Natural logarithm of positive numbers: m 2^e with m from sqrt(1/2) to sqrt(2), and ln m = 2 artanh(s),
    s = (m - 1) / (m + 1), as a series in s up to s^23."""
    m, e = np.frexp(x)
    is_low = m < math.sqrt(0.5)
    m = np.where(is_low, m * 2.0, m)
    exponent = np.where(is_low, e - 1, e).astype(np.float64)
    s: Floats = (m - 1.0) / (m + 1.0)
    square: Floats = s * s
    series = _polynomial([2.0 / n for n in range(23, 0, -2)], square)
    value: Floats = exponent * _LN2_HIGH + (s * series + exponent * _LN2_LOW)
    return value


def exp(x: Floats) -> Floats:
    """Exponential: 2^n e^r with r from -ln(2)/2 to ln(2)/2, and the power series of e^r up to r^16."""
    n = np.rint(x / math.log(2.0))
    r = (x - n * _LN2_HIGH) - n * _LN2_LOW
    series = _polynomial([1.0 / math.factorial(i) for i in range(16, -1, -1)], r)
    value: Floats = np.ldexp(series, n.astype(np.int64))
    return value


# Wichura (1988), algorithm AS 241, PPND16: numerators and denominators, the highest power first.
_CENTRE = (
    [
        2509.0809287301226727,
        33430.575583588128105,
        67265.770927008700853,
        45921.953931549871457,
        13731.693765509461125,
        1971.5909503065514427,
        133.14166789178437745,
        3.387132872796366608,
    ],
    [
        5226.495278852545925,
        28729.085735721942674,
        39307.89580009271061,
        21213.794301586595867,
        5394.1960214247511077,
        687.1870074920579083,
        42.313330701600911252,
        1.0,
    ],
)
_MIDDLE = (
    [
        7.7454501427834140764e-4,
        0.0227238449892691845833,
        0.24178072517745061177,
        1.27045825245236838258,
        3.64784832476320460504,
        5.7694972214606914055,
        4.6303378461565452959,
        1.42343711074968357734,
    ],
    [
        1.05075007164441684324e-9,
        5.475938084995344946e-4,
        0.0151986665636164571966,
        0.14810397642748007459,
        0.68976733498510000455,
        1.6763848301838038494,
        2.05319162663775882187,
        1.0,
    ],
)
_TAIL = (
    [2.01033439929228813265e-7, 2.71155556874348757815e-5, 0.0012426609473880784386, 0.026532189526576123093,
     0.29656057182850489123, 1.7848265399172913358, 5.4637849111641143699, 6.6579046435011037772],
    [2.04426310338993978564e-15, 1.4215117583164458887e-7, 1.8463183175100546818e-5, 7.868691311456132591e-4,
     0.0148753612908506148525, 0.13692988092273580531, 0.59983220655588793769, 1.0],
)  # fmt: skip


def _ratio(coefficients: Tuple[List[float], List[float]], x: Floats) -> Floats:
    return _polynomial(coefficients[0], x) / _polynomial(coefficients[1], x)


def normal_quantile(u: Floats) -> Floats:
    """Inverse distribution function of the standard normal distribution (Wichura 1988, AS 241)."""
    q = u - 0.5
    central = q * _ratio(_CENTRE, 0.180625 - q * q)
    r = np.sqrt(-log(np.minimum(u, 1.0 - u)))
    size = np.where(r <= 5.0, _ratio(_MIDDLE, r - 1.6), _ratio(_TAIL, r - 5.0))
    value: Floats = np.where(np.abs(q) <= 0.425, central, np.where(q < 0.0, -size, size))
    return value


Quantile = Callable[[Floats], Floats]


def _uniform(low: float, high: float) -> Quantile:
    return lambda u: low + (high - low) * u


def _triangular(low: float, mode: float, high: float) -> Quantile:
    width, left, right = high - low, mode - low, high - mode

    def quantile(u: Floats) -> Floats:
        rising = low + np.sqrt(u * width * left)
        falling = high - np.sqrt((1.0 - u) * width * right)
        value: Floats = np.where(u * width < left, rising, falling)
        return value

    return quantile


def _discrete(values: Sequence[float], weights: Sequence[float]) -> Quantile:
    ends = []
    total = 0.0
    for weight in weights:
        total += weight
        ends.append(total)
    choices = np.array(values, dtype=np.float64)

    def quantile(u: Floats) -> Floats:
        place = np.searchsorted(np.array(ends[:-1]), u * total, side="right")
        chosen: Floats = choices[place]
        return chosen

    return quantile


class BadDistribution(ValueError):
    """Parameters that no distribution has."""


def _numbers(given: Dict[str, Any], *names: str) -> List[float]:
    missing = [name for name in names if name not in given]
    if missing:
        raise BadDistribution(f'"{missing[0]}" is missing')
    values = []
    for name in names:
        value = given[name]
        if isinstance(value, bool) or not isinstance(value, (int, float)) or not math.isfinite(value):
            raise BadDistribution(f'"{name}" is {value!r}, which is no finite number')
        values.append(float(value))
    return values


def _require(holds: bool, message: str) -> None:
    if not holds:
        raise BadDistribution(message)


def _weights(given: Dict[str, Any]) -> Tuple[List[float], List[float]]:
    values = given.get("values")
    if not isinstance(values, list) or not values:
        raise BadDistribution('"values" is no list of numbers')
    weights = given.get("weights", [1.0] * len(values))
    if not isinstance(weights, list) or len(weights) != len(values):
        raise BadDistribution(f'"weights" does not have the {len(values)} numbers that "values" has')
    for number in values + weights:
        if isinstance(number, bool) or not isinstance(number, (int, float)) or not math.isfinite(number):
            raise BadDistribution(f"{number!r} is no finite number")
    _require(min(weights) >= 0.0 and sum(weights) > 0.0, "the weights are negative or all 0")
    return [float(value) for value in values], [float(weight) for weight in weights]


def _plain(given: Dict[str, Any]) -> Quantile:
    name = given["distribution"]
    if name == "uniform":
        low, high = _numbers(given, "low", "high")
        _require(low < high, f'"low" {low!r} is not below "high" {high!r}')
        return _uniform(low, high)
    if name == "normal":
        mean, sd = _numbers(given, "mean", "sd")
        _require(sd > 0.0, f'"sd" {sd!r} is not above 0')
        return lambda u: mean + sd * normal_quantile(u)
    if name == "lognormal":
        median, sigma = _numbers(given, "median", "sigma")
        _require(median > 0.0, f'"median" {median!r} is not above 0')
        _require(sigma > 0.0, f'"sigma" {sigma!r} is not above 0')
        return lambda u: median * exp(sigma * normal_quantile(u))
    if name == "triangular":
        low, mode, high = _numbers(given, "low", "mode", "high")
        _require(
            low < high and low <= mode <= high,
            f'"low", "mode" and "high" are not in order: {low!r}, ' f"{mode!r}, {high!r}",
        )
        return _triangular(low, mode, high)
    return _discrete(*_weights(given))


_KEYS = {
    "uniform": {"low", "high"},
    "normal": {"mean", "sd"},
    "lognormal": {"median", "sigma"},
    "triangular": {"low", "mode", "high"},
    "discrete": {"values", "weights"},
}
_LEAST_SHARE = 1e-6  # of a distribution between the ends that truncate it


def _share_below(quantile: Quantile, end: float) -> float:
    """The distribution function at an end, found on the lattice of u by bisection."""
    low, high = 0, _LATTICE
    while low < high:
        middle = (low + high) // 2
        value = quantile(np.array([(middle + 0.5) / _LATTICE]))[0]
        if value < end:
            low = middle + 1
        else:
            high = middle
    return low / _LATTICE


def distribution(given: Any) -> Quantile:
    """The inverse distribution function of an object such as {"distribution": "normal", "mean": 1, "sd": 0.1,
    "truncate": [0.5, 1.5]}. Raises BadDistribution."""
    if not isinstance(given, dict) or given.get("distribution") not in _KEYS:
        raise BadDistribution(f'it has no "distribution" that is one of {", ".join(_KEYS)}')
    unknown = set(given) - _KEYS[given["distribution"]] - {"distribution", "truncate"}
    if unknown:
        raise BadDistribution(f'a {given["distribution"]} distribution has no "{sorted(unknown)[0]}"')
    quantile = _plain(given)
    if "truncate" not in given:
        return quantile
    ends = given["truncate"]
    if not isinstance(ends, list) or len(ends) != 2 or given["distribution"] == "discrete":
        raise BadDistribution('"truncate" is no pair of numbers of a continuous distribution')
    low, high = _numbers({"low": ends[0], "high": ends[1]}, "low", "high")
    _require(low < high, f'"truncate" has {low!r} not below {high!r}')
    below_low, below_high = _share_below(quantile, low), _share_below(quantile, high)
    _require(
        below_high - below_low >= _LEAST_SHARE,
        f"there is next to nothing of the distribution between {low!r} and {high!r}",
    )

    def truncated(u: Floats) -> Floats:
        value: Floats = np.clip(quantile(below_low + (below_high - below_low) * u), low, high)
        return value

    return truncated
