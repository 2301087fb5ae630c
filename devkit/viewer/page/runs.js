// What came in, as the server tells it: runs of uploads. An upload is what belongs together: the
// question for a sample, the request for its ticket, the PUT.

import {changesBehind} from "./api.js";

const kAll = ["rc1", "rc2", "rc3", "rc4", "rc5", "rc7"];
const kRestSeconds = 10;  // a run in which nothing has come in for so long is over
const kWait = 5000;       // ms, of a call for changes; the first one does not wait

export const runs = new Map();      // by number, oldest first
export const requests = new Map();  // lines by their number
let cursor = 0;
let hasAnswered = false;

// The question for a sample and the request for its ticket meet by the sample's digest, that request
// and the PUT by the ticket.
function uploadOf(run, line) {
  const ticket = line.ticket === undefined ? "" : `ticket ${line.ticket}`;
  const sample = line.method === "GET" && line.report === "rc3" ? `sample ${line.query.h}` : "";
  let upload = run.open.get(ticket) ?? run.open.get(sample);
  if (!upload || (sample && upload.ask)) {
    upload = {report: line.report ?? ""};
    run.uploads.push(upload);
  }
  for (const key of [ticket, sample].filter((each) => each)) {
    run.open.set(key, upload);
  }
  return upload;
}

function add(line) {
  requests.set(line.number, line);
  const run = runs.get(line.run);
  const upload = uploadOf(run, line);
  if (line.method === "PUT") {
    upload.put = line;
  } else if (line.report === "rc3" && line.query.o === undefined) {
    upload.question = line;
  } else {
    upload.ask = line;
  }
  run.last = line.time;
}

// The request that stands for an upload in the list.
export function chiefOf(upload) {
  return upload.put ?? upload.ask ?? upload.question;
}

export function hasArrived(upload) {
  return upload.put !== undefined || (upload.report === "rc1" && upload.ask?.status === 200);
}

export function isOver(run) {
  const isNewest = run.run === Math.max(...runs.keys());
  return !isNewest || Date.now() / 1000 - run.last > kRestSeconds;
}

// [{report, what, why}]: what the run did not send, as far as the server can tell, and what it was
// told by those who know the machine.
export function notSentIn(run) {
  const rows = [];
  for (const upload of run.uploads) {
    const {report, question, ask, put} = upload;
    if (question?.status === 200 && !ask) {
      rows.push({report, what: question.query.p ?? question.query.h, why: "the server knows the sample"});
    } else if (question && !ask && question.status !== 404) {
      rows.push({report, what: question.query.p ?? question.query.h, why: `the question was answered with ${question.status}`});
    } else if (ask && !put && report !== "rc1" && report !== "") {
      rows.push({report, what: "no PUT came", why: ask.fault ? `the ticket's fault: ${ask.fault}` : "the ticket was given"});
    }
  }
  if (run.not_sent) {
    return [...rows, ...run.not_sent];
  }
  const seen = new Set(run.uploads.map((upload) => upload.report));
  const silent = isOver(run) ? kAll.filter((report) => !seen.has(report)) : [];
  return [...rows, ...silent.map((report) => ({report, what: "no request came", why: "not due, switched off, or nothing to send"}))];
}

// The uploads of that report that have a body, oldest first.
export function uploadsOf(report) {
  return [...runs.values()].flatMap((run) => run.uploads)
      .filter((upload) => upload.report === report && upload.put);
}

function forgetBelow(oldest) {
  for (const number of requests.keys()) {
    if (number >= oldest) {
      break;
    }
    requests.delete(number);
  }
  for (const run of runs.values()) {
    run.uploads = run.uploads.filter((upload) => chiefOf(upload).number >= oldest);
    if (run.uploads.length === 0) {
      runs.delete(run.run);
    }
  }
}

// Waits for changes and takes them in; the numbers of the runs that changed, and whether some were
// forgotten.
export async function nextChanges() {
  const changes = await changesBehind(cursor, hasAnswered ? kWait : 0);
  hasAnswered = true;
  if (changes.cursor < cursor) {
    runs.clear();  // another server
    requests.clear();
  }
  for (const described of changes.runs) {
    const known = runs.get(described.run) ?? {uploads: [], open: new Map(), last: described.began};
    runs.set(described.run, Object.assign(known, described));
  }
  changes.requests.forEach(add);
  const before = runs.size;
  forgetBelow(changes.oldest);
  cursor = changes.cursor;
  return {changed: changes.runs.map(({run}) => run), hasForgotten: runs.size < before, isMore: changes.more};
}
