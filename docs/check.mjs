// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// check.mjs SITE PICTURES: opens every page of the site in a browser without a network. Fails when
// a link or an image leads nowhere, when a class page lists a member twice, when a page wants
// something from elsewhere, when a script fails, and when a page is wider than a desktop or a phone.
// Pictures of the guides go to PICTURES.

import { chromium } from 'playwright-core';
import { mkdirSync, readdirSync } from 'node:fs';
import { basename, join, resolve } from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';

const [site, pictures] = process.argv.slice(2).map((folder) => resolve(folder));
const widths = [1280, 390]; // pixels: a desktop, a phone
const pages = readdirSync(site).filter((name) => name.endsWith('.html'));
const isGuide = (name) => !/^(class|struct|dir_|functions|graph_)/.test(name);
const complaints = [];
const links = []; // [page, address]
const anchors = new Map(); // the ids of each page

const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run'],
});

async function openBrowserPage() {
    const page = await browser.newPage();
    await page.route(/^(?!file:|data:)/, (route) => {
        complaints.push(`${basename(page.url())}: wants ${route.request().url()}`);
        return route.abort();
    });
    page.on('pageerror', (error) => complaints.push(`${basename(page.url())}: ${error.message}`));
    page.on('requestfailed', (request) => {
        // Scripts that are still loading when the next page is opened are no fault.
        if (request.failure().errorText !== 'net::ERR_ABORTED') {
            complaints.push(`${basename(page.url())}: no ${request.url()}`);
        }
    });
    return page;
}

async function readLinks(page, name) {
    const found = await page.evaluate(() => ({
        ids: [...document.querySelectorAll('[id], a[name]')].map((e) => e.id || e.name),
        links: [...document.querySelectorAll('a[href]')].map((e) => e.href),
    }));
    anchors.set(name, new Set(found.ids));
    links.push(...found.links.map((address) => [name, address]));
}

// A class page lists a member once, not once more for each class whose member it overrides.
async function lookForRepeats(page, name) {
    const members = await page.$$eval('.memItemRight', (rows) => rows.map(
        (row) => row.textContent.match(/^.*\)(?: const)?/)?.[0]).filter((member) => member));
    const repeated = members.filter((member, i) => members.indexOf(member) < i);
    complaints.push(...repeated.map((member) => `${name}: lists ${member} twice`));
}

async function lookAt(page, name, width) {
    await page.setViewportSize({ width, height: 900 });
    const tooWide = await page.evaluate(
        () => document.documentElement.scrollWidth - document.documentElement.clientWidth);
    if (tooWide > 0) {
        complaints.push(`${name}: ${tooWide} pixels wider than ${width}`);
    }
    if (isGuide(name)) {
        await page.screenshot({ path: join(pictures, `${name.slice(0, -5)}-${width}.png`) });
    }
}

function checkLink([name, address]) {
    const url = new URL(address);
    if (url.protocol !== 'file:') {
        return;
    }
    const target = anchors.get(basename(fileURLToPath(url)));
    const anchor = decodeURIComponent(url.hash.slice(1));
    if (!target || (anchor && !target.has(anchor))) {
        complaints.push(`${name}: links to ${basename(url.pathname)}${url.hash}`);
    }
}

mkdirSync(pictures, { recursive: true });
const page = await openBrowserPage();
for (const name of pages) {
    await page.goto(pathToFileURL(join(site, name)).href);
    await readLinks(page, name);
    await lookForRepeats(page, name);
    for (const width of widths) {
        await lookAt(page, name, width);
    }
}
await browser.close();

links.forEach(checkLink);
for (const complaint of new Set(complaints)) {
    console.error(complaint);
}
console.log(`${pages.length} pages, ${links.length} links, ${widths.length} widths`);
process.exit(complaints.length === 0 ? 0 : 1);
