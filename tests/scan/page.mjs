// Uses the sample pages in Chromium as a reader would: page.mjs SOURCE PAGES_FOLDER [TEST ...]
import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import path from 'node:path';
import {pathToFileURL} from 'node:url';

const [source, folder, ...wanted] = process.argv.slice(2);
const {chromium} = createRequire(path.join(source, 'scan/page/package.json'))('playwright-core');

const TRACKS = ['blockiness', 'spatial_activity', 'letterbox', 'pillarbox', 'block_loss', 'blur',
  'temporal_activity', 'blackout', 'freezing', 'exposure', 'contrast', 'interlace', 'noise', 'slice',
  'flickering'];

// Rows of frames.csv as records of texts.
function readCsv(name) {
  const lines = readFileSync(path.join(folder, name), 'utf8').split('\r\n');
  const names = lines[0].split(',');
  return lines.slice(1, -1).map((line) => {
    const fields = line.split(',');
    return Object.fromEntries(names.map((title, i) => [title, fields[i]]));
  });
}

// A machine may take its time, but not for ever.
const PATIENCE = 180000;  // milliseconds

const browser = await chromium.launch(
  {executablePath: '/usr/bin/chromium', args: ['--no-sandbox'], timeout: PATIENCE});

// Opens a page of the folder. Whatever it complains of, or asks for beyond itself, fails the test.
async function open(name, options = {}) {
  const context = await browser.newContext({viewport: {width: 1400, height: 900}, ...options});
  context.setDefaultTimeout(PATIENCE);
  const page = await context.newPage();
  const complaints = [];
  const url = pathToFileURL(path.join(folder, name)).href;
  page.on('console', (message) => complaints.push(`${message.type()}: ${message.text()}`));
  page.on('pageerror', (error) => complaints.push(error.stack));
  page.on('dialog', (dialog) => { complaints.push(dialog.message()); dialog.dismiss(); });
  page.on('request', (request) => {
    const isOwn = request.url().split('#')[0] === url || request.url().startsWith('data:');
    if (!isOwn) complaints.push(`request of ${request.url()}`);
  });
  await page.goto(url);
  const close = async () => {
    await context.close();
    assert.deepEqual(complaints, [], name);
  };
  return {page, close};
}

async function openLive(name, options) {
  const opened = await open(name, options);
  await opened.page.waitForSelector('html.live .uplot canvas');
  return opened;
}

// What the cursor says of one input.
function readCursor(page, input = 0) {
  return page.evaluate(([tracks, place]) => {
    const readout = document.querySelector(`.readout[data-input="${place}"]`);
    const text = (name) => readout.querySelector(`.${name}`).textContent;
    return {
      frame: Number(text('frame').replace('frame ', '')), timecode: text('timecode'),
      time: text('time'), flags: text('flags'),
      values: tracks.map((name) => document.querySelector(
        `[data-track="${name}"] output[data-input="${place}"]`).textContent),
    };
  }, [TRACKS, input]);
}

// Looks at the page, once in every frame that it draws, until a state has come.
async function until(page, what, isSo) {
  for (const start = Date.now(); !await isSo();) {
    assert.ok(Date.now() - start < PATIENCE, `waited in vain for ${what}`);
    await page.evaluate(() => new Promise(requestAnimationFrame));
  }
}

function assertValues(cursor, rows) {
  const row = rows[cursor.frame - Number(rows[0].frame)];
  assert.equal(Number(row.frame), cursor.frame);
  TRACKS.forEach((name, i) => {
    const place = `${name} of frame ${cursor.frame}`;
    if (row[name] === '') assert.equal(cursor.values[i], '\u2013', place);
    else assert.equal(Number(cursor.values[i]), Number(row[name]), place);
  });
  const time = row.time_s === '' ? 'no time' : `${Number(row.time_s).toFixed(3)} s`;
  assert.equal(cursor.time, time);
  assert.equal(cursor.flags.includes('keyframe'), row.keyframe === '1');
  assert.equal(cursor.flags.includes('damaged'), row.corrupt === '1');
}

const readView = (page) => page.evaluate(() => [view.from, view.to]);

// The screen's place of a part (0 to 1) of the visible time, on the track of blur.
async function placeOn(page, part) {
  await page.locator('[data-track="blur"] .u-over').scrollIntoViewIfNeeded();
  const box = await page.locator('[data-track="blur"] .u-over').boundingBox();
  return [box.x + part * box.width, box.y + box.height / 2];
}

// HH:MM:SS:FF of a frame of the first day, so many a second.
function timecodeOf(frame, rate) {
  const time = new Date(Math.floor(frame / rate) * 1000).toISOString().slice(11, 19);
  return `${time}:${String(frame % rate).padStart(2, '0')}`;
}

