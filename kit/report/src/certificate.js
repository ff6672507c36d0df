// certificate.js: the check of the result that was made apart from the solve.
import {h} from './dom.js';
import {prettyUnit, shortNumber} from './numbers.js';

export function certificateTable(section, {data}) {
    const {certificate} = data;
    if (!certificate) {
        section.append(h('p', {class: 'hint'}, 'There are no results to certify.'));
        return;
    }
    section.append(
        h('p', {class: 'verdict'}, h('span', {class: `badge ${certificate.isGood ? 'good' : 'error'}`}, certificate.isGood ? 'holds' : 'does not hold'),
            ' Mass balances and laws of loss, computed anew from the results alone.'),
        h('table', {class: 'facts'}, h('tbody', {}, certificate.rows.map(([label, value, unit, remark]) =>
            h('tr', {}, h('th', {scope: 'row'}, label), h('td', {class: 'number'}, shortNumber(value)),
                h('td', {class: 'unit'}, prettyUnit(unit)), h('td', {class: 'remark'}, remark))),
            h('tr', {}, h('th', {scope: 'row'}, 'Elements checked'), h('td', {class: 'number'}, String(certificate.checked)), h('td', {}),
                h('td', {class: 'remark'}, certificate.notChecked > 0
                    ? `${certificate.notChecked} not checked${certificate.notCheckedWhy ? `: ${certificate.notCheckedWhy}` : ''}` : '')),
            h('tr', {}, h('th', {scope: 'row'}, 'Model'), h('td', {colspan: '3'}, h('code', {}, data.hash))),
            h('tr', {}, h('th', {scope: 'row'}, 'Version'), h('td', {colspan: '3'}, `tavell ${data.version}`)))));
}
