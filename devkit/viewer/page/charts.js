// Small bar charts, each with the table that it shows.

import {element, numberCell, numberText, svgElement} from "./dom.js";

const kWidth = 420;
const kRow = 18;
const kNames = 130;

// rows: [{name, count, bytes, link}]; two bars a row, each measured against its greatest.
export function barChart(caption, rows) {
  const greatest = (key) => Math.max(1, ...rows.map((row) => row[key] ?? 0));
  const length = (row, key) => Math.round(((row[key] ?? 0) / greatest(key)) * (kWidth - kNames - 70));
  const svg = svgElement("svg", {viewBox: `0 0 ${kWidth} ${rows.length * kRow + 4}`, width: kWidth, role: "img", "aria-label": `${caption}: items and bytes`});
  rows.forEach((row, index) => {
    const y = index * kRow;
    svg.append(
        svgElement("text", {x: 0, y: y + 13}, row.name.slice(0, 20)),
        svgElement("rect", {class: "bar", x: kNames, y: y + 3, height: 6, width: length(row, "count")}),
        svgElement("rect", {class: "bar second", x: kNames, y: y + 10, height: 5, width: length(row, "bytes")}),
        svgElement("text", {x: kNames + Math.max(length(row, "count"), length(row, "bytes")) + 4, y: y + 12},
                   row.count === undefined ? `${numberText(row.bytes)} bytes` : numberText(row.count)));
  });
  const body = rows.map((row) => element("tr", {},
      element("td", {}, row.link ? element("a", {href: row.link}, row.name) : row.name), numberCell(row.count), numberCell(row.bytes)));
  const head = [element("th", {scope: "col"}, caption),
      ...["items", "bytes"].map((name) => element("th", {scope: "col", class: "number"}, name))];
  return element("figure", {class: "wide"}, svg,
                 element("table", {}, element("thead", {}, element("tr", {}, ...head)), element("tbody", {}, ...body)));
}
