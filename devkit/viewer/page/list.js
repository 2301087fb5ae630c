// The list of runs, newest first. A run's rows are made when it is open.

import {element, fromTemplate, numberCell, numberText, timeText} from "./dom.js";
import {chiefOf, isOver, notSentIn, runs} from "./runs.js";

const kMostRows = 500;  // of a run; more are named

const filter = {text: document.getElementById("filter-text"), report: document.getElementById("filter-report")};
const place = document.getElementById("runs");
const shown = new Map();  // sections by run
let current = null;       // the request that is shown beside the list

function textsOf(upload) {
  return [upload.question, upload.ask, upload.put].filter((line) => line).flatMap(
      (line) => [line.report ?? "", String(line.status), line.fault ?? "", line.target, ...Object.values(line.query)]);
}

function isWanted(upload) {
  const text = filter.text.value.trim().toLowerCase();
  return (!filter.report.value || upload.report === filter.report.value) &&
      (!text || textsOf(upload).some((each) => each.toLowerCase().includes(text)));
}

function checksOf({ask, put}) {
  const checks = [["digest", put?.digest], ["stream", put?.zlib], ["JSON", put?.json]];
  const bad = checks.filter(([, value]) => value && value !== "ok" && value !== "none");
  const words = bad.map(([name, value]) => element("span", {class: "bad"}, `${name} ${value} `));
  if (put && bad.length === 0) {
    words.push(element("span", {class: "good"}, "sound "));
  }
  const fault = put?.fault ?? ask?.fault;
  return fault ? [...words, element("span", {class: "badge"}, `fault ${fault}`)] : words;
}

function rowOf(upload) {
  const chief = chiefOf(upload);
  const {question, ask, put} = upload;
  const statuses = [question?.status, ask?.status, put?.status].filter((status) => status).join(", ");
  const name = element("a", {href: `#/request/${chief.number}`}, upload.report || chief.target.slice(0, 40) || "unreadable");
  const row = element("tr", {}, element("td", {}, name), element("td", {}, statuses),
                      numberCell(put?.packed), numberCell(put?.unpacked), numberCell(put?.items),
                      element("td", {}, ...checksOf(upload)));
  if (chief.number === current) {
    row.setAttribute("aria-current", "true");
  }
  return row;
}

// Reports with the same reason stand in one line.
function joined(unsent) {
  const reports = new Map();
  for (const {report, what, why} of unsent) {
    const text = `${what}: ${why}`;
    reports.set(text, [...(reports.get(text) ?? []), report]);
  }
  return [...reports].map(([text, names]) => `${[...new Set(names)].join(", ")}: ${text}`);
}

function fill(section, run) {
  const wanted = run.uploads.filter(isWanted);
  const rows = wanted.slice(0, kMostRows).map(rowOf);
  if (wanted.length > kMostRows) {
    rows.push(element("tr", {}, element("td", {colSpan: 6}, `and ${numberText(wanted.length - kMostRows)} more; the filter narrows them`)));
  }
  section.querySelector("tbody").replaceChildren(...rows);
  const unsent = notSentIn(run).slice(0, kMostRows);
  section.querySelector(".unsent-title").hidden = unsent.length === 0;
  section.querySelector(".unsent").replaceChildren(...joined(unsent).map((text) => element("li", {}, text)));
}

function sectionOf(run) {
  const section = fromTemplate("run").querySelector("details");
  section.addEventListener("toggle", () => section.open && fill(section, run));
  shown.set(run.run, section);
  const after = [...shown.keys()].filter((number) => number < run.run).reduce((a, b) => Math.max(a, b), 0);
  place.insertBefore(section, shown.get(after) ?? null);
  return section;
}

function update(run) {
  const section = shown.get(run.run) ?? sectionOf(run);
  section.querySelector(".name").textContent = `Run ${run.run}`;
  const bytes = run.uploads.reduce((sum, {put}) => sum + (put?.packed ?? 0), 0);
  section.querySelector(".about").textContent = [
    timeText(run.began), `uploads and questions: ${numberText(run.uploads.length)}`, `${numberText(bytes)} bytes packed`,
    isOver(run) ? "" : "may go on", run.client].filter((word) => word).join(" · ");
  section.dataset.isOver = isOver(run);
  section.hidden = !run.uploads.some(isWanted);
  if (section.open) {
    fill(section, run);
  }
}

// After changes: of the runs with these numbers. The newest one may be over by now without any.
export function showChanges(changed) {
  for (const [number, section] of shown) {
    if (!runs.has(number)) {
      section.remove();
      shown.delete(number);
    }
  }
  const newest = Math.max(...shown.keys());
  const now = Math.max(...runs.keys());
  const hasEnded = shown.get(now)?.dataset.isOver === "false" && isOver(runs.get(now));
  const concerned = hasEnded ? [...changed, now] : changed;
  concerned.filter((number) => runs.has(number)).forEach((number) => update(runs.get(number)));
  if (now > newest && !(shown.get(newest)?.matches(":focus-within"))) {
    shown.get(newest)?.removeAttribute("open");
    shown.get(now).open = true;
  }
  document.getElementById("empty").hidden = runs.size > 0;
}

export function showAll() {
  runs.forEach(update);
}

export function markCurrent(number) {
  current = number;
  showAll();
}

for (const input of Object.values(filter)) {
  input.addEventListener("input", showAll);
}
document.getElementById("filter").addEventListener("submit", (event) => event.preventDefault());
