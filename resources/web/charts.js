// Draws the charts of the HTML report. Each chart item of the report is a
// <figure class="chart"> holding its chart as JSON: template, title,
// subtitle, description, data sources ({source: {variable: [values]}}) and
// the final chart document (our template dialect, see
// resources/templates/README.md). This file is the one place that maps that
// dialect onto vega-lite; README.md beside it lists the mapping element by
// element. A chart is drawn with vega-embed when its figure comes near the
// screen, so that a long report shows its first screen at once.
(function (global) {
  'use strict';

  const SCHEMA = 'https://vega.github.io/schema/vega-lite/v6.json';
  const PALETTE = ['#1f77b4', '#ff7f0e', '#2ca02c', '#d62728', '#9467bd', '#8c564b', '#e377c2',
    '#7f7f7f', '#bcbd22', '#17becf'];
  const BASE_HEIGHT = 300;
  const MAX_WIDTH = 900;

  // ---- Reading the chart document ---------------------------------------

  function children(node, name) {
    const out = [];
    if (!node) {
      return out;
    }
    for (let child = node.firstElementChild; child; child = child.nextElementSibling) {
      if (!name || child.tagName === name) {
        out.push(child);
      }
    }
    return out;
  }

  function child(node, name) {
    return children(node, name)[0] || null;
  }

  // The text of an element: its <text> children joined, else its own text.
  function textOf(node) {
    if (!node) {
      return '';
    }
    const texts = children(node, 'text');
    if (texts.length > 0) {
      return texts.map(function (t) { return t.textContent; }).join('');
    }
    return node.textContent.trim();
  }

  function attr(node, name, fallback) {
    return node && node.hasAttribute(name) ? node.getAttribute(name) : fallback;
  }

  function number(text, fallback) {
    const value = parseFloat(text);
    return Number.isFinite(value) ? value : fallback;
  }

  function percent(text) {
    return number(String(text || '').replace('%', ''), NaN);
  }

  function readFormat(node) {
    if (!node) {
      return null;
    }
    return {
      type: attr(node, 'type', 'general'),
      decimals: node.hasAttribute('decimals') ? number(node.getAttribute('decimals'), null) : null,
      grouping: attr(node, 'grouping', 'false') === 'true',
      prefix: attr(node, 'prefix', ''),
      suffix: attr(node, 'suffix', ''),
      pattern: attr(node, 'pattern', ''),
      unit: attr(node, 'unit', 'seconds'),
    };
  }

  function readRelabels(node) {
    const relabels = new Map();
    for (const relabel of children(node, 'relabel')) {
      relabels.set(number(relabel.getAttribute('value'), relabel.getAttribute('value')),
          attr(relabel, 'text', ''));
    }
    return relabels;
  }

  // Everything the mapping needs from the document, by element.
  function readDocument(root) {
    const model = {
      title: textOf(child(root, 'title')),
      subtitle: textOf(child(root, 'subtitle')),
      footnote: textOf(child(root, 'footnote')),
      variables: new Map(),
      styles: new Map(),
      legends: new Map(),
      popups: [],
      frames: [],
      graphs: children(root, 'graph'),
      palette: root.hasAttribute('palette') ? root.getAttribute('palette').trim().split(/\s+/) : PALETTE,
      font: attr(root, 'font', ''),
      orders: new Map(),
    };
    for (const graph of model.graphs) {
      for (const order of children(graph, 'categoryOrder')) {
        const values = order.textContent.trim().split(/\s+/).map(Number);
        if (values.length > 0 && values.every(Number.isFinite)) {
          model.orders.set(order.getAttribute('variable'), values);
        }
      }
    }
    for (const data of children(root, 'data')) {
      for (const v of children(data, 'variable')) {
        model.variables.set(v.getAttribute('id'), {
          id: v.getAttribute('id'),
          source: data.getAttribute('source'),
          column: attr(v, 'column', v.getAttribute('id')),
          type: attr(v, 'type', 'number'),
          categorical: attr(v, 'categorical', 'false') === 'true',
          label: attr(v, 'label', ''),
          relabels: readRelabels(v),
          format: readFormat(child(v, 'format')),
        });
      }
    }
    for (const v of children(root, 'derivedVariable')) {
      model.variables.set(v.getAttribute('id'), {
        id: v.getAttribute('id'),
        derivedFrom: attr(v, 'variable', ''),
        rule: attr(v, 'rule', 'match'),
        value: attr(v, 'value', ''),
        type: 'number',
        categorical: attr(v, 'categorical', 'true') === 'true',
        label: attr(v, 'label', ''),
        relabels: readRelabels(v),
        format: null,
      });
    }
    for (const s of children(root, 'style')) {
      model.styles.set(s.getAttribute('id'), {
        color: attr(s, 'color', null),
        fill: attr(s, 'fill', null),
        width: number(attr(s, 'width', ''), null),
        dash: s.hasAttribute('dash') ? s.getAttribute('dash').split(/\s+/).map(Number) : null,
        bold: attr(s, 'fontWeight', '') === 'bold',
        visible: attr(s, 'visible', 'true') !== 'false',
      });
    }
    for (const legend of children(root, 'legend')) {
      const variable = legend.getAttribute('variable');
      if (variable && !model.legends.has(variable)) {
        const title = child(legend, 'title');
        model.legends.set(variable, {title: title ? textOf(title) : null});
      }
    }
    for (const popup of children(root, 'popup')) {
      model.popups.push({
        target: attr(popup, 'target', ''),
        part: attr(popup, 'part', ''),
        template: popup.hasAttribute('tokenTemplate') ? popup.getAttribute('tokenTemplate') : null,
        tokens: children(popup, 'tokenMapping').map(function (m) {
          return {token: m.getAttribute('valueToken'), variable: m.getAttribute('variable')};
        }),
      });
    }
    for (const frame of children(root, 'labelFrame')) {
      model.frames.push(children(frame, 'label').map(function (label) {
        return {text: textOf(label), style: model.styles.get(attr(label, 'style', '')) || null};
      }).filter(function (label) { return label.text !== ''; }));
    }
    return model;
  }

  // ---- Values, formats and rows -----------------------------------------

  const MONTHS = ['JAN', 'FEB', 'MAR', 'APR', 'MAY', 'JUN', 'JUL', 'AUG', 'SEP', 'OCT', 'NOV',
    'DEC'];

  function pad(n, width) {
    let text = String(n);
    while (text.length < width) {
      text = '0' + text;
    }
    return text;
  }

  // A date value (days or seconds since 1970-01-01) in a pattern of the
  // dialect ("dd-MMM-yyyy", "MM/dd/yyyy", "hh:mm:ss", ...).
  function formatDate(value, format) {
    const ms = value * (format.unit === 'days' ? 86400000 : 1000);
    const d = new Date(ms);
    if (!Number.isFinite(d.getTime())) {
      return String(value);
    }
    const pattern = format.pattern || (format.type === 'time' ? 'hh:mm:ss' : 'dd-MMM-yyyy');
    return pattern.replace(/yyyy|MMM|MM|dd|hh|mm|ss/g, function (token) {
      switch (token) {
        case 'yyyy': return String(d.getUTCFullYear());
        case 'MMM': return MONTHS[d.getUTCMonth()];
        case 'MM': return pad(d.getUTCMonth() + 1, 2);
        case 'dd': return pad(d.getUTCDate(), 2);
        case 'hh': return pad(d.getUTCHours(), 2);
        case 'mm': return pad(d.getUTCMinutes(), 2);
        default: return pad(d.getUTCSeconds(), 2);
      }
    });
  }

  function formatNumber(value, format) {
    if (value === null || value === undefined || value === '') {
      return '.';
    }
    if (typeof value !== 'number') {
      return String(value);
    }
    if (!format) {
      return String(Math.round(value * 1e3) / 1e3);
    }
    let text;
    if (format.type === 'date' || format.type === 'time' || format.type === 'datetime') {
      text = formatDate(value, format);
    } else if (format.type === 'string') {
      text = String(value);
    } else if (format.type === 'scientific') {
      text = value.toExponential(format.decimals === null ? 3 : format.decimals);
    } else if (format.decimals !== null) {
      text = value.toLocaleString('en-US', {
        minimumFractionDigits: format.decimals, maximumFractionDigits: format.decimals,
        useGrouping: format.grouping,
      });
    } else {
      text = value.toLocaleString('en-US', {maximumFractionDigits: 3, useGrouping: format.grouping});
    }
    return format.prefix + text + format.suffix;
  }

  // The text shown for a value of a chart variable: its relabel, else the
  // value in the variable's format.
  function display(variable, value) {
    if (variable && variable.relabels.has(value)) {
      return variable.relabels.get(value);
    }
    return formatNumber(value, variable ? variable.format : null);
  }

  // The rows of the data source that holds `ids`, keyed by variable id, with
  // derived variables computed and, for each variable, its display text
  // under "<id>__text".
  function rowsFor(chart, model, ids) {
    let source = null;
    for (const id of ids) {
      const v = model.variables.get(id);
      if (v && v.source) {
        source = v.source;
        break;
      }
    }
    const data = chart.data || {};
    if (!source) {
      source = Object.keys(data)[0];
    }
    const columns = data[source] || {};
    let count = 0;
    for (const name of Object.keys(columns)) {
      count = Math.max(count, columns[name].length);
    }
    const rows = [];
    for (let i = 0; i < count; ++i) {
      const row = {__row: i};
      for (const v of model.variables.values()) {
        if (v.source === source) {
          const values = columns[v.column] || [];
          row[v.id] = values[i] === undefined ? null : values[i];
        }
      }
      for (const name of Object.keys(columns)) {
        if (!(name in row)) {
          row[name] = columns[name][i] === undefined ? null : columns[name][i];
        }
      }
      for (const v of model.variables.values()) {
        if (v.derivedFrom) {
          row[v.id] = derive(v, row[v.derivedFrom]);
        }
      }
      for (const v of model.variables.values()) {
        if (v.id in row) {
          row[v.id + '__text'] = display(v, row[v.id]);
        }
      }
      rows.push(row);
    }
    return rows;
  }

  function derive(variable, value) {
    if (value === null || value === undefined) {
      return null;
    }
    if (variable.rule === 'sign') {
      return value > 0 ? 1 : (value < 0 ? 2 : 0);
    }
    return String(value) === variable.value || number(variable.value, NaN) === value ? 0 : 1;
  }

  // The popup of an element as a text field of each row: the template with
  // each "$[token]$" replaced by the display text of its variable (without
  // a template, one "label: value" line per mapped variable).
  function applyPopup(popup, model, rows, field) {
    if (!popup) {
      return false;
    }
    for (const row of rows) {
      let text;
      if (popup.template !== null) {
        text = popup.template.replace(/\$\[([^\]]*)\]\$/g, function (all, token) {
          const mapping = popup.tokens.find(function (m) { return m.token === token; });
          const id = mapping ? mapping.variable : token;
          return id in row ? textFor(model, id, row) : '';
        });
      } else {
        text = popup.tokens.map(function (m) {
          const v = model.variables.get(m.variable);
          return (v && v.label ? v.label : m.variable) + ': ' + textFor(model, m.variable, row);
        }).join('\n');
      }
      row[field] = text;
    }
    return true;
  }

  function textFor(model, id, row) {
    const value = row[id];
    if (typeof value === 'string') {
      return value;
    }
    return display(model.variables.get(id), value);
  }

  function popupFor(model, target, part) {
    return model.popups.find(function (p) {
      return p.target === target && (!part || !p.part || p.part === part);
    }) || null;
  }

  // ---- Encodings ----------------------------------------------------------

  function variableOf(element, aesthetic) {
    const node = child(element, aesthetic);
    return node ? node.getAttribute('variable') : null;
  }

  function isCategorical(model, id) {
    const v = model.variables.get(id);
    return !!v && (v.categorical || v.type === 'string');
  }

  // The order of a categorical variable's values: numeric where they are.
  function sortedValues(rows, id, model) {
    const values = [];
    const seen = new Set();
    for (const row of rows) {
      const value = row[id];
      if (value !== null && !seen.has(value)) {
        seen.add(value);
        values.push(value);
      }
    }
    if (values.every(function (v) { return typeof v === 'number'; })) {
      values.sort(function (a, b) { return a - b; });
    }
    const given = model && model.orders.get(id);
    if (given) {
      const listed = given.filter(function (v) { return seen.has(v); });
      return listed.concat(values.filter(function (v) { return listed.indexOf(v) < 0; }));
    }
    return values;
  }

  // A positional channel for a variable: categorical ones by their display
  // texts in value order, others as numbers.
  function positional(model, rows, id, title) {
    const v = model.variables.get(id);
    if (isCategorical(model, id)) {
      const order = sortedValues(rows, id, model).map(function (value) { return display(v, value); });
      return {field: id + '__text', type: 'nominal', sort: order, title: title,
        axis: {labelAngle: 0, labelLimit: {expr: 'max(40, bandwidth("x"))'}}};
    }
    const channel = {field: id, type: 'quantitative', title: title};
    if (v && v.format && v.format.type !== 'general') {
      channel.axis = axisFormat(v.format);
    }
    return channel;
  }

  // An axis in a variable's format: its labels, and no ticks between the
  // values the format can tell apart.
  function axisFormat(format) {
    const axis = {labelExpr: axisLabelExpr(format)};
    if (format.type === 'number' && format.decimals !== null) {
      axis.tickMinStep = Math.pow(10, -format.decimals);
    } else if (format.type === 'date') {
      axis.tickMinStep = format.unit === 'days' ? 1 : 86400;
    }
    return axis;
  }

  // Axis labels in a variable's format, as a vega expression.
  function axisLabelExpr(format) {
    if (format.type === 'date' || format.type === 'time' || format.type === 'datetime') {
      const scale = format.unit === 'days' ? 86400000 : 1000;
      const pattern = (format.pattern || 'dd-MMM-yyyy').replace('yyyy', '%Y').replace('MMM', '%b')
          .replace('MM', '%m').replace('dd', '%d').replace('hh', '%H').replace('mm', '%M')
          .replace('ss', '%S');
      return 'utcFormat(datum.value * ' + scale + ', ' + JSON.stringify(pattern) + ')';
    }
    const definition = (format.grouping ? ',' : '') +
        (format.decimals !== null ? '.' + format.decimals + 'f' : '~g');
    return JSON.stringify(format.prefix) + ' + format(datum.value, ' + JSON.stringify(definition) +
        ') + ' + JSON.stringify(format.suffix);
  }

  function axisTitles(model, graph) {
    const titles = {};
    for (const axis of children(graph, 'axis')) {
      const dim = attr(axis, 'dim', '');
      const variable = attr(axis, 'variable', '');
      const title = textOf(child(axis, 'title'));
      const range = child(axis, 'range');
      const entry = {
        title: title || (model.variables.get(variable) || {}).label || '',
        min: range ? number(range.getAttribute('min'), null) : null,
        max: range ? number(range.getAttribute('max'), null) : null,
        panel: attr(axis, 'panel', ''),
      };
      if (dim) {
        titles[dim] = entry;
      }
      if (variable) {
        titles[variable + (entry.panel ? ':' + entry.panel : '')] = entry;
        if (!(variable in titles)) {
          titles[variable] = entry;
        }
      }
    }
    return titles;
  }

  function axisFor(titles, dim, id) {
    return titles[id] || titles[dim] || {title: '', min: null, max: null};
  }

  function withDomain(channel, axis) {
    if (axis.min !== null || axis.max !== null) {
      channel.scale = Object.assign({}, channel.scale,
          {domain: [axis.min === null ? 0 : axis.min, axis.max === null ? 1 : axis.max]});
    }
    return channel;
  }

  // Fill patterns, for series that are not to be told apart by colour alone:
  // solid, diagonal hatching, dots, cross-hatching, in the first palette
  // colour. They are defined once in the page and used as "url(#...)" fills.
  const PATTERNS = [
    '',
    '<path d="M0,8 L8,0 M-2,2 L2,-2 M6,10 L10,6" stroke="C" stroke-width="1.6"/>',
    '<circle cx="2" cy="2" r="1.4" fill="C"/><circle cx="6" cy="6" r="1.4" fill="C"/>',
    '<path d="M0,0 L8,8 M0,8 L8,0" stroke="C" stroke-width="1.2"/>',
  ];

  function ensurePatterns(color) {
    if (document.getElementById('np-patterns')) {
      return;
    }
    const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
    svg.setAttribute('id', 'np-patterns');
    svg.setAttribute('width', '0');
    svg.setAttribute('height', '0');
    svg.setAttribute('aria-hidden', 'true');
    svg.style.position = 'absolute';
    const ink = /^#[0-9a-fA-F]{3,8}$|^[a-zA-Z]+$/.test(color || '') ? color : '#1f77b4';
    svg.innerHTML = '<defs>' + PATTERNS.map(function (shape, i) {
      return i === 0 ? '' : '<pattern id="np-pattern-' + i + '" width="8" height="8" ' +
          'patternUnits="userSpaceOnUse"><rect width="8" height="8" fill="#fff"/>' +
          shape.replace(/"C"/g, '"' + ink + '"') + '</pattern>';
    }).join('') + '</defs>';
    document.body.appendChild(svg);
  }

  // The colour (or pattern) channel of an element.
  function colorChannel(model, element, rows) {
    const colorNode = child(element, 'color');
    const patternNode = child(element, 'pattern');
    const node = colorNode || patternNode;
    if (!node || !node.getAttribute('variable')) {
      return null;
    }
    const id = node.getAttribute('variable');
    const v = model.variables.get(id);
    const values = sortedValues(rows, id, model);
    const domain = values.map(function (value) { return display(v, value); });
    let range;
    const palette = node.hasAttribute('palette') ? node.getAttribute('palette').trim().split(/\s+/)
      : model.palette;
    if (patternNode && !colorNode) {
      ensurePatterns(palette[0]);
      range = domain.map(function (d, i) {
        return i % PATTERNS.length === 0 ? palette[0] : 'url(#np-pattern-' + (i % PATTERNS.length) + ')';
      });
    } else {
      range = domain.map(function (d, i) { return palette[i % palette.length]; });
    }
    const legend = model.legends.get(id);
    const legendTitle = legend && legend.title !== null ? legend.title : (v && v.label) || '';
    return {
      field: id + '__text',
      type: 'nominal',
      sort: domain,
      scale: {domain: domain, range: range},
      legend: legend ? {title: legendTitle || null, labelLimit: 220, orient: 'right'} : null,
    };
  }

  function markStyle(model, element) {
    const style = model.styles.get(attr(element, 'style', '')) || {};
    const mark = {};
    if (style.fill) {
      mark.fill = style.fill;
    }
    if (style.color) {
      mark.stroke = style.color;
      if (!style.fill) {
        mark.color = style.color;
      }
    }
    if (style.width) {
      mark.strokeWidth = style.width;
    }
    if (style.dash) {
      mark.strokeDash = style.dash;
    }
    return mark;
  }

  // ---- Histograms and distributions --------------------------------------

  // Edges for bars at given values (histogram panels, whose values are the
  // bins already): each bar spans half the distance to its neighbours.
  function addBinEdges(rows, x) {
    const values = sortedValues(rows, x).filter(function (v) { return typeof v === 'number'; });
    let width = Infinity;
    for (let i = 1; i < values.length; ++i) {
      width = Math.min(width, values[i] - values[i - 1]);
    }
    if (!Number.isFinite(width) || width <= 0) {
      width = 1;
    }
    for (const row of rows) {
      if (typeof row[x] === 'number') {
        row[x + '__start'] = row[x] - width / 2;
        row[x + '__end'] = row[x] + width / 2;
      }
    }
    return width;
  }

  // <binStatistic/>: with <summaryStatistic method="sum"/> the rows are the
  // document's bins already (x the bin's midpoint, y its count): one bar per
  // bin as it is, never binned again. Otherwise equal-width bins over the
  // range of x, about the square root of the number of cases (at least 5),
  // each (per colour category) counting its rows.
  function binRows(rows, x, y, split, summed) {
    let lo = Infinity;
    let hi = -Infinity;
    let cases = 0;
    for (const row of rows) {
      lo = Math.min(lo, row[x]);
      hi = Math.max(hi, row[x]);
      cases += summed ? (typeof row[y] === 'number' ? row[y] : 0) : 1;
    }
    const count = Math.max(5, Math.round(Math.sqrt(Math.max(cases, 0))));
    const distinct = sortedValues(rows, x);
    if (summed || distinct.length <= count) {
      // Bins the engine made, or no more values than bins: one bar per
      // value, each spanning half the way to its neighbours, rather than
      // bins that split or merge values.
      const grouped = new Map();
      for (const row of rows) {
        const key = row[x] + '|' + (split ? row[split] : '');
        let bin = grouped.get(key);
        if (!bin) {
          bin = Object.assign({}, row);
          bin[y] = 0;
          grouped.set(key, bin);
        }
        bin[y] += summed ? (typeof row[y] === 'number' ? row[y] : 0) : 1;
      }
      const binned = Array.from(grouped.values());
      return {rows: binned, width: addBinEdges(binned, x)};
    }
    const width = hi > lo ? (hi - lo) / count : 1;
    const start = hi > lo ? lo : lo - width / 2;
    const bins = new Map();
    for (const row of rows) {
      const index = Math.min(count - 1, Math.max(0, Math.floor((row[x] - start) / width)));
      const key = index + '|' + (split ? row[split] : '');
      let bin = bins.get(key);
      if (!bin) {
        bin = Object.assign({}, row);
        bin[x + '__start'] = start + index * width;
        bin[x + '__end'] = start + (index + 1) * width;
        bin[y] = 0;
        bins.set(key, bin);
      }
      bin[y] += summed ? (typeof row[y] === 'number' ? row[y] : 0) : 1;
    }
    return {rows: Array.from(bins.values()), width: width};
  }

  function gamma(n) {
    let result = 1;
    for (let i = 2; i <= n; ++i) {
      result *= i;
    }
    return result;
  }

  // The density (or probability, for Poisson) of a named distribution.
  function density(kind, p1, p2) {
    switch (kind) {
      case 'normal':
        return function (x) {
          const z = (x - p1) / p2;
          return Math.exp(-0.5 * z * z) / (p2 * Math.sqrt(2 * Math.PI));
        };
      case 'uniform':
        return function (x) { return x >= p1 && x <= p2 && p2 > p1 ? 1 / (p2 - p1) : 0; };
      case 'exponential':
        // The parameter is the mean.
        return function (x) { return x < 0 || p1 <= 0 ? 0 : Math.exp(-x / p1) / p1; };
      case 'poisson':
        return function (x) {
          const k = Math.round(x);
          return k < 0 || k > 170 ? 0 : Math.exp(-p1) * Math.pow(p1, k) / gamma(k);
        };
      default:
        return null;
    }
  }

  // A distribution parameter: a number, or a date-time value
  // ("yyyy-MM-ddThh:mm:ss") in the unit of the data's dates (`unit`, days or
  // seconds since 1970-01-01).
  function parameterValue(text, unit) {
    const m = /^\s*(\d{4})-(\d{2})-(\d{2})T(\d{2}):(\d{2}):(\d{2}(?:\.\d+)?)\s*$/.exec(text || '');
    if (!m) {
      return number(text, NaN);
    }
    const ms = Date.UTC(Number(m[1]), Number(m[2]) - 1, Number(m[3]), Number(m[4]), Number(m[5])) +
        Number(m[6]) * 1000;
    return ms / (unit === 'days' ? 86400000 : 1000);
  }

  function readDistribution(node, unit) {
    if (!node) {
      return null;
    }
    const kind = attr(node, 'distribution', 'normal');
    const p1 = parameterValue(node.getAttribute('parameter'), unit);
    const p2 = parameterValue(attr(node, 'secondaryParameter', ''), unit);
    const f = density(kind, p1, p2);
    if (!f || !Number.isFinite(p1) || ((kind === 'normal' || kind === 'uniform') &&
        !Number.isFinite(p2))) {
      return null;
    }
    return {kind: kind, p1: p1, p2: p2, f: f};
  }

  // Points of a distribution's curve over [lo, hi], scaled by `scale`.
  function curve(dist, lo, hi, scale, xName, yName) {
    const points = [];
    if (dist.kind === 'poisson') {
      for (let k = Math.max(0, Math.floor(lo)); k <= Math.ceil(hi); ++k) {
        points.push({[xName]: k, [yName]: dist.f(k) * scale});
      }
      return points;
    }
    const steps = 160;
    for (let i = 0; i <= steps; ++i) {
      const x = lo + (hi - lo) * i / steps;
      points.push({[xName]: x, [yName]: dist.f(x) * scale});
    }
    return points;
  }

  function extentOf(dist) {
    switch (dist.kind) {
      case 'normal': return [dist.p1 - 4 * dist.p2, dist.p1 + 4 * dist.p2];
      case 'uniform': return [dist.p1 - 0.1 * (dist.p2 - dist.p1), dist.p2 + 0.1 * (dist.p2 - dist.p1)];
      case 'exponential': return [0, 6 * dist.p1];
      default: return [0, Math.max(10, dist.p1 + 5 * Math.sqrt(dist.p1))];
    }
  }

  // ---- Layers of one graph -------------------------------------------------

  // Reference lines: a rule and its labels at a value of one axis (and, when
  // mirrored, at the value mirrored around the centre of the graph's
  // distribution).
  function lineGuides(model, graph, centre) {
    const layers = [];
    let line = 0; // guides' labels go one under the other
    for (const guide of children(graph, 'lineGuide')) {
      const onX = guide.hasAttribute('x');
      const value = number(guide.getAttribute(onX ? 'x' : 'y'), NaN);
      if (!Number.isFinite(value)) {
        continue;
      }
      const style = model.styles.get(attr(guide, 'style', '')) || {};
      if (style.visible === false) {
        continue;
      }
      // Mirrored, the guide is drawn again at 2m - V; the "before" label goes
      // left of the first line, the "after" label right of the mirrored one.
      const labels = children(guide, 'label').map(function (label) {
        return {text: textOf(label), position: attr(label, 'position', '')};
      });
      const mirrored = attr(guide, 'mirror', 'false') === 'true' && Number.isFinite(centre);
      const rows = [{guide: value, text: '', position: ''}];
      if (mirrored) {
        rows.push({guide: 2 * centre - value, text: '', position: ''});
      }
      for (const label of labels) {
        const at = mirrored && label.position === 'after' ? rows[1] : rows[0];
        const side = label.position === 'before' ? 'before' : 'after';
        if (at.text) {
          rows.push({guide: at.guide, text: label.text, position: side});
        } else {
          at.text = label.text;
          at.position = side;
        }
      }
      const channel = onX ? 'x' : 'y';
      const ruleMark = {type: 'rule', color: style.color || '#333',
        strokeWidth: style.width || 1.5};
      if (style.dash) {
        ruleMark.strokeDash = style.dash;
      }
      layers.push({
        name: 'guide' + layers.length,
        data: {values: rows},
        mark: ruleMark,
        encoding: {[channel]: {field: 'guide', type: 'quantitative'},
          tooltip: {field: 'text', type: 'nominal'}},
      });
      layers.push({
        data: {values: rows.filter(function (r) { return r.text; })},
        mark: onX
          ? {type: 'text', baseline: 'top', dy: 4, fontSize: 11, color: style.color || '#333',
            align: {expr: "datum.position === 'before' ? 'right' : 'left'"},
            dx: {expr: "datum.position === 'before' ? -4 : 4"}, lineBreak: '\n'}
          : {type: 'text', align: 'right', baseline: 'bottom', dy: -3, fontSize: 11,
            color: style.color || '#333', lineBreak: '\n'},
        encoding: onX
          ? {x: {field: 'guide', type: 'quantitative'}, y: {value: 16 * line++}, text: {field: 'text'}}
          : {y: {field: 'guide', type: 'quantitative'}, x: {value: 'width'}, text: {field: 'text'}},
      });
    }
    return layers;
  }

  // Bars (<interval>): plain, dodged, stacked, or a histogram of given bins.
  function intervalSpec(chart, model, graph, element, titles) {
    const x = variableOf(element, 'x');
    const y = variableOf(element, 'y');
    let rows = rowsFor(chart, model, [x, y]).filter(function (r) {
      return r[x] !== null && r[y] !== null;
    });
    const binned = !!child(element, 'binStatistic') && !isCategorical(model, x) && rows.length > 0;
    const colorNode = child(element, 'color') || child(element, 'pattern');
    let binWidth = 1;
    if (binned) {
      const summed = !!children(element, 'summaryStatistic').find(function (n) {
        return attr(n, 'method', '') === 'sum';
      });
      const made = binRows(rows, x, y, colorNode ? colorNode.getAttribute('variable') : null, summed);
      rows = made.rows;
      binWidth = made.width;
    }
    const popup = binned ? null : popupFor(model, 'interval');
    const tip = applyPopup(popup, model, rows, '__tip');
    const color = colorChannel(model, element, rows);
    const xAxis = axisFor(titles, 'x', x);
    const yAxis = axisFor(titles, 'y', y);
    const encoding = {};
    if (binned) {
      encoding.x = withDomain({field: x + '__start', type: 'quantitative', bin: 'binned',
        title: xAxis.title}, xAxis);
      encoding.x2 = {field: x + '__end'};
      const v = model.variables.get(x);
      if (v && v.format && v.format.type !== 'general') {
        encoding.x.axis = axisFormat(v.format);
      }
    } else {
      encoding.x = withDomain(positional(model, rows, x, xAxis.title), xAxis);
    }
    encoding.y = withDomain({field: y, type: 'quantitative', title: yAxis.title}, yAxis);
    const position = attr(element, 'position', '');
    if (color) {
      encoding.color = color;
      if (position === 'dodge' && !binned) {
        encoding.xOffset = {field: color.field, type: 'nominal', sort: color.sort};
      }
      if (position === 'stack') {
        encoding.order = {field: color.field};
      } else {
        encoding.y.stack = null;
      }
    }
    if (tip) {
      encoding.tooltip = {field: '__tip', type: 'nominal'};
    } else if (binned) {
      encoding.tooltip = [{field: x + '__start', type: 'quantitative', format: '~g', title: 'From'},
        {field: x + '__end', type: 'quantitative', format: '~g', title: 'To'},
        {field: y, type: 'quantitative', title: yAxis.title || y}];
      if (color) {
        encoding.tooltip.unshift({field: color.field, title: color.legend && color.legend.title || ' '});
      }
    } else {
      encoding.tooltip = [{field: x + (isCategorical(model, x) ? '__text' : ''), title: xAxis.title || x},
        {field: y, type: 'quantitative', title: yAxis.title || y}];
    }
    const mark = Object.assign({type: 'bar', stroke: '#fff', strokeWidth: 0.5},
        markStyle(model, element));
    if (color) {
      delete mark.fill;
      delete mark.color;
      mark.stroke = '#444';
    }
    const layers = [{name: 'bar', data: {values: rows}, mark: mark, encoding: encoding}];
    // <label variable="V">: the value of V written above each bar.
    const labelNode = child(element, 'label');
    const labelStyle = labelNode ? model.styles.get(attr(labelNode, 'style', '')) || {} : null;
    if (labelNode && labelNode.getAttribute('variable') && labelStyle.visible !== false &&
        !binned && position !== 'stack') {
      const labelId = labelNode.getAttribute('variable');
      const labelEncoding = Object.assign({}, encoding, {text: {field: labelId + '__text'}});
      delete labelEncoding.color;
      delete labelEncoding.tooltip;
      layers.push({data: {values: rows},
        mark: {type: 'text', baseline: 'bottom', dy: -2, fontSize: 10, color: labelStyle.color || '#333'},
        encoding: labelEncoding});
    }

    // A fitted distribution drawn over the bars (<line> with a
    // <distributionStatistic>), scaled to the counts.
    for (const line of children(graph, 'line')) {
      const xFormat = model.variables.has(x) ? model.variables.get(x).format : null;
      const dist = readDistribution(child(line, 'distributionStatistic'),
          xFormat ? xFormat.unit : 'seconds');
      if (!dist || !binned) {
        continue;
      }
      let total = 0;
      let lo = Infinity;
      let hi = -Infinity;
      for (const row of rows) {
        total += typeof row[y] === 'number' ? row[y] : 0;
        lo = Math.min(lo, row[x + '__start']);
        hi = Math.max(hi, row[x + '__end']);
      }
      const style = model.styles.get(attr(line, 'style', '')) || {};
      layers.push({
        name: 'fit',
        data: {values: curve(dist, lo, hi, total * (dist.kind === 'poisson' ? 1 : binWidth), x + '__start', y)},
        mark: {type: 'line', color: style.color || '#d62728',
          strokeWidth: style.width || 2, interpolate: dist.kind === 'poisson' ? 'step' : 'monotone'},
        encoding: {x: {field: x + '__start', type: 'quantitative'},
          y: {field: y, type: 'quantitative'}},
      });
    }
    layers.push.apply(layers, lineGuides(model, graph, NaN));
    return layers;
  }

  // A box plot (<schema>) from the values the module gives per group: the
  // median is the middle of each group's values, the quartiles the middles
  // of the values below and above it, the whiskers the extremes of the values
  // without a case label, and the labelled values the outliers.
  function schemaSpec(chart, model, graph, element, titles) {
    const x = variableOf(element, 'x');
    const y = variableOf(element, 'y');
    const labelVar = variableOf(element, 'label');
    const rows = rowsFor(chart, model, [x, y]).filter(function (r) {
      return r[x] !== null && typeof r[y] === 'number';
    });
    const labelColumn = (model.variables.get('Label') ? 'Label' : labelVar) || 'Label';
    const groups = new Map();
    for (const row of rows) {
      if (!groups.has(row[x])) {
        groups.set(row[x], []);
      }
      groups.get(row[x]).push(row);
    }
    const median = function (values) {
      const n = values.length;
      return n === 0 ? NaN : (n % 2 ? values[(n - 1) / 2] : (values[n / 2 - 1] + values[n / 2]) / 2);
    };
    const boxes = [];
    const outliers = [];
    const colorNode = child(element, 'color');
    const colorId = colorNode ? colorNode.getAttribute('variable') : null;
    const popup = popupFor(model, 'schema', 'median') || popupFor(model, 'schema');
    for (const [group, members] of groups) {
      const values = members.map(function (r) { return r[y]; }).sort(function (a, b) { return a - b; });
      const mid = median(values);
      // Tukey's hinges: the medians of the lower and upper halves, each with
      // the median when the count is odd.
      const half = Math.ceil(values.length / 2);
      const below = values.slice(0, half);
      const above = values.slice(values.length - half);
      const inner = members.filter(function (r) { return r[labelColumn] === null || r[labelColumn] === undefined; })
          .map(function (r) { return r[y]; });
      const box = Object.assign({}, members[0], {
        q1: below.length ? median(below) : mid,
        median: mid,
        q3: above.length ? median(above) : mid,
        lower: inner.length ? Math.min.apply(null, inner) : values[0],
        upper: inner.length ? Math.max.apply(null, inner) : values[values.length - 1],
      });
      boxes.push(box);
      for (const r of members) {
        if (r[labelColumn] !== null && r[labelColumn] !== undefined) {
          outliers.push(Object.assign({}, r, {caseText: formatNumber(r[labelColumn], null)}));
        }
      }
    }
    const tip = applyPopup(popup, model, boxes, '__tip');
    const xAxis = axisFor(titles, 'x', x);
    const yAxis = axisFor(titles, 'y', y);
    const yVar = model.variables.get(y);
    const yFormat = yVar && yVar.format && yVar.format.type !== 'general' ? yVar.format : null;
    const boxRows = boxes.map(function (b) {
      const lines = [xAxis.title ? xAxis.title + ': ' + b[x + '__text'] : b[x + '__text']];
      lines.push('Maximum: ' + formatNumber(b.upper, yFormat), 'Upper Quartile: ' +
          formatNumber(b.q3, yFormat), 'Median: ' + formatNumber(b.median, yFormat),
      'Lower Quartile: ' + formatNumber(b.q1, yFormat), 'Minimum: ' + formatNumber(b.lower, yFormat));
      if (tip && b.__tip) {
        lines.push(b.__tip);
      }
      return Object.assign(b, {__boxTip: lines.join('\n')});
    });
    const xChannel = positional(model, rows, x, xAxis.title);
    const yChannel = withDomain({type: 'quantitative', title: yAxis.title, scale: {zero: false}}, yAxis);
    if (yFormat) {
      yChannel.axis = axisFormat(yFormat);
    }
    const style = model.styles.get(attr(element, 'style', '')) || {};
    const color = colorId ? colorChannel(model, element, boxRows) : null;
    const boxEncoding = {
      x: xChannel,
      y: Object.assign({field: 'q1'}, yChannel),
      y2: {field: 'q3'},
      tooltip: {field: '__boxTip', type: 'nominal'},
    };
    if (color) {
      boxEncoding.color = color;
    }
    const layers = [
      {name: 'whisker', data: {values: boxRows}, mark: {type: 'rule', color: style.color || '#333'},
        encoding: {x: xChannel, y: Object.assign({field: 'lower'}, yChannel), y2: {field: 'upper'},
          tooltip: {field: '__boxTip', type: 'nominal'}}},
      {name: 'box', data: {values: boxRows},
        mark: {type: 'bar', size: {expr: 'min(60, bandwidth("x") * 0.6)'},
          fill: color ? undefined : (style.fill || '#aec7e8'), stroke: style.color || '#1f77b4'},
        encoding: boxEncoding},
      {name: 'median', data: {values: boxRows},
        mark: {type: 'tick', color: '#111', thickness: 2, size: {expr: 'min(60, bandwidth("x") * 0.6)'}},
        encoding: {x: xChannel, y: Object.assign({field: 'median'}, yChannel),
          tooltip: {field: '__boxTip', type: 'nominal'}}},
    ];
    if (outliers.length > 0) {
      layers.push({name: 'outlier', data: {values: outliers},
        mark: {type: 'point', shape: 'circle', color: style.color || '#1f77b4'},
        encoding: {x: xChannel, y: Object.assign({field: y}, yChannel),
          tooltip: [{field: y, type: 'quantitative', title: yAxis.title || y},
            {field: 'caseText', title: 'Case'}]}});
      if (labelVar) {
        layers.push({data: {values: outliers},
          mark: {type: 'text', align: 'left', dx: 6, fontSize: 10, color: '#444'},
          encoding: {x: xChannel, y: Object.assign({field: y}, yChannel), text: {field: 'caseText'}}});
      }
    }
    layers.push.apply(layers, lineGuides(model, graph, NaN));
    return layers;
  }

  // A distribution drawn from its parameters alone (<area> or <line> with a
  // <distributionStatistic> and no data), with its guides.
  function distributionSpec(model, graph, element, titles) {
    const dist = readDistribution(child(element, 'distributionStatistic'));
    if (!dist) {
      return null;
    }
    const xAxis = axisFor(titles, 'x', '');
    const yAxis = axisFor(titles, 'y', '');
    let [lo, hi] = extentOf(dist);
    if (xAxis.min !== null) {
      lo = xAxis.min;
    }
    if (xAxis.max !== null && xAxis.max > lo) {
      hi = xAxis.max;
    }
    const style = model.styles.get(attr(element, 'style', '')) || {};
    const mark = element.tagName === 'area'
      ? {type: 'area', color: style.fill || '#aec7e8', line: {color: style.color || '#1f77b4'},
        opacity: 0.9}
      : {type: 'line', color: style.color || '#1f77b4'};
    const layers = [{
      name: 'distribution',
      data: {values: curve(dist, lo, hi, 1, 'x', 'density')},
      mark: mark,
      encoding: {
        x: {field: 'x', type: 'quantitative', title: xAxis.title, scale: {domain: [lo, hi], nice: false}},
        y: {field: 'density', type: 'quantitative', title: yAxis.title},
        tooltip: [{field: 'x', type: 'quantitative', format: '.1f', title: xAxis.title || 'x'},
          {field: 'density', type: 'quantitative', format: '.4f', title: yAxis.title || 'density'}],
      },
    }];
    layers.push.apply(layers, lineGuides(model, graph, dist.kind === 'normal' ? dist.p1 : NaN));
    return layers;
  }

  // The network (<node> and <edge> with a <graphLayoutStatistic>): nodes on
  // a circle, one line per edge coloured by its type, node values shown.
  function networkSpec(chart, model, graph) {
    const layout = child(graph, 'graphLayoutStatistic');
    const nodeElement = child(graph, 'node');
    const edgeElement = child(graph, 'edge');
    const nodeData = (chart.data || {})[attr(layout, 'nodeSource', 'nodeSource_1')] || {};
    const valueId = variableOf(nodeElement, 'value') || 'node';
    const labelId = variableOf(nodeElement, 'label') || 'label';
    const valueVar = model.variables.get(valueId);
    const values = nodeData[(valueVar && valueVar.column) || valueId] || [];
    const labels = nodeData[labelId] || [];
    const present = [];
    for (let i = 0; i < values.length; ++i) {
      if (values[i] !== null && values[i] !== undefined) {
        present.push(i);
      }
    }
    const swap = !!child(layout, 'swap');
    const positions = new Map();
    // The first node at the left, going clockwise; swapped, the first at the
    // top, going counter-clockwise (y grows upwards here).
    present.forEach(function (sample, k) {
      const step = 2 * Math.PI * k / present.length;
      const angle = swap ? Math.PI / 2 + step : Math.PI - step;
      positions.set(sample, {x: Math.cos(angle), y: Math.sin(angle)});
    });
    const nodeRows = present.map(function (sample) {
      const p = positions.get(sample);
      const name = labels[sample] === null || labels[sample] === undefined ? String(sample) : String(labels[sample]);
      const value = formatNumber(values[sample], valueVar ? valueVar.format : null);
      return {x: p.x, y: p.y, name: name, value: value, text: name + '\n' + value,
        tip: name + '\n' + (valueVar && valueVar.label ? valueVar.label + ': ' : '') + value,
        align: p.x > 0.2 ? 'left' : (p.x < -0.2 ? 'right' : 'center'),
        lx: p.x * 1.16, ly: p.y * 1.16 + (Math.abs(p.x) <= 0.2 ? 0.1 * Math.sign(p.y) : 0)};
    });
    const edgeRows = rowsFor(chart, model, [variableOf(edgeElement, 'from') || 'from']);
    const fromId = variableOf(edgeElement, 'from') || 'from';
    const toId = variableOf(edgeElement, 'to') || 'to';
    const popup = popupFor(model, 'edge');
    applyPopup(popup, model, edgeRows, '__tip');
    const edges = [];
    for (const row of edgeRows) {
      const a = positions.get(row[fromId]);
      const b = positions.get(row[toId]);
      if (!a || !b) {
        continue;
      }
      const names = (labels[row[fromId]] || row[fromId]) + ' \u2013 ' + (labels[row[toId]] || row[toId]);
      edges.push(Object.assign({}, row, {x: a.x, y: a.y, x2: b.x, y2: b.y,
        __edgeTip: names + (row.__tip ? '\n' + row.__tip : '')}));
    }
    const color = colorChannel(model, edgeElement, edges);
    const nodeStyle = model.styles.get(attr(nodeElement, 'style', '')) || {};
    const axis = {scale: {domain: [-1.45, 1.45]}, axis: null, type: 'quantitative'};
    const edgeEncoding = {
      x: Object.assign({field: 'x'}, axis), y: Object.assign({field: 'y'}, axis),
      x2: {field: 'x2'}, y2: {field: 'y2'},
      tooltip: {field: '__edgeTip', type: 'nominal'},
    };
    if (color) {
      edgeEncoding.color = color;
    }
    return [
      {name: 'edge', data: {values: edges}, mark: {type: 'rule', strokeWidth: 2.5},
        encoding: edgeEncoding},
      {name: 'node', data: {values: nodeRows},
        mark: {type: 'point', shape: 'circle', size: 320, filled: true,
          fill: nodeStyle.fill || '#fff', stroke: nodeStyle.color || '#1f77b4',
          strokeWidth: nodeStyle.width || 2, opacity: 1},
        encoding: {x: Object.assign({field: 'x'}, axis), y: Object.assign({field: 'y'}, axis),
          tooltip: {field: 'tip', type: 'nominal'}}},
      {data: {values: nodeRows}, mark: {type: 'text', fontSize: 11, lineBreak: '\n',
        align: {expr: 'datum.align'}, baseline: 'middle'},
        encoding: {x: Object.assign({field: 'lx'}, axis), y: Object.assign({field: 'ly'}, axis),
          text: {field: 'text'}, tooltip: {field: 'tip', type: 'nominal'}}},
    ];
  }

  // Back-to-back or stacked panels of bars (<panels>): one panel per value
  // of the panel variable, in the given category order; "bars" says along
  // which axis the bars grow, "invert" mirrors the first panel.
  function panelsSpec(chart, model, graph, element, titles, width, height) {
    const panels = child(graph, 'panels');
    const panelId = panels.getAttribute('variable');
    const x = variableOf(element, 'x');
    const y = variableOf(element, 'y');
    const rows = rowsFor(chart, model, [x, y, panelId]).filter(function (r) {
      return r[x] !== null && r[y] !== null && r[panelId] !== null;
    });
    let order = sortedValues(rows, panelId, model);
    const orderNode = children(graph, 'categoryOrder').find(function (n) {
      return n.getAttribute('variable') === panelId;
    });
    if (orderNode) {
      const given = orderNode.textContent.trim().split(/\s+/).map(Number).filter(function (v) {
        return order.indexOf(v) >= 0;
      });
      order = given.concat(order.filter(function (v) { return given.indexOf(v) < 0; }));
    }
    const titleNode = child(graph, 'panelTitle');
    const titleId = titleNode ? titleNode.getAttribute('variable') : null;
    const horizontal = attr(panels, 'bars', 'x') === 'x';
    const invert = attr(panels, 'invert', 'false') === 'true';
    const alternating = attr(panels, 'alternating', 'false') === 'true';
    const countAxis = axisFor(titles, '', y);
    let sharedMax = 0;
    for (const row of rows) {
      sharedMax = Math.max(sharedMax, row[y]);
    }
    addBinEdges(rows, x);
    const palette = (child(element, 'color') && child(element, 'color').getAttribute('palette') || '')
        .split(/\s+/).filter(Boolean);
    const specs = order.map(function (value, i) {
      const panelRows = rows.filter(function (r) { return r[panelId] === value; });
      const first = panelRows[0] || {};
      const valueAxis = titles[x + ':' + (i === 0 ? 'first' : 'last')] || axisFor(titles, '', x);
      const heading = titleId && first[titleId] !== undefined ? String(first[titleId])
        : display(model.variables.get(panelId), value);
      const countChannel = {field: y, type: 'quantitative', title: countAxis.title,
        scale: {domain: [0, sharedMax || 1], reverse: alternating && i % 2 === 1}};
      const valueChannel = {field: x + '__start', type: 'quantitative', bin: 'binned',
        title: valueAxis.title, scale: {reverse: invert}};
      const encoding = horizontal
        ? {y: valueChannel, y2: {field: x + '__end'}, x: countChannel}
        : {x: valueChannel, x2: {field: x + '__end'}, y: countChannel};
      encoding.tooltip = [{field: x, type: 'quantitative', title: valueAxis.title || x},
        {field: y, type: 'quantitative', title: countAxis.title || y}];
      if (horizontal && i > 0) {
        valueChannel.axis = {orient: 'right'};
      }
      return {
        name: 'panel' + i,
        title: {text: heading, fontSize: 12},
        width: horizontal ? Math.max(120, Math.floor(width / order.length) - 70) : width - 80,
        height: horizontal ? height : Math.max(100, Math.floor(height / order.length)),
        data: {values: panelRows},
        mark: {type: 'bar', color: palette[i % Math.max(1, palette.length)] || PALETTE[i % PALETTE.length],
          stroke: '#fff', strokeWidth: 0.5},
        encoding: encoding,
      };
    });
    return horizontal ? {hconcat: specs, spacing: 8, resolve: {scale: {y: 'shared'}}}
      : {vconcat: specs, spacing: 8, resolve: {scale: {x: 'shared'}}};
  }

  // Points, or a line or area through the rows in x order.
  function plainSpec(chart, model, graph, element, titles) {
    const x = variableOf(element, 'x');
    const y = variableOf(element, 'y');
    const rows = rowsFor(chart, model, [x, y]).filter(function (r) {
      return r[x] !== null && r[y] !== null;
    });
    const xAxis = axisFor(titles, 'x', x);
    const yAxis = axisFor(titles, 'y', y);
    const type = element.tagName === 'point' ? 'point' : element.tagName;
    const popup = popupFor(model, element.tagName);
    const tip = applyPopup(popup, model, rows, '__tip');
    const encoding = {
      x: withDomain(positional(model, rows, x, xAxis.title), xAxis),
      y: withDomain(positional(model, rows, y, yAxis.title), yAxis),
      tooltip: tip ? {field: '__tip', type: 'nominal'} : [{field: x, title: xAxis.title || x},
        {field: y, title: yAxis.title || y}],
    };
    const color = colorChannel(model, element, rows);
    if (color) {
      encoding.color = color;
    }
    if (type !== 'point') {
      encoding.order = {field: x};
    }
    const layers = [{name: type, data: {values: rows},
      mark: Object.assign({type: type, point: type === 'line'}, markStyle(model, element)),
      encoding: encoding}];
    layers.push.apply(layers, lineGuides(model, graph, NaN));
    return layers;
  }

  // ---- The whole chart -----------------------------------------------------

  // The drawing size: the container's width (at most MAX_WIDTH), and a
  // height scaled by the outer frame's height.
  function frameSize(graph, available) {
    const frame = child(graph, 'outerFrame');
    const h = number(attr(frame, 'height', '1'), 1);
    return {
      width: Math.max(260, Math.min(available, MAX_WIDTH)),
      height: Math.round(BASE_HEIGHT * Math.min(1.6, Math.max(0.6, h))),
    };
  }

  // The vega-lite chart definition of a chart item; `available` is the width of its
  // container in pixels.
  function toSpec(chart, available) {
    const root = parseDocument(chart.document);
    if (!root) {
      throw new Error('the chart document is not readable XML');
    }
    const model = readDocument(root);
    const graph = model.graphs[0];
    if (!graph) {
      throw new Error('the chart document has no graph');
    }
    const size = frameSize(graph, available || 640);
    const titles = axisTitles(model, graph);
    const title = {text: chart.title || model.title || '', anchor: 'start', fontSize: 14,
      subtitleFontSize: 12, subtitleColor: '#555'};
    const subtitle = chart.subtitle || model.subtitle;
    if (subtitle) {
      title.subtitle = subtitle;
    }
    let body;
    const facets = children(graph, 'facet');
    const elementOf = function (name) { return child(graph, name); };
    if (elementOf('node') && elementOf('edge')) {
      const side = Math.min(size.width - 200, 460);
      body = {layer: networkSpec(chart, model, graph), width: side, height: side};
    } else if (child(graph, 'panels') && elementOf('interval')) {
      body = panelsSpec(chart, model, graph, elementOf('interval'), titles, size.width, size.height);
    } else if (elementOf('schema')) {
      body = {layer: schemaSpec(chart, model, graph, elementOf('schema'), titles)};
    } else if (elementOf('interval')) {
      body = {layer: intervalSpec(chart, model, graph, elementOf('interval'), titles)};
    } else {
      const shape = elementOf('area') || elementOf('line') || elementOf('point');
      let layers = null;
      if (shape && child(shape, 'distributionStatistic')) {
        layers = distributionSpec(model, graph, shape, titles);
      } else if (shape && variableOf(shape, 'x') && variableOf(shape, 'y')) {
        layers = plainSpec(chart, model, graph, shape, titles);
      }
      if (!layers) {
        throw new Error('the chart document has no element that can be drawn');
      }
      body = {layer: layers};
    }
    const definition = {
      $schema: SCHEMA,
      title: title,
      config: {
        font: 'DejaVu Sans, Segoe UI, Roboto, Helvetica Neue, Arial, sans-serif',
        view: {stroke: '#d0d4da'},
        axis: {labelFontSize: 11, titleFontSize: 12, titleFontWeight: 'normal', gridColor: '#eceff3',
          labelOverlap: true},
        legend: {labelFontSize: 11, titleFontSize: 12, titleFontWeight: 'normal'},
        header: {labelFontSize: 11, titleFontSize: 12, titleFontWeight: 'normal'},
      },
    };
    if (facets.length > 0 && body.layer) {
      // Facets: the layers repeated per value of the facet variables.
      const rows = body.layer[0].data.values;
      const facet = {};
      const perRow = {};
      for (const f of facets) {
        const id = f.getAttribute('variable');
        const v = model.variables.get(id);
        const order = sortedValues(rows, id, model).map(function (value) { return display(v, value); });
        const dim = attr(f, 'dim', 'column') === 'row' ? 'row' : 'column';
        facet[dim] = {field: id + '__text', type: 'nominal', sort: order,
          header: {title: textOf(child(f, 'title')) || (v && v.label) || null, labelLimit: 160}};
        perRow[dim] = order.length;
      }
      const columns = perRow.column || 1;
      // Room beside the cells: the row headers and, where there is one, the
      // legend to the right, so that neither is cut off.
      const reserved = 110 + (root.getElementsByTagName('legend').length > 0 ? 150 : 0);
      definition.data = {values: rows};
      definition.facet = facet;
      // vega-lite takes the inner chart of a facet under this key.
      definition.spec = {layer: body.layer.map(function (layer) {
        const copy = Object.assign({}, layer);
        delete copy.data;
        return copy;
      }), width: Math.max(80, Math.floor((size.width - reserved) / columns) - 16),
      height: Math.max(90, Math.floor(size.height / Math.max(1, perRow.row || 1)))};
      definition.resolve = {scale: {x: 'shared', y: 'shared'}};
    } else {
      Object.assign(definition, body);
      if (body.layer && !body.width) {
        definition.width = Math.max(200, size.width - 40);
        definition.height = size.height;
        definition.autosize = {type: 'fit', contains: 'padding'};
      }
    }
    const notes = [];
    for (const frame of model.frames) {
      for (const label of frame) {
        notes.push(label);
      }
    }
    if (model.footnote) {
      notes.push({text: model.footnote, style: null});
    }
    return {definition: definition, notes: notes};
  }

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

  // ---- Drawing ------------------------------------------------------------

  const embedOptions = {
    actions: false,
    renderer: 'svg',
    tooltip: {theme: 'light', sanitize: function (value) {
      return String(value).replace(/&/g, '&amp;').replace(/</g, '&lt;');
    }},
  };

  function showNotes(figure, notes) {
    if (notes.length === 0) {
      return;
    }
    const list = document.createElement('div');
    list.className = 'chart-notes';
    for (const note of notes) {
      const p = document.createElement('p');
      if (note.style && note.style.color) {
        const swatch = document.createElement('span');
        swatch.className = 'swatch';
        swatch.style.background = note.style.color;
        p.appendChild(swatch);
      }
      const text = document.createElement('span');
      text.textContent = note.text;
      if (note.style && note.style.bold) {
        text.style.fontWeight = '600';
      }
      p.appendChild(text);
      list.appendChild(p);
    }
    figure.querySelector('.chart-view').after(list);
  }

  function draw(figure) {
    if (figure.dataset.drawn) {
      return Promise.resolve();
    }
    figure.dataset.drawn = 'pending';
    const view = figure.querySelector('.chart-view');
    const script = figure.querySelector('script.chart-data');
    let made;
    try {
      made = toSpec(JSON.parse(script.textContent), view.clientWidth);
    } catch (error) {
      fail(figure, view, error);
      return Promise.resolve();
    }
    view.textContent = '';
    return global.vegaEmbed(view, made.definition, embedOptions).then(function (result) {
      figure.dataset.drawn = 'yes';
      figure.nptestsView = result.view;
      performance.mark('chart-drawn', {detail: figure.id});
      showNotes(figure, made.notes);
    }, function (error) {
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
    console.error('chart ' + figure.id + ' cannot be drawn:', error);
  }

  // Charts are drawn when their figure comes within 200 pixels of the
  // screen. The script runs from the page's head, so figures are watched as
  // the parser adds them (a figure is complete once its caption, its last
  // child, is there) and the first screen's charts are drawn while the rest
  // of a long report is still being read.
  // Before the page is printed (or saved as PDF) every chart not drawn yet
  // is drawn: the drawing is a chain of promises without timers, so it ends
  // in the microtasks that run before the browser lays the page out for
  // print.
  function drawAll() {
    return Promise.all(Array.from(document.querySelectorAll('figure.chart'), draw));
  }

  function start() {
    global.addEventListener('beforeprint', drawAll);
    if (!('IntersectionObserver' in global)) {
      document.addEventListener('DOMContentLoaded', function () {
        document.querySelectorAll('figure.chart').forEach(draw);
      });
      return;
    }
    const observer = new IntersectionObserver(function (entries) {
      for (const entry of entries) {
        if (entry.isIntersecting) {
          observer.unobserve(entry.target);
          draw(entry.target);
        }
      }
    }, {rootMargin: '200px 0px'});
    const watched = new WeakSet();
    const watch = function (figure) {
      if (!watched.has(figure)) {
        watched.add(figure);
        observer.observe(figure);
      }
    };
    const watchAll = function () {
      document.querySelectorAll('figure.chart').forEach(watch);
    };
    if (document.readyState !== 'loading') {
      watchAll();
      return;
    }
    const parsing = new MutationObserver(function (records) {
      for (const record of records) {
        for (const node of record.addedNodes) {
          if (node.nodeName === 'FIGCAPTION' && node.parentNode.classList.contains('chart')) {
            watch(node.parentNode);
          }
        }
      }
    });
    parsing.observe(document.documentElement, {childList: true, subtree: true});
    document.addEventListener('DOMContentLoaded', function () {
      parsing.disconnect();
      watchAll();
    });
  }

  global.NptestsCharts = {toSpec: toSpec, draw: draw, drawAll: drawAll};
  start();
})(window);
