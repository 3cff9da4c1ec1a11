'use strict';

const data = JSON.parse(document.getElementById('data').textContent);
const compared = data.sensors.some(({ exposures }) => exposures.some(({ differs }) => differs !== undefined));
const columns = [...data.columns.split(','), ...compared ? ['device'] : []];
const DETAILED = 8;  // pixels that an exposure takes at least, where its shape can be told
const SPARSE = 4;    // pixels between extremes from which on a line through them would mislead
const MAGNITUDES = [1e-5, 1e-4, 0.001, 0.01, 0.1, 1, 10, 100];
const UNITS = [['min', 60_000], ['s', 1000], ['ms', 1]];
const LABEL = 110;  // pixels for the label of a time
const LEAST_UNITS = 10;  // of a unit in what is shown
const CHUNK = 1000;  // rows added to the table at a time
const MOST_LANES = 6;
const COLUMNS = 750;     // of the strip that stands for more
const LEAST_SHARE = 0.1;
const SPAN = '#6db3f2', HALL = '#8494a4', POSITION = '#12304f', DEVICE = '#f0a030', DIFFERS = '#d0006f';
const classes = [...data.groups, ...data.differences.map(text => [text, DIFFERS])];  // that are counted

const byId = id => document.getElementById(id);
const count = number => number.toLocaleString('en');

function make(tag, text, className) {
  const element = document.createElement(tag);
  if (text !== undefined) element.textContent = text;
  if (className) element.className = className;
  return element;
}

function addRow(table, cells, tag = 'td') {
  const row = table.appendChild(make('tr'));
  for (const cell of cells) row.append(cell instanceof Node ? cell : make(tag, cell));
  return row;
}

function chip(colour) {
  const its = make('i', undefined, 'chip');
  its.style.background = colour;
  return its;
}

// What the session is, in figures.

function showFigures(table, figures) {
  for (const [label, text] of figures)
    addRow(table, [label, make('td', text.trim(), /^\s*\d+$/.test(text) ? 'number' : '')]);
}

function showFindings() {
  const { findings } = data.summary;
  if (findings.length === 0) return byId('findings').append(make('p', 'None.'));
  const table = byId('findings').appendChild(make('table'));
  addRow(table, ['sensor', 'finding', 'figures', 'what would help'], 'th');
  for (const { sensor, code, advice, ...numbers } of findings) {
    const figures = Object.entries(numbers).map(([name, value]) => `${name} ${value}`);
    addRow(table, [sensor, code, figures.join(', '), advice]);
  }
}

// The trace of a sensor: three graphs over the same times.

// Times with what stands at each: hall x and y (NaN ends a line), position here, position on the device.
function pointsOf(sensor) {
  const nothing = [null, null];
  const points = sensor.range.map(ms => ({ ms, hall: nothing, here: nothing, device: nothing }));
  let last = sensor.range[0];
  for (const line of sensor.samples.split('\n')) {
    const [ms, x, y] = line === '' ? [last, NaN, NaN] : line.split(' ').map(Number);
    points.push({ ms, hall: [x, y], here: nothing, device: nothing });
    last = ms;
  }
  for (const { rows, middle, position, device } of sensor.exposures)
    if (rows && (position || device)) points.push({ ms: middle, hall: nothing, here: position ?? nothing, device: device ?? nothing });
  return points.sort((a, b) => a.ms - b.ms);
}

function visible(sensor, graph) {
  const [from, to] = graph.xAxisRange();
  return sensor.exposures.filter(({ rows, until }) => rows && until >= from && rows[0] <= to);
}

function isDetailed(exposures, { dygraph, plotArea }) {
  const [from, to] = dygraph.xAxisRange();
  const share = ({ rows: [begin], until }) => (Math.min(to, until) - Math.max(from, begin)) / (until - begin || 1);
  return exposures.reduce((sum, its) => sum + its.stride * share(its), 0) * DETAILED <= plotArea.w;
}

function polygon(canvas, colour, corners) {
  canvas.fillStyle = colour;
  canvas.beginPath();
  for (const [x, y] of corners) canvas.lineTo(x, y);
  canvas.fill();
}

