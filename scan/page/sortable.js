'use strict';

// What a cell is sorted by: the number in data-v ("" is none), else its text.
function sortKey(cell) {
  if (cell.dataset.v === undefined) return cell.textContent.trim().toLowerCase();
  return cell.dataset.v === '' ? NaN : Number(cell.dataset.v);
}

// Unknown numbers come last, whichever way the others go.
function compareKeys(a, b, direction) {
  if (typeof a === 'string' || typeof b === 'string') {
    return direction * String(a).localeCompare(String(b));
  }
  if (Number.isNaN(a) || Number.isNaN(b)) return Number.isNaN(a) - Number.isNaN(b);
  return direction * (a - b);
}

function sortRows(table, column, direction) {
  const body = table.tBodies[0];
  const rows = [...body.rows].map((row) => ({row, key: sortKey(row.cells[column])}));
  rows.sort((a, b) => compareKeys(a.key, b.key, direction));
  body.append(...rows.map((entry) => entry.row));
}

// Turns the titles of a table into buttons that sort it, first upwards, then downwards.
function makeSortable(table) {
  const titles = [...table.tHead.rows[0].cells];
  titles.forEach((title, column) => {
    if (title.tagName !== 'TH') return;
    const button = document.createElement('button');
    button.type = 'button';
    button.append(...title.childNodes);
    title.append(button);
    button.addEventListener('click', () => {
      const isUp = title.getAttribute('aria-sort') === 'ascending';
      titles.forEach((other) => other.removeAttribute('aria-sort'));
      title.setAttribute('aria-sort', isUp ? 'descending' : 'ascending');
      sortRows(table, column, isUp ? -1 : 1);
    });
  });
}

// Hides the rows that `isWanted` turns down and says how many are left.
function filterRows(table, isWanted, count) {
  const rows = [...table.tBodies[0].rows];
  for (const row of rows) row.hidden = !isWanted(row);
  count.textContent = `${rows.filter((row) => !row.hidden).length} of ${rows.length}`;
}
