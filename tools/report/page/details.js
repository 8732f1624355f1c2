// All that is known of the chosen event.

function term(name, ...contents) {
  return [make("dt", { textContent: name }), make("dd", {}, ...contents)];
}

const text = (content) => make("bdi", { textContent: content });

/** Leaves out what is empty. */
function terms(rows) {
  const list = make("dl", {});
  for (const [name, content] of rows) {
    if (content !== "") {
      list.append(...term(name, typeof content === "string" ? text(content) : content));
    }
  }
  return list;
}

function timeNotes(id) {
  const shape = shapeOf(id);
  return [
    ...(shape.summerTime ? ["summer time"] : []),
    ...(shape.clockDoubted ? ["the relay does not trust its clock"] : []),
    ...(isDoubtful(id) ? ["the moment may be wrong"] : []),
    ...(shape.recordDoubted ? ["parts of the record could not be read"] : []),
  ].join("; ");
}

/** What the relay's clock showed, where times are shown in a zone. */
function ownTimeText(id) {
  return kZone !== "" && hasTime(id)
    ? new Date(events.time[id] + events.ahead[id]).toISOString().slice(0, -1).replace("T", " ") : "";
}

/** Labels and values of what else the record holds. */
function linesOf(id) {
  const list = lineLists[events.lines[id]];
  return Array.from({ length: list.length / 2 }, (_, at) => [texts[list[2 * at]], texts[list[2 * at + 1]]]);
}

function lineTable(id) {
  const rows = linesOf(id).map(([label, value]) => (label === ""
    ? make("tr", {}, make("td", { colSpan: 2 }, text(value)))
    : make("tr", {}, make("th", { scope: "row" }, text(label)), make("td", {}, text(value)))));
  return rows.length === 0 ? [] : [
    make("h4", { textContent: shapeOf(id).isExtended ? "Cells" : "Text" }),
    make("div", { className: "cells" }, make("table", {}, make("tbody", {}, ...rows))),
  ];
}

/** Differences count from this event, or each from the one before it again. */
function zeroButton(id) {
  const isZero = state.zero === id;
  return make("button", {
    type: "button",
    id: "zero",
    textContent: isZero ? "Count \u0394t from the event before" : "Count \u0394t from here",
    onclick: () => change("zero", { zero: isZero ? -1 : id }),
  });
}

function describe(id) {
  const shape = shapeOf(id);
  const file = files[events.file[id]];
  const time = hasTime(id)
    ? `${weekdayText(events.time[id])} ${dateText(events.time[id])}, ${clockText(events.time[id], "all")}`
    : `none: bytes ${texts[events.time[id]]}`;
  const onlyRelay = make("button", {
    type: "button",
    className: "link",
    title: "Show this relay alone, or all again",
    onclick: () => toggleRelay(events.relay[id]),
  }, text(relayText(id)));
  return [
    make("p", { className: "details-event" }, kindDot(events.kind[id]), text(eventText(id) || "(no text)")),
    make("p", { className: "details-value" }, text(valueText(id))),
    terms([
      ["Time", time], ["Relay's clock", ownTimeText(id)], ["Note", timeNotes(id)], ["Relay", onlyRelay], ["Plant", texts[shape.plant]],
      ["Description", texts[shape.description]], ["Model", texts[shape.model]], ["Kind", kinds[shape.kind]],
      ["Location", texts[shape.place]], ["Device address", String(shape.code)],
    ]),
    ...(hasTime(id) ? [zeroButton(id)] : []),
    ...lineTable(id),
    make("h4", { textContent: "Record" }),
    terms([
      ["Form", shape.isExtended ? "extended" : "simple"],
      ["Unique id", shape.isExtended ? String(events.id[id]) : ""],
      ["File", file.path], ["Offset", String(events.offset[id])],
    ]),
  ];
}

const kMostFrequent = 14;

/** While no event is chosen: what happens most in the window. */
function frequentEvents() {
  const ofShape = new Uint32Array(shapes.length);
  for (let at = chosen.low; at < chosen.high; ++at) {
    ++ofShape[events.shape[chosen.filtered[at]]];
  }
  const counts = new Map();
  shapes.forEach(({ event, kind }, at) => {
    if (ofShape[at] > 0) {
      const entry = counts.get(event) ?? { event, kind, count: 0 };
      entry.count += ofShape[at];
      counts.set(event, entry);
    }
  });
  const most = Array.from(counts.values()).sort((a, b) => b.count - a.count).slice(0, kMostFrequent);
  const items = most.map(({ event, kind, count }) => make("li", {}, make("button", {
    type: "button",
    title: "Search for it",
    onclick: () => search(texts[event]),
  }, kindDot(kind), text(texts[event] || "(no text)"), make("span", { className: "count", textContent: numberText(count) }))));
  return [
    make("p", { className: "quiet", textContent: "Choose an event in the time line or the table. Most frequent now:" }),
    make("ol", { className: "frequent" }, ...items),
  ];
}

function drawDetails() {
  const id = state.selected;
  byId("details-title").textContent = id >= 0 ? "Event" : "Most frequent";
  byId("close-event").hidden = id < 0;
  byId("details").replaceChildren(...(id >= 0 ? describe(id) : frequentEvents()));
  byId("previous-event").disabled = neighbour(-1) === id;
  byId("next-event").disabled = neighbour(1) === id;
}

function startDetails() {
  byId("previous-event").addEventListener("click", () => select(neighbour(-1)));
  byId("next-event").addEventListener("click", () => select(neighbour(1)));
  byId("close-event").addEventListener("click", () => select(-1));
  onChange(["selection", "rest", "zero"], drawDetails);
}
