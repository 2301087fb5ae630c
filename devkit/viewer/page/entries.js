// What the data inventory says of a value.

import {element} from "./dom.js";

const kPersonal = {no: "not personal", may: "may be personal", is: "personal"};

// `entry` is absent where none is looked for, null where the inventory has none.
export function entryLine(entries, entry) {
  if (entry === undefined) {
    return null;
  }
  if (entry === null) {
    return element("span", {class: "entry"}, element("span", {class: "badge unknown"}, "not in the inventory"));
  }
  const row = entries[entry];
  const badge = element("span", {class: `badge ${row.open ? "open" : row.sensitivity}`},
                        row.open ? `open · ${row.sensitivity}` : row.sensitivity);
  const details = [kPersonal[row.personal], row.purpose].join(" · ");
  const line = element("span", {class: "entry"}, badge, ` ${details}`);
  line.title = [`from: ${row.source}`, row.personal_because, `stopped by: ${row.stops.join(", ")}`].join("\n");
  return line;
}
