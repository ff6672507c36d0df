// findings.js: what the doctor and the solve had to say.
import {h} from './dom.js';

const kSeverities = ['error', 'warning', 'remark'];
const kMostShown = 60;
const kMostObjects = 12;

export function findingsList(section, model, choose) {
    const {findings} = model.data;
    if (findings.length === 0) {
        section.append(h('p', {class: 'hint'}, 'Nothing was found that is wrong or doubtful.'));
        return;
    }
    const sorted = kSeverities.flatMap(severity => findings.filter(finding => finding.severity === severity));
    const list = h('ol', {class: 'findings'});
    const show = count => list.replaceChildren(...sorted.slice(0, count).map(finding => entry(finding, model, choose)));
    show(kMostShown);
    section.append(list);
    if (sorted.length <= kMostShown) return;
    const more = h('button', {type: 'button', class: 'quiet', onclick: () => {
        show(sorted.length);
        more.remove();
    }}, `Show all ${sorted.length}`);
    section.append(more);
}

function entry(finding, model, choose) {
    const objects = [...new Set([finding.object, ...(finding.objects ?? [])].filter(Boolean))];
    return h('li', {class: `finding ${finding.severity}`},
        h('div', {class: 'finding-head'}, h('span', {class: `badge ${finding.severity}`}, finding.severity),
            h('strong', {}, sentence(finding.message)), h('code', {}, finding.code)),
        finding.remedy ? h('p', {class: 'remedy'}, sentence(finding.remedy)) : null,
        objects.length === 0 ? null : h('p', {class: 'objects'}, objects.slice(0, kMostObjects).map(text => link(text, model, choose)),
            objects.length > kMostObjects ? `and ${objects.length - kMostObjects} more` : null));
}

function link(text, model, choose) {
    const object = model.find(text);
    return object === null ? h('span', {}, text)
        : h('button', {type: 'button', class: 'link', onclick: () => choose(object)}, text);
}

function sentence(text) {
    const first = text.charAt(0).toUpperCase() + text.slice(1);
    return /[.!?]$/.test(first) ? first : `${first}.`;
}
