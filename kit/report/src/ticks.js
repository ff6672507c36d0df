// ticks.js: round values on a scale.
import {ticks} from 'd3';

/** Round values from low to high, about so many; the one value where both are the same. */
export function niceTicks(low, high, about) {
    return high > low ? ticks(low, high, about) : [low];
}
