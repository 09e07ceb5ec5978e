// The chart mapping (resources/web/charts.js) in Chromium, on the real
// templates with data made here: the definition it builds from a chart document,
// where a mistake would draw a wrong chart without any error.
//
//   node --test tests/browser/charts.test.mjs
import {after, before, describe, test} from 'node:test';
import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {dirname, join, resolve} from 'node:path';
import {fileURLToPath} from 'node:url';

import {launchBrowser} from './chromium.mjs';

const sourceDir = resolve(dirname(fileURLToPath(import.meta.url)), '..', '..');
const template = (name) => readFileSync(join(sourceDir, 'resources/templates', name), 'utf8');

// The values the module hands over for one box (low list, median, high
// list), built the way the module builds them from the five numbers and the
// outlying cases.
function boxValues([s0, s1, s2, s3, s4], outliers) {
  const low = outliers.filter(([value]) => value < s2).map(([value]) => value);
  const high = outliers.filter(([value]) => value >= s2).map(([value]) => value);
  low.push(s0, s1);
  for (let n = low.length; n > 1 && low.length < 2 * n - 1; ) {
    low.push(s1);
  }
  high.push(s4, s3);
  for (let m = high.length; m > 1 && high.length < 2 * m - 1; ) {
    high.push(s3);
  }
  while (low.length !== high.length) {
    const shorter = low.length < high.length ? low : high;
    shorter.push(shorter[Math.floor(shorter.length / 2)]);
  }
  const cases = new Map(outliers);
  return [...low, s2, ...high].map((value) => ({value, label: cases.has(value) ? cases.get(value) : null}));
}

function layerNamed(definition, name) {
  return definition.layer.find((layer) => layer.name === name);
}

