// data_table.js: a table that sorts and filters. Only the rows in view are in the page, so a hundred thousand rows
// scroll as well as ten.
import {h, oncePerFrame} from './dom.js';
import {columnFormat, prettyUnit, wholeNumber} from './numbers.js';

const kRowHeight = 27;
const kRowsBeyond = 12;
const kMostPrintedRows = 400;
/** [rem], of columns of texts; 7 of others. */
const kTextWidths = {name: 9, kind: 9.5};
const collator = new Intl.Collator('en', {numeric: true});

const kCondition = /^\s*([^<>=]+?)\s*(<=|>=|<|>|=)\s*([-+\u2212]?[\d.]+(?:e[-+]?\d+)?)\s*$/i;
const kTests = {'<': (a, b) => a < b, '>': (a, b) => a > b, '<=': (a, b) => a <= b, '>=': (a, b) => a >= b, '=': (a, b) => a === b};

/**
 * Columns are {key, label, unit, values, isText}. The first is the name; choose(row) is called when it is clicked.
 */
export class DataTable {
    constructor(section, {what, columns, count, choose, fileName}) {
        this.columns = columns.map(column => ({...column, format: column.isText ? value => value : columnFormat(column.values)}));
        this.count = count;
        this.choose = choose;
        this.what = what;
        this.order = Uint32Array.from({length: count}, (_, i) => i);
        this.rows = this.order;
        this.sortedBy = null;
        this.isDescending = false;
        this.selected = -1;
        this.render = oncePerFrame(() => this.#render());
        this.#build(section, fileName);
        this.#update();
    }

    #build(section, fileName) {
        this.counter = h('span', {class: 'counter'});
        this.filter = h('input', {type: 'search', class: 'filter', 'aria-label': `Filter ${this.what}`,
                                  placeholder: `Filter: a name, or ${this.#exampleCondition()}`,
                                  oninput: () => this.#applyFilter()});
        const download = h('button', {type: 'button', class: 'quiet', onclick: () => this.#download(fileName)}, 'Save as CSV');
        this.headers = this.columns.map((column, i) =>
            h('th', {scope: 'col', class: column.isText ? 'text' : 'number', 'aria-sort': 'none'},
                h('button', {type: 'button', onclick: () => this.sortBy(i)}, h('span', {}, column.label),
                    column.unit ? h('span', {class: 'unit'}, prettyUnit(column.unit)) : null)));
        this.body = h('tbody', {});
        const widths = this.columns.map(column => h('col', {style: `width: ${column.isText ? kTextWidths[column.key] ?? 7 : 5.8}rem`}));
        this.table = h('table', {class: 'data'}, h('colgroup', {}, widths), h('thead', {}, h('tr', {}, this.headers)), this.body);
        this.scroller = h('div', {class: 'scroller', tabindex: '0', onscroll: this.render}, this.table);
        this.printNote = h('p', {class: 'print-note', hidden: true});
        section.append(h('div', {class: 'toolbar'}, this.filter, this.counter, download), this.scroller, this.printNote);
        new ResizeObserver(this.render).observe(this.scroller);
    }

    #exampleCondition() {
        const column = this.columns.find(({key}) => key === 'velocity' || key === 'pressure');
        return column ? `${column.label.toLowerCase()} > 1.5` : 'a part of it';
    }

    sortBy(index) {
        if (this.sortedBy === index) this.isDescending = !this.isDescending;
        else [this.sortedBy, this.isDescending] = [index, !this.columns[index].isText];
        this.headers.forEach((header, i) => header.setAttribute('aria-sort',
            i !== index ? 'none' : this.isDescending ? 'descending' : 'ascending'));
        const {values, isText} = this.columns[index];
        const sign = this.isDescending ? -1 : 1;
        const isMissing = value => value === null || value === undefined;
        const compare = isText ? (a, b) => collator.compare(values[a], values[b]) : (a, b) => values[a] - values[b];
        this.order = Uint32Array.from({length: this.count}, (_, i) => i).sort((a, b) => {
            const [misses, lacks] = [isMissing(values[a]), isMissing(values[b])];
            if (misses || lacks) return misses - lacks || a - b;
            return sign * compare(a, b) || a - b;
        });
        this.#applyFilter();
    }

    #applyFilter() {
        const text = this.filter.value.trim().toLowerCase();
        const condition = kCondition.exec(text);
        const column = condition && this.columns.find(({label, isText}) => !isText && label.toLowerCase().startsWith(condition[1]));
        if (text === '') {
            this.rows = this.order;
        } else if (column) {
            const [test, limit] = [kTests[condition[2]], Number(condition[3].replace('\u2212', '-'))];
            this.rows = this.order.filter(row => column.values[row] !== null && test(column.values[row], limit));
        } else {
            const texts = this.columns.filter(({isText}) => isText);
            this.rows = this.order.filter(row => texts.some(({values}) => values[row].toLowerCase().includes(text)));
        }
        this.#update();
    }

    #update() {
        this.scroller.scrollTop = 0;
        const [all, shown] = [wholeNumber(this.count), wholeNumber(this.rows.length)];
        this.counter.textContent = this.rows.length === this.count ? `${all} ${this.what}` : `${shown} of ${all} ${this.what}`;
        this.#render();
    }

    #render() {
        const height = this.scroller.clientHeight || 480;
        const first = Math.max(0, Math.floor(this.scroller.scrollTop / kRowHeight) - kRowsBeyond);
        const end = Math.min(this.rows.length, first + Math.ceil(height / kRowHeight) + 2 * kRowsBeyond);
        this.#fill(first, end);
    }

