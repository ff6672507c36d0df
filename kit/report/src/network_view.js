// network_view.js: the drawing with its controls, legend, tooltip and the card of the selected object.
import {select, zoom, zoomIdentity, zoomTransform} from 'd3';
import {colourAt, gradient, fractionOf} from './colours.js';
import {h, icon, oncePerFrame} from './dom.js';
import {prettyUnit, shortNumber, withUnit} from './numbers.js';
import {Painter} from './painter.js';
import {kSceneSize, Scene} from './scene.js';
import {searchBox} from './search_box.js';
import {digitsFor, niceTicks} from './ticks.js';
import {sameObject} from './model.js';

const kViews = ['plan', 'elevation', 'isometric'];
const kNodeReach = 9;
const kLineReach = 7;
/** Letters that find room below the legend's bar. */
const kLegendLetters = 30;

const kIcons = {
    pump: '<circle r="7"/><path d="M-3.5 -6L7 0L-3.5 6"/>',
    valve: '<path d="M-8 -5L8 5V-5L-8 5Z"/>',
    check: '<path d="M-6 -5L6 0L-6 5ZM6 -5V5"/>',
    orifice: '<path d="M-9 0H9M0 -8V-2.5M0 2.5V8"/>',
    loss: '<rect x="-7" y="-4" width="14" height="8"/>',
    closed: '<path stroke-dasharray="3 3" d="M-9 0H9"/><path d="M-4 -4L4 4M-4 4L4 -4"/>',
    pressure: '<path d="M-6 -6V5H6V-6"/><path class="water" d="M-5.4 -1.5H5.4V4.4H-5.4Z"/>',
    inlet: '<circle class="dot" cx="6" r="2.5"/><path d="M-9 0H2M-1 -3L3 0L-1 3"/>',
    outlet: '<circle class="dot" cx="-7" r="2.5"/><path d="M-4 0H8M4 -3L9 0L4 3"/>',
};
const kIconLabels = {pump: 'pump', valve: 'valve', check: 'non-return', orifice: 'orifice', loss: 'loss', closed: 'closed',
                     pressure: 'given pressure', inlet: 'inlet', outlet: 'outlet'};

export class NetworkView {
    /** listeners: {select(object or null), path(end, node)} */
    constructor(section, model, listeners) {
        this.model = model;
        this.listeners = listeners;
        this.painter = new Painter(model);
        this.scenes = new Map();
        this.redraw = oncePerFrame(() => this.draw());
        this.#build(section);
        this.#listen();
        this.colourBy(model.data.quantities[0]?.name ?? '');
        this.setView(model.data.placement.bestView);
    }

    #build(section) {
        const {data} = this.model;
        this.viewButtons = kViews.map(view =>
            h('button', {type: 'button', 'data-view': view, onclick: () => this.setView(view)}, view[0].toUpperCase() + view.slice(1)));
        this.quantitySelect = h('select', {id: 'quantity', 'aria-label': 'Colour by', onchange: event => this.colourBy(event.target.value)},
            data.quantities.map(({name, label}) => h('option', {value: name}, label)),
            h('option', {value: ''}, 'No colour'));
        this.search = searchBox(this.model, {label: 'Search nodes and elements', placeholder: 'Search by name',
                                             choose: object => this.goTo(object)});
        const toggle = (label, key) => h('label', {class: 'toggle'}, h('input', {type: 'checkbox', checked: true, onchange: event => {
            this.painter[key] = event.target.checked;
            this.redraw();
        }}), label);
        const toolbar = h('div', {class: 'toolbar'},
            h('div', {class: 'segmented', role: 'group', 'aria-label': 'View'}, this.viewButtons),
            h('label', {class: 'field'}, h('span', {}, 'Colour by'), this.quantitySelect),
            toggle('Arrows', 'showsArrows'), toggle('Names', 'showsNames'), this.search);

