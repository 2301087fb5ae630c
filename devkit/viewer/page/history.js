// Items and bytes of each report, upload by upload.

import {sectionsOf} from "./api.js";
import {barChart} from "./charts.js";
import {element, timeText} from "./dom.js";
import {uploadsOf} from "./runs.js";

const kNewest = 20;

function chartOf(report) {
  const rows = uploadsOf(report).slice(-kNewest).reverse().map(({put}) => (
    {name: `run ${put.run}, ${timeText(put.time)}`, count: put.items, bytes: put.unpacked, link: `#/request/${put.number}`}));
  return rows.length === 0 ? null : element("section", {}, element("h3", {}, report), barChart(report, rows));
}

// rc7's items by type, upload by upload.
async function typesOfUnified() {
  const rows = [];
  for (const {put} of uploadsOf("rc7").slice(-kNewest).reverse()) {
    for (const {name, count, bytes} of (await sectionsOf(put.number)).sections) {
      rows.push({name: `run ${put.run} ${name}`, count, bytes, link: `#/request/${put.number}`});
    }
  }
  return rows.length === 0 ? null : element("section", {}, element("h3", {}, "rc7 by type"), barChart("rc7 by type", rows));
}

export async function showHistory(place) {
  const charts = ["rc2", "rc3", "rc4", "rc5", "rc7"].map(chartOf).filter((chart) => chart);
  place.replaceChildren(element("h2", {}, "What each report carried"), element("p", {class: "soft"}, `The upper bar counts items, the lower one bytes; the newest ${kNewest} uploads.`),
                        ...(charts.length > 0 ? charts : [element("p", {}, "No report has come in yet.")]));
  const types = await typesOfUnified();
  if (types) {
    place.append(types);
  }
}
