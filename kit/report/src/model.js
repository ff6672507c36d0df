// model.js: the report's data with what every part of the page asks of it.

const kKindLabels = {
    pipe: 'Pipe', pump: 'Pump', loss: 'Loss', hazen_williams_pipe: 'Pipe (Hazen-Williams)', orifice: 'Orifice',
    general_loss: 'General loss', kv_valve: 'Valve (Kv)', cv_valve: 'Valve (Cv)', control_valve: 'Control valve',
    non_return: 'Non-return valve',
};

const kBoundaryLabels = ['', 'pressure', 'inlet', 'outlet'];

/** Symbols in the middle of elements by kind. */
const kSymbols = {pump: 'pump', loss: 'loss', orifice: 'orifice', kv_valve: 'valve', cv_valve: 'valve',
                  control_valve: 'valve', non_return: 'check'};

/** An object of the network: kind "node" or "element" and its position. */
export const sameObject = (a, b) => a !== null && b !== null && a.kind === b.kind && a.index === b.index;

export class Model {
    constructor(data) {
        this.data = data;
        this.units = data.units;
        this.nodes = data.nodes;
        this.elements = data.elements;
        this.nodeCount = data.nodes.name.length;
        this.elementCount = data.elements.name.length;
        this.isClosed = new Uint8Array(this.elementCount);
        for (const e of data.elements.closed) this.isClosed[e] = 1;
        this.hasCheckValve = new Uint8Array(this.elementCount);
        for (const e of data.elements.checkValve) this.hasCheckValve[e] = 1;
        this.largestFlow = 0;
        for (const flow of data.elements.mass_flow ?? []) {
            if (flow !== null) this.largestFlow = Math.max(this.largestFlow, Math.abs(flow));
        }
    }

    nameOf(object) {
        return (object.kind === 'node' ? this.nodes : this.elements).name[object.index];
    }

    kindLabel(e) {
        const name = this.elements.kindNames[this.elements.kind[e]];
        return kKindLabels[name] ?? name;
    }

    boundaryLabel(n) {
        return kBoundaryLabels[this.nodes.boundary[n]];
    }

    symbolOf(e) {
        if (this.hasCheckValve[e]) return 'check';
        return kSymbols[this.elements.kindNames[this.elements.kind[e]]] ?? null;
    }

    /** 1 along the element, -1 against it, 0 where hardly anything flows. */
    flowDirection(e) {
        const flow = this.elements.mass_flow?.[e] ?? 0;
        if (this.isClosed[e] || Math.abs(flow) <= 1e-7 * this.largestFlow) return 0;
        return Math.sign(flow);
    }

