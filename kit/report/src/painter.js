// painter.js: draws a scene on a canvas. A frame draws what is visible and computes nothing that stays the same.
import {kNoStep, kSteps, colourAt, fractionOf, stepColours, stepOf} from './colours.js';

const kWidths = [0.75, 1, 1.35, 1.8];
const kClosedStep = kNoStep + 1;
const kShortestArrow = 26;
/** More lines than this are drawn in one colour each and not from the colour of one end to that of the other. */
const kMostGradients = 500;
const kMostNames = 90;
/** [px], nodes closer than this have no arrows of given flows. */
const kClosestFlowMarks = 16;

const kInks = {
    light: {ink: '#1c2530', faint: '#5f6b78', plain: '#8793a0', closed: '#b7bec6', paper: '#ffffff', water: '#4a90c2',
            accent: '#d9480f', path: 'rgba(217, 72, 15, 0.28)'},
    dark: {ink: '#e8edf2', faint: '#9aa7b4', plain: '#768390', closed: '#4c5763', paper: '#12171d', water: '#5aa7dd',
           accent: '#ff9f5a', path: 'rgba(255, 159, 90, 0.33)'},
};

export class Painter {
    constructor(model) {
        this.model = model;
        this.theme = 'light';
        this.quantity = null;
        this.showsArrows = true;
        this.showsNames = true;
        this.selected = null;
        this.hovered = null;
        this.pathElements = [];
        this.#chooseWidths();
    }

