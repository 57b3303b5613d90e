// Puts figures into the joined page of the activity report as the program does, for those who work on
// the page and for its tests:
//   node make_report.mjs BUILD/build-report/report_page.html FIGURES.json >report.html
import { readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';

// A name of the dump must not end the element that the figures stand in.
export function putFiguresIn(page, json) {
  const [before, after] = page.split('@DATA@');
  return before + json.replaceAll('<', '\\u003c') + after;
}

if (fileURLToPath(import.meta.url) === process.argv[1]) {
  const [page, figures] = process.argv.slice(2).map((path) => readFileSync(path, 'utf8'));
  process.stdout.write(putFiguresIn(page, JSON.stringify(JSON.parse(figures))));
}