    #fill(first, end) {
        const gap = rows => h('tr', {class: 'gap', style: `height: ${rows * kRowHeight}px`});
        const rows = [];
        if (first > 0) rows.push(gap(first));
        for (let i = first; i < end; ++i) rows.push(this.#row(this.rows[i]));
        if (end < this.rows.length) rows.push(gap(this.rows.length - end));
        this.body.replaceChildren(...rows);
    }

    #row(row) {
        return h('tr', {class: row === this.selected ? 'selected' : null}, this.columns.map(({values, format, isText}, i) => {
            if (i > 0) return h('td', {class: isText ? 'text' : 'number'}, format(values[row]));
            return h('td', {class: 'text'}, h('button', {type: 'button', class: 'link', onclick: () => this.choose(row)}, values[row]));
        }));
    }

    /** Marks a row; -1 for none. */
    select(row) {
        if (row === this.selected) return;
        this.selected = row;
        this.render();
    }

    /** Paper has no scroll bar: all rows up to a number that is still read. */
    prepareForPrint(isPrinting) {
        this.table.classList.toggle('printing', isPrinting);
        if (!isPrinting) {
            this.printNote.hidden = true;
            this.#render();
            return;
        }
        const end = Math.min(this.rows.length, kMostPrintedRows);
        this.#fill(0, end);
        this.body.querySelectorAll('.gap').forEach(row => row.remove());
        this.printNote.hidden = end === this.rows.length;
        this.printNote.textContent = `The first ${end} of ${wholeNumber(this.rows.length)} ${this.what}. The page on a screen has all of them.`;
    }

    #download(fileName) {
        const quoted = text => /[",\n\r]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
        const lines = [this.columns.map(({label, unit}) => quoted(unit ? `${label} [${unit}]` : label)).join(',')];
        for (const row of this.rows)
            lines.push(this.columns.map(({values}) => quoted(String(values[row] ?? ''))).join(','));
        const address = URL.createObjectURL(new Blob([`${lines.join('\r\n')}\r\n`], {type: 'text/csv'}));
        h('a', {href: address, download: fileName}).click();
        setTimeout(() => URL.revokeObjectURL(address), 10000);
    }
}
