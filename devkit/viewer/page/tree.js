// A body as a tree whose branches are asked for when they are opened, so many members at a time.

import {partOf} from "./api.js";
import {element, numberText} from "./dom.js";
import {entryLine} from "./entries.js";

const kPage = 100;

export class Tree {
  // Of the request `number`; `entries` are those of the inventory.
  constructor(number, entries) {
    this.number = number;
    this.entries = entries;
  }

  // The members of the value at a pointer, as a list that grows.
  branch(at, section = "") {
    const list = element("ul", {});
    this.#load(list, {at, section, from: 0});
    return list;
  }

  async #load(list, part) {
    const waiting = element("li", {class: "soft"}, "loading");
    list.append(waiting);
    try {
      const {size, children} = await partOf(this.number, {...part, count: kPage});
      waiting.replaceWith(...children.map((child) => this.#item(child)));
      const next = part.from + children.length;
      if (children.length > 0 && next < size) {
        const more = element("button", {type: "button"}, `${numberText(Math.min(kPage, size - next))} more of ${numberText(size)}`);
        const row = element("li", {}, more);
        more.addEventListener("click", () => {
          row.remove();
          this.#load(list, {...part, from: next});
        });
        list.append(row);
      }
    } catch (error) {
      waiting.replaceWith(element("li", {class: "bad"}, error.message));
    }
  }

  #item(child) {
    const line = entryLine(this.entries, child.entry);
    const key = element("span", {class: "key"}, child.key);
    if (child.type === "object" || child.type === "array") {
      const details = element("details", {}, element("summary", {}, key, ` ${numberText(child.size)} `,
          element("span", {class: "value soft"}, child.text + (child.isCut ? "…" : ""))));
      details.addEventListener("toggle", () => details.open && details.append(this.branch(child.at)), {once: true});
      return element("li", {}, details, line);
    }
    const cut = child.isCut ? element("span", {class: "soft"}, " … cut; the JSON text has all of it") : null;
    return element("li", {}, key, ": ", element("span", {class: "value"}, child.text), cut, line);
  }
}
