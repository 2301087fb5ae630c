// The calls of the report server. Each throws an Error with what the server said.

async function call(path, options = {}) {
  const response = await fetch(path, options);
  if (!response.ok) {
    throw new Error(`${response.status}: ${(await response.text()).trim()}`);
  }
  return response.json();
}

function change(method, path, body = {}) {
  return call(path, {method, headers: {"Content-Type": "application/json"}, body: JSON.stringify(body)});
}

export const changesBehind = (cursor, wait) => call(`/api/changes?after=${cursor}&wait=${wait}`);
export const describeRequest = (number) => call(`/api/requests/${number}`);
export const sectionsOf = (number) => call(`/api/requests/${number}/sections`);
export const textOf = (number, from) => call(`/api/requests/${number}/text?from=${from}`);
export const bytesOf = (number, from) => call(`/api/requests/${number}/bytes?from=${from}`);
export const findIn = (number, text) => call(`/api/requests/${number}/find?text=${encodeURIComponent(text)}`);
export const differenceOf = (older, newer) => call(`/api/difference?older=${older}&newer=${newer}`);
export const faultSwitches = () => call("/api/faults");
export const setFault = (name, how) => change("PUT", `/api/faults/${name}`, how);
export const removeFault = (name) => change("DELETE", `/api/faults/${name}`);
export const clearFaults = () => change("DELETE", "/api/faults");
export const clearRequests = () => change("DELETE", "/api/requests");

export function partOf(number, {at = "", section = "", from = 0, count = 100}) {
  const query = new URLSearchParams({at, section, from, count});
  return call(`/api/requests/${number}/part?${query}`);
}

let inventory = null;

// The entries of the data inventory, in its order.
export async function inventoryEntries() {
  inventory ??= call("/api/inventory");
  return (await inventory).entries;
}
