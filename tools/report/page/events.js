// The table of events: those of the filter in the time line's window, sorted. Only the rows in sight exist.

const kColumns = [
  { name: "time", title: "Time", text: timeText },
  { name: "delta", title: "\u0394t", text: deltaCell, isFixed: true },
  { name: "relay", title: "Relay", text: relayText },
  { name: "kind", title: "Kind", text: (id) => kinds[events.kind[id]] },
  { name: "event", title: "Event", text: eventText },
  { name: "value", title: "Value", text: valueText },
  { name: "place", title: "Location", text: placeText },
];
const kMostRows = 400_000; // what browsers can still scroll over

const grid = byId("grid");
const gridBody = byId("grid-body");
const gridSpace = byId("grid-space");
const rowPool = [];

function deltaCell(id) {
  const { span, isDoubted: isUnsure } = deltaOf(id);
  return Number.isNaN(span) ? "" : `${deltaText(span)}${isUnsure ? "?" : ""}`;
}

const deltaTitle = () => (state.zero >= 0 ? "\u0394t from chosen" : "\u0394t");

/** The events of the table, top to bottom. */
let listed = new Uint32Array(0);

const ranks = new Map();

/** Each text's place in alphabetical order, found once. */
function ranksOf(list) {
  if (!ranks.has(list)) {
    const collator = new Intl.Collator(undefined, { numeric: true });
    const order = list.map((_, at) => at).sort((a, b) => collator.compare(list[a], list[b]) || a - b);
    const rank = new Uint32Array(list.length);
    order.forEach((at, place) => (rank[at] = place));
    ranks.set(list, rank);
  }
  return ranks.get(list);
}

const kSortKeys = {
  relay: (id) => ranksOf(relays)[events.relay[id]],
  kind: (id) => events.kind[id],
  event: (id) => ranksOf(texts)[shapeOf(id).event],
  value: (id) => ranksOf(texts)[events.value[id]],
  place: (id) => ranksOf(texts)[shapeOf(id).place],
};

/** All events in the order of a column; equal ones by time. Kept until another column is chosen. */
let order = { column: "", ids: null };

function orderBy(column) {
  if (order.column !== column) {
    const keys = Float64Array.from({ length: events.count }, (_, id) => kSortKeys[column](id));
    const ids = Uint32Array.from(keys, (_, id) => id).sort((a, b) => keys[a] - keys[b] || a - b);
    order = { column, ids };
  }
  return order.ids;
}

function listEvents() {
  const inWindow = chosen.filtered.subarray(chosen.low, chosen.high);
  if (state.sort === "time") {
    listed = inWindow.slice();
  } else {
    const isWanted = new Uint8Array(events.count);
    inWindow.forEach((id) => (isWanted[id] = 1));
    listed = orderBy(state.sort).filter((id) => isWanted[id] === 1);
  }
  if (state.descending) {
    listed.reverse();
  }
}

const rowHeight = () => (sizes.grid <= 620 ? 58 : 34); // a narrow row has two lines, see events.css

function makeRow() {
  const cells = kColumns.map(({ name }, at) =>
    make("span", { role: "gridcell", className: `cell-${name}`, "aria-colindex": String(at + 1) }));
  const row = make("div", { role: "row", className: "grid-row", onclick: () => select(row.event) }, ...cells);
  return row;
}

function fillRow(row, place) {
  const id = listed[place];
  row.event = id;
  row.id = `event-${id}`;
  row.style.transform = `translateY(${place * rowHeight()}px)`;
  row.setAttribute("aria-rowindex", String(place + 2));
  row.setAttribute("aria-selected", String(id === state.selected));
  row.classList.toggle("odd", place % 2 === 1);
  kColumns.forEach(({ name, text }, at) => {
    const shown = text(id);
    row.children[at].title = shown;
    row.children[at].replaceChildren(...(name === "kind" ? [kindDot(events.kind[id])] : []),
      make("bdi", { textContent: shown }));
  });
}

const rowCount = () => Math.min(listed.length, kMostRows);

function drawRows() {
  const height = rowHeight();
  const top = Math.min(sizes.gridTop, Math.max(rowCount() * height - sizes.gridBody, 0));
  const first = Math.max(Math.floor(top / height) - 4, 0);
  const last = Math.min(Math.ceil((top + sizes.gridBody) / height) + 4, rowCount());
  const wanted = Math.max(last - first, 0);
  while (rowPool.length < wanted) {
    rowPool.push(makeRow());
  }
  rowPool.slice(0, wanted).forEach((row, at) => fillRow(row, first + at));
  if (gridSpace.childElementCount !== wanted) {
    gridSpace.replaceChildren(...rowPool.slice(0, wanted));
  }
  const isShown = rowPool.slice(0, wanted).some((row) => row.event === state.selected);
  grid.setAttribute("aria-activedescendant", isShown ? `event-${state.selected}` : "");
}