// Rows from the top to the bottom of the sensor against the times when they are exposed.
function drawFrame({ group, rows, lane }, lanes, { drawingContext, dygraph, plotArea }) {
  const [exposed, read, finished] = rows.map(ms => dygraph.toDomXCoord(ms));
  const height = plotArea.h / lanes, gap = Math.max(2, height * 0.15);
  const top = plotArea.y + lane * height + gap / 2, bottom = top + height - gap;
  polygon(drawingContext, data.groups[group][1],
          [[exposed, top], [read, top], [finished, bottom], [exposed + finished - read, bottom]]);
}

// The share of each outcome in each column; a reason has a tenth of the height at least.
function drawShares(exposures, { drawingContext, dygraph, plotArea: { x, y, w, h } }) {
  const bins = Array.from({ length: COLUMNS }, () => new Map());
  for (const { group, rows: [begin], until } of exposures) {
    const at = ms => Math.min(COLUMNS - 1, Math.max(0, Math.floor((dygraph.toDomXCoord(ms) - x) / w * COLUMNS)));
    for (let i = at(begin); i <= at(until); ++i) bins[i].set(group, (bins[i].get(group) ?? 0) + 1);
  }
  bins.forEach((groups, i) => {
    const all = [...groups.values()].reduce((sum, its) => sum + its, 0);
    const shares = [...groups].map(([group, its]) => [group, group === 0 ? its / all : Math.max(LEAST_SHARE, its / all)]);
    const scale = h / shares.reduce((sum, [, share]) => sum + share, 0);
    const edge = column => Math.round(x + column * w / COLUMNS);  // whole pixels, as half ones would show stripes
    let bottom = y + h;
    for (const [group, share] of shares.sort(([a], [b]) => (a === 0) - (b === 0) || a - b)) {
      drawingContext.fillStyle = data.groups[group][1];
      drawingContext.fillRect(edge(i), bottom - share * scale, edge(i + 1) - edge(i), share * scale);
      bottom -= share * scale;
    }
  });
}

function drawFrames(sensor) {
  return event => {
    const exposures = visible(sensor, event.dygraph);
    if (!isDetailed(exposures, event)) return drawShares(exposures, event);
    for (const exposure of exposures) drawFrame(exposure, sensor.lanes, event);
  };
}

// Along the trace where the span's samples are, and straight from its begin to its end at the height of the position.
function drawSpans(sensor, points, axis) {
  return event => {
    const { drawingContext: canvas, dygraph } = event;
    canvas.setLineDash(isSparse(sensor, dygraph) ? [2, 6] : []);
    Dygraph.Plotters.linePlotter(event);
    canvas.setLineDash([]);
    const exposures = visible(sensor, dygraph);
    dygraph.isDetailed = isDetailed(exposures, event);  // for the points, which are drawn next
    if (!dygraph.isDetailed) return;
    const line = (colour, width, corners) => {
      canvas.strokeStyle = colour;
      canvas.lineWidth = width;
      canvas.beginPath();
      for (const [ms, value] of corners) canvas.lineTo(...dygraph.toDomCoords(ms, value));
      canvas.stroke();
    };
    for (const { span: [first, last], position } of exposures.filter(({ span }) => span)) {
      const within = points.filter(({ ms, hall }) => ms >= first && ms <= last && Number.isFinite(hall[axis]));
      line(SPAN, 3, within.map(({ ms, hall }) => [ms, hall[axis]]));
      line(POSITION, 1.4, [[first, position[axis]], [last, position[axis]]]);
    }
  };
}

// Where points are close, large ones would hide the trace.
function drawPoint(graph, name, canvas, x, y, colour) {
  const size = (graph.isDetailed ? 1 : 0.4) * (name === 'device' ? 7 : 5);
  canvas.fillStyle = colour;
  canvas.beginPath();
  if (name === 'device') canvas.rect(x - size / 2, y - size / 2, size, size);
  else canvas.arc(x, y, size / 2, 0, 2 * Math.PI);
  canvas.fill();
}

// Rings, as long as they have room.
function ringDifferences(sensor, axis) {
  return event => {
    Dygraph.Plotters.linePlotter(event);
    const { drawingContext: canvas, dygraph, plotArea } = event;
    const differing = visible(sensor, dygraph).filter(({ differs }) => differs);
    const radius = differing.length * 16 <= plotArea.w ? 7 : 1;
    canvas.strokeStyle = DIFFERS;
    canvas.lineWidth = 2;
    for (const { middle, position, device } of differing) {
      canvas.beginPath();
      canvas.arc(...dygraph.toDomCoords(middle, (device ?? position)[axis]), radius, 0, 2 * Math.PI);
      canvas.stroke();
    }
  };
}