// What is drawn on a track where a time is, in three columns of pixels: whether a line of this
// colour is among it, and whether it leaves no pixel empty.
function drawnAt(page, track, time, colour) {
  return page.evaluate(([name, seconds, lineColour]) => {
    const plot = view.plots[model.tracks.findIndex((each) => each.name === name)];
    const {top, height} = plot.bbox;
    const x = Math.round(plot.valToPos(seconds, 'x', true));
    const copy = new OffscreenCanvas(3, height).getContext('2d', {willReadFrequently: true});
    copy.drawImage(plot.ctx.canvas, x - 1, top, 3, height, 0, 0, 3, height);
    const pixels = copy.getImageData(0, 0, 3, height).data;
    copy.fillStyle = view.colours[lineColour];
    copy.fillRect(0, 0, 1, 1);
    const line = copy.getImageData(0, 0, 1, 1).data;
    const drawn = {isLine: false, isFilled: true};
    for (let i = 0; i < pixels.length; i += 4) {
      const distance = [0, 1, 2].reduce((sum, k) => sum + Math.abs(pixels[i + k] - line[k]), 0);
      drawn.isLine ||= pixels[i + 3] > 100 && distance < 60;
      drawn.isFilled &&= pixels[i + 3] > 0;
    }
    return drawn;
  }, [track, time, colour]);
}

function near(actual, expected, tolerance, what) {
  assert.ok(Math.abs(actual - expected) <= tolerance, `${what}: ${actual}, not ${expected}`);
}

