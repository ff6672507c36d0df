// build.mjs [output folder]: puts src/ and the libraries that it uses into one script, report.js, and the style into
// report.css. The licences of the libraries stand at the head of the script, where their terms want them.
import {build} from 'esbuild';
import {existsSync, mkdirSync, readdirSync, readFileSync, writeFileSync} from 'node:fs';
import {dirname, join} from 'node:path';
import {fileURLToPath} from 'node:url';

const here = dirname(fileURLToPath(import.meta.url));
const output = process.argv[2] ?? join(here, 'dist');
mkdirSync(output, {recursive: true});

const shared = {absWorkingDir: here, bundle: true, minify: true, write: false, charset: 'utf8', legalComments: 'none',
                logLevel: 'warning'};
const script = await build({...shared, entryPoints: ['src/main.js'], format: 'iife', target: 'es2020', metafile: true});
const style = await build({...shared, entryPoints: ['style.css']});

/** Folders of the packages that files of the bundle come from, sorted by name. */
function packagesOf(metafile) {
    const folders = new Set();
    for (const file of Object.keys(metafile.inputs)) {
        const match = /^(.*node_modules\/(?:@[^/]+\/)?[^/]+)\//.exec(file);
        if (match) folders.add(match[1]);
    }
    return [...folders].sort();
}

function licenceOf(folder) {
    const {name, version, license} = JSON.parse(readFileSync(join(here, folder, 'package.json'), 'utf8'));
    const file = readdirSync(join(here, folder)).find(entry => /^licen[cs]e/i.test(entry));
    const text = file && existsSync(join(here, folder, file)) ? readFileSync(join(here, folder, file), 'utf8').trim() : '';
    return {heading: `${name} ${version} (${license})`, text};
}

// Packages with the same licence text share it.
const byText = new Map();
for (const folder of packagesOf(script.metafile)) {
    const {heading, text} = licenceOf(folder);
    byText.set(text, [...(byText.get(text) ?? []), heading]);
}
const notice = [...byText].map(([text, headings]) => `${headings.join(', ')}\n\n${text}`).join('\n\n')
    .replaceAll('*/', '* /');
writeFileSync(join(output, 'report.js'), `/*! Contains:\n\n${notice}\n*/\n${script.outputFiles[0].text}`);
writeFileSync(join(output, 'report.css'), style.outputFiles[0].text);
