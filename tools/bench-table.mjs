// bench-table.mjs ROWS FOLDER: the rows that the benchmarks have printed, a JSON object a line, as one table; and
// FOLDER/bench.json, and FOLDER/bench.svg with the cost of calls against their size.
import { readFileSync, writeFileSync } from 'node:fs';

const [, , rowsFile, folder] = process.argv;
const printed = readFileSync(rowsFile, 'utf8').split(/\r?\n/).filter((line) => line).map((line) => JSON.parse(line));
const rows = printed.filter((row) => row.row);
const points = printed.filter((row) => row.series);

function timeText(seconds) {
  if (seconds === undefined) return '';
  if (seconds >= 1) return `${seconds.toFixed(2)} s`;
  return seconds >= 1e-3 ? `${(seconds * 1e3).toFixed(2)} ms` : `${(seconds * 1e6).toFixed(1)} us`;
}
const ratioText = (ratio) => (ratio >= 100 ? ratio.toFixed(0) : ratio.toFixed(2));

// The median of the ratios is what counts, and the difference of the two medians.
function judge(row) {
  if (!row.aim) return { aim: '', verdict: '' };
  const above = row.seconds === undefined ? 0 : (row.seconds - row.againstSeconds) * 1e6;
  const limits = [`${row.isLeast ? '>=' : '<='} ${row.aim}`];
  if (row.aimAbove) limits.push(`+${row.aimAbove} us`);
  const met = (row.isLeast ? row.ratio[1] >= row.aim : row.ratio[1] <= row.aim) && (!row.aimAbove || above <= row.aimAbove);
  return { aim: limits.join(', '), verdict: met ? 'met' : 'MISSED' };
}

const header = ['row', 'against', 'time', 'its time', 'least', 'median', 'most', 'aim', ''];
const lines = rows.map((row) => {
  const { aim, verdict } = judge(row);
  return [row.row, row.against, timeText(row.seconds), timeText(row.againstSeconds), ...row.ratio.map(ratioText), aim, verdict];
});
const widths = header.map((name, i) => Math.max(name.length, ...lines.map((line) => line[i].length)));
const isText = (i) => i < 2 || i > 6;
const format = (line) => line.map((cell, i) => (isText(i) ? cell.padEnd(widths[i]) : cell.padStart(widths[i]))).join('  ').trimEnd();
console.log([header, widths.map((width) => '-'.repeat(width)), ...lines].map(format).join('\n'));
const missed = lines.filter((line) => line[8] === 'MISSED').length;
const judged = lines.filter((line) => line[8]).length;
console.log(`\n${judged - missed} of ${judged} aims met; ratios are time to its time, over the turns of this run`);

writeFileSync(`${folder}/bench.json`, `${JSON.stringify({ rows: rows.map((row) => ({ ...row, ...judge(row) })), points }, null, 1)}\n`);

// ---- the picture: both axes by powers of ten

const escape = (text) => text.replace(/&/g, '&amp;').replace(/</g, '&lt;');
const width = 860;
const height = 520;
const frame = { left: 80, right: width - 240, top: 30, bottom: height - 50 };
const COLOURS = ['#1b6ca8', '#c0392b', '#2e8b57', '#8e44ad', '#d35400', '#16a085'];
if (points.length > 0) {
  const powers = (values) => [Math.floor(Math.log10(Math.min(...values))), Math.ceil(Math.log10(Math.max(...values)) - 1e-9)];
  const [leastSize, mostSize] = powers(points.map((point) => point.size));
  const [leastTime, mostTime] = powers(points.map((point) => point.seconds));
  const x = (size) => frame.left + ((Math.log10(size) - leastSize) / (mostSize - leastSize || 1)) * (frame.right - frame.left);
  const y = (time) => frame.bottom - ((Math.log10(time) - leastTime) / (mostTime - leastTime || 1)) * (frame.bottom - frame.top);
  const parts = [`<svg xmlns="http://www.w3.org/2000/svg" width="${width}" height="${height}" font-family="sans-serif" font-size="13">`,
    `<rect width="${width}" height="${height}" fill="white"/>`];
  for (let power = leastSize; power <= mostSize; ++power) {
    parts.push(`<path d="M${x(10 ** power)} ${frame.top}V${frame.bottom}" stroke="#ddd"/>`,
      `<text x="${x(10 ** power)}" y="${frame.bottom + 18}" text-anchor="middle">${(10 ** power).toLocaleString('en')}</text>`);
  }
  for (let power = leastTime; power <= mostTime; ++power) {
    parts.push(`<path d="M${frame.left} ${y(10 ** power)}H${frame.right}" stroke="#ddd"/>`,
      `<text x="${frame.left - 8}" y="${y(10 ** power) + 4}" text-anchor="end">${timeText(10 ** power)}</text>`);
  }
  parts.push(`<text x="${(frame.left + frame.right) / 2}" y="${height - 10}" text-anchor="middle">size (BOMs, lines or groups)</text>`);
  [...new Set(points.map((point) => point.series))].forEach((series, i) => {
    const colour = COLOURS[i % COLOURS.length];
    const own = points.filter((point) => point.series === series).sort((a, b) => a.size - b.size);
    parts.push(`<polyline fill="none" stroke="${colour}" stroke-width="2" points="${own.map((p) => `${x(p.size)},${y(p.seconds)}`).join(' ')}"/>`);
    for (const point of own) parts.push(`<circle cx="${x(point.size)}" cy="${y(point.seconds)}" r="4" fill="${colour}"/>`);
    parts.push(`<rect x="${frame.right + 20}" y="${frame.top + 22 * i}" width="12" height="12" fill="${colour}"/>`,
      `<text x="${frame.right + 38}" y="${frame.top + 11 + 22 * i}">${escape(series)}</text>`);
  });
  writeFileSync(`${folder}/bench.svg`, `${parts.join('\n')}\n</svg>\n`);
}
