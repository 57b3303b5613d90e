// Opens reports that the program wrote: the figures in the page are those of `kesncd activity`, and names
// that look like markup are shown as text.
//   REPORT_PROGRAM=build/dev/kesncd node --test tests/report/program_test.mjs
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, afterEach, before, test } from 'node:test';
import { fileURLToPath, pathToFileURL } from 'node:url';
import { Browser } from './browser.mjs';

const example = fileURLToPath(new URL('../../examples/uart/uart.vcd', import.meta.url));
const folder = mkdtempSync(join(tmpdir(), 'report-program-'));
const reportFile = join(folder, 'report.html');
let browser;

before(async () => {
  browser = await Browser.start(folder);
});
after(async () => {
  await browser.stop();
  rmSync(folder, { recursive: true });
});
afterEach(async () => {
  assert.deepEqual(await browser.messages(), []);
});

const kesncd = (...args) => execFileSync(process.env.REPORT_PROGRAM, args, { encoding: 'utf8' });

async function report(dump, ...options) {
  kesncd('report', dump, '-q', '-o', reportFile, ...options);
  await browser.open(pathToFileURL(reportFile).href);
}

function rowsOf(section) {
  return browser.run(
    'return [...document.querySelectorAll(arguments[0])].map((r) => [...r.children].map((c) => c.textContent))',
    `${section} .frame tbody tr`,
  );
}

const number = (text) => Number(text.replaceAll(',', ''));
const activity = (per, ...options) =>
  JSON.parse(kesncd('activity', example, '-q', '--per', per, '--format', 'json', ...options));

for (const window of [[], ['--begin', '20us', '--end', '91us']]) {
  test(`the example's figures are those of its activity ${window.join(' ')}`, async () => {
    await report(example, ...window);
    const modules = activity('module', ...window).modules;
    const expected = new Map(modules.map((row) => [row.path, row]));
    const shown = await rowsOf('#modules');
    assert.equal(shown.length, modules.length);
    for (const [path, toggles, rate, bits, , , , , glitches] of shown) {
      const row = expected.get(path);
      assert.deepEqual(
        [number(toggles), number(bits), number(glitches)],
        [row.toggles, row.bits, row.ig],
        path,
      );
      assert.ok(Math.abs(number(rate) - row.toggle_rate) <= 0.001 * row.toggle_rate, `${path} ${rate}`);
    }
    const signals = new Map(activity('signal', ...window).signals.map((row) => [row.path, row]));
    const rows = await rowsOf('#signals');
    assert.ok(rows.length >= 20, `${rows.length} rows`);
    for (const [path, toggles, , bits] of rows) {
      const row = signals.get(path);
      assert.deepEqual([number(toggles), number(bits)], [row.toggles, row.bits], path);
    }
  });
}

test('what toggles in a stretch of the page is what activity counts in it', async () => {
  await report(example);
  await browser.click('#to-peak');
  const [, begin, end] = /--begin (\S+) --end (\S+)/.exec(await browser.text('#stretch'));
  const [top] = activity('module', '--begin', begin, '--end', end).modules;
  assert.equal(number((await rowsOf('#modules'))[0][1]), top.toggles);
});

test('names that look like markup are shown as text', async () => {
  const dump = join(folder, 'odd.vcd');
  const name = '</script><img/src=x/onerror=alert(1)>';
  writeFileSync(
    dump,
    `$timescale 1ns $end $scope module ${name} $end $var wire 1 ! ${name} $end $upscope $end ` +
      '$enddefinitions $end #0 0! #1 1! #3 0! \n',
  );
  await report(dump);
  assert.deepEqual(
    (await rowsOf('#signals')).map(([path]) => path),
    [`${name}/${name}`],
  );
  assert.equal(await browser.run('return document.images.length'), 0);
});