describe('chart mapping', () => {
  let browser;
  let page;

  before(async () => {
    browser = await launchBrowser();
    page = await browser.context.newPage();
    await page.setContent('<!DOCTYPE html><html><head><title>charts</title></head><body></body></html>');
    await page.addScriptTag({content: readFileSync(join(sourceDir, 'resources/web/charts.js'), 'utf8')});
  });

  after(async () => {
    await browser.close();
  });

  const toSpec = (chart) => page.evaluate((c) => window.NptestsCharts.toSpec(c, 800), chart);

  test('a box plot shows the box the module describes, its outliers and its popup', async () => {
    const groups = [
      {category: 1, five: [10, 20, 30, 40, 55], outliers: [[80, 17]]},
      {category: 2, five: [15, 25, 32, 45, 60], outliers: []},
      {category: 3, five: [5, 12, 20, 28, 35], outliers: [[1, 3], [50, 9], [52, 11]]},
    ];
    const data = {Value: [], Label: [], Category: [], Tooltips: []};
    for (const group of groups) {
      for (const {value, label} of boxValues(group.five, group.outliers)) {
        data.Value.push(value);
        data.Label.push(label);
        data.Category.push(group.category);
        data.Tooltips.push(`${group.category}0.50`);
      }
    }
    const document = template('NPARBoxplot.viztemplate')
        .replace('<variable id="Category" type="number" categorical="true"/>',
            '<variable id="Category" type="number" categorical="true"><relabel value="2" text="Low dose"/></variable>')
        .replace('</visualization>', '<popup part="median" target="schema" tokenTemplate="Mean Rank=$[1]$">' +
            '<tokenMapping valueToken="1" variable="Tooltips"/></popup></visualization>');
    const {definition} = await toSpec({title: 'Box', data: {boxplotSource: data}, document});
    const boxes = layerNamed(definition, 'box').data.values;
    assert.deepEqual(boxes.map((b) => [b.lower, b.q1, b.median, b.q3, b.upper]), groups.map((g) => g.five));
    assert.deepEqual(boxes.map((b) => b.Category__text), ['1', 'Low dose', '3']);
    assert.match(boxes[1].__boxTip, /Mean Rank=20\.50$/);
    assert.deepEqual(layerNamed(definition, 'outlier').data.values.map((o) => [o.Value, o.caseText]),
        [[80, '17'], [1, '3'], [50, '9'], [52, '11']]);
  });

  test('a histogram draws the document\'s bins as they are and the fitted line on them', async () => {
    const values = [];
    const counts = [];
    for (let i = 0; i < 40; ++i) {
      values.push(i + 0.5);
      counts.push(10);
    }
    const document = template('NPARHistogram.viztemplate').replace('</graph>',
        '<line><distributionStatistic distribution="uniform" parameter="0" secondaryParameter="40"/>' +
        '<x variable="value"/><y variable="count"/></line></graph>');
    const {definition, notes} = await toSpec({title: 'H', data: {graphSource: {value: values, count: counts}}, document});
    const bars = layerNamed(definition, 'bar').data.values;
    // The document's 40 bins of width 1, drawn as they are: never binned again.
    assert.equal(bars.length, 40);
    assert.ok(bars.every((bar, i) => bar.count === 10 && bar.value__start === i && bar.value__end === i + 1));
    // Uniform over 0 .. 40: 400 cases x bin width 1 / 40, the height of every bar.
    const fit = layerNamed(definition, 'fit').data.values;
    const inside = fit.filter((point) => point.value__start > 1 && point.value__start < 39);
    assert.ok(inside.every((point) => Math.abs(point.count - 400 * 1 / 40) < 1e-9));
    assert.deepEqual(notes.map((note) => note.text), ['labelText']);
  });

  test('a histogram of few values draws one bar per value, stacked by sign', async () => {
    const document = template('NPARWilcoxonPairSignedRank.viztemplate');
    const data = {graphSource: {value: [-2, -1, 0, 1, 2], count: [3, 4, 1, 6, 2]}};
    const {definition} = await toSpec({title: 'W', data, document});
    const bars = layerNamed(definition, 'bar').data.values;
    assert.deepEqual(bars.map((bar) => [bar.value__start, bar.value__end, bar.count, bar.type]),
        [[-2.5, -1.5, 3, 2], [-1.5, -0.5, 4, 2], [-0.5, 0.5, 1, 0], [0.5, 1.5, 6, 1], [1.5, 2.5, 2, 1]]);
    const encoding = layerNamed(definition, 'bar').encoding;
    assert.deepEqual(encoding.color.scale.range, ['#2ca02c', '#1f77b4', '#d62728']);
    assert.notEqual(encoding.y.stack, null);
  });

  test('dodged bars show relabelled categories, value labels and the popup', async () => {
    const document = template('NPARChiSquareTest.viztemplate')
        .replace('<y variable="Frequency"/>', '<y variable="Frequency"/><label variable="Frequency"/>')
        .replace('<variable id="Type" type="number" categorical="true"/>',
            '<variable id="Type" type="number" categorical="true"><relabel value="0" text="Observed"/>' +
            '<relabel value="1" text="Hypothesized"/></variable>')
        .replace('<popup ', () => '<popup tokenTemplate="Grade=$[category]$&#10;Residual=$[residual]$" ');
    const data = {graphSource: {Category: [1, 1, 2, 2], Frequency: [12, 10, 8, 10], Observed: [12, 12, 8, 8],
      Hypothesized: [10, 10, 10, 10], Type: [0, 1, 0, 1], Residual: [2, 2, -2, -2]}};
    const {definition} = await toSpec({title: 'C', data, document});
    const bar = layerNamed(definition, 'bar');
    assert.deepEqual(bar.encoding.color.scale.domain, ['Observed', 'Hypothesized']);
    assert.equal(bar.encoding.xOffset.field, 'Type__text');
    assert.equal(bar.encoding.y.stack, null);
    assert.deepEqual(bar.data.values.map((row) => row.__tip).slice(2), ['Grade=2\nResidual=-2', 'Grade=2\nResidual=-2']);
    const labels = definition.layer.find((layer) => layer.mark.type === 'text');
    assert.equal(labels.encoding.text.field, 'Frequency__text');
  });

  test('patterns tell series apart when colours alone are not wanted', async () => {
    const document = template('FacetBarChart.viztemplate').replace('<color', '<pattern');
    const data = {graphSource: {CellText: [0, 0, 1, 1], Column: [0, 1, 0, 1], Category: [0, 1, 0, 1],
      CellValue: [3, 4, 5, 6], ObservedTooltip: [3, 4, 5, 6], HypothesizedTooltip: [4, 4, 5, 5]}};
    const {definition} = await toSpec({title: 'F', data, document});
    assert.deepEqual(Object.keys(definition.facet).sort(), ['column', 'row']);
    const fill = definition.spec.layer.find((layer) => layer.name === 'bar').encoding.color.scale.range;
    assert.deepEqual(fill, ['#1f77b4', 'url(#np-pattern-1)']);
    assert.equal(await page.evaluate(() => document.querySelectorAll('#np-patterns pattern').length), 3);
  });

  test('the network puts one node per sample on a circle and colours edges by type', async () => {
    const document = template('GLMMPairwiseContrasts.viztemplate')
        .replace('</graphLayoutStatistic>', '<swap/></graphLayoutStatistic>')
        .replace('$[1]$', 'Adj. Sig. = $[1]$');
    const data = {
      nodeSource_1: {node: [10, null, 20, 30, 40], label: ['A', null, 'C', 'D', 'E']},
      edgeSource_1: {from: [0, 0, 2], to: [2, 3, 4], weight: [1, 1, 1], weightInPopup: [0.01, 0.2, 0.05],
        type: [1, 2, 2], tooltip: [0.01, 0.2, 0.05]},
    };
    const {definition, notes} = await toSpec({title: 'N', data, document});
    const nodes = layerNamed(definition, 'node').data.values;
    // Swapped: the first node at the top, then counter-clockwise.
    const rounded = (v) => Math.round(v * 1000) / 1000 + 0;
    assert.deepEqual(nodes.map((n) => [n.name, rounded(n.x), rounded(n.y)]),
        [['A', 0, 1], ['C', -1, 0], ['D', 0, -1], ['E', 1, 0]]);
    const edges = layerNamed(definition, 'edge').data.values;
    assert.deepEqual(edges.map((e) => e.__edgeTip), ['A – C\nAdj. Sig. = 0.01', 'A – D\nAdj. Sig. = 0.2',
      'C – E\nAdj. Sig. = 0.05']);
    assert.deepEqual(layerNamed(definition, 'edge').encoding.color.scale.range, ['#d62728', '#7f7f7f']);
    assert.deepEqual(notes.map((note) => note.text), ['FootnoteText']);
  });

  test('the runs distribution draws its observed and mirrored critical guides', async () => {
    const document = template('NPAROneSampleRunsTest.viztemplate')
        .replace('parameter="50"', 'parameter="20"').replace('lineGuide x="500', 'lineGuide x="14');
    const {definition} = await toSpec({title: 'R', data: {}, document});
    const guides = definition.layer.filter((layer) => /^guide/.test(layer.name || ''));
    assert.deepEqual(guides.map((g) => g.data.values.map((v) => [v.guide, v.text, v.position])), [
      [[20, 'ObservedRunsText', 'after']],
      [[14, 'TooFewRuns', 'before'], [26, 'TooManyRuns', 'after']],
    ]);
    assert.deepEqual(layerNamed(definition, 'distribution').encoding.x.scale.domain, [0, 100]);
  });
});
