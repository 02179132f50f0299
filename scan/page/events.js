'use strict';

const eventTable = document.querySelector('table.events');

// In the order of the table, without what the filter hides.
function shownEvents() {
  if (eventTable === null) return [];
  return [...eventTable.tBodies[0].rows].filter((row) => !row.hidden)
    .map((row) => Number(row.dataset.event));
}

function markRow(place) {
  for (const row of eventTable.tBodies[0].rows) {
    const isPicked = Number(row.dataset.event) === place;
    row.classList.toggle('picked', isPicked);
    if (!isPicked) continue;
    row.setAttribute('aria-current', 'true');
    const box = eventTable.parentElement;
    const top = row.offsetTop - eventTable.tHead.offsetHeight;
    if (top < box.scrollTop || row.offsetTop + row.offsetHeight > box.scrollTop + box.clientHeight) {
      box.scrollTop = top;
    }
  }
  for (const row of eventTable.querySelectorAll('[aria-current]:not(.picked)')) {
    row.removeAttribute('aria-current');
  }
}

// Shows the event in the tracks, with as much again on both sides, and puts the cursor on its peak.
function pickEvent(place) {
  const event = model.events[place];
  const margin = Math.max(1, event.end - event.start);
  view.picked = place;
  markRow(place);
  showView(event.start - margin, event.end + margin);
  if (view.frames[event.input].times.length > 0) {
    moveCursor(event.input, event.peak - model.inputs[event.input].firstFrame);
  }
  const tracks = element('tracks').getBoundingClientRect();
  if (tracks.top > innerHeight / 2 || tracks.bottom < innerHeight / 2) {
    element('tracks').scrollIntoView();
  }
}

function pickNeighbour(step) {
  const shown = shownEvents();
  if (shown.length === 0) return;
  const at = shown.indexOf(view.picked);
  const first = step > 0 ? 0 : shown.length - 1;
  pickEvent(shown[at < 0 ? first : (at + step + shown.length) % shown.length]);
}

function startFilter() {
  const [type, severity, text] = ['type', 'severity', 'text'].map(element);
  for (const name of [...new Set(model.events.map((event) => event.type))].sort()) {
    type.append(new Option(name, name));
  }
  const filter = () => filterRows(eventTable, (row) => {
    const event = model.events[Number(row.dataset.event)];
    return (type.value === '' || event.type === type.value) &&
      (severity.value === '' || event.severity === severity.value) &&
      row.textContent.toLowerCase().includes(text.value.trim().toLowerCase());
  }, element('count'));
  for (const control of [type, severity, text]) control.addEventListener('input', filter);
  document.querySelector('#events .filter').hidden = false;
  filter();
}

function startEvents() {
  if (eventTable === null) {
    for (const id of ['previous', 'next']) element(id).disabled = true;
    return;
  }
  makeSortable(eventTable);
  startFilter();
  eventTable.tBodies[0].addEventListener('click', (event) => {
    const row = event.target.closest('tr');
    if (row === null || String(getSelection()) !== '') return;
    event.preventDefault();
    pickEvent(Number(row.dataset.event));
  });
  element('lanes').addEventListener('click', (event) => {
    const band = event.target.closest('a');
    const svg = event.target.closest('svg.bands');
    if (band !== null) {
      event.preventDefault();
      pickEvent(Number(band.dataset.event));
    } else if (svg !== null) {
      // Between events: the view moves there.
      const box = svg.getBoundingClientRect();
      const time = model.start + (event.clientX - box.left) / box.width * (model.end - model.start);
      const half = (view.to - view.from) / 2;
      showView(time - half, time + half);
      moveCursorToTime(time);
    }
  });
}
