// scene.js: where everything is drawn in a view, and what lies under the pointer.
import {quadtree} from 'd3';

/** The longer side of the network in a view, in units of the scene. */
export const kSceneSize = 1000;

const kCosine30 = Math.sqrt(3) / 2;

export class Scene {
    constructor(model, view) {
        this.model = model;
        this.#project(view);
        this.#placeLines();
        this.#normalise();
        this.#measure();
    }

    #project(view) {
        const {heightScale, fromSide} = this.model.data.placement;
        if (view === 'plan') this.project = (x, y) => [x, -y];
        else if (view === 'elevation') this.project = (x, y, z) => [fromSide ? y : x, -z * heightScale];
        else this.project = (x, y, z) => [(x - y) * kCosine30, -(x + y) / 2 - z * heightScale];
        const {x, y, z} = this.model.nodes;
        const count = this.model.nodeCount;
        this.nodeX = new Float64Array(count);
        this.nodeY = new Float64Array(count);
        for (let n = 0; n < count; ++n) [this.nodeX[n], this.nodeY[n]] = this.project(x[n], y[n], z[n]);
    }

    /** Lines of elements one after the other: that of e has points first[e] to first[e + 1] - 1. */
    #placeLines() {
        const {from, to, vertices = {}} = this.model.elements;
        const count = this.model.elementCount;
        this.first = new Uint32Array(count + 1);
        const points = [];
        const parallels = new Map();
        for (let e = 0; e < count; ++e) {
            this.first[e] = points.length / 2;
            const [ax, ay, bx, by] = [this.nodeX[from[e]], this.nodeY[from[e]], this.nodeX[to[e]], this.nodeY[to[e]]];
            points.push(ax, ay);
            if (vertices[e]) {
                for (const [x, y, z] of vertices[e]) points.push(...this.project(x, y, z));
            } else {
                // elements that join the same two nodes are bent apart
                const pair = Math.min(from[e], to[e]) * this.model.nodeCount + Math.max(from[e], to[e]);
                const before = parallels.get(pair) ?? 0;
                parallels.set(pair, before + 1);
                if (before > 0) {
                    const offset = 0.12 * ((before + 1) >> 1) * (before % 2 === 0 ? -1 : 1) * (from[e] > to[e] ? -1 : 1);
                    const [dx, dy] = [bx - ax, by - ay];
                    points.push(ax + 0.25 * dx - offset * dy, ay + 0.25 * dy + offset * dx);
                    points.push(ax + 0.75 * dx - offset * dy, ay + 0.75 * dy + offset * dx);
                }
            }
            points.push(bx, by);
        }
        this.first[count] = points.length / 2;
        this.points = Float64Array.from(points);
    }

    /** Moves and scales everything to a box of kSceneSize around the origin. */
    #normalise() {
        let [left, top, right, bottom] = [Infinity, Infinity, -Infinity, -Infinity];
        const see = (x, y) => {
            left = Math.min(left, x);
            right = Math.max(right, x);
            top = Math.min(top, y);
            bottom = Math.max(bottom, y);
        };
        for (let n = 0; n < this.nodeX.length; ++n) see(this.nodeX[n], this.nodeY[n]);
        for (let i = 0; i < this.points.length; i += 2) see(this.points[i], this.points[i + 1]);
        const extent = Math.max(right - left, bottom - top);
        const scale = extent > 0 ? kSceneSize / extent : 1;
        const [middleX, middleY] = [(left + right) / 2, (top + bottom) / 2];
        for (let n = 0; n < this.nodeX.length; ++n) {
            this.nodeX[n] = (this.nodeX[n] - middleX) * scale;
            this.nodeY[n] = (this.nodeY[n] - middleY) * scale;
        }
        for (let i = 0; i < this.points.length; i += 2) {
            this.points[i] = (this.points[i] - middleX) * scale;
            this.points[i + 1] = (this.points[i + 1] - middleY) * scale;
        }
        this.width = extent > 0 ? (right - left) * scale : 0;
        this.height = extent > 0 ? (bottom - top) * scale : 0;
        this.scale = scale;
    }

    /** Lengths and boxes of lines, and the mean distance of nodes. */
    #measure() {
        const count = this.model.elementCount;
        this.lineLength = new Float64Array(count);
        this.box = new Float64Array(4 * count);
        for (let e = 0; e < count; ++e) {
            let [left, top, right, bottom, length] = [Infinity, Infinity, -Infinity, -Infinity, 0];
            for (let i = this.first[e]; i < this.first[e + 1]; ++i) {
                const [x, y] = [this.points[2 * i], this.points[2 * i + 1]];
                left = Math.min(left, x);
                right = Math.max(right, x);
                top = Math.min(top, y);
                bottom = Math.max(bottom, y);
                if (i > this.first[e]) length += Math.hypot(x - this.points[2 * i - 2], y - this.points[2 * i - 1]);
            }
            this.box.set([left, top, right, bottom], 4 * e);
            this.lineLength[e] = length;
        }
        const area = Math.max(this.width, 0.2 * kSceneSize) * Math.max(this.height, 0.2 * kSceneSize);
        this.spacing = Math.sqrt(area / Math.max(1, this.model.nodeCount));
    }

    /** The point at a share of an element's line and the direction there: [x, y, dx, dy]. */
    stationAt(e, share) {
        let rest = share * this.lineLength[e];
        const last = this.first[e + 1] - 1;
        for (let i = this.first[e] + 1; i <= last; ++i) {
            const [ax, ay] = [this.points[2 * i - 2], this.points[2 * i - 1]];
            const [dx, dy] = [this.points[2 * i] - ax, this.points[2 * i + 1] - ay];
            const size = Math.hypot(dx, dy);
            if (size > 0 && (rest <= size || i === last)) {
                const part = Math.min(rest, size) / size;
                return [ax + part * dx, ay + part * dy, dx / size, dy / size];
            }
            rest -= size;
        }
        return [this.points[2 * this.first[e]], this.points[2 * this.first[e] + 1], 1, 0];
    }

    /** The direction in which a node has most room: the middle of the widest gap between its lines, the upper of two. */
    freeDirection(n) {
        const {start, list} = this.model.incidence;
        const angles = [];
        for (let i = start[n]; i < start[n + 1]; ++i) {
            const e = list[i];
            const isStart = this.model.elements.from[e] === n;
            const near = isStart ? this.first[e] : this.first[e + 1] - 1;
            const next = isStart ? near + 1 : near - 1;
            const [dx, dy] = [this.points[2 * next] - this.points[2 * near], this.points[2 * next + 1] - this.points[2 * near + 1]];
            if (dx !== 0 || dy !== 0) angles.push(Math.atan2(dy, dx));
        }
        angles.sort((a, b) => a - b);
        let [widest, best] = [0, [0, -1]];
        for (const [i, angle] of angles.entries()) {
            const gap = (i + 1 < angles.length ? angles[i + 1] : angles[0] + 2 * Math.PI) - angle;
            const direction = [Math.cos(angle + gap / 2), Math.sin(angle + gap / 2)];
            const isAsWide = Math.abs(gap - widest) < 1e-6;
            if (isAsWide ? direction[1] < best[1] - 1e-6 : gap > widest) best = direction;
            widest = Math.max(widest, gap);
        }
        return best;
    }

    /** The node within a distance of a point; -1 when there is none. */
    nodeNear(x, y, distance) {
        this.nodeTree ??= quadtree(Array.from(this.nodeX.keys()), n => this.nodeX[n], n => this.nodeY[n]);
        return this.nodeTree.find(x, y, distance) ?? -1;
    }

    /**
     * The element whose line passes within a distance of a point; -1 when there is none. The tree holds points of
     * all lines at most spread apart, so a line near the point has one of them within distance + spread / 2.
     */
    elementNear(x, y, distance) {
        this.#buildLineTree();
        const reach = distance + this.spread / 2;
        let best = -1;
        let nearest = distance;
        this.lineTree.visit((node, left, top, right, bottom) => {
            if (left > x + reach || right < x - reach || top > y + reach || bottom < y - reach) return true;
            if (node.length) return false;
            do {
                const e = node.data.element;
                const away = this.distanceTo(e, x, y);
                if (away < nearest) {
                    nearest = away;
                    best = e;
                }
                node = node.next;
            } while (node);
            return false;
        });
        return best;
    }

    #buildLineTree() {
        if (this.lineTree) return;
        const total = this.lineLength.reduce((sum, length) => sum + length, 0);
        this.spread = Math.max(total / (3 * Math.max(1, this.model.elementCount)), 1e-6);
        const samples = [];
        for (let e = 0; e < this.model.elementCount; ++e) {
            for (let i = this.first[e] + 1; i < this.first[e + 1]; ++i) {
                const [ax, ay] = [this.points[2 * i - 2], this.points[2 * i - 1]];
                const [dx, dy] = [this.points[2 * i] - ax, this.points[2 * i + 1] - ay];
                const steps = Math.max(1, Math.ceil(Math.hypot(dx, dy) / this.spread));
                for (let s = 0; s <= steps; ++s) samples.push({element: e, x: ax + s / steps * dx, y: ay + s / steps * dy});
            }
        }
        this.lineTree = quadtree(samples, sample => sample.x, sample => sample.y);
    }

    distanceTo(e, x, y) {
        let nearest = Infinity;
        for (let i = this.first[e] + 1; i < this.first[e + 1]; ++i) {
            const [ax, ay] = [this.points[2 * i - 2], this.points[2 * i - 1]];
            const [dx, dy] = [this.points[2 * i] - ax, this.points[2 * i + 1] - ay];
            const size2 = dx * dx + dy * dy;
            const part = size2 > 0 ? Math.max(0, Math.min(1, ((x - ax) * dx + (y - ay) * dy) / size2)) : 0;
            nearest = Math.min(nearest, Math.hypot(x - ax - part * dx, y - ay - part * dy));
        }
        return nearest;
    }
}
