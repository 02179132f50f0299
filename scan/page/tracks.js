'use strict';

const model = JSON.parse(document.getElementById('model').textContent);
const plotsElement = document.getElementById('plots');
const PLOT_HEIGHT = 64;

// All that changes while the page is used. `rows` are those under the cursor, one per input.
const view = {from: model.start, to: model.end, frames: [], rows: [], plots: [], picked: null};

function element(id) {
  return document.getElementById(id);
}

function styleValue(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

// ---- geometry

// Where time is drawn, in pixels from the left of #plots.
function measureArea() {
  const plot = plotsElement.querySelector('.plot');
  const axis = parseFloat(styleValue('axis'));
  return {left: plot.offsetLeft + axis, width: Math.max(1, plot.clientWidth - axis), axis};
}

function placeOf(time) {
  const {area} = view;
  return area.left + (time - view.from) / (view.to - view.from) * area.width;
}

function timeAt(clientX) {
  const {area} = view;
  const x = clientX - plotsElement.getBoundingClientRect().left - area.left;
  return view.from + Math.min(1, Math.max(0, x / area.width)) * (view.to - view.from);
}

// ---- what a track draws: frames where there is room, else the extremes of every pixel

function visibleRows(times) {
  return [Math.max(0, lowerBound(times, view.from) - 1),
    Math.min(times.length, lowerBound(times, view.to) + 1)];
}

// Times of all visible frames of all inputs, rising, each once.
function frameGrid() {
  const all = [];
  for (const {times} of view.frames) {
    const [first, end] = visibleRows(times);
    for (let row = first; row < end; ++row) all.push(times[row]);
  }
  return [...new Set(all)].sort((a, b) => a - b);
}

// null interrupts a line, undefined does not.
function frameValues(grid, times, values) {
  const points = new Array(grid.length).fill(undefined);
  const [first, end] = visibleRows(times);
  let at = 0;
  for (let row = first; row < end; ++row) {
    while (grid[at] < times[row]) ++at;
    points[at] = Number.isNaN(values[row]) ? null : values[row];
  }
  return points;
}

// Two times in every pixel.
function pixelGrid(width) {
  const grid = new Float64Array(2 * width);
  const step = (view.to - view.from) / grid.length;
  for (let i = 0; i < grid.length; ++i) grid[i] = view.from + (i + 0.5) * step;
  return grid;
}

// The first row of every pixel, and behind the last pixel.
function pixelRows(times, width) {
  const rows = new Int32Array(width + 1);
  for (let x = 0, row = lowerBound(times, view.from); x <= width; ++x) {
    const start = view.from + x / width * (view.to - view.from);
    while (row < times.length && times[row] < start) ++row;
    rows[x] = row;
  }
  return rows;
}

function pixelValues(rows, values) {
  const points = new Array(2 * (rows.length - 1)).fill(undefined);
  for (let x = 0; x + 1 < rows.length; ++x) {
    let low = -1;
    let high = -1;
    for (let row = rows[x]; row < rows[x + 1]; ++row) {
      const value = values[row];
      if (low < 0 || value < values[low]) low = Number.isNaN(value) ? low : row;
      if (high < 0 || value > values[high]) high = Number.isNaN(value) ? high : row;
    }
    if (low >= 0) {
      points[2 * x] = values[Math.min(low, high)];
      points[2 * x + 1] = values[Math.max(low, high)];
    } else if (rows[x] < rows[x + 1]) {
      points[2 * x] = null;
    }
  }
  return points;
}

// One entry per track, as uPlot takes it: times, then one array per input.
function trackData() {
  const width = Math.round(view.area.width);
  const counts = view.frames.map(({times}) => {
    const [first, end] = visibleRows(times);
    return end - first;
  });
  const isDense = Math.max(...counts) > 2 * width;
  const grid = isDense ? pixelGrid(width) : frameGrid();
  const rows = isDense ? view.frames.map(({times}) => pixelRows(times, width)) : [];
  return model.tracks.map((_, track) => [grid, ...view.frames.map(({times, values}, input) =>
    isDense ? pixelValues(rows[input], values[track]) : frameValues(grid, times, values[track]))]);
}

// All values, and thresholds no further beyond them than four times their spread.
function valueRange(data, thresholds) {
  let low = Infinity;
  let high = -Infinity;
  for (const points of data.slice(1)) {
    for (const value of points) {
      if (value === null || value === undefined) continue;
      low = Math.min(low, value);
      high = Math.max(high, value);
    }
  }
  if (low > high) return [0, 1];
  const reach = 4 * (high - low);
  const near = thresholds.map(({value}) => value)
    .filter((value) => value >= low - reach && value <= high + reach);
  low = Math.min(low, ...near);
  high = Math.max(high, ...near);
  if (low < high) return [low, high];
  const margin = low === 0 ? 1 : Math.abs(low) / 2;
  return [low === 0 ? 0 : low - margin, high + margin];
}

// ---- marks of time

const STEPS = [0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 1200, 1800,
  3600, 7200];

function timeMarks() {
  const span = view.to - view.from;
  const wanted = span * 90 / view.area.width;
  const step = STEPS.find((candidate) => candidate >= wanted) ?? Math.ceil(wanted / 3600) * 3600;
  const marks = [];
  const first = Math.ceil(view.from / step);
  for (let i = 0; (first + i) * step <= view.to && i < 100; ++i) marks.push((first + i) * step);
  return {step, marks};
}

function markText(time, step) {
  const whole = Math.floor(time + step * 1e-6);
  const [hours, minutes] = [Math.floor(whole / 3600), Math.floor(whole / 60) % 60];
  const text = (hours > 0 ? `${hours}:${twoDigits(minutes)}` : `${minutes}`) +
    `:${twoDigits(whole % 60)}`;
  return step < 1 ? `${text}.${twoDigits(Math.round((time - whole) * 100))}` : text;
}

function drawTimeMarks() {
  const {step, marks} = timeMarks();
  const ticks = document.createElement('div');
  ticks.className = 'ticks';
  for (const mark of marks) {
    const label = document.createElement('span');
    label.textContent = markText(mark, step);
    const part = (mark - view.from) / (view.to - view.from);
    label.style.left = `${part * 100}%`;
    label.classList.toggle('last', part > 0.97);
    ticks.append(label);
  }
  element('axis').replaceChildren(ticks);
}

// ---- drawing

function drawBehind(plot, track) {
  const {ctx, bbox} = plot;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
  ctx.clip();
  ctx.globalAlpha = 0.18;
  for (const event of model.events) {
    if (event.track !== track || event.end < view.from || event.start > view.to) continue;
    const left = plot.valToPos(event.start, 'x', true);
    const width = plot.valToPos(event.end, 'x', true) - left;
    ctx.fillStyle = view.colours[event.severity];
    ctx.fillRect(left, bbox.top, Math.max(width, devicePixelRatio), bbox.height);
  }
  ctx.globalAlpha = 1;
  ctx.fillStyle = view.colours.rule;
  for (const mark of timeMarks().marks) {
    ctx.fillRect(Math.round(plot.valToPos(mark, 'x', true)), bbox.top, 1, bbox.height);
  }
  ctx.lineWidth = devicePixelRatio;
  ctx.setLineDash([5 * devicePixelRatio, 3 * devicePixelRatio]);
  for (const {value, severity} of model.tracks[track].thresholds) {
    const y = plot.valToPos(value, 'y', true);
    ctx.strokeStyle = view.colours[severity];
    ctx.beginPath();
    ctx.moveTo(bbox.left, y);
    ctx.lineTo(bbox.left + bbox.width, y);
    ctx.stroke();
  }
  ctx.restore();
}

function axisText(value) {
  const size = Math.abs(value);
  if (size !== 0 && (size >= 1e5 || size < 1e-3)) return value.toExponential(0);
  return String(Number(value.toPrecision(4)));
}

function makePlot(track, data) {
  const host = document.querySelector(`[data-track="${model.tracks[track].name}"] .plot`);
  const {area} = view;
  const series = view.frames.map((_, input) => ({
    stroke: () => view.colours[`i${input % 8}`], width: 1, spanGaps: model.tracks[track].isBridged,
    points: {size: 4},
  }));
  return new uPlot({
    width: area.width + area.axis, height: Math.max(PLOT_HEIGHT, host.clientHeight),
    padding: [5, 0, 5, 0],
    legend: {show: false}, cursor: {show: false},
    scales: {
      x: {time: false, range: () => [view.from, view.to]},
      y: {range: (plot) => valueRange(plot.data, model.tracks[track].thresholds)},
    },
    axes: [{show: false}, {
      size: () => view.area.axis, gap: 4, space: 24, font: '11px system-ui, sans-serif',
      stroke: () => view.colours.quiet, ticks: {show: false},
      grid: {stroke: () => view.colours.rule, width: 1},
      values: (_, marks) => marks.map(axisText),
    }],
    series: [{}, ...series],
    hooks: {drawClear: [(plot) => drawBehind(plot, track)]},
  }, data, host);
}

function readColours() {
  view.colours = {};
  for (const name of ['fail', 'warn', 'info', 'rule', 'quiet']) view.colours[name] = styleValue(name);
  view.colours.warn = styleValue('attention');
  for (let i = 0; i < 8; ++i) view.colours[`i${i}`] = styleValue(`i${i}`);
}

function drawTracks() {
  const data = trackData();
  if (view.plots.length === 0) view.plots = data.map((columns, track) => makePlot(track, columns));
  else view.plots.forEach((plot, track) => plot.setData(data[track]));
}

function drawOverlays() {
  const {area} = view;
  const right = area.left + area.width;
  const base = baseInput();
  const x = base < 0 ? -1 : placeOf(view.frames[base].times[view.rows[base]]);
  element('cursor').hidden = x < area.left - 0.5 || x > right + 0.5;
  element('cursor').style.left = `${x}px`;

  const picked = element('picked');
  const event = model.events[view.picked];
  picked.hidden = event === undefined || event.end < view.from || event.start > view.to;
  if (!picked.hidden) {
    const start = Math.max(area.left, placeOf(event.start));
    picked.style.left = `${start}px`;
    picked.style.width = `${Math.max(1, Math.min(right, placeOf(event.end)) - start)}px`;
  }
  drawWindow();
}

// The lanes show all of the time, and in it what the tracks show.
function drawWindow() {
  const lanes = element('lanes');
  const bands = lanes.querySelectorAll('svg');
  if (!element('window')) {
    const made = document.createElement('div');
    made.id = 'window';
    lanes.append(made);
  }
  const first = bands[0].getBoundingClientRect();
  const last = bands[bands.length - 1].getBoundingClientRect();
  const origin = lanes.getBoundingClientRect();
  const scale = first.width / (model.end - model.start);
  const style = element('window').style;
  element('window').hidden = view.from <= model.start && view.to >= model.end;
  style.left = `${first.left - origin.left + (view.from - model.start) * scale}px`;
  style.width = `${Math.max(2, (view.to - view.from) * scale)}px`;
  style.top = `${first.bottom - origin.top}px`;
  style.height = `${Math.max(0, last.bottom - first.bottom)}px`;
}

// ---- what the keys, the pointer and the table do

// The input whose frames the cursor stands on: the first that has any; -1: none.
function baseInput() {
  return view.frames.findIndex(({times}) => times.length > 0);
}

function showView(from, to) {
  const least = 4 / Math.max(...model.inputs.map(({fps}) => fps));
  const whole = model.end - model.start;
  const span = Math.min(whole, Math.max(least, to - from));
  const middle = (from + to) / 2;
  view.from = Math.min(model.end - span, Math.max(model.start, middle - span / 2));
  view.to = view.from + span;
  drawTimeMarks();
  drawTracks();
  drawOverlays();
}

function showAll() {
  showView(model.start, model.end);
}

function zoomBy(factor) {
  const base = baseInput();
  const cursor = view.frames[base].times[view.rows[base]];
  const isSeen = cursor >= view.from && cursor <= view.to;
  const fixed = isSeen ? cursor : (view.from + view.to) / 2;
  showView(fixed - (fixed - view.from) * factor, fixed + (view.to - fixed) * factor);
}

function writeReadout(input) {
  const row = view.rows[input];
  const readout = document.querySelector(`.readout[data-input="${input}"]`);
  const {firstFrame, fps} = model.inputs[input];
  const {time, flags, values} = view.frames[input];
  const write = (name, text) => { readout.querySelector(`.${name}`).textContent = text; };
  write('timecode', row < 0 ? 'no frames' : timecode(firstFrame + row, fps));
  write('frame', row < 0 ? '' : `frame ${firstFrame + row}`);
  write('time', row < 0 ? '' : Number.isNaN(time[row]) ? 'no time' : `${time[row].toFixed(3)} s`);
  write('flags', row < 0 ? '' : ['', 'keyframe', 'damaged', 'keyframe, damaged'][flags[row]]);
  view.outputs[input].forEach((output, track) => {
    const value = row < 0 ? NaN : values[track][row];
    output.textContent = Number.isNaN(value) ? '\u2013' : String(value);
  });
}

// Puts the cursor on a row of an input, and on those nearest in time of the others.
function moveCursor(input, row) {
  const {times} = view.frames[input];
  const kept = Math.min(times.length - 1, Math.max(0, row));
  view.rows = view.frames.map((frames, other) =>
    other === input ? kept : nearestRow(frames.times, times[kept]));
  view.rows.forEach((_, other) => writeReadout(other));
  drawOverlays();
}

function moveCursorToTime(time) {
  const base = baseInput();
  moveCursor(base, nearestRow(view.frames[base].times, time));
}

// As moveCursor, with the view following.
function stepCursor(frames, seconds) {
  const base = baseInput();
  const {times} = view.frames[base];
  const row = view.rows[base];
  let target = row + frames;
  if (seconds !== 0) {
    target = nearestRow(times, times[row] + seconds);
    if (target === row) target += Math.sign(seconds);
  }
  moveCursor(base, target);
  const time = times[view.rows[base]];
  const span = view.to - view.from;
  if (time < view.from) showView(time - span / 10, time + span * 0.9);
  if (time > view.to) showView(time - span * 0.9, time + span / 10);
}

function listenToPointer() {
  const selection = element('selection');
  let start = null;
  const isDrag = (event) => start !== null && Math.abs(event.clientX - start) > 4;
  const isOnPlot = (event) => event.target.closest('.plot') !== null;
  plotsElement.addEventListener('pointerdown', (event) => {
    if (event.button !== 0 || !isOnPlot(event)) return;
    start = event.clientX;
    plotsElement.setPointerCapture(event.pointerId);
    event.preventDefault();
  });
  plotsElement.addEventListener('pointermove', (event) => {
    if (start !== null || isOnPlot(event)) moveCursorToTime(timeAt(event.clientX));
    selection.hidden = !isDrag(event);
    if (selection.hidden) return;
    const ends = [placeOf(timeAt(start)), placeOf(timeAt(event.clientX))].sort((a, b) => a - b);
    selection.style.left = `${ends[0]}px`;
    selection.style.width = `${ends[1] - ends[0]}px`;
  });
  const finish = (event) => {
    const isZoom = event.type === 'pointerup' && isDrag(event);
    const ends = start === null ? [] : [timeAt(start), timeAt(event.clientX)].sort((a, b) => a - b);
    start = null;
    selection.hidden = true;
    if (isZoom) showView(...ends);
    else if (event.type === 'pointerup') moveCursorToTime(timeAt(event.clientX));
  };
  plotsElement.addEventListener('pointerup', finish);
  plotsElement.addEventListener('pointercancel', finish);
  plotsElement.addEventListener('dblclick', showAll);
}

function resizePlots() {
  const {area} = view;
  view.plots.forEach((plot) => plot.setSize({width: area.width + area.axis, height: plot.height}));
  showView(view.from, view.to);
}

async function startTracks() {
  const texts = model.inputs.map((_, input) => element(`frames-${input}`).textContent);
  view.frames = await Promise.all(model.inputs.map((input, i) => unpackFrames(input, texts[i])));
  view.outputs = model.inputs.map((_, input) => model.tracks.map(({name}) =>
    document.querySelector(`[data-track="${name}"] output[data-input="${input}"]`)));
  document.documentElement.classList.add('live');
  element('bar').hidden = false;
  readColours();
  view.area = measureArea();
  moveCursor(baseInput(), 0);
  showAll();
  listenToPointer();
  new ResizeObserver(() => {
    const area = measureArea();
    if (area.width === view.area.width && area.left === view.area.left) return;
    view.area = area;
    resizePlots();
  }).observe(plotsElement);
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => {
    readColours();
    showView(view.from, view.to);
  });
}
