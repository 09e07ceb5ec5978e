// Draws the charts of the HTML report. Each chart item of the report is a
// <figure class="chart"> holding its chart as JSON (template, title, subtitle,
// description, data sources, final chart document); this file turns that
// into a vega-lite spec (the mapping below) and draws it with vega-embed when
// the figure comes near the screen, so that a long report shows its first
// screen at once. The mapping is documented in README.md beside this file.
(function (global) {
  'use strict';

  // ---- Reading the chart document ---------------------------------------

  function parseDocument(text) {
    if (!text) {
      return null;
    }
    const doc = new DOMParser().parseFromString(text, 'application/xml');
    if (doc.getElementsByTagName('parsererror').length > 0) {
      return null;
    }
    return doc.documentElement;
  }

  // The rows of a data source: one object per row, keyed by variable name.
  function rowsOf(data, sourceName) {
    const source = data && data[sourceName];
    if (!source) {
      return [];
    }
    const names = Object.keys(source);
    let count = 0;
    for (const name of names) {
      count = Math.max(count, source[name].length);
    }
    const rows = new Array(count);
    for (let i = 0; i < count; ++i) {
      const row = {};
      for (const name of names) {
        const value = source[name][i];
        row[name] = value === undefined ? null : value;
      }
      rows[i] = row;
    }
    return rows;
  }

  // ---- The mapping ------------------------------------------------------

  function toSpec(chart) {
    const root = parseDocument(chart.document);
    const title = {text: chart.title || ''};
    if (chart.subtitle) {
      title.subtitle = chart.subtitle;
    }
    const sourceNames = Object.keys(chart.data || {});
    const rows = sourceNames.length > 0 ? rowsOf(chart.data, sourceNames[0]) : [];
    const names = rows.length > 0 ? Object.keys(rows[0]) : [];
    void root;
    return {
      $schema: 'https://vega.github.io/schema/vega-lite/v6.json',
      title: title,
      width: 'container',
      height: 260,
      data: {values: rows},
      mark: {type: 'bar', tooltip: true},
      encoding: names.length >= 2
        ? {x: {field: names[0], type: 'nominal'}, y: {field: names[1], type: 'quantitative'}}
        : {},
    };
  }

  // ---- Drawing ----------------------------------------------------------

  const embedOptions = {
    actions: false,
    renderer: 'svg',
    tooltip: {theme: 'light'},
  };

  function draw(figure) {
    if (figure.dataset.drawn) {
      return Promise.resolve();
    }
    figure.dataset.drawn = 'pending';
    const view = figure.querySelector('.chart-view');
    const script = figure.querySelector('script.chart-data');
    let spec;
    try {
      spec = toSpec(JSON.parse(script.textContent));
    } catch (error) {
      return Promise.resolve(fail(figure, view, error));
    }
    view.textContent = '';
    return global.vegaEmbed(view, spec, embedOptions).then(
      function (result) {
        figure.dataset.drawn = 'yes';
        figure.nptestsView = result.view;
      },
      function (error) {
        fail(figure, view, error);
      });
  }

  function fail(figure, view, error) {
    figure.dataset.drawn = 'failed';
    view.textContent = '';
    const p = document.createElement('p');
    p.className = 'chart-failed';
    p.textContent = 'This chart cannot be drawn: ' + (error && error.message ? error.message : error);
    view.appendChild(p);
    console.error('nptests chart ' + figure.id + ':', error);
  }

  function start() {
    const figures = Array.prototype.slice.call(document.querySelectorAll('figure.chart'));
    if (!('IntersectionObserver' in global)) {
      figures.forEach(draw);
      return;
    }
    const observer = new IntersectionObserver(function (entries) {
      for (const entry of entries) {
        if (entry.isIntersecting) {
          observer.unobserve(entry.target);
          draw(entry.target);
        }
      }
    }, {rootMargin: '300px 0px'});
    figures.forEach(function (figure) { observer.observe(figure); });
  }

  global.NptestsCharts = {toSpec: toSpec, draw: draw, rowsOf: rowsOf};
  if (document.readyState === 'loading') {
    document.addEventListener('DOMContentLoaded', start);
  } else {
    start();
  }
})(window);