function reading({ cells }) {
  return columns.map((name, i) => [name, cells[i]]).filter(([name, cell]) => cell !== '' && name !== 'reason')
    .map(([name, cell]) => `${name} ${cell}`).join(', ');
}

function showLegend(box, sensor) {
  const entries = [[HALL, 'hall samples']];
  for (const [key, colour, text] of [['span', SPAN, 'span used'], ['position', POSITION, 'position reported'],
                                     ['device', DEVICE, 'position on the device']])
    if (sensor.exposures.some(its => its[key])) entries.push([colour, text]);
  classes.forEach(([text, colour], i) => sensor.counts[i] && entries.push([colour, `${text}: ${count(sensor.counts[i])}`]));
  for (const [colour, text] of entries) {
    const entry = box.appendChild(make('span'));
    entry.append(chip(colour), text);
  }
}

function showReduction(box, sensor, points) {
  const drawn = points.filter(({ hall }) => Number.isFinite(hall[0])).length;
  if (drawn === sensor.sample_count) return;
  const [from, to] = sensor.range;
  sensor.period = 2 * (to - from) / drawn;
  box.textContent = `Of ${count(sensor.sample_count)} samples, ${count(drawn)} points are drawn: the least and the largest ` +
    `of each ${sensor.period.toLocaleString('en', { maximumSignificantDigits: 2 })} ms. The line is dashed where that is ` +
    'too few to follow the lens. A page of a part (--from, --to) shows more.';
}

function isSparse({ period }, graph) {
  return period && graph.toDomXCoord(period) - graph.toDomXCoord(0) > SPARSE;
}

// Ticks at round numbers of the unit that suits what is shown. One whose label would have to move from its line to fit
// has none.
function timeTicks(from, to, width, options, graph) {
  const [unit, ms] = UNITS.find(([, its]) => to - from >= LEAST_UNITS * its) ?? UNITS.at(-1);
  const fits = v => (to - v) / (to - from) * width >= LABEL / 2;
  return Dygraph.numericTicks(from / ms, to / ms, width, options, graph)
    .map(({ v }) => ({ v: v * ms, label: fits(v * ms) ? `${count(v)} ${unit}` : '' }));
}

// Gives each exposure the time at which its position is drawn, a lane in which no other overlaps it, the number of
// exposures that it stands for, which are itself and those that follow and are not listed, and when they end.
function arrange(sensor) {
  const ends = [];  // of the lanes
  for (const its of sensor.exposures.filter(({ rows }) => rows)) {
    const times = its.span ?? its.rows, [begin, , end] = its.rows;
    its.stride = sensor.strides[its.differs || its.group];
    its.until = begin + Math.max(end - begin, sensor.interval_us / 1000) * its.stride;
    its.middle = (times[0] + times.at(-1)) / 2;
    its.lane = ends.findIndex(last => last <= begin);
    if (its.lane < 0) its.lane = ends.length < MOST_LANES ? ends.length : ends.indexOf(Math.min(...ends));
    ends[its.lane] = end;
  }
  sensor.lanes = ends.length;
}

