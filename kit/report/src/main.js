// main.js: puts the page together from its data.
import {certificateTable} from './certificate.js';
import {DataTable} from './data_table.js';
import {h} from './dom.js';
import {findingsList} from './findings.js';
import {Model} from './model.js';
import {NetworkView} from './network_view.js';
import {Profile} from './profile.js';
import {pumpCharts} from './pump_charts.js';
import {heading, keyFigures} from './summary.js';

const byId = id => document.getElementById(id);
const model = new Model(JSON.parse(byId('data').textContent));

heading(model);
// without results the findings are what the page is about
if (!model.data.hasResults) byId('summary').after(byId('findings'));

const tables = {};
const view = new NetworkView(byId('network'), model, {
    select(object) {
        tables.node?.select(object?.kind === 'node' ? object.index : -1);
        tables.element?.select(object?.kind === 'element' ? object.index : -1);
    },
    path(end, node) {
        profile.setEnd(end, node);
    },
});
const goTo = object => view.goTo(object);
const profile = new Profile(byId('profile'), model, view);

keyFigures(byId('summary'), model, goTo);
pumpCharts(byId('pumps'), model, goTo);

const withValues = (columns, values) => columns.map(column => ({...column, values: values[column.key]}));
const nodeNames = positions => positions.map(n => model.nodes.name[n]);
const indices = count => Array.from({length: count}, (_, i) => i);
tables.node = new DataTable(byId('nodes'), {
    what: 'nodes', count: model.nodeCount, fileName: 'nodes.csv', choose: index => goTo({kind: 'node', index}),
    columns: [{key: 'name', label: 'Name', isText: true, values: model.nodes.name},
              {key: 'boundary', label: 'Boundary', isText: true, values: indices(model.nodeCount).map(n => model.boundaryLabel(n))},
              ...withValues(model.nodeColumns, model.nodes)],
});
tables.element = new DataTable(byId('elements'), {
    what: 'elements', count: model.elementCount, fileName: 'elements.csv', choose: index => goTo({kind: 'element', index}),
    columns: [{key: 'name', label: 'Name', isText: true, values: model.elements.name},
              {key: 'kind', label: 'Type', isText: true,
               values: indices(model.elementCount).map(e => model.kindLabel(e) + (model.isClosed[e] ? ', closed' : ''))},
              {key: 'from', label: 'From', isText: true, values: nodeNames(model.elements.from)},
              {key: 'to', label: 'To', isText: true, values: nodeNames(model.elements.to)},
              ...withValues(model.elementColumns, model.elements)],
});
findingsList(byId('findings'), model, goTo);
certificateTable(byId('certificate'), model);

for (const section of document.querySelectorAll('main > section[id]')) {
    const title = section.querySelector('h2')?.textContent;
    if (title) byId('contents').append(h('a', {href: `#${section.id}`}, title.replace(' along a path', '')));
}

// The theme: that of the system until the button chooses the other one.
const prefersDark = matchMedia('(prefers-color-scheme: dark)');
let chosen = null;
const theme = () => chosen ?? (prefersDark.matches ? 'dark' : 'light');
function applyTheme() {
    document.documentElement.dataset.theme = theme();
    view.setTheme(theme());
    byId('theme').textContent = theme() === 'dark' ? 'Light' : 'Dark';
}
prefersDark.addEventListener('change', applyTheme);
byId('theme').addEventListener('click', () => {
    chosen = theme() === 'dark' ? 'light' : 'dark';
    applyTheme();
});
applyTheme();

function prepareForPrint(isPrinting) {
    document.documentElement.dataset.theme = isPrinting ? 'light' : theme();
    view.prepareForPrint(isPrinting, theme());
    for (const table of Object.values(tables)) table.prepareForPrint(isPrinting);
}
addEventListener('beforeprint', () => prepareForPrint(true));
addEventListener('afterprint', () => prepareForPrint(false));
