// painter.js: draws a scene on a canvas. A frame draws what is visible and computes nothing that stays the same.
import {kNoStep, kSteps, colourAt, fractionOf, stepColours, stepOf} from './colours.js';

const kWidths = [0.75, 1, 1.35, 1.8];
const kClosedStep = kNoStep + 1;
const kShortestArrow = 26;
/** More lines than this are drawn in one colour each and not from the colour of one end to that of the other. */
const kMostGradients = 500;
const kMostNames = 90;
/** Pieces of lines that names keep off. */
const kMostObstacles = 800;
/** [px], shorter elements have their symbol beside them. */
const kShortestSymbol = 18;
const kSymbolRadius = 9;
/** Where a name may stand beside a point. */
const kSides = [[1, 0], [0, -1], [0, 1], [-1, 0], [1, -1], [1, 1], [-1, -1], [-1, 1]];
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
        this.#placeSymbols();
        this.#drawPath();
        this.#drawLines();
        this.#drawMarked();
        if (this.showsArrows) this.#drawArrows();
        this.#drawNodes();
        this.#drawSymbols();
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

    /** Symbols stand on the middle of their elements, or beside those that are too short for them. */
    #placeSymbols() {
        const {scene, k, tx, ty, model} = this;
        this.symbols = [];
        const isOpen = this.visibleNodes.length <= kMostNames && this.lines.length <= kMostNames;
        const taken = isOpen ? this.visibleNodes.map(n => around(scene.nodeX[n] * k + tx, scene.nodeY[n] * k + ty, 5)) : [];
        for (const e of this.lines) {
            const symbol = model.symbolOf(e);
            if (symbol === null && !model.isClosed[e]) continue;
            const length = scene.lineLength[e] * k;
            if (symbol !== 'pump' && this.spacing < 12 && length < 14) continue;
            const [sceneX, sceneY, dx, dy] = scene.stationAt(e, 0.5);
            const [x, y] = [sceneX * k + tx, sceneY * k + ty];
            const place = {e, symbol, x, y, dx, dy, size: Math.max(symbol === 'pump' ? 0.7 : 0.5, Math.min(1, length / 34)), from: null};
            const away = isOpen && length < kShortestSymbol
                ? [-24, 24, -46, 46].find(distance => isFree(taken, around(x - distance * dy, y + distance * dx, kSymbolRadius + 1))) : undefined;
            if (away !== undefined) Object.assign(place, {x: x - away * dy, y: y + away * dx, size: 1, from: [x, y]});
            taken.push(around(place.x, place.y, kSymbolRadius));
            this.symbols.push(place);
        }
    }

    #drawSymbols() {
        const {context, model, inks} = this;
        for (const {e, symbol, x, y, dx, dy, size, from} of this.symbols) {
            if (from !== null) {
                context.strokeStyle = inks.faint;
                context.lineWidth = 1;
                context.beginPath();
                context.moveTo(...from);
                context.lineTo(x, y);
                context.moveTo(x - 13 * dx, y - 13 * dy);
                context.lineTo(x + 13 * dx, y + 13 * dy);
                context.stroke();
            }
            context.save();
            context.transform(dx * size, dy * size, -dy * size, dx * size, x, y);
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
        const {scene, k, tx, ty, model, inks} = this;
        const taken = [];
        const names = [];
        if (this.visibleNodes.length <= kMostNames) {
            const hasElements = this.lines.length <= kMostNames;
            for (const {e, x, y, from} of this.symbols) {
                taken.push(around(x, y, kSymbolRadius));
                // a symbol beside its element is known by its name alone
                if (hasElements && from !== null) names.push(this.#elementName(e, beside(x, y, kSymbolRadius + 6, kSides)));
            }
            for (const n of this.visibleNodes) {
                const [x, y] = [scene.nodeX[n] * k + tx, scene.nodeY[n] * k + ty];
                const mark = model.nodes.boundary[n];
                const half = mark === 1 ? 8 : 5;
                const [dx, dy] = scene.freeDirection(n);
                taken.push(around(x, y, half));
                if (mark > 1) taken.push(around(x + 9 * dx, y + 9 * dy, 5), around(x + 17 * dx, y + 17 * dy, 5));
                const sides = [...kSides].sort((a, b) => b[0] * dx + b[1] * dy - a[0] * dx - a[1] * dy);
                names.push({text: model.nodes.name[n], font: '500 12px', colour: inks.ink, mostLines: Infinity,
                            centreOf: [...beside(x, y, half + 3, sides), ...beside(x, y, half + 17, sides)]});
            }
            if (hasElements) names.push(...this.#namesOnLines(taken));
        } else if (this.selected !== null) {
            const {kind, index} = this.selected;
            const [x, y] = kind === 'node' ? [scene.nodeX[index], scene.nodeY[index]] : scene.stationAt(index, 0.5);
            names.push({text: model.nameOf(this.selected), font: '600 12px', colour: inks.ink, mostLines: Infinity,
                        centreOf: beside(x * k + tx, y * k + ty, 12, kSides)});
        }
        const pieces = this.#pieces();
        for (const name of names) this.#drawName(name, taken, pieces);
    }

    #elementName(e, centreOf) {
        return {text: this.model.elements.name[e], font: '11px', colour: this.inks.faint, mostLines: 0, centreOf};
    }

    /** Names across from the middle of lines, which they do not touch. */
    #namesOnLines(taken) {
        const {scene, k, tx, ty, model} = this;
        const outside = new Set(this.symbols.filter(({from}) => from !== null).map(({e}) => e));
        const names = [];
        for (const e of this.lines) {
            if (scene.lineLength[e] * k < 36 || outside.has(e)) continue;
            const gap = model.symbolOf(e) === null ? 6 : kSymbolRadius + 2;
            const [x, y] = scene.stationAt(e, 0.5);
            taken.push(around(x * k + tx, y * k + ty, gap - 2));
            names.push(this.#elementName(e, [0.5, 0.35, 0.65].flatMap(share => {
                const [x, y, dx, dy] = scene.stationAt(e, share);
                return across(x * k + tx, y * k + ty, dx, dy, gap);
            })));
        }
        return names;
    }

    /** The straight pieces of all visible lines; none where they are many. */
    #pieces() {
        const {scene, k, tx, ty} = this;
        const {points, first} = scene;
        const pieces = [];
        if (this.lines.length > kMostNames) return pieces;
        for (const e of this.lines) {
            for (let i = first[e] + 1; i < first[e + 1] && pieces.length < kMostObstacles; ++i)
                pieces.push([points[2 * i - 2] * k + tx, points[2 * i - 1] * k + ty, points[2 * i] * k + tx, points[2 * i + 1] * k + ty]);
        }
        return pieces;
    }

    /**
     * Writes a name where nothing else stands and the fewest lines pass, the first of such places; leaves it out where
     * there is none.
     */
    #drawName({text, font, colour, mostLines, centreOf}, taken, pieces) {
        const {context} = this;
        context.font = `${font} system-ui, "Segoe UI", "Helvetica Neue", Arial, sans-serif`;
        const wide = context.measureText(text).width;
        const tall = 13;
        let best = null;
        let fewest = Infinity;
        for (const centre of centreOf) {
            const [x, y] = centre(wide, tall);
            const box = [x - wide / 2, y - tall / 2, x + wide / 2, y + tall / 2];
            if (box[0] < 2 || box[2] > this.width - 2 || !isFree(taken, box)) continue;
            const lines = pieces.reduce((count, piece) => count + (passes(piece, box) ? 1 : 0), 0);
            if (lines > mostLines || lines >= fewest) continue;
            [best, fewest] = [box, lines];
            if (lines === 0) break;
        }
        if (best === null) return;
        taken.push(best);
        context.strokeStyle = this.inks.paper;
        context.lineWidth = 3;
        context.strokeText(text, best[0], best[1] + 10);
        context.fillStyle = colour;
        context.fillText(text, best[0], best[1] + 10);
    }
}

