// profile.js: pressure or head along the shortest path between two nodes, and what changes it: friction, minor losses,
// height and pumps.
import * as Plot from '@observablehq/plot';
import {h} from './dom.js';
import {prettyUnit, shortNumber, withUnit} from './numbers.js';
import {searchBox} from './search_box.js';

/** Columns of elements, label and colour. Each is a change of static pressure from start to end of the element. */
const kParts = [
    {key: 'pump', label: 'Pumps', colour: 'var(--blue)'},
    {key: 'friction', label: 'Friction', colour: 'var(--orange)'},
    {key: 'minor', label: 'Minor losses', colour: 'var(--purple)'},
    {key: 'height_change', label: 'Height', colour: 'var(--teal)'},
    {key: 'other', label: 'Valves and others', colour: 'var(--faint)'},
];
/** Bars are drawn for paths of up to so many elements; longer ones are gathered into so many groups. */
/** Points of a path among which those are looked for whose names find room. */
const kMostNamed = 60;
const kMostBars = 160;
/** Share of the largest flow below which a supply is but what a closed loop takes in. */
const kLeastSupply = 1e-3;

export class Profile {
    constructor(section, model, view) {
        this.model = model;
        this.view = view;
        this.ends = {start: null, end: null};
        this.quantity = 'pressure';
        if (!model.data.hasResults) {
            section.remove();
            return;
        }
        this.boxes = {};
        for (const end of ['start', 'end']) {
            this.boxes[end] = searchBox(model, {label: `${end === 'start' ? 'Start' : 'End'} of the path`, placeholder: 'Name of a node',
                                                onlyNodes: true, keepsName: true, choose: ({index}) => this.setEnd(end, index)});
        }
        const quantities = [['pressure', 'Pressure'], ['head', 'Head']].filter(([key]) => model.nodes[key]);
        this.buttons = quantities.map(([key, label]) => h('button', {type: 'button', 'data-key': key, onclick: () => this.show(key)}, label));
        this.output = h('div', {class: 'profile', 'aria-live': 'polite'});
        section.append(h('div', {class: 'toolbar'}, h('label', {class: 'field'}, h('span', {}, 'From'), this.boxes.start),
            h('label', {class: 'field'}, h('span', {}, 'to'), this.boxes.end),
            h('button', {type: 'button', class: 'quiet', title: 'Swap the ends', onclick: () => this.#swap()}, '\u21c4'),
            h('div', {class: 'segmented', role: 'group', 'aria-label': 'Quantity'}, this.buttons)), this.output);
        this.#chooseEnds();
        this.draw();
    }

    /** From the largest supply to the lowest pressure that it can reach: of an outlet, where there is one. In a closed loop
     * from the highest pressure to the node farthest from it. */
    #chooseEnds() {
        const {nodes, nodeCount} = this.model;
        const largestOf = (values, least) => {
            let best = -1;
            for (let n = 0; n < nodeCount; ++n) {
                if (nodes.pressure[n] !== null && (values[n] ?? -Infinity) > (best < 0 ? least : values[best])) best = n;
            }
            return best;
        };
        let start = largestOf(nodes.supply, kLeastSupply * this.model.largestFlow);
        const isLoop = start < 0;
        if (isLoop) start = largestOf(nodes.pressure, -Infinity);
        if (start < 0) return;
        const reached = this.#reachedFrom(start);
        const lowest = isWanted => {
            let best = -1;
            for (const n of reached) {
                if (n === start || nodes.pressure[n] === null || !isWanted(n)) continue;
                if (best < 0 || nodes.pressure[n] < nodes.pressure[best]) best = n;
            }
            return best;
        };
        const isDischarge = n => (nodes.supply[n] ?? 0) < 0;
        const end = isLoop ? reached.at(-1) : [isDischarge, n => nodes.boundary[n] !== 1, () => true].map(lowest).find(n => n >= 0);
        if (end === undefined || end === start) return;
        this.ends = {start, end};
        for (const key of ['start', 'end']) this.boxes[key].show({kind: 'node', index: this.ends[key]});
    }

    /** The nodes that can be reached, nearest first. */
    #reachedFrom(start) {
        const {model} = this;
        const {start: first, list} = model.incidence;
        const isReached = new Uint8Array(model.nodeCount);
        isReached[start] = 1;
        const queue = [start];
        for (let at = 0; at < queue.length; ++at) {
            for (let i = first[queue[at]]; i < first[queue[at] + 1]; ++i) {
                const e = list[i];
                const other = model.elements.from[e] === queue[at] ? model.elements.to[e] : model.elements.from[e];
                if (model.isClosed[e] || isReached[other]) continue;
                isReached[other] = 1;
                queue.push(other);
            }
        }
        return queue;
    }