    /** Wider lines for wider pipes, in four classes. */
    #chooseWidths() {
        const diameters = this.model.elements.diameter.filter(diameter => diameter > 0).sort((a, b) => a - b);
        const at = share => diameters[Math.floor(share * (diameters.length - 1))];
        const isUniform = diameters.length === 0 || !(diameters[diameters.length - 1] > 1.2 * diameters[0]);
        const limits = isUniform ? [] : [at(0.3), at(0.65), at(0.9)];
        this.widthClass = Uint8Array.from(this.model.elements.diameter, diameter => {
            if (isUniform || !(diameter > 0)) return 1;
            return limits.filter(limit => diameter > limit).length;
        });
    }

    /** Chooses what colours the network; elements are put in the order of their colours. */
    colourBy(quantity) {
        this.quantity = quantity;
        const {model} = this;
        this.nodeStep = new Uint8Array(model.nodeCount).fill(kNoStep);
        this.elementStep = new Uint8Array(model.elementCount).fill(kNoStep);
        if (quantity?.ofNodes) {
            const values = model.nodes[quantity.name];
            for (let n = 0; n < model.nodeCount; ++n) this.nodeStep[n] = stepOf(quantity, values[n]);
        }
        for (let e = 0; e < model.elementCount; ++e) {
            if (model.isClosed[e]) this.elementStep[e] = kClosedStep;
            else if (quantity) this.elementStep[e] = stepOf(quantity, this.#valueOf(e));
        }
        const key = e => this.elementStep[e] * kWidths.length + this.widthClass[e];
        this.order = Uint32Array.from({length: model.elementCount}, (_, e) => e).sort((a, b) => key(a) - key(b));
    }

    /** The value that colours an element: its own or the mean of its ends; flows by their size. */
    #valueOf(e) {
        const {quantity, model} = this;
        if (!quantity.ofNodes) {
            const value = model.elements[quantity.name][e];
            return value === null ? null : Math.abs(value);
        }
        const values = model.nodes[quantity.name];
        const [a, b] = [values[model.elements.from[e]], values[model.elements.to[e]]];
        return a === null || b === null ? null : (a + b) / 2;
    }

    /** Draws a frame: transform {x, y, k} from the scene to pixels of the page, size in these pixels. */
    draw(context, scene, transform, width, height, ratio) {
        this.context = context;
        this.scene = scene;
        this.k = transform.k;
        this.tx = transform.x;
        this.ty = transform.y;
        this.width = width;
        this.height = height;
        this.inks = kInks[this.theme];
        this.colours = this.#coloursOf(this.theme);
        this.spacing = scene.spacing * this.k;
        this.lineWidth = Math.max(0.9, Math.min(3.2, this.spacing / 14));

        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.clearRect(0, 0, width, height);
        // thin lines hide their ends, and round ones take twice the time
        const hasRoundEnds = this.lineWidth > 1.5;
        context.lineCap = hasRoundEnds ? 'round' : 'butt';
        context.lineJoin = hasRoundEnds ? 'round' : 'bevel';
        this.#findVisible();
        this.#drawPath();
        this.#drawLines();
        this.#drawMarked();
        if (this.showsArrows) this.#drawArrows();
        this.#drawSymbols();
        this.#drawNodes();
        this.#drawBoundaries();
        this.#drawRings();
        if (this.showsNames) this.#drawNames();
    }

    /** The colours of all steps, made once for each theme. */
    #coloursOf(theme) {
        this.#themeColours[theme] ??= [...stepColours(theme, kInks[theme].plain), kInks[theme].closed];
        return this.#themeColours[theme];
    }
    #themeColours = {};

    #findVisible() {
        const {scene, k, tx, ty} = this;
        const margin = 20 / k;
        const [left, top] = [-tx / k - margin, -ty / k - margin];
        const [right, bottom] = [(this.width - tx) / k + margin, (this.height - ty) / k + margin];
        const {box} = scene;
        this.lines = [];
        for (const e of this.order) {
            const b = 4 * e;
            if (box[b] <= right && box[b + 2] >= left && box[b + 1] <= bottom && box[b + 3] >= top) this.lines.push(e);
        }
        this.visibleNodes = [];
        for (let n = 0; n < scene.nodeX.length; ++n) {
            const [x, y] = [scene.nodeX[n], scene.nodeY[n]];
            if (x >= left && x <= right && y >= top && y <= bottom) this.visibleNodes.push(n);
        }
    }

    #addLine(e) {
        const {context, scene, k, tx, ty} = this;
        const {points, first} = scene;
        let i = first[e];
        context.moveTo(points[2 * i] * k + tx, points[2 * i + 1] * k + ty);
        for (++i; i < first[e + 1]; ++i) context.lineTo(points[2 * i] * k + tx, points[2 * i + 1] * k + ty);
    }

    #drawLines() {
        if (this.quantity?.ofNodes && this.lines.length <= kMostGradients) {
            this.#drawGradients();
            return;
        }
        const {context} = this;
        let before = -1;
        for (const e of this.lines) {
            const key = this.elementStep[e] * kWidths.length + this.widthClass[e];
            if (key !== before) {
                if (before >= 0) context.stroke();
                this.#beginLines(this.elementStep[e], this.widthClass[e]);
                before = key;
            }
            this.#addLine(e);
        }
        if (before >= 0) context.stroke();
        context.setLineDash([]);
    }

    #beginLines(step, widthClass) {
        const {context} = this;
        context.setLineDash(step === kClosedStep ? [4, 5] : []);
        context.strokeStyle = this.colours[step];
        context.lineWidth = this.lineWidth * kWidths[widthClass];
        context.beginPath();
    }

    /** Lines whose colour runs from that of one end to that of the other. */
    #drawGradients() {
        const {context, scene, k, tx, ty, quantity, model} = this;
        const values = model.nodes[quantity.name];
        for (const e of this.lines) {
            this.#beginLines(this.elementStep[e], this.widthClass[e]);
            const [a, b] = [values[model.elements.from[e]], values[model.elements.to[e]]];
            const [i, j] = [2 * scene.first[e], 2 * scene.first[e + 1] - 2];
            if (this.elementStep[e] < kSteps && a !== b) {
                const gradient = context.createLinearGradient(scene.points[i] * k + tx, scene.points[i + 1] * k + ty,
                                                              scene.points[j] * k + tx, scene.points[j + 1] * k + ty);
                for (const share of [0, 0.25, 0.5, 0.75, 1])
                    gradient.addColorStop(share, colourAt(fractionOf(quantity, a + share * (b - a)), this.theme));
                context.strokeStyle = gradient;
            }
            this.#addLine(e);
            context.stroke();
        }
        context.setLineDash([]);
    }

    #drawPath() {
        if (this.pathElements.length === 0) return;
        const {context} = this;
        context.strokeStyle = this.inks.path;
        context.lineWidth = this.lineWidth * 2 + 8;
        context.beginPath();
        for (const e of this.pathElements) this.#addLine(e);
        context.stroke();
    }

    /** The selected element and the one under the pointer. */
    #drawMarked() {
        const {context} = this;
        for (const object of [this.hovered, this.selected]) {
            if (object?.kind !== 'element') continue;
            context.strokeStyle = this.inks.accent;
            context.lineWidth = this.lineWidth * kWidths[this.widthClass[object.index]] + 2.5;
            context.beginPath();
            this.#addLine(object.index);
            context.stroke();
        }
    }

    #drawArrows() {
        const {context, scene, k, tx, ty, model} = this;
        const size = Math.max(4, Math.min(7, 2.2 * this.lineWidth));
        context.beginPath();
        for (const e of this.lines) {
            const length = scene.lineLength[e] * k;
            const direction = model.flowDirection(e);
            if (length < kShortestArrow || direction === 0) continue;
            const hasSymbol = model.symbolOf(e) !== null;
            if (hasSymbol && length < 3 * kShortestArrow) continue;
            const [x, y, dx, dy] = scene.stationAt(e, hasSymbol ? 0.75 : 0.5);
            const [px, py, ax, ay] = [x * k + tx, y * k + ty, dx * direction * size, dy * direction * size];
            context.moveTo(px + ax, py + ay);
            context.lineTo(px - 0.6 * ax - 0.6 * ay, py - 0.6 * ay + 0.6 * ax);
            context.lineTo(px - 0.6 * ax + 0.6 * ay, py - 0.6 * ay - 0.6 * ax);
            context.closePath();
        }
        context.fillStyle = this.inks.ink;
        context.strokeStyle = this.inks.paper;
        context.lineWidth = 2;
        context.stroke();
        context.fill();
    }

    #drawSymbols() {
        const {context, scene, k, tx, ty, model, inks} = this;
        for (const e of this.lines) {
            const symbol = model.symbolOf(e);
            if (symbol === null && !model.isClosed[e]) continue;
            if (symbol !== 'pump' && this.spacing < 12 && scene.lineLength[e] * k < 14) continue;
            const [x, y, dx, dy] = scene.stationAt(e, 0.5);
            const size = Math.max(0.5, Math.min(1, scene.lineLength[e] * k / 34));
            context.save();
            context.transform(dx * size, dy * size, -dy * size, dx * size, x * k + tx, y * k + ty);
            context.fillStyle = inks.paper;
            context.strokeStyle = inks.ink;
            context.lineWidth = 1.4;
            context.beginPath();
            kSymbolPaths[symbol]?.(context);
            if (symbol !== null) {
                if (symbol !== 'orifice') context.fill();
                context.stroke();
            }
            if (model.isClosed[e]) {
                context.lineWidth = 2;
                context.beginPath();
                context.moveTo(-5, -5);
                context.lineTo(5, 5);
                context.moveTo(-5, 5);
                context.lineTo(5, -5);
                context.stroke();
            }
            context.restore();
        }
    }

    #drawNodes() {
        const radius = Math.min(4.5, this.spacing / 12);
        if (radius < 1) return;
        const {context, scene, k, tx, ty} = this;
        const byStep = new Map();
        for (const n of this.visibleNodes) {
            const step = this.nodeStep[n];
            if (!byStep.has(step)) byStep.set(step, []);
            byStep.get(step).push(n);
        }
        const isColoured = Boolean(this.quantity?.ofNodes);
        for (const [step, nodes] of byStep) {
            context.beginPath();
            for (const n of nodes) {
                const [x, y] = [scene.nodeX[n] * k + tx, scene.nodeY[n] * k + ty];
                context.moveTo(x + radius, y);
                context.arc(x, y, radius, 0, 2 * Math.PI);
            }
            context.fillStyle = isColoured ? this.colours[step] : this.inks.faint;
            context.fill();
            if (radius < 2.5) continue;
            context.strokeStyle = this.inks.paper;
            context.lineWidth = 1.2;
            context.stroke();
        }
    }

    /** A vessel where a pressure is given, an arrow into or out of the network where a flow is. */
    #drawBoundaries() {
        const {context, scene, k, tx, ty, model, inks} = this;
        const size = this.spacing < 16 ? 0.7 : 1;
        for (const n of this.visibleNodes) {
            const mark = model.nodes.boundary[n];
            if (mark === 0 || (mark > 1 && this.spacing < kClosestFlowMarks)) continue;
            context.save();
            context.translate(scene.nodeX[n] * k + tx, scene.nodeY[n] * k + ty);
            context.strokeStyle = inks.ink;
            context.lineWidth = 1.4;
            if (mark === 1) {
                context.scale(size, size);
                drawVessel(context, inks);
            } else {
                const [dx, dy] = scene.freeDirection(n);
                const sign = mark === 2 ? -1 : 1;
                const start = mark === 2 ? 21 : 5;
                context.transform(dx * sign, dy * sign, -dy * sign, dx * sign, start * dx, start * dy);
                context.scale(size, size);
                context.beginPath();
                context.moveTo(0, 0);
                context.lineTo(13, 0);
                context.moveTo(9, -3.6);
                context.lineTo(15, 0);
                context.lineTo(9, 3.6);
                context.stroke();
            }
            context.restore();
        }
    }

    #drawRings() {
        const {context, scene, k, tx, ty} = this;
        for (const object of [this.hovered, this.selected]) {
            if (object === null) continue;
            context.strokeStyle = this.inks.accent;
            context.lineWidth = 2;
            context.beginPath();
            if (object.kind === 'node') {
                context.arc(scene.nodeX[object.index] * k + tx, scene.nodeY[object.index] * k + ty, 8, 0, 2 * Math.PI);
            } else if (scene.lineLength[object.index] * k < 14) {
                const [x, y] = scene.stationAt(object.index, 0.5);
                context.arc(x * k + tx, y * k + ty, 10, 0, 2 * Math.PI);
            }
            context.stroke();
        }
    }

    #drawNames() {
        const {context, scene, k, tx, ty, model, inks} = this;
        const taken = [];
        const names = [];
        if (this.visibleNodes.length <= kMostNames) {
            for (const n of this.visibleNodes) {
                const [x, y] = [scene.nodeX[n] * k + tx, scene.nodeY[n] * k + ty];
                const mark = model.nodes.boundary[n];
                const half = mark === 1 ? 8 : 5;
                const [dx, dy] = scene.freeDirection(n);
                taken.push([x - half, y - half, x + half, y + half]);
                if (mark > 1) taken.push([x + 12 * dx - 8, y + 12 * dy - 8, x + 12 * dx + 8, y + 12 * dy + 8]);
                names.push({x, y, text: model.nodes.name[n], gap: half + 3, font: '500 12px', colour: inks.ink,
                            fit: ([cx, cy]) => cx * dx + cy * dy});
            }
            if (this.lines.length <= kMostNames) {
                for (const e of this.lines) {
                    if (scene.lineLength[e] * k < 60) continue;
                    const [sx, sy, dx, dy] = scene.stationAt(e, 0.5);
                    const [x, y] = [sx * k + tx, sy * k + ty];
                    const half = model.symbolOf(e) === null ? 6 : 11;
                    taken.push([x - half, y - half, x + half, y + half]);
                    names.push({x, y, text: model.elements.name[e], gap: half + 2, font: '11px', colour: inks.faint,
                                fit: ([cx, cy]) => Math.abs(cy * dx - cx * dy)});
                }
            }
        } else if (this.selected !== null) {
            const {kind, index} = this.selected;
            const [x, y] = kind === 'node' ? [scene.nodeX[index], scene.nodeY[index]] : scene.stationAt(index, 0.5);
            names.push({x: x * k + tx, y: y * k + ty, text: model.nameOf(this.selected), gap: 12, font: '600 12px', colour: inks.ink,
                        fit: () => 0});
        }
        for (const name of names) this.#drawName(name, taken);
    }

    /**
     * Writes a name beside a point where nothing else stands, on the side that fits best; leaves it out where there
     * is no such place.
     */
    #drawName({x, y, text, gap, font, colour, fit}, taken) {
        const {context} = this;
        context.font = `${font} system-ui, "Segoe UI", "Helvetica Neue", Arial, sans-serif`;
        const wide = context.measureText(text).width;
        const tall = 13;
        const sides = [[1, 0], [0, -1], [0, 1], [-1, 0]].sort((a, b) => fit(b) - fit(a));
        for (const [sideX, sideY] of sides) {
            const left = x + sideX * (gap + wide / 2) - wide / 2;
            const top = y + sideY * (gap + tall / 2) - tall / 2;
            const isFree = taken.every(([l, t, r, b]) => left >= r || left + wide <= l || top >= b || top + tall <= t);
            if (!isFree || left < 2 || left + wide > this.width - 2) continue;
            taken.push([left, top, left + wide, top + tall]);
            context.strokeStyle = this.inks.paper;
            context.lineWidth = 3;
            context.strokeText(text, left, top + 10);
            context.fillStyle = colour;
            context.fillText(text, left, top + 10);
            return;
        }
    }
}