        this.canvas = h('canvas', {id: 'map', tabindex: '0', role: 'img',
                                   'aria-label': 'Drawing of the network; the tables below hold the same values'});
        this.tooltip = h('div', {class: 'tooltip', hidden: true});
        this.legend = h('div', {class: 'legend'});
        this.card = h('aside', {class: 'card', hidden: true, 'aria-live': 'polite'});
        const zoomButtons = h('div', {class: 'zoom-buttons'},
            h('button', {type: 'button', title: 'Zoom in', onclick: () => this.#zoomBy(1.6)}, '+'),
            h('button', {type: 'button', title: 'Zoom out', onclick: () => this.#zoomBy(1 / 1.6)}, '\u2212'),
            h('button', {type: 'button', title: 'Show all', id: 'fit', onclick: () => this.fit(true)}, 'Fit'));
        this.note = h('div', {class: 'map-note'});
        this.frame = h('div', {class: 'map'}, this.canvas, this.legend, this.note, zoomButtons, this.card, this.tooltip);
        section.append(toolbar, this.frame, this.#symbolKey());
    }

    /** The symbols that occur, with their meaning. */
    #symbolKey() {
        const {model} = this;
        const present = new Set();
        for (let e = 0; e < model.elementCount; ++e) {
            const symbol = model.symbolOf(e);
            if (symbol) present.add(symbol);
            if (model.isClosed[e]) present.add('closed');
        }
        for (const mark of model.nodes.boundary) {
            if (mark > 0) present.add(['', 'pressure', 'inlet', 'outlet'][mark]);
        }
        return h('p', {class: 'key'}, Object.keys(kIcons).filter(name => present.has(name))
            .map(name => h('span', {}, icon(kIcons[name]), kIconLabels[name])));
    }

    #listen() {
        this.zoom = zoom().scaleExtent([0.05, 20000]).on('zoom', () => {
            this.#hideTooltip();
            this.redraw();
        });
        select(this.canvas).call(this.zoom).on('dblclick.zoom', null);
        this.canvas.addEventListener('pointermove', event => this.#hover(event));
        this.canvas.addEventListener('pointerleave', () => this.#setHovered(null));
        this.canvas.addEventListener('click', event => {
            if (!event.defaultPrevented) this.select(this.#objectAt(event));
        });
        this.canvas.addEventListener('dblclick', () => this.fit(true));
        this.canvas.addEventListener('keydown', event => this.#onKey(event));
        new ResizeObserver(() => this.#resize()).observe(this.frame);
    }

    #onKey(event) {
        const moves = {ArrowLeft: [60, 0], ArrowRight: [-60, 0], ArrowUp: [0, 60], ArrowDown: [0, -60]};
        if (moves[event.key]) select(this.canvas).call(this.zoom.translateBy, ...moves[event.key].map(move => move / this.transform.k));
        else if (event.key === '+' || event.key === '=') this.#zoomBy(1.4);
        else if (event.key === '-') this.#zoomBy(1 / 1.4);
        else if (event.key === '0') this.fit(true);
        else if (event.key === 'Escape') this.select(null);
        else return;
        event.preventDefault();
    }

    get transform() {
        return zoomTransform(this.canvas);
    }

    #zoomBy(factor) {
        select(this.canvas).transition().duration(200).call(this.zoom.scaleBy, factor);
    }

    #resize() {
        const {clientWidth, clientHeight} = this.frame;
        // on paper the drawing keeps its pixels and is scaled to the width of the page
        if (this.isPrinting || clientWidth === 0 || (clientWidth === this.width && clientHeight === this.height)) return;
        const isFirst = this.width === undefined;
        this.width = clientWidth;
        this.height = clientHeight;
        this.#sizeCanvas(window.devicePixelRatio || 1);
        if (isFirst || this.isFitted) this.fit(false);
        this.draw();
    }

    #sizeCanvas(ratio) {
        this.ratio = ratio;
        this.canvas.width = Math.round(this.width * ratio);
        this.canvas.height = Math.round(this.height * ratio);
    }

    setView(view) {
        this.view = view;
        if (!this.scenes.has(view)) this.scenes.set(view, new Scene(this.model, view));
        this.scene = this.scenes.get(view);
        for (const button of this.viewButtons) button.setAttribute('aria-pressed', String(button.dataset.view === view));
        const {automatic, toScale, heightScale} = this.model.data.placement;
        const notes = [];
        if (automatic) notes.push('automatic layout');
        if (view !== 'plan' && !toScale) notes.push('heights not to scale');
        if (view !== 'plan' && toScale && heightScale > 1) notes.push(`heights \u00d7${shortNumber(heightScale)}`);
        this.note.textContent = notes.join(', ');
        if (this.width !== undefined) this.fit(false);
        this.redraw();
    }

    colourBy(name) {
        this.quantity = this.model.data.quantities.find(quantity => quantity.name === name) ?? null;
        this.quantitySelect.value = this.quantity ? name : '';
        this.painter.colourBy(this.quantity);
        this.#drawLegend();
        this.redraw();
    }

    setTheme(theme) {
        this.painter.theme = theme;
        this.#drawLegend();
        this.redraw();
    }

    #drawLegend() {
        const {quantity} = this;
        this.legend.hidden = quantity === null;
        if (quantity === null) return;
        const {label, unit, low, high, hasLower, hasHigher} = quantity;
        const allTicks = niceTicks(low, high, 4);
        const text = value => shortNumber(value, digitsFor(allTicks));
        // long numbers stand at every second or third tick
        const room = kLegendLetters / allTicks.length;
        const every = Math.max(1, ...allTicks.map(tick => Math.ceil(text(tick).length / room)));
        const ticks = allTicks.filter((_, i) => i % every === 0);
        const isOneValue = !(high > low);
        const range = isOneValue ? 'the same everywhere' : `${text(low)} to ${text(high)}`;
        const beyond = [hasLower ? `some below ${text(low)}` : '', hasHigher ? `some above ${text(high)}` : ''].filter(Boolean).join(', ');
        this.legend.replaceChildren(
            h('div', {class: 'legend-title'}, h('strong', {}, label), ` ${prettyUnit(unit)}`),
            h('div', {class: 'legend-bar', style: `background: ${isOneValue ? colourAt(0.5, this.painter.theme) : gradient(this.painter.theme)}`}),
            h('div', {class: 'legend-ticks'}, ticks.map(tick =>
                h('span', {style: `left: ${100 * fractionOf(quantity, tick)}%`}, text(tick)))),
            h('div', {class: 'legend-note'}, beyond || range));
    }

    /** Shows the whole network, clear of the legend. */
    fit(isSmooth) {
        const [padX, padTop, padBottom] = [56, 44, 84];
        const [w, t] = [Math.max(this.scene.width, 0.02 * kSceneSize), Math.max(this.scene.height, 0.02 * kSceneSize)];
        const k = Math.min((this.width - 2 * padX) / w, (this.height - padTop - padBottom) / t);
        const target = zoomIdentity.translate(this.width / 2, padTop + (this.height - padTop - padBottom) / 2).scale(k);
        const canvas = select(this.canvas);
        (isSmooth ? canvas.transition().duration(350) : canvas).call(this.zoom.transform, target);
        this.fittedScale = k;
        this.isFitted = true;
        this.zoom.on('start.fit', event => {
            if (event.sourceEvent) this.isFitted = false;
        });
    }

    /** Selects an object and brings it to the middle, as near as its surroundings make sense. */
    goTo(object) {
        this.select(object);
        if (object === null) return;
        const {scene, model} = this;
        const {kind, index} = object;
        const [x, y] = kind === 'node' ? [scene.nodeX[index], scene.nodeY[index]] : scene.stationAt(index, 0.5);
        let reach = kind === 'element' ? scene.lineLength[index] : 0;
        if (kind === 'node') {
            const {start, list} = model.incidence;
            for (let i = start[index]; i < start[index + 1]; ++i) reach = Math.max(reach, scene.lineLength[list[i]]);
        }
        const near = 0.3 * Math.min(this.width, this.height) / Math.max(reach, 1e-3);
        const k = Math.max(this.fittedScale, Math.min(near, 60 * this.fittedScale));
        this.isFitted = false;
        const target = zoomIdentity.translate(this.width / 2 - k * x, this.height / 2 - k * y).scale(k);
        select(this.canvas).transition().duration(450).call(this.zoom.transform, target);
        const {top, bottom} = this.frame.getBoundingClientRect();
        if (top < 0 || bottom > window.innerHeight) this.frame.scrollIntoView({behavior: 'smooth', block: 'center'});
    }

    select(object) {
        this.painter.selected = object;
        this.#drawCard();
        this.redraw();
        this.listeners.select(object);
    }

    showPath(elements) {
        this.painter.pathElements = elements;
        this.redraw();
    }

    #objectAt(event) {
        const {left, top} = this.canvas.getBoundingClientRect();
        const {x: tx, y: ty, k} = this.transform;
        const [x, y] = [(event.clientX - left - tx) / k, (event.clientY - top - ty) / k];
        const node = this.scene.nodeNear(x, y, kNodeReach / k);
        if (node >= 0) return {kind: 'node', index: node};
        const element = this.scene.elementNear(x, y, kLineReach / k);
        return element >= 0 ? {kind: 'element', index: element} : null;
    }

    #hover(event) {
        if (event.buttons !== 0) return;
        this.pointer = [event.clientX, event.clientY];
        this.#setHovered(this.#objectAt(event));
    }

