// The page as a whole: takes in what changes, and shows the view that the address names.

import {clearRequests} from "./api.js";
import {element, numberText} from "./dom.js";
import {showFaults} from "./faults.js";
import {showHistory} from "./history.js";
import {markCurrent, showChanges} from "./list.js";
import {showReport} from "./report.js";
import {nextChanges, requests, runs} from "./runs.js";
import {showSearch} from "./search.js";

const kPause = 1000;  // ms, after a call that failed

const state = document.getElementById("state");
const place = document.getElementById("report");
const views = {"#/search": showSearch, "#/history": showHistory, "#/faults": showFaults};

function showIntroduction(into) {
  into.replaceChildren(element("p", {class: "soft"}, "Choose a report on the list. What it holds stands here, value by value, with what the data inventory says of each."));
}

let awaited = null;  // a request that is to be shown and has not come in yet

async function show() {
  const hash = location.hash || "#/";
  const request = hash.match(/^#\/request\/(\d+)$/);
  awaited = request && !requests.has(Number(request[1])) ? Number(request[1]) : null;
  document.body.classList.toggle("showing", hash !== "#/");
  for (const link of document.querySelectorAll("nav a")) {
    const isCurrent = link.getAttribute("href") === (request ? "#/" : hash);
    isCurrent ? link.setAttribute("aria-current", "page") : link.removeAttribute("aria-current");
  }
  markCurrent(request ? Number(request[1]) : null);
  try {
    await (request ? showReport(place, Number(request[1])) : (views[hash] ?? showIntroduction)(place));
  } catch (error) {
    place.replaceChildren(element("p", {class: "bad"}, error.message));
  }
}

async function follow() {
  let isFirst = true;
  for (;;) {
    try {
      const {changed, isMore} = await nextChanges();
      showChanges(changed);
      state.textContent = `${numberText(runs.size)} runs, ${numberText(requests.size)} requests`;
      if ((isFirst && !isMore) || requests.has(awaited)) {
        isFirst = false;
        show();
      }
    } catch (error) {
      state.textContent = `no answer from the server: ${error.message}`;
      await new Promise((resolve) => setTimeout(resolve, kPause));
    }
  }
}

document.getElementById("clear").addEventListener("click", async () => {
  await clearRequests();
  location.hash = "#/";
});
addEventListener("hashchange", async () => {
  await show();
  if (!place.contains(document.activeElement)) {
    place.focus();
  }
});
follow();