function showTrace(section, sensor) {
  arrange(sensor);
  const points = pointsOf(sensor);
  showLegend(section.appendChild(make('p', undefined, 'legend')), sensor);
  section.append(make('p', 'Drag to zoom, drag with Shift to pan, double-click to see all. A click on a row of the table ' +
                           'of exposures shows its place.', 'note'));
  showReduction(section.appendChild(make('p', undefined, 'note')), sensor, points);
  const boxes = ['frames', 'x', 'y'].map(name => section.appendChild(make('div', undefined, `graph ${name}`)));
  const range = section.appendChild(make('p', undefined, 'range'));
  const hint = section.appendChild(make('p', 'Point at a trace to read an exposure.', 'reading'));

  const common = {
    dateWindow: sensor.range, connectSeparatedPoints: true, legend: 'never', xLabelHeight: 0, gridLineColor: '#ddd',
    highlightCallback: (event, ms) => {
      const drawn = visible(sensor, graphs[0]);
      hint.textContent = drawn.length === 0 ? 'No exposure here.'
        : reading(drawn.reduce((a, b) => Math.abs(b.middle - ms) < Math.abs(a.middle - ms) ? b : a));
    },
    drawCallback: graph => {
      const [first, last] = sensor.bounds;
      const [from, to] = graph.xAxisRange().map(ms => Math.min(Math.max(ms, first), last).toFixed(1));
      range.textContent = `From ${from} to ${to} ms from the first sample.`;
    },
  };
  const empty = !points.some(({ hall, here, device }) => [hall[0], here[0], device[0]].some(its => its !== null && !isNaN(its)));
  if (empty) boxes.slice(1).forEach(box => box.classList.add('empty'));
  const x = { ticker: timeTicks, pixelsPerLabel: LABEL, axisLabelWidth: LABEL };
  const y = { axisLabelWidth: 60, ...empty && { drawGrid: false, axisLabelFormatter: () => '' } };
  const graphs = [new Dygraph(boxes[0], points.map(({ ms }) => [ms, 0.5]), {
    ...common, labels: ['ms', 'frames'], plotter: drawFrames(sensor), valueRange: [0, 1], highlightCircleSize: 0, ylabel: 'frames',
    axes: { x: { ...x, drawAxis: false }, y: { ...y, drawGrid: false, axisLabelFormatter: () => '' } },
  })];
  for (const axis of [0, 1]) {
    graphs.push(new Dygraph(boxes[axis + 1], points.map(({ ms, hall, here, device }) => [ms, hall[axis], device[axis], here[axis]]), {
      ...common, labels: ['ms', 'hall', 'device', 'position'], ylabel: `hall ${'xy'[axis]} (ois${'XY'[axis]})`,
      axes: { x: { ...x, drawAxis: axis === 1 }, y },
      series: {
        hall: { color: HALL, strokeWidth: 1.3, plotter: drawSpans(sensor, points, axis) },
        device: { color: DEVICE, strokeWidth: 0, drawPoints: true, drawPointCallback: drawPoint },
        position: { color: POSITION, strokeWidth: 0, drawPoints: true, drawPointCallback: drawPoint, plotter: ringDifferences(sensor, axis) },
      },
      showRangeSelector: axis === 1, rangeSelectorHeight: 36, rangeSelectorPlotFillColor: '', rangeSelectorPlotStrokeColor: HALL,
    }));
  }
  Dygraph.synchronize(graphs, { zoom: true, selection: true, range: false });
  sensor.show = ({ rows }) => {
    graphs[2].updateOptions({ dateWindow: [rows[0] - 100, rows[2] + 100] });
    section.scrollIntoView();
  };
}

function showSensor(sensor) {
  const section = byId('sensors').appendChild(make('section'));
  section.append(make('h2', `Sensor ${sensor.id}`));
  if (sensor.range) showTrace(section, sensor);
  else section.append(make('p', 'It has no samples and no exposure to draw.', 'note'));
  showFigures(section.appendChild(make('table', undefined, 'figures')), sensor.figures);
}

// The table of exposures.

// What the device made of it, against what was made here.
function compare(exposure) {
  const { differs, device, position } = exposure;
  const text = () => {
    if (!differs) return differs === undefined ? '' : 'agrees';
    if (differs > data.groups.length) return device ? `only there: ${device.join(', ')}` : 'only here';
    const off = device.map((its, axis) => (its ?? NaN) - (position[axis] ?? NaN));
    exposure.offBy = Math.max(...off.map(Math.abs));
    return `off by ${off.map(its => Number(its.toFixed(6))).join(', ')}`;
  };
  exposure.cells.push(text());
}

const SHORT = { x: 4, y: 4, error_x: 4, error_y: 4 };  // decimals; the cell's title has all
const TEXTS = ['device', 'detail'];
// The reason stands in its detail, a text that goes last.
const shownColumns = columns.map((name, i) => [name, i]).filter(([name]) => name !== 'reason')
  .sort(([a], [b]) => (a === 'detail') - (b === 'detail'));