const tests = {
  async cursorShowsTheFramesOfTheCsv() {
    const rows = readCsv('report.csv');
    const {page, close} = await openLive('report.html');
    assertValues(await readCursor(page), rows);
    const seen = new Set();
    for (const part of [0.002, 0.0535, 0.1, 0.25, 0.31, 0.5, 0.625, 0.7, 0.83, 0.99, 0.999]) {
      await page.mouse.move(...await placeOn(page, part));
      const cursor = await readCursor(page);
      near(cursor.frame, part * 750, 1.5, 'frame under the pointer');
      assertValues(cursor, rows);
      seen.add(cursor.frame);
    }
    assert.equal(seen.size, 11);
    assert.ok(seen.has(40));  // which has no time of its own
    await close();
  },

  async cursorShowsTheNearestFrame() {
    const {page, close} = await openLive('report.html');
    await page.evaluate(() => showView(0, 0.4));
    // Frames appear every 0.04 s.
    for (const [time, frame] of [[0.012, 0], [0.03, 1], [0.17, 4], [0.19, 5]]) {
      await page.mouse.move(...await placeOn(page, time / 0.4));
      assert.equal((await readCursor(page)).frame, frame, `${time} s`);
    }
    await close();
  },

  async everyFrameIsReachedByArrows() {
    const rows = readCsv('report.csv');
    const {page, close} = await openLive('report.html');
    for (let frame = 1; frame <= 120; ++frame) {
      await page.keyboard.press('ArrowRight');
      const cursor = await readCursor(page);
      assert.equal(cursor.frame, frame);
      assertValues(cursor, rows);
    }
    assert.equal((await readCursor(page)).timecode, '00:00:04:20');
    await page.keyboard.press('ArrowLeft');
    assert.equal((await readCursor(page)).frame, 119);
    await page.keyboard.press('Shift+ArrowRight');
    assert.equal((await readCursor(page)).frame, 144);
    await page.keyboard.press('Shift+ArrowLeft');
    assert.equal((await readCursor(page)).frame, 119);
    for (let i = 0; i < 6; ++i) await page.keyboard.press('Shift+ArrowLeft');
    assert.equal((await readCursor(page)).frame, 0);
    // Zoomed in, the view follows the cursor.
    for (let i = 0; i < 5; ++i) await page.keyboard.press('+');
    await page.keyboard.press('Shift+ArrowRight');
    await page.keyboard.press('Shift+ArrowRight');
    const [from, to] = await readView(page);
    assert.ok(from <= 2 && 2 <= to, `${from} to ${to}`);
    await close();
  },

  async dragZoomsAllTracksAndDoubleClickResets() {
    const {page, close} = await openLive('report.html');
    const scales = () => page.evaluate(() =>
      view.plots.map(({scales: {x}}) => [x.min, x.max].join()));
    assert.deepEqual([...new Set(await scales())], ['0,30']);
    await page.mouse.move(...await placeOn(page, 0.2));
    await page.mouse.down();
    await page.mouse.move(...await placeOn(page, 0.3));
    await page.mouse.move(...await placeOn(page, 0.4));
    assert.ok(await page.locator('#selection').isVisible());
    await page.mouse.up();
    assert.ok(await page.locator('#selection').isHidden());
    const [from, to] = await readView(page);
    near(from, 6, 0.06, 'start of the view');
    near(to, 12, 0.06, 'end of the view');
    assert.deepEqual([...new Set(await scales())], [`${from},${to}`]);
    assert.ok(await page.locator('#window').isVisible());
    await page.mouse.dblclick(...await placeOn(page, 0.5));
    assert.deepEqual(await readView(page), [0, 30]);
    assert.ok(await page.locator('#window').isHidden());
    await close();
  },

  async keysZoomAroundTheCursor() {
    const {page, close} = await openLive('report.html');
    await page.mouse.move(...await placeOn(page, 0.5));
    await page.keyboard.press('+');
    const [from, to] = await readView(page);
    near(to - from, 15, 1e-9, 'span');
    near((from + to) / 2, 15, 0.1, 'middle');
    // These are the browser's.
    const cursor = await readCursor(page);
    for (const key of ['Control+0', 'Control+-', 'Alt+0', 'Meta+0', 'Control+ArrowRight']) {
      await page.keyboard.press(key);
      assert.deepEqual(await readView(page), [from, to], key);
      assert.deepEqual(await readCursor(page), cursor, key);
    }
    await page.keyboard.press('-');
    assert.deepEqual(await readView(page), [0, 30]);
    for (const key of ['0', 'Escape']) {
      await page.keyboard.press('+');
      await page.keyboard.press(key);
      assert.deepEqual(await readView(page), [0, 30], key);
    }
    await page.keyboard.press('?');
    assert.ok(await page.locator('dialog').isVisible());
    const terms = await page.locator('dialog dt').allTextContents();
    const texts = await page.locator('dialog dd').allTextContents();
    assert.equal(texts.length, terms.length);
    assert.equal(texts[terms.indexOf('n')], 'next event');
    assert.ok(texts.every((text) => text !== ''));
    await page.keyboard.press('Escape');
    assert.ok(await page.locator('dialog').isHidden());
    await page.locator('#in').click();
    await page.locator('#all').click();
    assert.deepEqual(await readView(page), [0, 30]);
    await close();
  },

  async whatIsMarkedStandsWhereItsTimeIs() {
    const {page, close} = await openLive('report.html');
    const boxOf = (place) => page.locator(place).first().boundingBox();
    await page.evaluate(() => { showView(6, 12); moveCursor(0, 225); });
    const [left] = await placeOn(page, 0);
    const width = (await placeOn(page, 1))[0] - left;
    near((await boxOf('#cursor')).x, left + width / 2, 1.5, 'cursor at 9 s');
    const lane = await boxOf('#lanes svg.bands');
    const whole = await boxOf('#window');
    near(whole.x, lane.x + 0.2 * lane.width, 1.5, 'start of the window, 6 s of 30');
    near(whole.width, 0.2 * lane.width, 1.5, 'width of the window');
    // Nothing is left of a cursor outside of the view, and the view is zoomed around its middle.
    await page.evaluate(() => moveCursor(0, 0));
    assert.ok(await page.locator('#cursor').isHidden());
    await page.locator('#in').click();
    assert.deepEqual(await readView(page), [7.5, 10.5]);
    await page.keyboard.press('=');
    assert.deepEqual(await readView(page), [8.25, 9.75]);
    await page.locator('#out').click();
    assert.deepEqual(await readView(page), [7.5, 10.5]);
    // The view follows a step of the cursor: frame 1 is before it.
    await page.keyboard.press('ArrowRight');
    assert.deepEqual(await readView(page), [0, 3]);
    assert.ok(await page.locator('#cursor').isVisible());

    // Blur is from 15 s to 17.4 s, shown with as much on both sides; a freeze is before it.
    await page.locator('#lanes a[data-event="3"] rect').click();
    const picked = await boxOf('#picked');
    near(picked.x, left + width / 3, 1.5, 'start of the event');
    near(picked.width, width / 3, 1.5, 'width of the event');
    await page.locator('#previous').click();
    assert.equal(await page.locator('tr.picked td').first().textContent(), 'freeze');
    await page.locator('#next').click();
    assert.equal(await page.locator('tr.picked td').first().textContent(), 'blur');
    // Its rest is marked where it reaches beyond the view, and nothing where it is not in it.
    await page.evaluate(() => showView(16, 18));
    near((await boxOf('#picked')).x, left, 1.5, 'start of the rest');
    near((await boxOf('#picked')).width, 0.7 * width, 1.5, 'width of the rest');
    await page.evaluate(() => showView(20, 22));
    assert.ok(await page.locator('#picked').isHidden());
    await close();
  },

  async whatIsDrawnAreTheExtremesOfEveryPixel() {
    const rows = readCsv('big.csv');
    const {page, close} = await openLive('big.html');
    const drawn = await page.evaluate(() => view.plots.map(({data}) => {
      const known = data[1].filter((value) => value !== null && value !== undefined);
      return {points: data[0].length, min: Math.min(...known), max: Math.max(...known)};
    }));
    TRACKS.forEach((name, i) => {
      assert.ok(drawn[i].points < 3000, `${drawn[i].points} points`);
      const values = rows.map((row) => row[name]).filter((text) => text !== '').map(Number);
      assert.equal(drawn[i].min, values.reduce((a, b) => Math.min(a, b)), name);
      assert.equal(drawn[i].max, values.reduce((a, b) => Math.max(a, b)), name);
    });
    // Many frames in every pixel: blur is undefined from 4000 s to 4800 s, flickering by nature.
    for (const [track, time, isDrawn] of [['blur', 3900, true], ['blur', 4100, false],
      ['blur', 4700, false], ['blur', 4900, true], ['flickering', 4400, true]]) {
      const {isLine} = await drawnAt(page, track, time, 'i0');
      assert.equal(isLine, isDrawn, `${track} at ${time}`);
    }
    // Close by, every frame is a point.
    await page.evaluate(() => showView(5000, 5002));
    const close2 = await page.evaluate(() => [view.plots[5].data[0], view.plots[5].data[1]]);
    near(close2[0].length, 51, 2, 'points');
    close2[0].forEach((time, i) =>
      assert.equal(close2[1][i], Number(rows[Math.round(time * 25)].blur)));
    await close();
  },

  async eventsAreVisitedInTheOrderOfTheTable() {
    const {page, close} = await openLive('report.html');
    const picked = () => page.locator('tr.picked td').first().textContent();
    const order = [];
    for (let i = 0; i < 9; ++i) {
      await page.keyboard.press('n');
      order.push(await picked());
    }
    assert.deepEqual(order.map((text) => text.split(' from')[0].split(' to ')[0]), ['black',
      'letterbox', 'freeze', 'blur', 'block loss', 'scene cut', 'over exposure', 'freeze', 'black']);
    await page.keyboard.press('p');
    assert.match(await picked(), /^freeze to the end/);
    await page.keyboard.press('p');
    assert.equal(await picked(), 'over exposure');
    // Frames 600 to 644 and as much again on both sides; the cursor is on the peak.
    const [from, to] = await readView(page);
    near(from, 24 - 1.8, 1e-9, 'start');
    near(to, 25.8 + 1.8, 1e-9, 'end');
    const peak = Number(await page.locator('tr.picked td').nth(5).textContent());
    assert.equal((await readCursor(page)).frame, peak);
    assert.ok(await page.locator('#picked').isVisible());
    await close();
  },

  async shortEventsAreShownWithASecondOnBothSides() {
    const {page, close} = await openLive('report.html');
    await page.locator('tr[data-event]', {hasText: 'scene cut'}).locator('a').first().click();
    const {start, end} = await page.evaluate(() => model.events[view.picked]);
    near(end - start, 0.04, 1e-9, 'length');
    assert.deepEqual(await readView(page), [start - 1, end + 1]);
    await close();
  },

  async tracksAreBroughtIntoSight() {
    const {page, close} = await openLive('report.html', {viewport: {width: 1400, height: 300}});
    for (const isAtEnd of [false, true]) {
      await page.evaluate((isLow) => scrollTo(0, isLow ? document.body.scrollHeight : 0), isAtEnd);
      const tops = () => page.evaluate(() => element('tracks').getBoundingClientRect().toJSON());
      const before = await tops();
      assert.ok(before.top > 150 || before.bottom < 150, 'the tracks are out of sight');
      await page.keyboard.press('n');
      const after = await tops();
      assert.ok(after.top <= 150 && after.bottom >= 150, `${after.top} to ${after.bottom}`);
    }
    await close();
  },

  async eventsAreReachedFromLanesAndTable() {
    const {page, close} = await openLive('report.html');
    await page.locator('#lanes a[data-event="3"] rect').click();
    assert.equal(await page.locator('tr.picked td').first().textContent(), 'blur');
    near((await readView(page))[0], 15 - 2.4, 1e-9, 'start');
    await page.locator('tr[data-event="2"] a').focus();
    await page.keyboard.press('Enter');
    assert.equal(await page.locator('tr.picked td').first().textContent(), 'freeze');
    const tracks = await page.locator('#tracks').boundingBox();
    assert.ok(tracks.y < 450 && tracks.y + tracks.height > 450);
    // A click between bands moves the view.
    await page.evaluate(() => scrollTo(0, 0));
    const lane = await page.locator('#lanes svg.bands').first().boundingBox();
    await page.mouse.click(lane.x + lane.width * 0.8, lane.y + lane.height / 2);
    const [from, to] = await readView(page);
    near((from + to) / 2, 24, 0.1, 'middle');
    await close();
  },

  async tableIsFilteredAndSorted() {
    const {page, close} = await openLive('report.html');
    const column = (n) => page.evaluate((place) =>
      [...document.querySelectorAll('.events tbody tr:not([hidden])')]
        .map((row) => row.cells[place].textContent), n);
    assert.equal(await page.locator('#count').textContent(), '8 of 8');
    await page.locator('#type').selectOption('freeze');
    assert.equal((await column(0)).length, 2);
    await page.locator('#severity').selectOption('fail');
    assert.deepEqual(await column(0), ['freeze']);
    assert.equal(await page.locator('#count').textContent(), '1 of 8');
    await page.locator('#type').selectOption('');
    await page.locator('#severity').selectOption('');
    await page.locator('#text').fill('BLOCK');
    assert.deepEqual(await column(0), ['block loss']);
    // Letters that are keys elsewhere are text here.
    await page.locator('#text').fill('');
    await page.locator('#text').pressSequentially('n0');
    assert.equal(await page.locator('tr.picked').count(), 0);
    await page.locator('#text').fill('');

    const title = page.locator('.events th', {hasText: 'Duration'});
    const durations = [0.04, 0.28, 1.52, 1.52, 1.8, 2.12, 2.4, 24];
    await title.locator('button').click();
    assert.deepEqual((await column(3)).map(parseFloat), durations);
    assert.equal(await title.getAttribute('aria-sort'), 'ascending');
    await title.locator('button').click();
    assert.deepEqual((await column(3)).map(parseFloat), durations.reverse());
    await page.locator('.events th button', {hasText: 'Severity'}).click();
    assert.deepEqual(await column(1),
      ['info', 'info', 'warn', 'warn', 'warn', 'fail', 'fail', 'fail']);
    // n follows what the table shows.
    await page.locator('h2', {hasText: 'Tracks'}).click();
    await page.keyboard.press('n');
    assert.equal(await page.locator('tr.picked td').nth(1).textContent(), 'info');
    // What the filter hides is not visited. Of those that fail a freeze is the longest.
    await page.locator('#severity').selectOption('fail');
    await page.locator('h2', {hasText: 'Tracks'}).click();
    for (const [key, type] of [['n', 'freeze'], ['n', 'black from the start'], ['n', 'block loss'],
      ['n', 'freeze'], ['p', 'block loss']]) {
      await page.keyboard.press(key);
      assert.equal(await page.locator('tr.picked td').first().textContent(), type);
    }
    await close();
  },

  async picturesOfEventsAreShown() {
    const {page, close} = await openLive('report.html');
    const widths = await page.evaluate(() => [...document.querySelectorAll('.pictures img')]
      .map((image) => image.naturalWidth));
    assert.ok(widths.length >= 8, `${widths.length} pictures`);
    assert.deepEqual([...new Set(widths)], [160]);
    await close();
  },

  async severalInputsShareOnePage() {
    const [first, second] = [readCsv('report.csv'), readCsv('compare.csv')];
    const {page, close} = await openLive('compare.html');
    assert.deepEqual(await page.locator('.verdict .mark').allTextContents(), ['Fail', 'Attention']);
    for (const part of [0.11, 0.43, 0.9]) {
      await page.mouse.move(...await placeOn(page, part));
      const cursors = [await readCursor(page, 0), await readCursor(page, 1)];
      assertValues(cursors[0], first);
      assertValues(cursors[1], second);
      near(cursors[0].frame / 25, part * 30.03, 0.1, 'time');
      near(cursors[1].frame / (30000 / 1001), cursors[0].frame / 25, 0.02, 'time');
    }
    const strokes = await page.evaluate(() => view.plots.map(({series}) => series.length));
    assert.deepEqual([...new Set(strokes)], [3]);
    assert.equal(await page.locator('.events tbody tr').count(), 15);
    assert.match(await page.locator('.events tbody td').first().textContent(), /^episode one/);
    await close();
  },

  // From 3675 s on for 16 s at 25 frames a second, from 3670 s on for 24 s at 30.
  async partsOfVideosKeepTheirNumbersAndTimes() {
    const videos = [{rows: readCsv('tape7.csv'), rate: 25}, {rows: readCsv('tape8.csv'), rate: 30}];
    const {page, close} = await openLive('ranges.html');
    assert.deepEqual(await readView(page), [3670, 3694]);
    for (const part of [0.002, 0.125, 0.3, 0.6, 0.999]) {
      await page.mouse.move(...await placeOn(page, part));
      const cursors = [await readCursor(page, 0), await readCursor(page, 1)];
      cursors.forEach((cursor, i) => {
        assertValues(cursor, videos[i].rows);
        assert.equal(cursor.timecode, timecodeOf(cursor.frame, videos[i].rate));
      });
      // It stands on frames of the first one, which begins later and ends earlier.
      const frame = Math.min(399, Math.max(0, (3670 + 24 * part - 3675) * 25));
      near(cursors[0].frame, 91875 + frame, 1, 'frame under the pointer');
      near(cursors[1].frame / 30, cursors[0].frame / 25, 0.02, 'time');
    }
    // A frame without a time of its own stands where its number says, 3676.6 s.
    await page.mouse.move(...await placeOn(page, 6.6 / 24));
    assert.equal((await readCursor(page)).frame, 91915);
    assert.equal((await readCursor(page)).time, 'no time');
    // The next frames are at 49.2, 50.4, 51.6 and 52.8 of the second one's frames behind 3675 s.
    for (const frame of [49, 50, 52, 53]) {
      await page.keyboard.press('ArrowRight');
      assert.equal((await readCursor(page, 1)).frame, 110250 + frame);
    }
    const marks = await page.locator('#axis span').allTextContents();
    assert.equal(marks[0], '1:01:10');
    for (const mark of marks) assert.match(mark, /^1:01:[1-3][0-9]$/);

    const starts = [];
    for (let i = 0; i < 16; ++i) {
      await page.keyboard.press('n');
      const row = await page.evaluate(() =>
        [...document.querySelector('tr.picked').cells].map((cell) => cell.textContent));
      const input = ['tape 7.mov', 'TAPE 8.MXF'].indexOf(row[0]);
      const first = parseInt(row[5]);
      assert.equal(row[3], timecodeOf(first, videos[input].rate));
      assert.equal((await readCursor(page, input)).frame, Number(row[6]), 'the peak');
      starts.push(first / videos[input].rate);
    }
    assert.deepEqual(starts, [...starts].sort((a, b) => a - b));
    assert.equal(starts[0], 3670);
    // The last event is a freeze of the last 36 frames of 720, 1.2 s: with as much on both sides it
    // would reach beyond the end.
    const [from, to] = await readView(page);
    near(from, 3690.4, 1e-9, 'start');
    near(to, 3694, 1e-9, 'end');
    const viewAfter = (start, end) => page.evaluate(([a, b]) => {
      showView(a, b);
      return [view.from, view.to];
    }, [start, end]);
    assert.deepEqual(await viewAfter(3660, 3672), [3670, 3682]);
    assert.deepEqual(await viewAfter(3690, 3700), [3684, 3694]);
    assert.deepEqual(await viewAfter(3600, 3700), [3670, 3694]);

    for (const text of ['tape 8', 'TAPE 8', 'mxf']) {
      await page.locator('#text').fill(text);
      assert.equal(await page.locator('#count').textContent(), '8 of 16', text);
    }
    await close();
  },

  // As in the pictures without script, which tests/scan/trackSvgTest.cpp and timelineTest.cpp hold.
  async scalesAndTextsAreThoseOfTheStillPictures() {
    const {page, close} = await openLive('clean.html');
    const [ranges, texts] = await page.evaluate(() => [
      [[[2, null, 5, undefined], 17], [[2, 5], 17.1], [[2, 5], -10], [[2, 5], -10.1], [[null], 3],
        [[0], 9], [[4], 9], [[-4], 9]]
        .map(([values, value]) => valueRange([[], values], [{value}])),
      [markText(65, 5), markText(3605, 5), markText(3661.5, 0.5), markText(0.29, 0.01),
        axisText(0), axisText(0.123456), axisText(-1234.5678), axisText(123456), axisText(0.0005)],
    ]);
    // Thresholds count up to four times the spread away; a lone value stands in the middle.
    assert.deepEqual(ranges,
      [[2, 17], [2, 5], [-10, 5], [2, 5], [0, 1], [0, 1], [2, 6], [-6, -2]]);
    assert.deepEqual(texts, ['1:05', '1:00:05', '1:01:01.50', '0:00.29',
      '0', '0.1235', '-1235', '1e+5', '5e-4']);
    await close();
  },

  async framesAreUnpackedByOldBrowsersToo() {
    const {page, close} = await openLive('ranges.html');
    const [bytes, isSame] = await page.evaluate(async () => {
      Uint8Array.fromBase64 = undefined;
      const again = await unpackFrames(model.inputs[1], element('frames-1').textContent);
      return [[...bytesOfBase64('AAH+/4B/')],
        again.values.every((column, track) =>
          column.every((value, row) => Object.is(value, view.frames[1].values[track][row])))];
    });
    // 000000 000000 000111 111110 111111 111000 000001 111111, by RFC 4648
    assert.deepEqual(bytes, [0, 1, 254, 255, 128, 127]);
    assert.ok(isSame);
    await close();
  },

  async eventsAreShadedOnTheirOwnTracks() {
    const {page, close} = await openLive('ranges.html');
    const tracks = {black: 'blackout', letterbox: 'letterbox', freeze: 'freezing', blur: 'blur',
      'block loss': 'block_loss', 'scene cut': 'temporal_activity', 'over exposure': 'exposure'};
    const events = await page.evaluate(() => model.events);
    assert.equal(events.length, 16);
    for (const {start, end, type} of events) {
      if (type === 'scene cut') continue;  // is less than three pixels wide
      const middle = (start + end) / 2;
      for (const name of TRACKS) {
        const isExpected = events.some((event) =>
          tracks[event.type] === name && event.start < middle && event.end > middle);
        const {isFilled} = await drawnAt(page, name, middle, 'i0');
        assert.equal(isFilled, isExpected, `${name} at ${middle}`);
      }
    }
    await close();
  },

  async linesAreInterruptedWhereValuesAreUndefined() {
    // Blur is undefined from 3685 s to 3687 s; flickering, by nature, in seven of eight frames.
    const {page, close} = await openLive('ranges.html');
    for (const [from, to] of [[3670, 3694], [3684, 3688]]) {
      await page.evaluate(([a, b]) => showView(a, b), [from, to]);
      for (const [time, isDrawn] of [[3684.5, true], [3685.5, false], [3686.5, false],
        [3687.5, true]]) {
        const {isLine} = await drawnAt(page, 'blur', time, 'i0');
        assert.equal(isLine, isDrawn, `blur at ${time}, view from ${from}`);
      }
      for (const time of [3685.1, 3685.8, 3686.3]) {
        assert.ok((await drawnAt(page, 'flickering', time, 'i0')).isLine, `flickering at ${time}`);
      }
    }
    await close();
  },

  async withoutScriptAllIsThereToRead() {
    const {page, close} = await open('report.html', {javaScriptEnabled: false});
    assert.equal(await page.locator('.mark').textContent(), 'Fail');
    assert.ok(await page.locator('dl.facts').isVisible());
    assert.equal(await page.locator('.events tbody tr:visible').count(), 8);
    assert.equal(await page.locator('.track .static svg:visible').count(), 15);
    assert.equal(await page.locator('.track path.line[d^="M"]').count(), 15);
    for (const id of ['#bar', '.filter']) assert.ok(await page.locator(id).isHidden(), id);
    await close();
  },

  async onPaperTracksArePictures() {
    const {page, close} = await openLive('report.html');
    assert.equal(await page.locator('.static svg:visible').count(), 0);
    await page.emulateMedia({media: 'print'});
    assert.equal(await page.locator('.static svg:visible').count(), 15);
    for (const id of ['canvas', '#bar', '.filter', '#cursor']) {
      assert.equal(await page.locator(`${id}:visible`).count(), 0, id);
    }
    await close();
  },

  async darkAndLightDiffer() {
    const {page, close} = await openLive('report.html', {colorScheme: 'light'});
    const colours = () => page.evaluate(() => [getComputedStyle(document.body).backgroundColor,
      view.colours.i0, view.plots[0].series[1].stroke()]);
    const light = await colours();
    await page.emulateMedia({colorScheme: 'dark'});
    await until(page, 'other colours', async () => {
      const dark = await colours();
      return light.every((colour, i) => colour !== dark[i]);
    });
    await close();
  },

  async tracksFollowTheWidthOfTheWindow() {
    const {page, close} = await openLive('report.html');
    await page.setViewportSize({width: 400, height: 800});
    await until(page, 'tracks of the new width', () => page.evaluate(() =>
      document.documentElement.scrollWidth <= 400 && view.area.width === measureArea().width));
    assert.equal(await page.evaluate(() => styleValue('axis')), '44px');
    await page.mouse.move(...await placeOn(page, 0.5));
    assertValues(await readCursor(page), readCsv('report.csv'));
    near((await readCursor(page)).frame, 375, 3, 'frame in the middle');
    await close();
  },

  async namesAreTextAndNothingElse() {
    for (const scripted of [true, false]) {
      const {page, close} = await open('hostile.html', {javaScriptEnabled: scripted});
      if (scripted) await page.waitForSelector('html.live canvas');
      assert.equal(await page.locator('main img').count(), 0);
      assert.match(await page.locator('.reasons').textContent(), /^<img src=x onerror=alert\(1\)>/);
      await close();
    }
  },

  async nothingAnalysedIsSaid() {
    const {page, close} = await open('failed.html');
    assert.equal(await page.locator('.mark').textContent(), 'Incomplete');
    assert.match(await page.locator('main').textContent(), /there is no video in it/);
    assert.match(await page.locator('main').textContent(), /No frame was analysed/);
    await close();
    const clean = await openLive('clean.html');
    assert.match(await clean.page.locator('#lanes').textContent(), /No events/);
    await clean.page.keyboard.press('n');
    await clean.close();
  },

  async indexListsTheWorstFirst() {
    for (const scripted of [true, false]) {
      const {page, close} = await open('index.html', {javaScriptEnabled: scripted});
      assert.deepEqual(await page.locator('td .badge').allTextContents(),
        ['Incomplete', 'Fail', 'Fail', 'Attention', 'Pass']);
      const links = await page.evaluate(() => [...document.querySelectorAll('td a')]
        .map((link) => link.getAttribute('href')));
      assert.equal(links[0], 'masters/broken.mp4.lumascan/report.html');
      assert.equal(links[2], 'masters/episode%20one.mp4.lumascan/report.html');
      assert.equal(await page.locator('tr:nth-child(3) td.spark path').count(), 15);
      await close();
    }
  },

  async indexIsSortedAndFiltered() {
    const {page, close} = await open('index.html');
    const names = () => page.locator('tbody tr:visible bdi').allTextContents();
    await page.locator('#verdict').selectOption('Attention');
    assert.deepEqual(await names(), ['copies/episode one.mxf']);
    await page.locator('#verdict').selectOption('');
    await page.locator('#text').fill('titles');
    assert.deepEqual(await names(), ['masters/titles.mov']);
    assert.equal(await page.locator('#count').textContent(), '1 of 5');
    await page.locator('#text').fill('');
    await page.locator('th button', {hasText: 'Duration'}).click();
    const sorted = await names();
    // Four seconds, ten, 30, 30.03, unknown.
    assert.match(sorted[0], /^<img/);
    assert.deepEqual(sorted.slice(1), ['masters/titles.mov', 'masters/episode one.mp4',
      'copies/episode one.mxf', 'masters/broken.mp4']);
    // The other way round what is unknown is still the last.
    await page.locator('th button', {hasText: 'Duration'}).click();
    const turned = await names();
    assert.deepEqual(turned.slice(0, 3), ['copies/episode one.mxf', 'masters/episode one.mp4',
      'masters/titles.mov']);
    assert.equal(turned[4], 'masters/broken.mp4');
    await page.locator('th button', {hasText: 'Verdict'}).click();
    assert.equal((await names())[0], 'masters/broken.mp4');
    // Its reason is "Nothing was analysed."
    for (const text of ['nothing was', 'NOTHING WAS']) {
      await page.locator('#text').fill(text);
      assert.deepEqual(await names(), ['masters/broken.mp4'], text);
    }
    await close();
  },

  // Times are only told: they depend on the machine.
  async longVideosStayFluid() {
    const rows = readCsv('big.csv');
    const {page, close} = await openLive('big.html');
    // 10,000 s: two hours and three quarters.
    const marks = await page.locator('#axis span').allTextContents();
    assert.equal(marks[0], '0:00');
    assert.ok(marks.includes('1:20:00') && marks.includes('2:40:00'), marks.join(' '));
    const paint = await page.evaluate(() =>
      performance.getEntriesByName('first-contentful-paint')[0].startTime);
    const live = await page.evaluate(() => performance.now());
    const redraw = await page.evaluate(() => {
      const start = performance.now();
      for (let i = 0; i < 5; ++i) showView(i, model.end - i);
      return (performance.now() - start) / 5;
    });
    const move = await page.evaluate(() => {
      const start = performance.now();
      for (let i = 0; i < 100; ++i) moveCursorToTime(i * 90);
      return (performance.now() - start) / 100;
    });
    for (const row of [0, 1, 99999, 249999]) {
      await page.evaluate((place) => moveCursor(0, place), row);
      assertValues(await readCursor(page), rows);
      assert.equal((await readCursor(page)).timecode, timecodeOf(row, 25));
    }
    const bytes = readFileSync(path.join(folder, 'big.html')).length;
    console.log(`250000 frames: first paint ${paint.toFixed(0)} ms, interactive before ` +
      `${live.toFixed(0)} ms, all tracks redrawn in ${redraw.toFixed(0)} ms, cursor moved in ` +
      `${move.toFixed(2)} ms, ${(bytes / 250000).toFixed(1)} bytes per frame`);
    await close();
  },
};

let failures = 0;
for (const [name, test] of Object.entries(tests)) {
  if (wanted.length > 0 && !wanted.includes(name)) continue;
  try {
    await test();
    console.log(`ok ${name}`);
  } catch (error) {
    ++failures;
    console.log(`FAILED ${name}\n${error.stack}`);
  }
}
await browser.close();
process.exit(failures === 0 ? 0 : 1);
