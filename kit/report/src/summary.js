// summary.js: the heading and the key figures.
import {h} from './dom.js';
import {shortNumber, wholeNumber, withUnit} from './numbers.js';

export function heading(model) {
    const {data} = model;
    const title = document.getElementById('title');
    title.textContent = data.title || data.file || 'Network';
    title.classList.toggle('long', title.textContent.length > 90);
    const facts = [data.scenario ? `Scenario ${data.scenario}` : '', data.file, fluidText(data.fluid)].filter(Boolean);
    document.getElementById('subtitle').append(...facts.map(fact => h('span', {}, fact)));
    const isConverged = data.outcome === 'converged';
    document.getElementById('badges').append(
        h('span', {class: `badge ${isConverged ? 'good' : 'error'}`},
            isConverged ? `Converged in ${counted(data.iterations, 'step')}` : data.outcome[0].toUpperCase() + data.outcome.slice(1)),
        data.certificate ? h('span', {class: `badge ${data.certificate.isGood ? 'good' : 'error'}`},
            data.certificate.isGood ? 'Certificate holds' : 'Certificate does not hold') : '');
    document.getElementById('footer').append(
        h('span', {}, `tavell ${data.version}`), data.hash ? h('span', {}, 'model ', h('code', {}, data.hash.slice(0, 16))) : '',
        data.source ? h('p', {class: 'source'}, h('strong', {}, 'Source '), data.source) : '');
}

/** "Water, 20 °C, 998.2 kg/m³" */
function fluidText(rows) {
    const [[, name], ...values] = rows;
    // "Water at 20 degC" has said its temperature
    const isNamed = ([label, value]) => label === 'Temperature' && name.includes(shortNumber(value));
    return [name, ...values.filter(row => !isNamed(row)).slice(0, 2).map(([, value, unit]) => withUnit(value, unit))].join(', ');
}

/** Tiles with the figures that are asked for first; those of an object lead to it. */
export function keyFigures(section, model, choose) {
    const {data, nodes, elements, units} = model;
    const tiles = [tile('Network', counted(model.nodeCount, 'node'), counted(model.elementCount, 'element'))];
    if (data.hasResults) {
        // a given pressure is no result
        const free = nodes.pressure.map((value, n) => nodes.boundary[n] === 1 ? null : value);
        const lowest = extreme(free, -1);
        const highest = extreme(free, 1);
        const fastest = extreme(elements.velocity.map(value => value === null ? null : Math.abs(value)), 1);
        const supply = nodes.supply.reduce((sum, value) => sum + Math.max(0, value ?? 0), 0);
        const objectTile = (label, kind, index, value, unit) => index < 0 ? ''
            : tile(label, withUnit(value, unit), h('button', {type: 'button', class: 'link', onclick: () => choose({kind, index})}, model.nameOf({kind, index})));
        tiles.push(tile('Total supply', withUnit(supply, units.mass_flow), counted(nodes.boundary.filter(mark => mark > 0).length, 'boundary', 'boundaries')),
            objectTile('Lowest pressure', 'node', lowest, nodes.pressure[lowest], units.pressure),
            objectTile('Highest pressure', 'node', highest, nodes.pressure[highest], units.pressure),
            objectTile('Highest velocity', 'element', fastest, Math.abs(elements.velocity[fastest] ?? 0), units.velocity));
    }
    const counts = severity => data.findings.filter(finding => finding.severity === severity).length;
    const [errors, warnings] = [counts('error'), counts('warning')];
    tiles.push(tile('Findings', data.findings.length === 0 ? 'None' : wholeNumber(data.findings.length),
        h('a', {href: '#findings'}, `${counted(errors, 'error')}, ${counted(warnings, 'warning')}`)));
    section.append(...tiles.filter(Boolean));
}

function tile(label, value, detail) {
    return h('div', {class: 'tile'}, h('div', {class: 'label'}, label), h('div', {class: 'value'}, value), h('div', {class: 'detail'}, detail));
}

function counted(count, one, many = `${one}s`) {
    return `${wholeNumber(count)} ${count === 1 ? one : many}`;
}

/** The position of the largest value (sign 1) or the smallest (-1); -1 when there is none. */
function extreme(values, sign) {
    let best = -1;
    for (let i = 0; i < values.length; ++i) {
        if (values[i] === null) continue;
        if (best < 0 || sign * values[i] > sign * values[best]) best = i;
    }
    return best;
}