function drawList() {
  listEvents();
  gridSpace.style.height = `${rowCount() * rowHeight()}px`;
  grid.setAttribute("aria-rowcount", String(listed.length + 1));
  const all = events.count;
  byId("event-count").textContent = listed.length === all
    ? counted(all, "event") : `${numberText(listed.length)} of ${counted(all, "event")}`;
  byId("grid-empty").hidden = listed.length > 0;
  byId("grid-empty").textContent = all === 0
    ? "There is no event in these day files." : "No event of this filter lies in the time line's window.";
  drawRows();
}

function scrollGrid(top) {
  if (top !== sizes.gridTop) {
    gridBody.scrollTop = sizes.gridTop = top;
  }
}

/** Brings the selected event's row into sight. */
function showSelectedRow() {
  const place = listed.indexOf(state.selected);
  if (place >= 0) {
    const height = rowHeight();
    const top = place * height;
    scrollGrid(clamp(sizes.gridTop, top + height - sizes.gridBody, top));
  }
  drawRows();
}

function selectPlace(place) {
  if (listed.length > 0) {
    select(listed[clamp(place, 0, listed.length - 1)]);
  }
}

function listenToRows() {
  const page = () => Math.max(Math.floor(sizes.gridBody / rowHeight()) - 1, 1);
  const steps = {
    ArrowDown: () => 1, ArrowUp: () => -1, PageDown: page, PageUp: () => -page(),
    Home: () => -Infinity, End: () => Infinity,
  };
  grid.addEventListener("keydown", (event) => {
    const step = steps[event.key];
    if (step !== undefined && !event.ctrlKey && !event.altKey && !event.metaKey) {
      event.preventDefault();
      const place = listed.indexOf(state.selected);
      selectPlace(place < 0 && Number.isFinite(step()) ? 0 : place + step());
    }
  });
  gridBody.addEventListener("scroll", () => {
    sizes.gridTop = gridBody.scrollTop;
    drawRows();
  });
}

function makeGridHead() {
  for (const [at, { name, title, isFixed }] of kColumns.entries()) {
    const button = isFixed ? make("span", { className: "title" }, title) : make("button", {
      type: "button",
      onclick: () => change("sort", { sort: name, descending: state.sort === name ? !state.descending : name === "time" }),
    }, title, make("span", { className: "arrow", "aria-hidden": "true" }));
    byId("grid-head").append(make("span", {
      role: "columnheader", className: `cell-${name}`, "aria-colindex": String(at + 1),
    }, button));
  }
}

function drawGridHead() {
  kColumns.forEach(({ name, isFixed }, at) => {
    const isSorted = state.sort === name;
    const head = byId("grid-head").children[at];
    if (isFixed) {
      head.firstChild.textContent = deltaTitle();
      return;
    }
    head.setAttribute("aria-sort", !isSorted ? "none" : state.descending ? "descending" : "ascending");
    head.querySelector(".arrow").textContent = !isSorted ? "" : state.descending ? "\u2193" : "\u2191";
  });
}

/** Searches for a text as if the person had typed it. */
function search(query) {
  byId("search").value = query;
  change("filter", { query });
}

function startFilters() {
  const box = byId("search");
  const choice = byId("relay");
  choice.append(make("option", { value: "-1", textContent: "All relays" }),
    ...relays.map((name, relay) => make("option", { value: String(relay), textContent: name })));
  box.addEventListener("input", () => change("filter", { query: box.value }));
  choice.addEventListener("change", () => change("filter", { relay: Number(choice.value) }));
  byId("clear").addEventListener("click", () => {
    box.value = "";
    change("filter", { query: "", relay: -1, kinds: kinds.map(() => true) });
  });
  onChange(["filter"], () => {
    choice.value = String(state.relay);
    byId("clear").disabled = state.query === "" && state.relay < 0 && state.kinds.every(Boolean);
  });
}

function startEvents() {
  makeGridHead();
  listenToRows();
  startFilters();
  onChange(["filter", "window", "sort"], (topics) => {
    drawGridHead();
    drawList();
    if (topics.has("sort") || topics.has("filter")) {
      scrollGrid(0);
      showSelectedRow();
    }
  });
  onChange(["selection"], showSelectedRow);
  onChange(["zero"], () => {
    drawGridHead();
    drawRows();
  });
}
