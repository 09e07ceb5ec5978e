// The HTML report in a real browser: for every example document, nptests
// writes the report, headless Chromium opens it from a file:// URL, and the
// test looks at it as a reader would: no console error, every chart drawn
// (scrolled into view, since charts are drawn lazily), the tables that the
// JSON output lists with the same rows and columns, box plots with one box
// per group, networks with one node per sample, popups as tooltips, nothing
// wider than the 1280-pixel window. Every report must also pass the HTML
// validator. Screenshots go to tests/artifacts/browser.
//
// Run by ctest; by hand:
//   NPTESTS_BINARY=build/release/bin/nptests node --test tests/browser/
import {after, before, describe, test} from 'node:test';
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {existsSync, mkdirSync, readdirSync} from 'node:fs';
import {basename, dirname, join, resolve} from 'node:path';
import {fileURLToPath, pathToFileURL} from 'node:url';

import {HtmlValidate, FileSystemConfigLoader} from 'html-validate';

import {browserPath, launchBrowser, width} from './chromium.mjs';

const sourceDir = resolve(dirname(fileURLToPath(import.meta.url)), '..', '..');
const binary = process.env.NPTESTS_BINARY || join(sourceDir, 'build/release/bin/nptests');
const examplesDir = join(sourceDir, 'examples');
const artifacts = join(sourceDir, 'tests/artifacts/browser');

// The example runs: each document alone (with its command where it has one),
// and the split documents together as their splits file describes them.
function exampleRuns() {
  const documents = readdirSync(examplesDir).filter((name) => name.endsWith('.xml')).sort();
  const runs = documents.map((name) => {
    const args = [join(examplesDir, name)];
    const command = join(examplesDir, `${basename(name, '.xml')}.command`);
    if (existsSync(command)) {
      args.push('-c', `@${command}`);
    }
    return {name: basename(name, '.xml'), args};
  });
  if (existsSync(join(examplesDir, 'splits.json'))) {
    runs.push({name: 'splits', args: ['--splits', join(examplesDir, 'splits.json')]});
  }
  return runs;
}

function nptests(args) {
  return execFileSync(binary, args, {cwd: sourceDir, encoding: 'utf8', maxBuffer: 1 << 28});
}

// What the JSON output says, flattened: tables with their row and column
// counts, charts with their data.
function itemsOf(json) {
  const items = [];
  const walk = (list) => {
    for (const item of list) {
      if (item.kind === 'heading') {
        walk(item.items);
      } else {
        items.push(item);
      }
    }
  };
  walk(json.items);
  return items;
}

function distinct(values) {
  return new Set(values.filter((value) => value !== null)).size;
}

// Waits until the chart in `figure` is drawn (or has failed) after scrolling
// it into view; its state and the number of drawn marks per mark name.
async function drawChart(figure) {
  await figure.scrollIntoViewIfNeeded();
  await figure.evaluate((element) => new Promise((done, fail) => {
    const started = Date.now();
    const poll = () => {
      const state = element.dataset.drawn;
      if (state === 'yes' || state === 'failed') {
        done();
      } else if (Date.now() - started > 20000) {
        fail(new Error('chart ' + element.id + ' not drawn in 20 s'));
      } else {
        setTimeout(poll, 25);
      }
    };
    poll();
  }));
  return figure.evaluate((element) => {
    const marks = {};
    let total = 0;
    for (const group of element.querySelectorAll('svg g.role-mark')) {
      const items = group.querySelectorAll(':scope > path, :scope > rect, :scope > line, :scope > text, :scope > g');
      const name = Array.from(group.classList).find((c) => !c.startsWith('mark-') && !c.startsWith('role-')) || '';
      marks[name] = (marks[name] || 0) + items.length;
      total += items.length;
    }
    const view = element.querySelector('.chart-view');
    return {state: element.dataset.drawn, marks, total, width: element.getBoundingClientRect().width,
      overflow: view.scrollWidth - view.clientWidth};
  });
}

// The fixed text a popup of the chart document starts with (before its
// first value), and the mark layer that shows it.
const popupLayers = {schema: 'box_marks', interval: 'bar_marks', edge: 'edge_marks', node: 'node_marks'};
function popupOf(document) {
  const match = /<popup\b([^>]*)>/.exec(document);
  if (!match) {
    return null;
  }
  const target = /\btarget="([^"]*)"/.exec(match[1]);
  const template = /\btokenTemplate="([^"]*)"/.exec(match[1]);
  if (!target || !template || !popupLayers[target[1]]) {
    return null;
  }
  const text = template[1].replace(/&#10;/g, '\n').replace(/&lt;/g, '<').replace(/&gt;/g, '>')
      .replace(/&quot;/g, '"').replace(/&amp;/g, '&');
  return {layer: popupLayers[target[1]], text: text.split('$[')[0].split('\n')[0].trim()};
}

