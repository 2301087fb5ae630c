// Whether a text is in anything that came in: asks request by request, newest first, and says how
// far it is.

import {findIn} from "./api.js";
import {element, fromTemplate, numberText} from "./dom.js";
import {requests} from "./runs.js";

let newest = 0;  // the search that goes on; an older one stops

function hitOf(line, where, {count, places}) {
  const list = places.map(({at, text}) => element("li", {}, element("span", {class: "soft"}, `${at} `), element("span", {class: "value"}, text)));
  if (count > places.length) {
    list.push(element("li", {}, `and ${numberText(count - places.length)} more`));
  }
  return element("li", {}, element("a", {href: `#/request/${line.number}`}, `${line.report ?? "request"} ${line.number}, run ${line.run}`),
                 `: ${numberText(count)} in its ${where}`, element("ul", {}, ...list));
}

async function search(text, place) {
  const own = ++newest;
  const [progress, bar, hits] = [".progress", "progress", ".hits"].map((name) => place.querySelector(name));
  const lines = [...requests.values()].reverse();
  let found = 0;
  hits.replaceChildren();
  bar.hidden = false;
  bar.max = lines.length;
  for (const [index, line] of lines.entries()) {
    if (own !== newest || !place.isConnected) {
      return;
    }
    bar.value = index;
    progress.textContent = `searching: ${numberText(index)} of ${numberText(lines.length)} requests, found in ${numberText(found)}`;
    try {
      const result = await findIn(line.number, text);
      const parts = ["request", "body"].filter((where) => result[where].count > 0);
      found += parts.length > 0 ? 1 : 0;
      hits.append(...parts.map((where) => hitOf(line, where, result[where])));
    } catch (error) {
      hits.append(element("li", {class: "soft"}, `request ${line.number}: ${error.message}`));
    }
  }
  bar.hidden = true;
  progress.textContent = `searched all ${numberText(lines.length)} requests: found in ${found === 0 ? "none" : numberText(found)}`;
}

export function showSearch(place) {
  const view = element("div", {}, fromTemplate("search-view"));
  const input = view.querySelector("input");
  view.querySelector("form").addEventListener("submit", (event) => {
    event.preventDefault();
    search(input.value, view);
  });
  place.replaceChildren(view);
  input.focus();
}
