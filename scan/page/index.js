'use strict';

const table = document.querySelector('table.index');
const [verdict, text, count] = ['verdict', 'text', 'count'].map((id) => document.getElementById(id));

function filter() {
  filterRows(table, (row) =>
    (verdict.value === '' || row.cells[0].textContent === verdict.value) &&
    row.cells[1].textContent.toLowerCase().includes(text.value.trim().toLowerCase()), count);
}

makeSortable(table);
for (const control of [verdict, text]) control.addEventListener('input', filter);
document.querySelector('.filter').hidden = false;
filter();
