// One request with all that belongs to it: values, query, text, bytes, difference.

import {bytesOf, describeRequest, differenceOf, inventoryEntries, sectionsOf, textOf} from "./api.js";
import {barChart} from "./charts.js";
import {element, fromTemplate, numberText, timeText} from "./dom.js";
import {entryLine} from "./entries.js";
import {chiefOf, requests, runs, uploadsOf} from "./runs.js";
import {Tree} from "./tree.js";

const kHexRow = 16;

function wordsOf(line) {
  return [`${line.method} ${line.status}`, line.fault ? `fault ${line.fault}` : ""].filter((word) => word).join(", ");
}

function downloads(number) {
  return element("p", {}, element("a", {href: `/api/requests/${number}/packed`, download: ""}, "download as received (packed)"), " · ",
                 element("a", {href: `/api/requests/${number}/body`, download: ""}, "download unpacked"));
}

async function showValues(panel, {number}, entries) {
  const {by, sections, unknown} = await sectionsOf(number);
  const tree = new Tree(number, entries);
  const parts = [];
  if (unknown.length > 0) {
    parts.push(element("div", {class: "alert", role: "alert"}, element("strong", {}, "Values that are not in the inventory"),
        element("ul", {}, ...unknown.map(({path, count, at}) => element("li", {}, `${path}, ${numberText(count)} times, first at ${at}`)))));
  }
  if (by && sections.length > 0) {
    parts.push(barChart(by, sections.map((section) => ({...section, name: section.name || "(none)"}))));
    for (const {name, count} of sections) {
      const details = element("details", {}, element("summary", {}, element("span", {class: "key"}, `${by} ${name || "(none)"}`), ` ${numberText(count)} items`));
      details.addEventListener("toggle", () => {
        const branch = tree.branch("", name);
        branch.className = "tree";
        details.append(branch);
      }, {once: true, capture: false});
      parts.push(details);
    }
  } else {
    const branch = tree.branch("");
    branch.className = "tree";
    parts.push(branch);
  }
  panel.replaceChildren(...parts, downloads(number));
}

function valueRows(entries, rows) {
  return element("div", {class: "wide"}, element("table", {}, element("tbody", {}, ...rows.map(({key, value, entry}) => element("tr", {},
      element("th", {scope: "row"}, key), element("td", {}, element("span", {class: "value"}, value), entryLine(entries, entry)))))));
}

async function showRequest(panel, upload, entries) {
  const parts = [];
  for (const line of [upload.question, upload.ask, upload.put].filter((each) => each)) {
    const described = await describeRequest(line.number);
    parts.push(element("h3", {}, `${line.number}: ${wordsOf(line)}`), element("p", {class: "value"}, `${line.method} ${line.target}`));
    if (line.method !== "PUT" || !upload.ask) {  // whose query is that of its ticket
      parts.push(valueRows(entries, described.query));
    }
    parts.push(element("details", {}, element("summary", {}, `${described.headers.length} header lines`), valueRows(entries, described.headers)));
  }
  panel.replaceChildren(...parts);
}

// Blocks of a long text, each asked for by a button.
function blocks(load) {
  const place = element("div", {});
  const more = element("button", {type: "button"}, "more");
  let next = 0;
  more.addEventListener("click", async () => {
    more.disabled = true;
    const {shown, reached, size} = await load(next);
    more.before(shown);
    next = reached;
    more.disabled = false;
    more.hidden = reached >= size;
    more.textContent = `more (${numberText(reached)} of ${numberText(size)} bytes)`;
  });
  place.append(more);
  more.click();
  return place;
}

function showText(panel, {number}) {
  panel.replaceChildren(downloads(number), blocks(async (from) => {
    const {size, next, text} = await textOf(number, from);
    return {shown: element("pre", {}, text), reached: next, size};
  }));
}

function hexText(hex, from) {
  const bytes = hex.match(/../g) ?? [];
  const rows = [];
  for (let at = 0; at < bytes.length; at += kHexRow) {
    const row = bytes.slice(at, at + kHexRow);
    const letters = row.map((byte) => parseInt(byte, 16)).map((code) => (code >= 32 && code < 127 ? String.fromCharCode(code) : "."));
    rows.push(`${(from + at).toString(16).padStart(8, "0")}  ${row.join(" ").padEnd(kHexRow * 3)} ${letters.join("")}`);
  }
  return rows.join("\n");
}

async function showBytes(panel, {number, json}, entries) {
  const {size, sha1} = await bytesOf(number, 0);
  const {body_entry: entry} = await describeRequest(number);
  panel.replaceChildren(
      element("p", {}, `${numberText(size)} bytes, SHA-1 `, element("span", {class: "value"}, sha1)),
      json === "none" ? entryLine(entries, entry) : "",  // a damaged document has none as a whole
      downloads(number),
      blocks(async (from) => {
        const block = await bytesOf(number, from);
        return {shown: element("pre", {class: "hex", tabIndex: 0}, hexText(block.hex, block.from)), reached: from + block.hex.length / 2, size};
      }));
}

function memberTable(members) {
  const changes = members.map(({key, older, newer}) => element("tr", {}, element("th", {scope: "row"}, key),
      element("td", {class: "value removed"}, older ?? "none"), element("td", {class: "value added"}, newer ?? "none")));
  const head = ["member", "older", "newer"].map((name) => element("th", {scope: "col"}, name));
  return changes.length === 0 ? null : element("div", {class: "wide"},
      element("table", {}, element("thead", {}, element("tr", {}, ...head)), element("tbody", {}, ...changes)));
}

