// colours.js: values as colours of viridis, which is perceptually uniform and readable for the colour-blind.
import {interpolateViridis} from 'd3';

/** Colours of a scale are drawn from so many steps. */
export const kSteps = 64;

/** The step of elements and nodes without a value. */
export const kNoStep = kSteps;

/** The end of the scale that cannot be told from the page is left out: the palest on white, the darkest on black. */
const kEnds = {light: [0, 0.93], dark: [0.14, 1]};

export function colourAt(fraction, theme) {
    const [low, high] = kEnds[theme];
    return interpolateViridis(low + Math.max(0, Math.min(1, fraction)) * (high - low));
}

export function fractionOf(quantity, value) {
    if (!(quantity.high > quantity.low)) return 0.5;
    return Math.max(0, Math.min(1, (value - quantity.low) / (quantity.high - quantity.low)));
}

export function stepOf(quantity, value) {
    if (value === null || value === undefined || !Number.isFinite(value)) return kNoStep;
    return Math.min(kSteps - 1, Math.floor(fractionOf(quantity, value) * kSteps));
}

/** The colour of every step, and last that of objects without a value. */
export function stepColours(theme, plain) {
    const colours = Array.from({length: kSteps}, (_, i) => colourAt((i + 0.5) / kSteps, theme));
    return [...colours, plain];
}

/** A CSS gradient from the low end at the left to the high end at the right. */
export function gradient(theme) {
    const stops = Array.from({length: 17}, (_, i) => colourAt(i / 16, theme));
    return `linear-gradient(to right, ${stops.join(', ')})`;
}
