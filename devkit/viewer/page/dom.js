// Elements are made here and in the templates of index.html; foreign text only ever becomes
// textContent.

// element("a", {href: "#/"}, "text", otherElement): a property "class" or with a "-" is an attribute.
export function element(name, properties = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key === "class" || key.includes("-") || key === "role" || key === "scope") {
      made.setAttribute(key, value);
    } else {
      made[key] = value;
    }
  }
  made.append(...children.filter((child) => child !== null));
  return made;
}

export function fromTemplate(id) {
  return document.getElementById(id).content.cloneNode(true);
}

export function svgElement(name, attributes, text = "") {
  const made = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const [key, value] of Object.entries(attributes)) {
    made.setAttribute(key, value);
  }
  made.textContent = text;
  return made;
}

const numbers = new Intl.NumberFormat("en");

export function numberText(number) {
  return number === undefined || number === null ? "-" : numbers.format(number);
}

export function timeText(seconds) {
  return new Date(seconds * 1000).toLocaleTimeString("en-GB");
}

export function numberCell(number) {
  return element("td", {class: "number"}, numberText(number));
}
