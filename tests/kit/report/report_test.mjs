// report_test.mjs REPORT.html [SCREENSHOT_FOLDER]: opens a report in Chromium without a window and uses it as a person
// would. The browser is that of the environment variable CHROMIUM, or chromium of the PATH. Exit status 0 when
// everything holds, 1 when something does not, 77 when there is no browser.
import {chromium} from 'playwright-core';
import assert from 'node:assert/strict';
import {existsSync, mkdirSync, readFileSync} from 'node:fs';
import {delimiter, join, resolve} from 'node:path';
import {pathToFileURL} from 'node:url';

const [reportPath, screenshots] = process.argv.slice(2);
if (!reportPath) {
    console.error('usage: node report_test.mjs REPORT.html [SCREENSHOT_FOLDER]');
    process.exit(1);
}

function findBrowser() {
    if (process.env.CHROMIUM) return process.env.CHROMIUM;
    const folders = (process.env.PATH ?? '').split(delimiter);
    return folders.flatMap(folder => ['chromium', 'chromium-browser', 'google-chrome'].map(name => join(folder, name)))
        .find(path => existsSync(path));
}

const browserPath = findBrowser();
if (!browserPath) {
    console.error('no Chromium found; set CHROMIUM to its path');
    process.exit(77);
}
if (screenshots) mkdirSync(screenshots, {recursive: true});

/** The data in the page, as its script gets it. */
const html = readFileSync(reportPath, 'utf8');
const data = JSON.parse(/<script type="application\/json" id="data">(.*?)<\/script>/s.exec(html)[1]);

const isRoot = process.getuid?.() === 0;
const browser = await chromium.launch({executablePath: browserPath, args: isRoot ? ['--no-sandbox'] : []});

/** Opens the report; everything that it says or asks for outside itself goes into the page's complaints. */
async function open(options = {}) {
    const context = await browser.newContext({viewport: {width: 1360, height: 900}, ...options});
    const page = await context.newPage();
    page.complaints = [];
    page.on('console', message => {
        if (message.type() === 'error' || message.type() === 'warning') page.complaints.push(`console: ${message.text()}`);
    });
    page.on('pageerror', error => page.complaints.push(`error: ${error.stack}`));
    page.on('request', request => {
        const isOwn = /^(data|blob):/.test(request.url()) || request.isNavigationRequest();
        if (!isOwn) page.complaints.push(`request: ${request.url()}`);
    });
    await page.goto(pathToFileURL(resolve(reportPath)).href);
    await page.locator('#map').waitFor();
    await settle(page);
    return page;
}

/** Waits until transitions are over and the last frame is drawn. */
async function settle(page, time = 700) {
    await page.waitForTimeout(time);
    await page.evaluate(() => new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done))));
}

/** A text for all pixels of the drawing. */
const pixels = page => page.evaluate(() => {
    const {width, height} = document.getElementById('map');
    const copy = new OffscreenCanvas(width, height).getContext('2d', {willReadFrequently: true});
    copy.drawImage(document.getElementById('map'), 0, 0);
    const {data: bytes} = copy.getImageData(0, 0, width, height);
    let hash = 2166136261;
    let coloured = 0;
    for (let i = 0; i < bytes.length; i += 4) {
        hash = Math.imul(hash ^ (bytes[i] | bytes[i + 1] << 8 | bytes[i + 2] << 16), 16777619);
        if (Math.max(bytes[i], bytes[i + 1], bytes[i + 2]) - Math.min(bytes[i], bytes[i + 1], bytes[i + 2]) > 40) ++coloured;
    }
    return {hash, coloured};
});

async function shoot(page, name, options = {}) {
    if (screenshots) await page.screenshot({path: join(screenshots, `${name}.png`), ...options});
}

