'use strict';

const KEYS = [
  ['\u2190 \u2192', 'cursor by one frame', null],
  ['Shift + \u2190 \u2192', 'cursor by one second', null],
  ['n', 'next event', () => pickNeighbour(1)],
  ['p', 'previous event', () => pickNeighbour(-1)],
  ['+', 'zoom in', () => zoomBy(0.5)],
  ['-', 'zoom out', () => zoomBy(2)],
  ['0', 'show all', showAll],
  ['Escape', 'show all', showAll],
  ['?', 'these keys', showKeys],
];

function showKeys() {
  let dialog = document.querySelector('dialog');
  if (dialog === null) {
    dialog = document.createElement('dialog');
    const list = document.createElement('dl');
    for (const [key, does] of KEYS) {
      const [term, text] = [document.createElement('dt'), document.createElement('dd')];
      term.textContent = key;
      text.textContent = does;
      list.append(term, text);
    }
    const title = document.createElement('h2');
    title.textContent = 'Keys';
    const pointer = document.createElement('p');
    pointer.textContent = 'Drag over the tracks to zoom, double-click to show all.';
    const close = document.createElement('button');
    close.textContent = 'Close';
    close.addEventListener('click', () => dialog.close());
    dialog.append(title, list, pointer, close);
    document.body.append(dialog);
  }
  dialog.showModal();
}

function listenToKeys() {
  document.addEventListener('keydown', (event) => {
    const isElsewhere = event.ctrlKey || event.metaKey || event.altKey || event.defaultPrevented ||
      event.target.closest('input, select, textarea, dialog') !== null;
    if (isElsewhere) return;
    const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
    const known = KEYS.find(([key, , act]) => act !== null && key === event.key);
    if (step !== undefined) stepCursor(event.shiftKey ? 0 : step, event.shiftKey ? step : 0);
    else if (event.key === '=') zoomBy(0.5);
    else if (known !== undefined) known[2]();
    else return;
    event.preventDefault();
  });
}

function listenToButtons() {
  const acts = {
    previous: () => pickNeighbour(-1), next: () => pickNeighbour(1), out: () => zoomBy(2),
    in: () => zoomBy(0.5), all: showAll, help: showKeys,
  };
  for (const [id, act] of Object.entries(acts)) element(id).addEventListener('click', act);
}

async function startReport() {
  await startTracks();
  startEvents();
  listenToButtons();
  listenToKeys();
}

// First the page is painted as it came, then the frames are unpacked. Without frames it stays so.
if (plotsElement !== null && model.inputs.some(({rows}) => rows > 0)) {
  requestAnimationFrame(() => setTimeout(startReport));
}