function exposureRow(sensor, exposure) {
  const cells = shownColumns.map(([name, i]) => {
    const cell = exposure.cells[i];
    const its = make('td', name in SHORT && cell !== '' ? Number(cell).toFixed(SHORT[name]) : cell);
    if (name in SHORT) its.title = cell;
    if (TEXTS.includes(name)) its.className = 'text';
    return its;
  });
  const row = addRow(byId('exposures').tBodies[0], [make('td'), ...cells]);
  if (exposure.differs) row.className = 'differs';
  row.firstChild.append(chip(data.groups[exposure.group][1]));
  if (exposure.rows && sensor.show) row.onclick = () => sensor.show(exposure);
}

const choices = {};  // of each filter: a text, and a test of what it lets through

function fillTable() {
  const tests = Object.entries(choices).map(([id, its]) => its[byId(id).selectedIndex][1]);
  const wanted = data.sensors.flatMap(sensor => sensor.exposures
    .filter(exposure => tests.every(test => test(exposure, sensor))).map(exposure => [sensor, exposure]));
  const body = byId('exposures').tBodies[0];
  body.replaceChildren();
  const more = () => {
    for (const [sensor, exposure] of wanted.slice(body.rows.length, body.rows.length + CHUNK)) exposureRow(sensor, exposure);
    byId('shown').textContent = `${count(body.rows.length)} of ${count(wanted.length)} shown`;
    byId('more').hidden = body.rows.length === wanted.length;
  };
  byId('more').onclick = more;
  more();
}

function addChoices(id, all, others) {
  choices[id] = [[all, () => true], ...others];
  for (const [text] of choices[id]) byId(id).append(new Option(text));
  byId(id).onchange = fillTable;
}

// The classes from one on, with the number of exposures of each that has any.
function countedClasses(first, end, key) {
  const counts = classes.map((_, i) => data.sensors.reduce((sum, its) => sum + its.counts[i], 0));
  const all = counts.slice(first, end).reduce((sum, its) => sum + its, 0);
  const choices = classes.map(([text], i) => [`${text}: ${count(counts[i])}`, its => its[key] === i]);
  return [count(all), choices.filter((_, i) => i >= first && i < end && counts[i])];
}

function showExposures() {
  addRow(byId('exposures').tHead, ['', ...shownColumns].map(([name]) => make('th', name, TEXTS.includes(name) ? 'text' : '')));
  addChoices('sensor', 'all', data.sensors.map(sensor => [sensor.id, (_, its) => its === sensor]));
  const [all, outcomes] = countedClasses(0, data.groups.length, 'group');
  addChoices('outcome', `all: ${all}`, outcomes);
  const [differing, differences] = countedClasses(data.groups.length, classes.length, 'differs');
  const exceeding = least => data.sensors.flatMap(its => its.exposures).filter(({ offBy }) => offBy > least).length;
  const telling = MAGNITUDES.filter((least, i) => exceeding(least) && exceeding(least) < exceeding(MAGNITUDES[i - 1] ?? 0));
  addChoices('device', 'all', [[`differs: ${differing}`, ({ differs }) => differs], ...differences,
                               ...telling.map(least => [`off by more than ${least}`, ({ offBy }) => offBy > least])]);
  byId('device').parentNode.hidden = !compared;
  const parts = data.sensors.flatMap(({ id, strides }) => strides.map((stride, i) => [stride, `one in ${stride} of ` +
    `“${classes[i][0]}” (sensor ${id})`])).filter(([stride]) => stride > 1).map(([, text]) => text);
  if (parts.length) byId('listed').textContent = `Not every exposure is listed and drawn, but ${parts.join(', ')}.`;
  fillTable();
}

document.title = byId('session').textContent = data.session;
if (data.from !== undefined || data.to !== undefined) {
  byId('part').textContent = `Traces and exposures from ${data.from ?? 'the start'} to ${data.to ?? 'the end'} ms from the first ` +
    'sample; summary, findings and figures of the whole session.';
}
showFigures(byId('counts'), data.counts);
showFindings();
byId('accuracy').hidden = data.accuracy === '';
byId('accuracy').querySelector('pre').textContent = data.accuracy;
if (compared) data.sensors.forEach(({ exposures }) => exposures.forEach(compare));
data.sensors.forEach(showSensor);
showExposures();