function itemList(name, {count, items}, mark) {
  return count === 0 ? [] : [
    element("h3", {}, `${name}: ${numberText(count)}`),
    element("ul", {}, ...items.map((item) => element("li", {class: `value ${mark}`}, item))),
  ];
}

function bodyDifference({members, equal, removed, added, first, older, newer}) {
  if (first !== undefined) {
    const sizes = `${numberText(older)} and ${numberText(newer)} bytes`;
    return [element("p", {}, first === null ? "The bytes are equal." : `The bytes differ from offset ${numberText(first)} on; ${sizes}.`)];
  }
  const isEqual = members.length + removed.count + added.count === 0;
  return [element("p", {}, isEqual ? `All ${numberText(equal)} items are equal.` : `Equal items, apart from the members below: ${numberText(equal)}.`),
          memberTable(members), ...itemList("Only in the older", removed, "removed"), ...itemList("Only in the newer", added, "added")];
}

async function fillDifference(place, older, newer) {
  place.replaceChildren("comparing");
  const {query, body} = await differenceOf(older, newer);
  const ofQuery = memberTable(query) ?? element("p", {}, "The same.");
  place.replaceChildren(...bodyDifference(body).filter((part) => part), element("h3", {}, "Query"), ofQuery);
}

function showDifference(panel, {number, report}) {
  const others = uploadsOf(report).map(({put}) => put).filter((put) => put.number !== number).reverse();
  if (others.length === 0) {
    panel.replaceChildren(`There is no other ${report}.`);
    return;
  }
  const choice = element("select", {}, ...others.map((put) => element("option", {value: put.number}, `${put.number}, run ${put.run}, ${timeText(put.time)}`)));
  const previous = others.find((put) => put.number < number);
  choice.value = (previous ?? others[0]).number;
  const place = element("div", {});
  const fill = () => fillDifference(place, Math.min(choice.value, number), Math.max(choice.value, number))
      .catch((error) => place.replaceChildren(error.message));
  choice.addEventListener("change", fill);
  panel.replaceChildren(element("label", {}, "compared with ", choice), place);
  fill();
}

function tabsOf(upload) {
  const {put} = upload;
  const tabs = [["Request", (panel, entries) => showRequest(panel, upload, entries)]];
  if (put) {
    const isJson = put.json === "ok";
    tabs.unshift(isJson ? ["Values", (panel, entries) => showValues(panel, put, entries)] : ["Bytes", (panel, entries) => showBytes(panel, put, entries)]);
    if (put.json && put.json !== "none") {
      tabs.push(["JSON text", (panel) => showText(panel, put)]);
    }
    tabs.push(["Difference", (panel) => showDifference(panel, put)]);
  }
  return tabs;
}

function showTabs(article, upload, entries) {
  const list = article.querySelector("[role=tablist]");
  const panel = article.querySelector("[role=tabpanel]");
  const select = async (tab, show) => {
    for (const other of list.children) {
      other.setAttribute("aria-selected", other === tab);
      other.tabIndex = other === tab ? 0 : -1;
    }
    panel.setAttribute("aria-label", tab.textContent);
    panel.replaceChildren("loading");
    try {
      await show(panel, entries);
    } catch (error) {
      panel.replaceChildren(error.message);
    }
  };
  for (const [name, show] of tabsOf(upload)) {
    const tab = element("button", {type: "button", role: "tab"}, name);
    tab.addEventListener("click", () => select(tab, show));
    list.append(tab);
  }
  list.addEventListener("keydown", (event) => {
    const step = {ArrowRight: 1, ArrowLeft: -1}[event.key];
    const tabs = [...list.children];
    const at = tabs.indexOf(document.activeElement);
    if (step && at >= 0) {
      const next = tabs[(at + step + tabs.length) % tabs.length];
      next.focus();
      next.click();
    }
  });
  list.firstElementChild.click();
}

function aboutOf(upload, line) {
  const {put} = upload;
  const sizes = put ? [`${numberText(put.packed)} bytes packed`, `${numberText(put.unpacked)} unpacked`,
      `digest ${put.digest}`, `stream ${put.zlib}`, put.json === "none" ? "" : `JSON ${put.json}`] : [];
  return [`run ${line.run}`, timeText(line.time), ...sizes].filter((word) => word).join(" · ");
}

// Shows the upload that the request `number` belongs to.
export async function showReport(place, number) {
  const line = requests.get(number);
  const upload = runs.get(line?.run)?.uploads.find((each) => [each.question, each.ask, each.put].includes(line));
  if (!upload) {
    place.replaceChildren(element("p", {}, `Request ${number} is not kept any more.`));
    return;
  }
  const article = fromTemplate("upload").querySelector("article");
  const steps = [upload.question, upload.ask, upload.put].filter((each) => each).map(wordsOf).join(", then ");
  article.querySelector("h2").textContent = `${upload.report || "request"} ${chiefOf(upload).number}: ${steps}`;
  article.querySelector(".about").textContent = aboutOf(upload, line);
  if (upload.put && (upload.put.digest !== "ok" || upload.put.zlib !== "ok" || upload.put.json === "damaged")) {
    article.querySelector("header").append(element("p", {class: "alert", role: "alert"}, "This body is damaged; what came out of it is shown."));
  }
  place.replaceChildren(article);
  showTabs(article, upload, await inventoryEntries());
}
