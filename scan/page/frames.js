'use strict';

const NUMBER_KINDS = {
  uint8: Uint8Array, int32: Int32Array, float32: Float32Array, float64: Float64Array,
};

function bytesOfBase64(text) {
  if (Uint8Array.fromBase64) return Uint8Array.fromBase64(text);
  const characters = atob(text);
  const bytes = new Uint8Array(characters.length);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = characters.charCodeAt(i);
  return bytes;
}

async function inflated(bytes) {
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('deflate'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

// Puts together what was stored as the first byte of all rows, then the second and so on.
function ungrouped(bytes, Kind, rows) {
  const size = Kind.BYTES_PER_ELEMENT;
  const target = new Uint8Array(rows * size);
  for (let part = 0; part < size; ++part) {
    const source = part * rows;
    for (let row = 0, to = part; row < rows; ++row, to += size) target[to] = bytes[source + row];
  }
  return new Kind(target.buffer);
}

// One time per frame that never falls. Frames without one are taken to follow the frame rate.
function axisTimes(input, time) {
  const times = new Float64Array(input.rows);
  let last = -Infinity;
  for (let row = 0; row < input.rows; ++row) {
    const own = Number.isNaN(time[row]) ? (input.firstFrame + row) / input.fps : time[row];
    last = Math.max(last, own);
    times[row] = last;
  }
  return times;
}

// The packed columns of one input: {times, time, flags, values: one array per track}.
async function unpackFrames(input, text) {
  const bytes = await inflated(bytesOfBase64(text));
  let at = 0;
  const columns = input.columns.map((column) => {
    if (column.kind === 'constant') {
      return new Float64Array(input.rows).fill(column.value === null ? NaN : column.value);
    }
    const Kind = NUMBER_KINDS[column.kind];
    const end = at + input.rows * Kind.BYTES_PER_ELEMENT;
    const values = ungrouped(bytes.subarray(at, end), Kind, input.rows);
    at = end;
    return values;
  });
  const [time, , flags, ...values] = columns;
  return {times: axisTimes(input, time), time, flags, values};
}

// First place whose time is not below t.
function lowerBound(times, t) {
  let low = 0;
  let high = times.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (times[middle] < t) low = middle + 1;
    else high = middle;
  }
  return low;
}

// The row whose time is nearest to t; -1 without rows.
function nearestRow(times, t) {
  const after = Math.min(lowerBound(times, t), times.length - 1);
  return after > 0 && t - times[after - 1] < times[after] - t ? after - 1 : after;
}

function twoDigits(number) {
  return String(number).padStart(2, '0');
}

// HH:MM:SS:FF, as the table of events has it.
function timecode(frame, fps) {
  const rate = Math.max(1, Math.round(fps));
  const seconds = Math.floor(frame / rate);
  return [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60, seconds % 60, frame % rate]
    .map(twoDigits).join(':');
}
