// pump_charts.js: what each pump can do, what the network asks of it, and where both meet.
import * as Plot from '@observablehq/plot';
import {h} from './dom.js';
import {prettyUnit, shortNumber, withUnit} from './numbers.js';

const kSystemLabels = {
    solved: 'System curve: the network solved with the flow of the pump given',
    estimated: 'System curve estimated: a static part and losses that grow with the square of the flow',
};

export function pumpCharts(section, model, choose) {
    const {pumps, pumpCount} = model.data;
    if (pumps.length === 0) {
        section.remove();
        return;
    }
    section.append(h('div', {class: 'charts'}, pumps.map(pump => chartOf(pump, model, choose))));
    if (pumps.length < pumpCount)
        section.append(h('p', {class: 'hint'}, `The first ${pumps.length} of ${pumpCount} pumps are shown.`));
}

/** What is left of a flow when a valve behind the pump is shut counts as none. */
const kNoFlow = 1e-5;

function dutyText([flow, rise], largestFlow, units) {
    if (flow === null || rise === null) return 'carries no flow';
    const flowText = Math.abs(flow) < kNoFlow * largestFlow ? 'No flow' : withUnit(flow, units.volume_flow);
    return `${flowText} at ${withUnit(rise, units.pressure)}`;
}

function chartOf(pump, model, choose) {
    const {volume_flow: flowUnit, pressure: riseUnit} = model.units;
    const [dutyFlow, dutyRise] = pump.duty;
    const isRunning = dutyFlow !== null && dutyRise !== null;
    const points = [...pump.curve, ...pump.given, ...(isRunning ? [pump.duty] : [])];
    const largestFlow = 1.04 * Math.max(...points.map(([flow]) => flow));
    const largestRise = 1.12 * Math.max(...points.map(([, rise]) => rise));
    const lowestRise = Math.min(0, ...points.map(([, rise]) => rise), ...pump.system.map(([, rise]) => rise));
    const system = pump.system.filter(([flow, rise]) => flow <= largestFlow && rise <= largestRise);
    const chart = Plot.plot({
        width: 560, height: 330, marginLeft: 56, marginBottom: 42, marginTop: 26, marginRight: 16,
        style: {fontSize: '12px', fontFamily: 'inherit', background: 'none'},
        x: {label: `Volume flow (${prettyUnit(flowUnit)})`, domain: [0, largestFlow], ticks: 6, tickFormat: value => shortNumber(value), labelAnchor: 'right', labelArrow: 'none'},
        y: {label: `Pressure rise (${prettyUnit(riseUnit)})`, domain: [lowestRise, largestRise], ticks: 6, tickFormat: value => shortNumber(value), nice: true, grid: true, labelArrow: 'none'},
        marks: [
            Plot.ruleY([0], {stroke: 'var(--line-strong)'}),
            Plot.line(pump.curve, {stroke: 'var(--blue)', strokeWidth: 2.2, curve: 'monotone-x', clip: true}),
            Plot.dot(pump.given, {fill: 'var(--paper)', stroke: 'var(--blue)', r: 3.2, strokeWidth: 1.4}),
            Plot.line(system, {stroke: 'var(--orange)', strokeWidth: 2, strokeDasharray: pump.systemCurve === 'estimated' ? '5 4' : null,
                               curve: 'monotone-x', clip: true}),
            ...(isRunning ? [
                Plot.ruleX([dutyFlow], {y1: 0, y2: dutyRise, stroke: 'var(--faint)', strokeDasharray: '2 3'}),
                Plot.ruleY([dutyRise], {x1: 0, x2: dutyFlow, stroke: 'var(--faint)', strokeDasharray: '2 3'}),
                Plot.dot([pump.duty], {fill: 'var(--ink)', stroke: 'var(--paper)', strokeWidth: 1.5, r: 5.5}),
            ] : []),
        ],
    });
    const swatch = (colour, label, isDashed) => h('span', {class: `swatch${isDashed ? ' dashed' : ''}`, style: `--swatch: var(${colour})`}, label);
    return h('figure', {class: 'chart'},
        h('figcaption', {}, h('button', {type: 'button', class: 'link', onclick: () => choose({kind: 'element', index: pump.element})},
            model.nameOf({kind: 'element', index: pump.element})),
          h('span', {class: 'duty'}, dutyText(pump.duty, largestFlow, model.units))),
        chart,
        h('p', {class: 'swatches'}, swatch('--blue', 'Pump curve'),
          pump.systemCurve === 'none' ? null : swatch('--orange', kSystemLabels[pump.systemCurve], pump.systemCurve === 'estimated')));
}