// Hovers the first mark of a layer; the tooltip's text.
async function tooltipOf(page, figure, layer) {
  const mark = await figure.$(`svg g.${layer} > path, svg g.${layer} > line, svg g.${layer} > rect`);
  if (!mark) {
    return null;
  }
  await mark.scrollIntoViewIfNeeded();
  const box = await mark.boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
  const tooltip = await page.waitForSelector('#vg-tooltip-element.visible', {timeout: 5000});
  const text = await tooltip.innerText();
  await page.mouse.move(0, 0);
  return text;
}

function marksNamed(drawn, suffix) {
  let count = 0;
  for (const [name, n] of Object.entries(drawn.marks)) {
    if (name.endsWith(suffix)) {
      count += n;
    }
  }
  return count;
}

describe('HTML report in Chromium', () => {
  let browser;
  const reports = [];

  before(async () => {
    assert.ok(existsSync(binary), `no nptests at ${binary} (set NPTESTS_BINARY)`);
    assert.ok(existsSync(browserPath), `no Chromium at ${browserPath} (run scripts/setup)`);
    mkdirSync(artifacts, {recursive: true});
    browser = await launchBrowser();
  });

  after(async () => {
    if (browser) {
      await browser.close();
    }
  });

  for (const run of exampleRuns()) {
    test(run.name, async () => {
      const file = join(artifacts, `${run.name}.html`);
      nptests([...run.args, '-o', file]);
      reports.push(file);
      const expected = itemsOf(JSON.parse(nptests([...run.args, '-f', 'json'])));

      const page = await browser.context.newPage();
      const problems = [];
      page.on('console', (message) => {
        if (message.type() === 'error') {
          problems.push(`console: ${message.text()}`);
        }
      });
      page.on('pageerror', (error) => problems.push(`page error: ${error.message}`));
      page.on('requestfailed', (request) => problems.push(`request failed: ${request.url()}`));
      await page.goto(pathToFileURL(file).href, {waitUntil: 'load'});

      // Tables: the same ones as in the JSON output, with as many body rows
      // and data columns.
      const tables = await page.$$eval('section.table table.pivot', (elements) => elements.map((table) => ({
        title: table.caption ? table.caption.textContent : '',
        rows: table.tBodies[0].rows.length,
        columns: Math.max(...Array.from(table.tBodies[0].rows, (row) => row.querySelectorAll('td').length)),
      })));
      const expectedTables = expected.filter((item) => item.kind === 'table');
      assert.equal(tables.length, expectedTables.length, 'tables');
      expectedTables.forEach((table, i) => {
        assert.equal(tables[i].rows, table.rows.length, `rows of "${table.title}"`);
        assert.equal(tables[i].columns, Math.max(1, table.columns.length), `columns of "${table.title}"`);
      });
      const summary = expectedTables.find((table) => table.subtype === 'Hypothesis Test Summary');
      if (summary) {
        const texts = await page.$eval('section[data-subtype="Hypothesis Test Summary"] tbody',
            (body) => Array.from(body.rows, (row) => row.textContent));
        assert.equal(texts.length, summary.rows.length);
        summary.rows.forEach((row, i) => {
          for (const cell of row.cells) {
            if (cell) {
              assert.ok(texts[i].includes(cell.text), `summary row ${i + 1} shows "${cell.text}"`);
            }
          }
        });
      }

      // Charts: each drawn once scrolled to, with marks; the checks a person
      // would make on box plots and networks.
      const expectedCharts = expected.filter((item) => item.kind === 'chart');
      const figures = await page.$$('figure.chart');
      assert.equal(figures.length, expectedCharts.length, 'charts');
      for (let i = 0; i < figures.length; ++i) {
        const chart = expectedCharts[i];
        const drawn = await drawChart(figures[i]);
        assert.equal(drawn.state, 'yes', `chart ${i + 1} (${chart.template}) drawn`);
        assert.ok(drawn.total > 0, `chart ${i + 1} (${chart.template}) has marks`);
        assert.ok(drawn.overflow <= 1, `chart ${i + 1} (${chart.template}) is cut off by ${drawn.overflow}px`);
        if (chart.template === 'NPARBoxplot.viztemplate') {
          const groups = distinct(chart.data.boxplotSource.Category);
          assert.equal(marksNamed(drawn, 'box_marks'), groups, `boxes of chart ${i + 1}`);
        }
        const popup = popupOf(chart.document);
        if (popup) {
          const shown = await tooltipOf(page, figures[i], popup.layer);
          assert.ok(shown, `chart ${i + 1} (${chart.template}) shows a tooltip`);
          assert.ok(shown.includes(popup.text), `tooltip of chart ${i + 1}: "${shown}" shows "${popup.text}"`);
        }
        if (chart.template === 'GLMMPairwiseContrasts.viztemplate') {
          const samples = distinct(chart.data.nodeSource_1.node.map((value, i) => (value === null ? null : i)));
          assert.equal(marksNamed(drawn, 'node_marks'), samples, `nodes of chart ${i + 1}`);
        }
      }

      // Nothing needs sideways scrolling at 1280 pixels.
      const scrollWidth = await page.evaluate(() => document.documentElement.scrollWidth);
      assert.ok(scrollWidth <= width, `page is ${scrollWidth}px wide`);
      const overflowing = await page.$$eval('.table-frame', (frames) =>
        frames.filter((frame) => frame.scrollWidth > frame.clientWidth + 1)
            .map((frame) => frame.querySelector('caption').textContent));
      assert.deepEqual(overflowing, [], 'tables wider than the page');

      // Screenshots: the whole page (every item laid out) and each chart.
      await page.addStyleTag({content: '.item { content-visibility: visible !important; }'});
      await page.screenshot({path: join(artifacts, `${run.name}.png`), fullPage: true});
      for (let i = 0; i < figures.length; ++i) {
        await figures[i].screenshot({path: join(artifacts, `${run.name}-chart-${i + 1}.png`)});
      }
      await page.close();
      assert.deepEqual(problems, []);
    });
  }

  // Printing (here to PDF) draws every chart first, also those never
  // scrolled to: right after printing each figure holds its drawn chart, and
  // the PDF is the one printed from the same page with every chart drawn
  // beforehand.
  for (const name of ['overview', 'large_k']) {
    test(`printing ${name} to PDF draws every chart`, async () => {
      const run = exampleRuns().find((each) => each.name === name);
      const file = join(artifacts, `${name}-print.html`);
      nptests([...run.args, '-o', file]);
      const charts = itemsOf(JSON.parse(nptests([...run.args, '-f', 'json'])))
          .filter((item) => item.kind === 'chart');
      const state = (page) => page.$$eval('figure.chart', (figures) => figures.map((figure) => ({
        drawn: figure.dataset.drawn || 'no',
        marks: figure.querySelectorAll('.chart-view svg g.role-mark').length,
        title: figure.querySelector('.chart-view svg') ?
          figure.querySelector('.chart-view svg').textContent : '',
      })));

      const fresh = await browser.context.newPage();
      await fresh.goto(pathToFileURL(file).href, {waitUntil: 'load'});
      const before = await state(fresh);
      assert.equal(before.length, charts.length, 'charts');
      assert.ok(before.some((figure) => figure.drawn === 'no'), 'some charts wait to be scrolled to');
      const printed = await fresh.pdf({path: join(artifacts, `${name}.pdf`)});
      const after = await state(fresh);
      after.forEach((figure, i) => {
        assert.equal(figure.drawn, 'yes', `chart ${i + 1} (${charts[i].template}) drawn for print`);
        assert.ok(figure.marks > 0, `chart ${i + 1} has marks`);
        assert.ok(figure.title.includes(charts[i].title), `chart ${i + 1} shows "${charts[i].title}"`);
      });
      await fresh.close();

      const drawn = await browser.context.newPage();
      await drawn.goto(pathToFileURL(file).href, {waitUntil: 'load'});
      await drawn.evaluate(() => window.NptestsCharts.drawAll());
      const reference = await drawn.pdf();
      await drawn.close();
      assert.equal(printed.length, reference.length, 'the PDF holds every chart');
    });
  }

  test('every report is valid HTML', async () => {
    assert.ok(reports.length > 0, 'no report was written');
    const validator = new HtmlValidate(new FileSystemConfigLoader({
      extends: ['html-validate:recommended'],
      rules: {
        // Long texts of the module (null hypotheses, footnotes) and the
        // inlined libraries are written as they are.
        'long-title': 'off',
        'no-trailing-whitespace': 'off',
      },
    }));
    for (const file of reports) {
      const report = await validator.validateFile(file);
      const messages = report.results.flatMap((result) => result.messages.map(
          (m) => `${basename(file)}:${m.line}:${m.column} ${m.ruleId}: ${m.message}`));
      assert.deepEqual(messages, [], basename(file));
    }
  });
});