/** Symbols about the origin, the line along x. */
const kSymbolPaths = {
    pump(context) {
        context.arc(0, 0, 9, 0, 2 * Math.PI);
        context.moveTo(-4.5, -7.8);
        context.lineTo(9, 0);
        context.lineTo(-4.5, 7.8);
    },
    valve(context) {
        context.moveTo(-9, -6);
        context.lineTo(9, 6);
        context.lineTo(9, -6);
        context.lineTo(-9, 6);
        context.closePath();
    },
    check(context) {
        context.moveTo(-7, -6);
        context.lineTo(7, 0);
        context.lineTo(-7, 6);
        context.closePath();
        context.moveTo(7, -6);
        context.lineTo(7, 6);
    },
    orifice(context) {
        context.moveTo(0, -8);
        context.lineTo(0, -2.5);
        context.moveTo(0, 2.5);
        context.lineTo(0, 8);
    },
    loss(context) {
        context.rect(-8, -5, 16, 10);
    },
};

function drawVessel(context, inks) {
    context.beginPath();
    context.moveTo(-7, -7);
    context.lineTo(-7, 6);
    context.lineTo(7, 6);
    context.lineTo(7, -7);
    context.fillStyle = inks.paper;
    context.fill();
    context.fillStyle = inks.water;
    context.fillRect(-6.3, -2, 12.6, 7.4);
    context.stroke();
}
