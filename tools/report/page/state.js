// What the person has chosen, and what follows from it. Everything on the page draws itself from here.

const state = {
  from: bulk.from,
  to: bulk.to,
  query: "",
  relay: -1, // all
  kinds: kinds.map(() => true),
  sort: "time",
  descending: true,
  selected: -1,
  zero: -1, // the event from which differences count; -1: each from the one before it
  lane: 0, // of the time line's keyboard
};

/** Follows from the state: event numbers in order of time. */
const chosen = {
  matched: new Uint32Array(0), // by the search alone
  filtered: new Uint32Array(0), // by relay and kind as well
  low: 0, // the part of the filtered ones in the window
  high: 0,
  kindCounts: [],
  relayCounts: [],
};

const kShortestWindow = 20;
const drawers = [];
const due = new Set();

/**
 * `draw` is called when anything of `topics` has changed: "filter", "window", "selection", "lane", "sort", "theme";
 * or once filter and window have come to rest: "rest", for what need not follow every step of a zoom.
 */
function onChange(topics, draw) {
  drawers.push({ topics, draw });
}

const kRestAfter = 90; // milliseconds
let restTimer = 0;

/** Changes the state; what is to be drawn anew is drawn once, before the next frame. */
function change(topic, values) {
  Object.assign(state, values);
  if (due.size === 0) {
    requestAnimationFrame(redraw);
  }
  due.add(topic);
}

function redraw() {
  const topics = new Set(due);
  due.clear();
  measure();
  if (topics.has("filter")) {
    applyFilter();
  }
  if (topics.has("filter") || topics.has("window")) {
    applyWindow();
    clearTimeout(restTimer);
    restTimer = setTimeout(() => change("rest", {}), kRestAfter);
  }
  for (const { topics: wanted, draw } of drawers) {
    if (wanted.some((topic) => topics.has(topic))) {
      draw(topics);
    }
  }
}

/** Sizes that drawing needs, asked for before anything is written: asking in between makes browsers lay out anew. */
const sizes = { plot: 0, lanes: 0, lanesTop: 0, grid: 0, gridBody: 0, gridTop: 0 };

function measure() {
  sizes.plot = byId("plot").parentElement.clientWidth;
  sizes.lanes = byId("lanes").clientHeight;
  sizes.grid = byId("grid").clientWidth;
  sizes.gridBody = byId("grid-body").clientHeight;
  sizes.lanesTop = byId("lanes").scrollTop;
  sizes.gridTop = byId("grid-body").scrollTop;
}

let lastQuery = null;

function applyFilter() {
  if (state.query !== lastQuery) {
    lastQuery = state.query;
    chosen.matched = matchQuery(state.query.trim().toLowerCase());
  }
  chosen.filtered = chosen.matched.filter(
    (id) => state.kinds[events.kind[id]] && (state.relay < 0 || events.relay[id] === state.relay),
  );
}

let smallTexts = null;

/** The events that hold every word of the search somewhere. */
function matchQuery(query) {
  let ids = Uint32Array.from({ length: events.count }, (_, id) => id);
  smallTexts ??= texts.map((text) => text.toLowerCase());
  for (const word of query.split(/\s+/).filter((part) => part !== "")) {
    // Each text, shape and list is looked at once, not once for every event that has it.
    const inText = Uint8Array.from(smallTexts, (text) => Number(text.includes(word)));
    const inRelay = relays.map((name) => name.toLowerCase().includes(word));
    const inShape = shapes.map(({ event, place, plant, description, model }) =>
      [event, place, plant, description, model].some((text) => inText[text] === 1));
    const inLines = lineLists.map((list) => list.some((text) => inText[text] === 1));
    ids = ids.filter((id) => inText[events.value[id]] === 1 || inShape[events.shape[id]] ||
      inLines[events.lines[id]] || inRelay[events.relay[id]]);
  }
  return ids;
}

/** True when the window shows all there is; then events without a time are in it too. */
const isWhole = () => state.from <= whole.from && state.to >= whole.to;