    #setHovered(object) {
        if (!sameObject(object, this.painter.hovered) && object !== this.painter.hovered) {
            this.painter.hovered = object;
            this.canvas.style.cursor = object === null ? 'grab' : 'pointer';
            if (object !== null) this.tooltip.replaceChildren(...this.#describe(object));
            this.redraw();
        }
        this.tooltip.hidden = object === null;
        if (object !== null) this.#placeTooltip();
    }

    #hideTooltip() {
        this.tooltip.hidden = true;
    }

    #placeTooltip() {
        const {left, top, width, height} = this.frame.getBoundingClientRect();
        const [x, y] = [this.pointer[0] - left, this.pointer[1] - top];
        const {offsetWidth, offsetHeight} = this.tooltip;
        this.tooltip.style.left = `${x + 18 + offsetWidth > width ? x - 14 - offsetWidth : x + 16}px`;
        this.tooltip.style.top = `${Math.max(4, y + 18 + offsetHeight > height ? y - 12 - offsetHeight : y + 14)}px`;
    }

    /** Heading and values of an object. */
    #describe(object) {
        const {model} = this;
        const {kind, index} = object;
        const columns = kind === 'node' ? model.nodeColumns : model.elementColumns;
        const values = kind === 'node' ? model.nodes : model.elements;
        const what = kind === 'node' ? ['Node', model.boundaryLabel(index)].filter(Boolean).join(', ')
            : [model.kindLabel(index), model.hasCheckValve[index] ? 'with check valve' : '', model.isClosed[index] ? 'closed' : '']
                .filter(Boolean).join(', ');
        const rows = columns.filter(({key}) => values[key][index] !== null)
            .map(({key, label, unit}) => h('tr', {}, h('th', {scope: 'row'}, label), h('td', {}, withUnit(values[key][index], unit))));
        const description = values.description?.[index];
        return [h('div', {class: 'what'}, what), h('div', {class: 'name'}, model.nameOf(object)),
                description ? h('div', {class: 'description'}, description) : '',
                kind === 'element' ? h('div', {class: 'ends'},
                    `${model.nodes.name[model.elements.from[index]]} \u2192 ${model.nodes.name[model.elements.to[index]]}`) : '',
                h('table', {}, h('tbody', {}, rows))];
    }

    #drawCard() {
        const object = this.painter.selected;
        this.card.hidden = object === null;
        if (object === null) return;
        const {kind, index} = object;
        const actions = kind !== 'node' ? [] : [['start', 'Path from here'], ['end', 'Path to here']].map(([end, label]) =>
            h('button', {type: 'button', class: 'quiet', onclick: () => this.listeners.path(end, index)}, label));
        this.card.replaceChildren(
            h('button', {type: 'button', class: 'close', title: 'Close', onclick: () => this.select(null)}, '\u00d7'),
            ...this.#describe(object), actions.length > 0 ? h('div', {class: 'actions'}, actions) : '');
    }

    draw() {
        if (this.width === undefined) return;
        this.painter.draw(this.canvas.getContext('2d'), this.scene, this.transform, this.width, this.height, this.ratio);
    }

    /** Draws in the colours and sharpness of paper, and back. */
    prepareForPrint(isPrinting, theme) {
        if (this.width === undefined) return;
        this.isPrinting = isPrinting;
        this.painter.theme = isPrinting ? 'light' : theme;
        this.#sizeCanvas(isPrinting ? 2.5 : window.devicePixelRatio || 1);
        this.#drawLegend();
        this.draw();
    }
}