    setEnd(end, node) {
        if (!this.boxes) return;
        this.ends[end] = node;
        this.boxes[end].show({kind: 'node', index: node});
        this.isChosen = true;
        this.draw();
    }

    #swap() {
        this.ends = {start: this.ends.end, end: this.ends.start};
        for (const end of ['start', 'end'])
            this.boxes[end].show(this.ends[end] === null ? null : {kind: 'node', index: this.ends[end]});
        this.draw();
    }

    show(key) {
        this.quantity = key;
        this.draw();
    }

    draw() {
        for (const button of this.buttons) button.setAttribute('aria-pressed', String(button.dataset.key === this.quantity));
        const {start, end} = this.ends;
        if (start === null || end === null) {
            this.output.replaceChildren(h('p', {class: 'hint'}, 'Choose two nodes by name, or in the drawing.'));
            return;
        }
        const path = start === end ? null : this.model.shortestPath(start, end);
        if (this.isChosen) this.view.showPath(path?.elements ?? []);
        if (path === null) {
            this.output.replaceChildren(h('p', {class: 'hint'}, start === end ? 'Both ends are the same node.'
                : 'No open elements lead from the one to the other.'));
            return;
        }
        const steps = this.#stepsOf(path);
        this.output.replaceChildren(this.#balance(path, steps), this.#lineChart(path, steps), this.#barChart(steps));
    }

    /** One step for every element of the path: where it begins and ends, and the parts of its change. */
    #stepsOf(path) {
        const {elements} = this.model;
        let distance = 0;
        return path.elements.map((e, i) => {
            const sign = elements.from[e] === path.nodes[i] ? 1 : -1;
            const begin = distance;
            distance += elements.length[e] ?? 0;
            const parts = {};
            for (const {key} of kParts) parts[key] = sign * (elements[key][e] ?? 0);
            return {index: i, name: elements.name[e], begin, end: distance, parts};
        });
    }

    /** Start pressure, the sums of all parts, end pressure. */
    #balance(path, steps) {
        const {model} = this;
        const unit = model.units.pressure;
        const values = model.nodes.pressure;
        const [start, end] = [path.nodes[0], path.nodes[path.nodes.length - 1]];
        const sums = kParts.map(part => ({...part, sum: steps.reduce((sum, step) => sum + step.parts[part.key], 0)}));
        const largest = Math.max(Math.abs(values[start]), Math.abs(values[end]), ...sums.map(({sum}) => Math.abs(sum)));
        const digits = largest > 0 ? Math.max(0, Math.min(6, 3 - Math.floor(Math.log10(largest)))) : 0;
        const text = value => shortNumber(Number(value.toFixed(digits)), 5);
        const cell = (label, value, colour) => h('div', {class: 'term', style: colour ? `--swatch: ${colour}` : null},
            h('span', {class: 'label'}, label), h('span', {class: 'value'}, value));
        const length = steps[steps.length - 1].end;
        return h('div', {class: 'balance'},
            cell(`Pressure at ${model.nodes.name[start]}`, withUnit(values[start], unit)),
            sums.filter(({sum}) => text(sum) !== '0').map(({label, colour, sum}) => cell(label, (sum > 0 ? '+' : '') + text(sum), colour)),
            cell(`Pressure at ${model.nodes.name[end]}`, withUnit(values[end], unit)),
            cell('Path', `${steps.length} ${steps.length === 1 ? 'element' : 'elements'}, ${withUnit(length, model.units.length)}`));
    }

    #lineChart(path, steps) {
        const {model} = this;
        const unit = model.units[this.quantity];
        const values = model.nodes[this.quantity];
        const distances = [0, ...steps.map(step => step.end)];
        const points = path.nodes.map((n, i) => ({distance: distances[i], value: values[n], height: model.nodes.height[n], name: model.nodes.name[n]}));
        const showsGround = this.quantity === 'head' && model.units.head === model.units.length;
        const label = this.quantity === 'head' ? 'Head' : 'Pressure';
        const named = points.length <= kMostNamed ? pointsWithRoom(points) : [];
        return h('figure', {class: 'chart wide'}, Plot.plot({
            width: 1160, height: 312, marginLeft: 60, marginBottom: 42, marginTop: 42, marginRight: 30,
            style: {fontSize: '12px', fontFamily: 'inherit', background: 'none'},
            x: {label: `Distance along the path (${prettyUnit(model.units.length)})`, labelArrow: 'none', labelAnchor: 'right', inset: 8, tickFormat: value => shortNumber(value)},
            y: {label: `${label} (${prettyUnit(unit)})`, grid: true, nice: true, labelArrow: 'none', zero: this.quantity === 'pressure',
                tickFormat: value => shortNumber(value)},
            marks: [
                showsGround ? Plot.areaY(points, {x: 'distance', y1: Math.min(...points.map(point => point.height)), y2: 'height', fill: 'var(--faint)', fillOpacity: 0.18}) : null,
                showsGround ? Plot.lineY(points, {x: 'distance', y: 'height', stroke: 'var(--faint)', strokeWidth: 1.2}) : null,
                Plot.lineY(points, {x: 'distance', y: 'value', stroke: 'var(--blue)', strokeWidth: 2.2}),
                points.length <= 80 ? Plot.dot(points, {x: 'distance', y: 'value', fill: 'var(--blue)', stroke: 'var(--paper)', r: 4}) : null,
                named.length > 0 ? Plot.text(named, {x: 'distance', y: 'value', text: 'name', dy: -12, fill: 'var(--ink)', stroke: 'var(--paper)', strokeWidth: 4}) : null,
                Plot.tip(points, Plot.pointer({x: 'distance', y: 'value', fill: 'var(--paper)', stroke: 'var(--line-strong)',
                    title: point => `${point.name}\n${withUnit(point.value, unit)}\n${withUnit(point.distance, model.units.length)}`})),
            ],
        }), showsGround ? h('p', {class: 'swatches'}, h('span', {class: 'swatch', style: '--swatch: var(--blue)'}, 'Head'),
            h('span', {class: 'swatch', style: '--swatch: var(--faint)'}, 'Height')) : '');
    }

    #barChart(steps) {
        const unit = this.model.units.pressure;
        const groupSize = Math.ceil(steps.length / kMostBars);
        const bars = [];
        const present = new Set();
        for (let first = 0; first < steps.length; first += groupSize) {
            const group = steps.slice(first, first + groupSize);
            const name = group.length === 1 ? group[0].name : `${group[0].name} \u2026 ${group[group.length - 1].name}`;
            const sums = kParts.map(({key}) => group.reduce((sum, step) => sum + step.parts[key], 0));
            const least = 1e-6 * Math.max(...sums.map(Math.abs));
            let [up, down] = [0, 0];
            for (const [i, {key, label, colour}] of kParts.entries()) {
                const value = sums[i];
                if (Math.abs(value) <= least) continue;
                present.add(key);
                const from = value > 0 ? up : down;
                if (value > 0) up += value;
                else down += value;
                bars.push({x: first / groupSize, from, to: from + value, value, name, label, colour});
            }
        }
        const count = Math.ceil(steps.length / groupSize);
        const hasNames = count <= 18;
        return h('figure', {class: 'chart wide'}, h('figcaption', {}, 'Change of pressure in each element'), Plot.plot({
            width: 1160, height: 260, marginLeft: 60, marginBottom: hasNames ? 34 : 16, marginTop: 26, marginRight: 30,
            style: {fontSize: '12px', fontFamily: 'inherit', background: 'none'},
            x: {domain: [-0.5, count - 0.5], label: null, ticks: hasNames ? Array.from({length: count}, (_, i) => i) : [],
                tickFormat: i => shortened(steps[i]?.name ?? '', Math.floor(150 / count)), tickSize: 0},
            y: {label: prettyUnit(unit), grid: true, nice: true, labelArrow: 'none', ticks: 6, tickFormat: value => shortNumber(value)},
            marks: [
                Plot.rectY(bars, {x1: bar => bar.x - 0.38, x2: bar => bar.x + 0.38, y1: 'from', y2: 'to', fill: 'colour',
                                  title: bar => `${bar.name}\n${bar.label} ${withUnit(bar.value, unit)}`, tip: {fill: 'var(--paper)', stroke: 'var(--line-strong)'}}),
                Plot.ruleY([0], {stroke: 'var(--line-strong)'}),
            ],
        }), h('p', {class: 'swatches'}, kParts.filter(({key}) => present.has(key))
            .map(({label, colour}) => h('span', {class: 'swatch block', style: `--swatch: ${colour}`}, label))));
    }
}

/** Points whose names, written above them, do not cover each other; the first and the last come first. */
function pointsWithRoom(points) {
    const xOf = scaleOf(points.map(point => point.distance), 1050);
    const yOf = scaleOf(points.map(point => point.value), 220);
    const taken = [];
    const order = [points[0], points[points.length - 1], ...points.slice(1, -1)];
    return order.filter(point => {
        const [x, y, half] = [xOf(point.distance), yOf(point.value), 3.8 * point.name.length + 4];
        const hasRoom = taken.every(other => Math.abs(x - other.x) > half + other.half || Math.abs(y - other.y) > 15);
        if (hasRoom) taken.push({x, y, half});
        return hasRoom;
    });
}

/** From values to about the pixels of a chart of so many. */
function scaleOf(values, size) {
    const [low, high] = [Math.min(...values), Math.max(...values)];
    return value => high > low ? size * (value - low) / (high - low) : 0;
}

function shortened(text, length) {
    return text.length <= Math.max(4, length) ? text : `${text.slice(0, Math.max(3, length - 1))}\u2026`;
}
