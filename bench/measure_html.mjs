// Measures how fast an HTML report shows its first screen in headless
// Chromium (1280 x 900): the first contentful and the largest contentful
// paint, when the last chart on the first screen was drawn, and how long a
// chart in the middle of the report takes to be drawn once scrolled to
// (charts are drawn only then).
// Prints one JSON line per run; the first run includes the browser's start.
//
//   node bench/measure_html.mjs REPORT.html [RUNS]
import {mkdtempSync, rmSync, statSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join, resolve} from 'node:path';
import {pathToFileURL} from 'node:url';

import {chromium} from 'playwright-core';

const file = resolve(process.argv[2]);
const runs = Number(process.argv[3] || 5);
const profile = mkdtempSync(join(tmpdir(), 'nptests-measure-'));
const context = await chromium.launchPersistentContext(profile, {
  executablePath: process.env.NPTESTS_CHROMIUM || '/usr/bin/chromium',
  headless: true,
  args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
    '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  viewport: {width: 1280, height: 900},
});
console.log(JSON.stringify({report: file, bytes: statSync(file).size}));
for (let run = 0; run < runs; ++run) {
  const page = await context.newPage();
  await page.goto(pathToFileURL(file).href, {waitUntil: 'load'});
  const onScreen = () => [...document.querySelectorAll('figure.chart')]
      .filter((figure) => figure.getBoundingClientRect().top < innerHeight);
  await page.waitForFunction(`(${onScreen})().every((f) => f.dataset.drawn === 'yes')`, null,
      {timeout: 60000});
  const largest = await page.evaluate(() => new Promise((done) => {
    new PerformanceObserver((list) => {
      const entries = list.getEntries();
      done(Math.round(entries[entries.length - 1].startTime));
    }).observe({type: 'largest-contentful-paint', buffered: true});
  }));
  const result = await page.evaluate(`(() => {
    const first = new Set((${onScreen})().map((figure) => figure.id));
    const drawn = performance.getEntriesByName('chart-drawn').filter((m) => first.has(m.detail));
    const navigation = performance.getEntriesByType('navigation')[0];
    return {
      firstContentfulPaintMs: Math.round(performance.getEntriesByName('first-contentful-paint')[0].startTime),
      chartsOnFirstScreen: first.size,
      firstScreenDrawnMs: drawn.length ? Math.round(Math.max(...drawn.map((m) => m.startTime))) : null,
      domContentLoadedMs: Math.round(navigation.domContentLoadedEventEnd),
      chartsDrawnInAll: document.querySelectorAll('figure.chart[data-drawn=yes]').length,
      charts: document.querySelectorAll('figure.chart').length,
    };
  })()`);
  const scrolled = await page.evaluate(() => new Promise((done) => {
    const figures = document.querySelectorAll('figure.chart');
    const figure = figures[Math.floor(figures.length / 2)];
    if (!figure) {
      done(null);
      return;
    }
    const start = performance.now();
    figure.scrollIntoView();
    const poll = () => (figure.dataset.drawn === 'yes' ? done(Math.round(performance.now() - start))
      : setTimeout(poll, 5));
    poll();
  }));
  console.log(JSON.stringify({run: run + 1, largestContentfulPaintMs: largest, ...result,
    middleChartDrawnAfterScrollMs: scrolled}));
  await page.close();
}
await context.close();
rmSync(profile, {recursive: true, force: true});