const checks = {
    async 'the report opens without complaints and draws the network'(page) {
        assert.equal(await page.title(), data.title || 'Network');
        assert.ok((await pixels(page)).coloured > 0 || data.quantities.length === 0, 'nothing is coloured');
        await shoot(page, 'top');
    },
    async 'the colours follow the chosen quantity'(page) {
        if (data.quantities.length < 2) return;
        const seen = new Set();
        for (const {name, label} of data.quantities) {
            await page.selectOption('#quantity', name);
            await settle(page, 100);
            seen.add((await pixels(page)).hash);
            assert.ok((await page.locator('.legend').textContent()).startsWith(label), `the legend does not name ${label}`);
            await shoot(page, `colour-${name}`);
        }
        assert.ok(seen.size >= 2, 'every quantity gives the same picture');
        await page.selectOption('#quantity', data.quantities[0].name);
    },
    async 'the views differ'(page) {
        const seen = new Set();
        for (const view of ['plan', 'elevation', 'isometric']) {
            await page.click(`button[data-view=${view}]`);
            await settle(page, 150);
            assert.equal(await page.getAttribute(`button[data-view=${view}]`, 'aria-pressed'), 'true');
            seen.add((await pixels(page)).hash);
            await shoot(page, `view-${view}`);
        }
        assert.equal(seen.size, 3);
        await page.click(`button[data-view=${data.placement.bestView}]`);
        await settle(page, 150);
    },
    async 'search finds a node, and its card shows its values'(page) {
        const name = data.nodes.name[data.nodes.name.length >> 1];
        const before = await pixels(page);
        await page.fill('#network .search input', name);
        const options = page.locator('#network .suggestions [role=option]');
        assert.equal(await options.first().locator('span').first().textContent(), name);
        await shoot(page, 'suggestions');
        await page.keyboard.press('Enter');
        await settle(page);
        assert.equal(await page.locator('.card .name').textContent(), name);
        assert.notEqual((await pixels(page)).hash, before.hash, 'the drawing did not move to the node');
        await shoot(page, 'selected');
        await page.fill('#network .search input', 'no such name at all');
        assert.equal(await options.count(), 0);
        await page.keyboard.press('Escape');
        await page.fill('#network .search input', '');
        await page.click('.card .close');
    },
    async 'the pointer over a node shows its name'(page) {
        await page.fill('#network .search input', data.nodes.name[0]);
        await page.keyboard.press('Enter');
        await settle(page);
        const box = await page.locator('#map').boundingBox();
        await page.mouse.move(box.x + box.width / 2 + 1, box.y + box.height / 2 + 1);
        await settle(page, 100);
        assert.equal(await page.locator('.tooltip .name').textContent(), data.nodes.name[0]);
        await shoot(page, 'tooltip');
        await page.mouse.move(box.x + 3, box.y + 3);
        await page.click('.card .close');
    },
    async 'the wheel zooms and Fit shows all again'(page) {
        await page.click('#fit');
        await settle(page);
        const fitted = await pixels(page);
        const box = await page.locator('#map').boundingBox();
        await page.mouse.move(box.x + box.width / 3, box.y + box.height / 3);
        await page.mouse.wheel(0, -600);
        await settle(page, 250);
        await page.mouse.move(box.x + 2, box.y + 2);
        assert.notEqual((await pixels(page)).hash, fitted.hash);
        await page.click('#fit');
        await settle(page);
        assert.equal((await pixels(page)).hash, fitted.hash, 'the drawing is not as it was');
    },
    async 'tables sort by their columns, up and down'(page) {
        const header = page.locator('#nodes th button', {hasText: data.hasResults ? 'Pressure' : 'Height'}).first();
        const column = await header.evaluate(button => button.closest('th').cellIndex);
        const values = (data.hasResults ? data.nodes.pressure : data.nodes.height).filter(value => value !== null);
        const first = async () => Number((await page.locator(`#nodes tbody tr:not(.gap) td:nth-child(${column + 1})`).first()
            .textContent()).replace('\u2212', '-').replace(/\s/g, ''));
        const isNear = (a, b) => Math.abs(a - b) <= 2e-3 * Math.max(...values.map(Math.abs));
        await header.click();
        await settle(page, 50);
        assert.ok(isNear(await first(), Math.max(...values)), 'the largest value is not the first');
        await header.click();
        await settle(page, 50);
        assert.ok(isNear(await first(), Math.min(...values)), 'the smallest value is not the first');
    },
    async 'tables filter by name, and hold only the rows in view'(page) {
        const name = data.elements.name[data.elements.name.length - 1];
        await page.fill('#elements .filter', name);
        await settle(page, 50);
        const shown = await page.locator('#elements tbody .link').allTextContents();
        assert.ok(shown.includes(name));
        await page.fill('#elements .filter', '');
        await settle(page, 50);
        assert.ok(await page.locator('#elements tbody tr').count() < 100, 'rows out of view are in the page');
        await page.locator('#elements').scrollIntoViewIfNeeded();
        await page.locator('#elements .scroller').evaluate(scroller => scroller.scrollTo(0, scroller.scrollHeight));
        await settle(page, 100);
        assert.ok((await page.locator('#elements tbody .link').allTextContents()).includes(name), 'the last row is not reached');
        await shoot(page, 'elements');
    },
    async 'a profile goes along the path between two chosen nodes'(page) {
        if (!data.hasResults) return;
        assert.ok(await page.locator('#profile figure svg').count() >= 2);
        await page.locator('#profile').scrollIntoViewIfNeeded();
        const e = data.elements.name.findIndex((_, i) => !data.elements.closed.includes(i));
        const ends = [data.nodes.name[data.elements.from[e]], data.nodes.name[data.elements.to[e]]];
        for (const [i, name] of ends.entries()) {
            await page.locator('#profile .search input').nth(i).fill(name);
            await page.keyboard.press('Enter');
        }
        const text = await page.locator('#profile .balance').textContent();
        assert.ok(ends.every(name => text.includes(`Pressure at ${name}`)), text);
    },
    async 'without results the findings come first'(page) {
        const sections = await page.locator('main > section').evaluateAll(list => list.map(section => section.id));
        assert.equal(sections[1], data.hasResults ? 'network' : 'findings');
    },
    async 'findings and certificate are there'(page) {
        assert.equal(await page.locator('.finding').count(), Math.min(60, data.findings.length));
        if (data.hasResults) assert.ok((await page.locator('#certificate').textContent()).includes(data.hash));
        for (const id of ['profile', 'pumps', 'findings', 'certificate']) {
            if (await page.locator(`#${id}`).count() === 0) continue;
            await page.locator(`#${id}`).scrollIntoViewIfNeeded();
            if (screenshots) await page.locator(`#${id}`).screenshot({path: join(screenshots, `section-${id}.png`)});
        }
    },
};

