// numbers.js: numbers as texts, the same in every country.

const kMinus = '\u2212';

/** A number to about four digits: "0.003412", "12.4", "104 250", "2.1e-7"; a dash for what is not defined. */
export function shortNumber(value, digits = 4) {
    if (value === null || value === undefined || !Number.isFinite(value)) return '\u2013';
    if (value === 0) return '0';
    const size = Math.abs(value);
    if (size < 1e-4 || size >= 1e7) return value.toExponential(2).replace('e+', 'e').replaceAll('-', kMinus);
    const decimals = Math.max(0, Math.min(8, digits - 1 - Math.floor(Math.log10(size))));
    let text = value.toFixed(decimals);
    if (text.includes('.')) text = text.replace(/\.?0+$/, '');
    return withMinus(grouped(text));
}

/**
 * A formatter for the values of a column: the same number of decimals for all, enough for four digits of the largest
 * value and three of the median.
 */
export function columnFormat(values) {
    const sizes = Float64Array.from(values.filter(value => value !== null && value !== 0), Math.abs).sort();
    const decimalsOf = (value, digits, most) => Math.max(0, Math.min(most, digits - 1 - Math.floor(Math.log10(value))));
    const decimals = sizes.length === 0 ? 0
        : Math.max(decimalsOf(sizes[sizes.length - 1], 4, 9), decimalsOf(sizes[sizes.length >> 1], 3, 5));
    const smallest = 0.5 * 10 ** -decimals;
    return value => {
        if (value === null || value === undefined || !Number.isFinite(value)) return '\u2013';
        if (value === 0) return '0';
        if (Math.abs(value) < smallest || Math.abs(value) >= 1e9) return withMinus(value.toExponential(1).replace('e+', 'e'));
        return withMinus(grouped(value.toFixed(decimals)));
    };
}

/** A number of things. */
export function wholeNumber(count) {
    return grouped(String(count));
}

/** A number with its unit. */
export function withUnit(value, unit) {
    const text = shortNumber(value);
    return unit && text !== '\u2013' ? `${text}\u00a0${prettyUnit(unit)}` : text;
}

/** "m3/h" as "m³/h", "degC" as "°C". */
export function prettyUnit(unit) {
    return unit.replace(/^deg(?=[CFKR])/, '°').replace(/([a-z])2(?![0-9A-Za-z])/g, '$1²')
        .replace(/([a-z])3(?![0-9A-Za-z])/g, '$1³').replace(/\bu(?=m\b)/, 'µ');
}

/** Thin spaces between groups of three from five digits on. */
function grouped(text) {
    const [whole, fraction] = text.split('.');
    const digits = whole.replace('-', '');
    if (digits.length < 5) return text;
    const sign = whole.startsWith('-') ? '-' : '';
    const groups = digits.replace(/\B(?=(\d{3})+$)/g, '\u202f');
    return sign + groups + (fraction === undefined ? '' : `.${fraction}`);
}

function withMinus(text) {
    return text.replaceAll('-', kMinus);
}
