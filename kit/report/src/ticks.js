// ticks.js: round values on a scale.
import {ticks} from 'd3';

/** Round values from low to high, about so many; the one value where both are the same. */
export function niceTicks(low, high, about) {
    return high > low ? ticks(low, high, about) : [low];
}

/** Digits that tell neighbouring ticks and what lies between them apart: 4, and more on a narrow scale far from 0. */
export function digitsFor(values) {
    if (values.length < 2) return 4;
    const largest = Math.max(...values.map(Math.abs));
    return Math.max(4, Math.ceil(Math.log10(largest / (values[1] - values[0]))) + 2);
}