    /** What the tables and the tooltip show of nodes: key, label, unit. Columns without any value are left out. */
    get nodeColumns() {
        return this.#existing(this.nodes, [
            ['height', 'Height', this.units.length], ['pressure', 'Pressure', this.units.pressure],
            ['head', 'Head', this.units.head], ['temperature', 'Temperature', this.units.temperature],
            ['supply', 'Supply', this.units.mass_flow],
        ]);
    }

    get elementColumns() {
        return this.#existing(this.elements, [
            ['length', 'Length', this.units.length], ['diameter', 'Diameter', this.units.diameter],
            ['mass_flow', 'Mass flow', this.units.mass_flow], ['volume_flow', 'Volume flow', this.units.volume_flow],
            ['velocity', 'Velocity', this.units.velocity], ['reynolds', 'Reynolds', ''],
            ['pressure_difference', 'Pressure change', this.units.pressure],
            ['temperature', 'Temperature', this.units.temperature],
        ]);
    }

    #existing(columns, wanted) {
        return wanted.filter(([key]) => columns[key]?.some(value => value !== null))
            .map(([key, label, unit]) => ({key, label, unit}));
    }

    /** Lengths of elements for paths; those without one count a tenth of the mean. */
    get pathLengths() {
        if (this.#pathLengths) return this.#pathLengths;
        let sum = 0;
        let count = 0;
        for (const length of this.elements.length) {
            if (length === null) continue;
            sum += length;
            ++count;
        }
        const substitute = count > 0 ? 0.1 * sum / count : 1;
        this.#pathLengths = Float64Array.from(this.elements.length, length => length ?? substitute);
        return this.#pathLengths;
    }
    #pathLengths = null;

    /** Elements at every node: those of node n are list[start[n]] to list[start[n + 1] - 1]. */
    get incidence() {
        if (this.#incidence) return this.#incidence;
        const {from, to} = this.elements;
        const start = new Uint32Array(this.nodeCount + 1);
        for (let e = 0; e < this.elementCount; ++e) {
            ++start[from[e] + 1];
            ++start[to[e] + 1];
        }
        for (let n = 0; n < this.nodeCount; ++n) start[n + 1] += start[n];
        const next = start.slice();
        const list = new Uint32Array(2 * this.elementCount);
        for (let e = 0; e < this.elementCount; ++e) {
            list[next[from[e]]++] = e;
            list[next[to[e]]++] = e;
        }
        this.#incidence = {start, list};
        return this.#incidence;
    }
    #incidence = null;

    /** The object that a text such as "node tap 3" or "element pipe 7" names; null when there is none. */
    find(text) {
        const space = text.indexOf(' ');
        const kind = text.slice(0, space);
        if (kind !== 'node' && kind !== 'element') return null;
        this.#positions ??= {node: new Map(this.nodes.name.map((name, i) => [name, i])),
                             element: new Map(this.elements.name.map((name, i) => [name, i]))};
        const index = this.#positions[kind].get(text.slice(space + 1));
        return index === undefined ? null : {kind, index};
    }
    #positions = null;

    /** Objects whose names fit a text, the best first: equal, then those that start with it, then the rest. */
    search(text, {limit = 12, onlyNodes = false} = {}) {
        const wanted = text.trim().toLowerCase();
        if (wanted === '') return [];
        this.#lower ??= {node: this.nodes.name.map(name => name.toLowerCase()),
                         element: this.elements.name.map(name => name.toLowerCase())};
        const classes = [[], [], [], []];
        for (const kind of onlyNodes ? ['node'] : ['node', 'element']) {
            const names = this.#lower[kind];
            for (let index = 0; index < names.length; ++index) {
                const at = names[index].indexOf(wanted);
                if (at < 0) continue;
                const rank = names[index] === wanted ? 0 : at === 0 ? 1 : /[\s_.-]/.test(names[index][at - 1]) ? 2 : 3;
                if (classes[rank].length < limit) classes[rank].push({kind, index});
            }
        }
        return classes.flat().slice(0, limit);
    }
    #lower = null;

    /** The shortest path between two nodes over open elements: nodes and elements in order; null without one. */
    shortestPath(start, end) {
        const {from, to} = this.elements;
        const lengths = this.pathLengths;
        const {start: first, list} = this.incidence;
        const distance = new Float64Array(this.nodeCount).fill(Infinity);
        const via = new Int32Array(this.nodeCount).fill(-1);
        const heap = new NodeHeap();
        distance[start] = 0;
        heap.push(start, 0);
        while (heap.size > 0) {
            const {node, key} = heap.pop();
            if (node === end) break;
            if (key > distance[node]) continue;
            for (let i = first[node]; i < first[node + 1]; ++i) {
                const e = list[i];
                if (this.isClosed[e]) continue;
                const other = from[e] === node ? to[e] : from[e];
                const length = key + lengths[e];
                if (length >= distance[other]) continue;
                distance[other] = length;
                via[other] = e;
                heap.push(other, length);
            }
        }
        if (!Number.isFinite(distance[end])) return null;
        const path = {nodes: [end], elements: []};
        for (let node = end; node !== start;) {
            const e = via[node];
            node = from[e] === node ? to[e] : from[e];
            path.nodes.push(node);
            path.elements.push(e);
        }
        path.nodes.reverse();
        path.elements.reverse();
        return path;
    }
}

/** Nodes by a key, the smallest first. */
class NodeHeap {
    #keys = [];
    #nodes = [];

    get size() {
        return this.#keys.length;
    }

    push(node, key) {
        let i = this.#keys.length;
        this.#keys.push(key);
        this.#nodes.push(node);
        while (i > 0) {
            const parent = (i - 1) >> 1;
            if (this.#keys[parent] <= this.#keys[i]) break;
            this.#swap(i, parent);
            i = parent;
        }
    }

    pop() {
        const top = {node: this.#nodes[0], key: this.#keys[0]};
        const key = this.#keys.pop();
        const node = this.#nodes.pop();
        if (this.#keys.length === 0) return top;
        this.#keys[0] = key;
        this.#nodes[0] = node;
        for (let i = 0;;) {
            let least = i;
            for (const child of [2 * i + 1, 2 * i + 2]) {
                if (child < this.#keys.length && this.#keys[child] < this.#keys[least]) least = child;
            }
            if (least === i) return top;
            this.#swap(i, least);
            i = least;
        }
    }

    #swap(i, j) {
        [this.#keys[i], this.#keys[j]] = [this.#keys[j], this.#keys[i]];
        [this.#nodes[i], this.#nodes[j]] = [this.#nodes[j], this.#nodes[i]];
    }
}
