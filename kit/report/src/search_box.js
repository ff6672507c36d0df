// search_box.js: a field that suggests the names of nodes and elements.
import {h} from './dom.js';

let boxes = 0;

/**
 * A search field. choose(object) is called for the name that is picked; onlyNodes leaves elements out;
 * keepsName leaves the name in the field.
 */
export function searchBox(model, {label, placeholder, choose, onlyNodes = false, keepsName = false}) {
    const listId = `suggestions-${++boxes}`;
    const list = h('ul', {class: 'suggestions', role: 'listbox', id: listId, hidden: true});
    const input = h('input', {type: 'search', role: 'combobox', placeholder, 'aria-label': label, autocomplete: 'off',
                              spellcheck: 'false', 'aria-expanded': 'false', 'aria-controls': listId,
                              'aria-autocomplete': 'list'});
    let found = [];
    let active = -1;

    function pick(object) {
        input.value = keepsName ? model.nameOf(object) : '';
        close();
        choose(object);
    }

    function close() {
        list.hidden = true;
        input.setAttribute('aria-expanded', 'false');
        input.removeAttribute('aria-activedescendant');
    }

    function activate(index) {
        active = index;
        [...list.children].forEach((item, i) => item.setAttribute('aria-selected', String(i === active)));
        if (active >= 0) input.setAttribute('aria-activedescendant', `${listId}-${active}`);
    }

    function suggest() {
        found = model.search(input.value, {onlyNodes});
        list.replaceChildren(...found.map((object, i) =>
            h('li', {role: 'option', id: `${listId}-${i}`, onpointerdown: event => {
                event.preventDefault();
                pick(object);
            }}, h('span', {}, model.nameOf(object)),
              h('span', {class: 'kind'}, object.kind === 'node' ? model.boundaryLabel(object.index) || 'node'
                                                                : model.kindLabel(object.index).toLowerCase()))));
        if (found.length === 0 && input.value.trim() !== '') list.append(h('li', {class: 'nothing'}, 'No such name'));
        list.hidden = input.value.trim() === '';
        input.setAttribute('aria-expanded', String(!list.hidden));
        activate(found.length > 0 ? 0 : -1);
    }

    input.addEventListener('input', suggest);
    input.addEventListener('focus', () => keepsName && input.select());
    input.addEventListener('blur', close);
    input.addEventListener('keydown', event => {
        if (event.key === 'ArrowDown' && found.length > 0) activate((active + 1) % found.length);
        else if (event.key === 'ArrowUp' && found.length > 0) activate((active + found.length - 1) % found.length);
        else if (event.key === 'Enter' && !list.hidden && active >= 0) pick(found[active]);
        else if (event.key === 'Escape') close();
        else return;
        event.preventDefault();
    });
    const box = h('div', {class: 'search'}, input, list);
    box.show = object => {
        input.value = object === null ? '' : model.nameOf(object);
    };
    return box;
}
