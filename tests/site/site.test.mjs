// Looks at the documentation's web site (build/site) as readers do: a browser opens every page on a wide screen and on
// a phone's, no link leads nowhere, nothing is wider than the screen, and the search finds what is there.
import assert from 'node:assert/strict';
import { existsSync, mkdirSync, readFileSync, statSync } from 'node:fs';
import { createServer } from 'node:http';
import { extname, join } from 'node:path';
import { after, before, test } from 'node:test';
import { chromium } from 'playwright-core';

const build = join(import.meta.dirname, '..');
const site = join(build, 'site');
const pictures = join(build, 'site-pictures');
const TYPES = {
  '.html': 'text/html; charset=utf-8', '.css': 'text/css', '.js': 'text/javascript', '.json': 'application/json',
  '.svg': 'image/svg+xml', '.png': 'image/png', '.ico': 'image/x-icon', '.woff2': 'font/woff2', '.woff': 'font/woff',
};
const SCREENS = { wide: { width: 1280, height: 900 }, phone: { width: 390, height: 844 } };

let server;
let browser;
let origin;

before(async () => {
  mkdirSync(pictures, { recursive: true });
  server = createServer((request, response) => {
    const path = join(site, decodeURIComponent(new URL(request.url, 'http://localhost').pathname));
    const file = existsSync(path) && statSync(path).isDirectory() ? join(path, 'index.html') : path;
    if (!existsSync(file)) return response.writeHead(404).end();
    return response.writeHead(200, { 'Content-Type': TYPES[extname(file)] ?? 'application/octet-stream' })
      .end(readFileSync(file));
  });
  await new Promise((done) => server.listen(0, '127.0.0.1', done));
  origin = `http://127.0.0.1:${server.address().port}`;
  browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--no-sandbox'] });
});

after(async () => {
  await browser?.close();
  server?.close();
});

// Every page that links lead to from the first one, with the ids and links that it has.
async function crawl(page) {
  const pages = new Map();
  const waiting = ['/index.html'];
  while (waiting.length) {
    const path = waiting.pop();
    if (pages.has(path)) continue;
    const answer = await page.goto(origin + path);
    const found = await page.evaluate(() => ({
      ids: [...document.querySelectorAll('[id]')].map((element) => element.id),
      links: [...document.querySelectorAll('a[href]')].map((link) => link.href),
      title: document.title,
    }));
    pages.set(path, { status: answer.status(), ...found });
    for (const link of found.links) {
      const url = new URL(link);
      if (url.origin === origin && url.pathname.endsWith('.html')) waiting.push(url.pathname);
    }
  }
  return pages;
}

test('every page opens, and every link leads somewhere', async () => {
  const page = await browser.newPage({ viewport: SCREENS.wide });
  const errors = [];
  page.on('pageerror', (error) => errors.push(`${page.url()}: ${error}`));
  page.on('response', (response) => response.status() >= 400 && errors.push(`${response.url()}: ${response.status()}`));
  page.on('request', (request) => {
    if (!request.url().startsWith(origin)) errors.push(`${page.url()} fetches ${request.url()}`);
  });
  const pages = await crawl(page);
  for (const name of ['BomUpdate', 'clsReadUserDefined']) assert.ok(pages.has(`/reference/${name}.html`), name);
  assert.ok(pages.size >= 18, `${pages.size} pages`);
  for (const [path, { status, links, title }] of pages) {
    assert.equal(status, 200, path);
    assert.notEqual(title, '', path);
    for (const link of links) {
      const url = new URL(link);
      if (url.origin !== origin) continue;
      const target = url.pathname === '/' ? '/index.html' : url.pathname;
      assert.ok(pages.has(target), `${path} links to ${link}`);
      const id = decodeURIComponent(url.hash.slice(1));
      if (id) assert.ok(pages.get(target).ids.includes(id), `${path} links to ${link}`);
    }
  }
  assert.deepEqual(errors, []);
  await page.close();
});

for (const [name, viewport] of Object.entries(SCREENS)) {
  test(`no page is wider than a ${name} screen`, async () => {
    const page = await browser.newPage({ viewport });
    for (const path of (await crawl(page)).keys()) {
      await page.goto(origin + path);
      const width = await page.evaluate(() => document.documentElement.scrollWidth);
      await page.screenshot({ path: join(pictures, `${name}${path.replaceAll('/', '-').replace('.html', '.png')}`) });
      assert.ok(width <= viewport.width, `${path} is ${width} wide`);
    }
    await page.close();
  });
}

test('the search finds a method', async () => {
  const page = await browser.newPage({ viewport: SCREENS.wide });
  // The index is read in the background.
  await page.goto(`${origin}/index.html`, { waitUntil: 'networkidle' });
  await page.getByRole('link', { name: 'Search' }).click();
  await page.locator('#mkdocs_search_modal').waitFor();
  await page.locator('#mkdocs-search-query').pressSequentially('UpdateIcBomStatus');
  const found = page.locator('#mkdocs-search-results a', { hasText: 'UpdateIcBomStatus' });
  await found.first().waitFor({ timeout: 20_000 });
  await found.first().click();
  assert.match(page.url(), /\/reference\/BomUpdate\.html/);
  await page.close();
});