/** A square as [left, top, right, bottom]. */
function around(x, y, half) {
    return [x - half, y - half, x + half, y + half];
}

function isFree(taken, [left, top, right, bottom]) {
    return taken.every(([l, t, r, b]) => left >= r || right <= l || top >= b || bottom <= t);
}

/** Whether a straight piece passes through a box (clipping of Liang and Barsky, 1984). */
function passes([ax, ay, bx, by], [left, top, right, bottom]) {
    let [from, to] = [0, 1];
    for (const [start, step, low, high] of [[ax, bx - ax, left, right], [ay, by - ay, top, bottom]]) {
        if (Math.abs(step) < 1e-9) {
            if (start < low || start > high) return false;
            continue;
        }
        const [a, b] = [(low - start) / step, (high - start) / step];
        from = Math.max(from, Math.min(a, b));
        to = Math.min(to, Math.max(a, b));
    }
    return from <= to;
}

/** For each side the centre of a text of some size that stands there beside a point. */
function beside(x, y, gap, sides) {
    return sides.map(([sideX, sideY]) => (wide, tall) => {
        const room = sideX !== 0 && sideY !== 0 ? gap / 2 : gap;
        return [x + sideX * (room + wide / 2), y + sideY * (room + tall / 2)];
    });
}

/** Centres of a text on both sides of a line with direction dx, dy, the upper or right one first. */
function across(x, y, dx, dy, gap) {
    let [acrossX, acrossY] = [dy, -dx];
    if (acrossY > 0.35 || (acrossY > -0.35 && acrossX < 0)) [acrossX, acrossY] = [-acrossX, -acrossY];
    return [1, -1].map(sign => (wide, tall) => {
        const reach = sign * (gap + (Math.abs(acrossX) * wide + Math.abs(acrossY) * tall) / 2);
        return [x + reach * acrossX, y + reach * acrossY];
    });
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
