// The faults of the server, on and off while it runs.

import {clearFaults, faultSwitches, removeFault, setFault} from "./api.js";
import {element, fromTemplate} from "./dom.js";

const kHeads = ["Fault", "Only for", "Not at the first", "Then at", "Probability", "Acted"];

function rowOf(fault, change) {
  const row = fromTemplate("switch").querySelector("tr");
  const field = (name) => row.querySelector(`.${name}`);
  field("name").textContent = fault.name;
  field("help").textContent = fault.help;
  field("on").checked = fault.isOn;
  if (fault.isOn) {
    field("for").value = fault.report;
    field("after").value = fault.after;
    field("times").value = fault.times ?? "";
    field("probability").value = fault.probability;
    field("acted").textContent = `${fault.acted} of ${fault.concerned}` + (fault.probability < 1 ? `, seed ${fault.seed}` : "");
  }
  const send = () => {
    const how = {report: field("for").value, after: Number(field("after").value), probability: Number(field("probability").value)};
    if (field("times").value !== "") {
      how.times = Number(field("times").value);
    }
    change(field("on").checked ? setFault(fault.name, how) : removeFault(fault.name));
  };
  field("on").addEventListener("change", send);
  for (const name of ["for", "after", "times", "probability"]) {
    field(name).setAttribute("aria-label", `${fault.name}: ${field(name).getAttribute("aria-label")}`);
    field(name).addEventListener("change", () => field("on").checked && send());
  }
  return row;
}

export async function showFaults(place) {
  const body = element("tbody", {});
  const problem = element("p", {class: "bad", role: "alert"});
  const change = async (answer) => {
    try {
      body.replaceChildren(...(await answer).map((fault) => rowOf(fault, change)));
      problem.textContent = "";
    } catch (error) {
      problem.textContent = error.message;
    }
  };
  const clear = element("button", {type: "button"}, "Switch all off");
  clear.addEventListener("click", () => change(clearFaults()));
  const head = element("thead", {}, element("tr", {}, ...kHeads.map((name) => element("th", {scope: "col"}, name))));
  place.replaceChildren(element("h2", {}, "Faults"), element("p", {}, "They hold for the next request on. ", clear), problem,
                        element("div", {class: "wide"}, element("table", {}, head, body)));
  await change(faultSwitches());
}