/** The range of an ordered list of events that lies in a span of time. */
function rangeOf(ids, from, to) {
  const timed = lowerBound(ids.length, (at) => ids[at], events.timed);
  const low = lowerBound(timed, (at) => events.time[ids[at]], from);
  const high = lowerBound(timed, (at) => events.time[ids[at]], to);
  return [low, high];
}

function applyWindow() {
  const { filtered, matched } = chosen;
  [chosen.low, chosen.high] = isWhole() ? [0, filtered.length] : rangeOf(filtered, state.from, state.to);
  chosen.kindCounts = kinds.map(() => 0);
  chosen.relayCounts = relays.map(() => 0);
  const [low, high] = isWhole() ? [0, matched.length] : rangeOf(matched, state.from, state.to);
  for (let at = low; at < high; ++at) {
    const id = matched[at];
    const relay = events.relay[id];
    const kind = events.kind[id];
    chosen.kindCounts[kind] += state.relay < 0 || relay === state.relay ? 1 : 0;
    chosen.relayCounts[relay] += state.kinds[kind] ? 1 : 0;
  }
}

/** The milliseconds from the event before, among those of the filter, or from the one that is counted from; NaN for none. */
function deltaOf(id) {
  const { filtered } = chosen;
  const before = state.zero >= 0 ? state.zero : filtered[lowerBound(filtered.length, (at) => filtered[at], id) - 1];
  return before === undefined || !hasTime(id) || !hasTime(before)
    ? { span: NaN, isDoubted: false }
    : { span: events.time[id] - events.time[before], isDoubted: isDoubted(id) || isDoubted(before) };
}

const countInWindow = () => chosen.high - chosen.low;

/** Shows that span, as far as there is anything to see. */
function setWindow(from, to) {
  const widest = whole.to - whole.from;
  const span = clamp(to - from, Math.min(kShortestWindow, widest), widest);
  const middle = (from + to) / 2;
  const start = clamp(middle - span / 2, whole.from, whole.to - span);
  change("window", { from: start, to: start + span });
}

const showAll = () => setWindow(whole.from, whole.to);
const move = (part) => setWindow(state.from + (state.to - state.from) * part, state.to + (state.to - state.from) * part);

/** Makes the window `factor` times as long; what is at `fixed` stays where it is. */
function zoom(factor, fixed = zoomCentre()) {
  const span = clamp((state.to - state.from) * factor, kShortestWindow, whole.to - whole.from);
  const part = (fixed - state.from) / (state.to - state.from);
  setWindow(fixed - span * part, fixed + span * (1 - part));
}

/** A window of a day or an hour, beginning where the clock does. */
function zoomTo(span) {
  const start = momentAt(Math.floor(shownOf(zoomCentre()) / span) * span);
  setWindow(start, start + span);
}

/** The selected event when it is in sight; else the middle. */
function zoomCentre() {
  const time = state.selected >= 0 && hasTime(state.selected) ? events.time[state.selected] : NaN;
  return time >= state.from && time <= state.to ? time : (state.from + state.to) / 2;
}

/** Chooses one event, and brings it into the window. */
function select(id) {
  change("selection", { selected: id });
  if (id < 0 || !hasTime(id)) {
    return;
  }
  const time = events.time[id];
  if (time < state.from || time >= state.to) {
    const half = (state.to - state.from) / 2;
    setWindow(time - half, time + half);
  }
}

/** The next (1) or previous (-1) filtered event in time, of one relay or of all; the selected one when there is none. */
function neighbour(step, relay = -1) {
  const { filtered } = chosen;
  let at = state.selected < 0
    ? (step > 0 ? chosen.low - 1 : chosen.high)
    : lowerBound(filtered.length, (place) => filtered[place], state.selected);
  if (state.selected >= 0 && step > 0 && filtered[at] !== state.selected) {
    --at; // the selected one is filtered away
  }
  for (at += step; at >= 0 && at < filtered.length; at += step) {
    if (relay < 0 || events.relay[filtered[at]] === relay) {
      return filtered[at];
    }
  }
  return state.selected;
}