let failures = 0;
async function run(name, page, check) {
    try {
        await check(page);
        assert.deepEqual(page.complaints, []);
        console.log(`ok   ${name}`);
    } catch (error) {
        ++failures;
        page.complaints = [];
        console.log(`FAIL ${name}\n${error.stack ?? error}`);
        await shoot(page, `failed-${failures}`).catch(() => {});
    }
}

const page = await open();
for (const [name, check] of Object.entries(checks)) await run(name, page, check);

await run('a dark system gets a dark page', await open({colorScheme: 'dark'}), async dark => {
    const ground = await dark.evaluate(() => getComputedStyle(document.body).backgroundColor);
    assert.ok(ground.match(/\d+/g).slice(0, 3).every(level => Number(level) < 60), ground);
    await shoot(dark, 'dark');
    await shoot(dark, 'dark-whole', {fullPage: true});
    await dark.click('#theme');
    assert.equal(await dark.evaluate(() => document.documentElement.dataset.theme), 'light');
});

await run('the report prints to pages of A4', await open(), async paper => {
    const pdf = await paper.pdf({format: 'A4', printBackground: true, ...(screenshots && {path: join(screenshots, 'print.pdf')})});
    assert.equal(pdf.subarray(0, 5).toString('latin1'), '%PDF-');
    assert.ok(pdf.length > 20000, 'the print is nearly empty');
    await shoot(paper, 'whole', {fullPage: true});
});

await run('a narrow window has no sideways scroll bar', await open({viewport: {width: 400, height: 800}}), async narrow => {
    const [scroll, client] = await narrow.evaluate(() => [document.documentElement.scrollWidth, document.documentElement.clientWidth]);
    assert.ok(scroll <= client, `${scroll} px in a window of ${client} px`);
    await shoot(narrow, 'narrow');
});

await browser.close();
process.exit(failures > 0 ? 1 : 0);
