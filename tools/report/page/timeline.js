// The time line's mouse, wheel and keys, its legend and its buttons.

const tip = byId("tip");
const kNear = 5; // pixels within which an event is pointed at

/** The events that the pointer means: those near it in its lane. */
function eventsAt(x, y) {
  const relay = lanes[Math.floor((y + sizes.lanesTop) / kLaneHeight)];
  const scale = makeScale(state.from, state.to, plotWidth());
  const [from, to] = [scale.toTime(x - kNear), scale.toTime(x + kNear)];
  if (relay === -1) {
    return { relay, found: problems.filter(({ time }) => time >= from && time <= to) };
  }
  const [low, high] = rangeOf(chosen.filtered, from, to);
  const found = Array.from(chosen.filtered.subarray(low, high)).filter((id) => events.relay[id] === relay);
  const distance = (id) => Math.abs(scale.toX(events.time[id]) - x);
  const nearest = found.reduce((best, id) => (best < 0 || distance(id) < distance(best) ? id : best), -1);
  return { relay, found, nearest };
}

const kTipLines = 6;

function showTip(x, y) {
  const { relay, found } = eventsAt(x, y);
  tip.hidden = found.length === 0;
  if (tip.hidden) {
    return;
  }
  const isProblem = relay === -1;
  const lines = found.slice(0, kTipLines).map((item) => (isProblem
    ? make("p", {}, make("time", { textContent: clockText(item.time) }), make("bdi", { textContent: item.message }))
    : make("p", {}, kindDot(events.kind[item]), make("time", { textContent: `${clockText(events.time[item], "all")} ${markText(item)}`.trimEnd() }),
      make("bdi", { textContent: eventText(item) }), make("bdi", { className: "quiet", textContent: valueText(item) }))));
  const time = isProblem ? found[0].time : events.time[found[0]];
  const rest = found.length - lines.length;
  tip.replaceChildren(
    make("strong", { textContent: `${isProblem ? "Problems" : relays[relay]} \u00B7 ${weekdayText(time)} ${dateText(time)}` }),
    ...lines, ...(rest > 0 ? [make("p", { className: "quiet", textContent: `and ${numberText(rest)} more` })] : []));
  const chart = byId("chart").getBoundingClientRect();
  const box = plot.getBoundingClientRect();
  const left = box.left - chart.left + x;
  const isRight = left > chart.width / 2;
  tip.style.left = isRight ? "auto" : `${left + 14}px`;
  tip.style.right = isRight ? `${chart.width - left + 14}px` : "auto";
  tip.style.top = `${box.top - chart.top + y + 16}px`;
}

function hidePointer() {
  pointer.x = -1;
  tip.hidden = true;
  change("lane", {});
}

function listenToPointer() {
  let start = null;
  plot.addEventListener("pointerdown", (event) => {
    if (event.button !== 0) {
      return;
    }
    start = { x: event.offsetX, y: event.offsetY, moves: event.shiftKey, from: state.from, to: state.to };
    plot.setPointerCapture(event.pointerId);
  });
  plot.addEventListener("pointermove", (event) => {
    pointer.x = event.offsetX;
    if (start === null) {
      showTip(event.offsetX, event.offsetY);
    } else if (start.moves) {
      const shift = ((start.x - event.offsetX) / plotWidth()) * (start.to - start.from);
      setWindow(start.from + shift, start.to + shift);
    } else if (Math.abs(event.offsetX - start.x) > 3 || pointer.dragFrom >= 0) {
      tip.hidden = true;
      pointer.dragFrom = start.x;
      pointer.dragTo = clamp(event.offsetX, 0, plotWidth());
    }
    change("lane", {});
  });
  const finish = (event) => {
    const scale = makeScale(state.from, state.to, plotWidth());
    if (pointer.dragFrom >= 0) {
      const times = [pointer.dragFrom, pointer.dragTo].map(scale.toTime).sort((a, b) => a - b);
      setWindow(times[0], times[1]);
    } else if (start !== null && !start.moves && event.type === "pointerup") {
      chooseAt(event.offsetX, event.offsetY);
    }
    start = null;
    pointer.dragFrom = -1;
    change("lane", {});
  };
  plot.addEventListener("pointerup", finish);
  plot.addEventListener("pointercancel", finish);
  plot.addEventListener("pointerleave", hidePointer);
  plot.addEventListener("dblclick", (event) => {
    zoom(1 / 4, makeScale(state.from, state.to, plotWidth()).toTime(event.offsetX));
  });
  plot.addEventListener("wheel", zoomByWheel, { passive: false });
}

function chooseAt(x, y) {
  const { relay, found, nearest } = eventsAt(x, y);
  state.lane = clamp(Math.floor((y + sizes.lanesTop) / kLaneHeight), 0, lanes.length - 1);
  if (relay === -1 && found.length > 0) {
    byId("problems-card").scrollIntoView({ block: "nearest" });
  } else if (nearest >= 0) {
    select(nearest);
  }
}

/** The wheel belongs to the page until the person has turned to the time line. */
function zoomByWheel(event) {
  const isHere = event.ctrlKey || event.metaKey || document.activeElement === plot;
  if (!isHere) {
    return;
  }
  event.preventDefault();
  tip.hidden = true;
  if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
    move(clamp(event.deltaX || event.deltaY, -200, 200) / 1000);
  } else {
    zoom(wheelFactor(event), makeScale(state.from, state.to, plotWidth()).toTime(event.offsetX));
  }
}

const kPart = 0.25;
const kKeys = {
  ArrowLeft: () => move(-kPart),
  ArrowRight: () => move(kPart),
  PageUp: () => move(-1),
  PageDown: () => move(1),
  ArrowUp: () => moveLane(-1),
  ArrowDown: () => moveLane(1),
  Home: () => setWindow(whole.from, whole.from + state.to - state.from),
  End: () => setWindow(whole.to - state.to + state.from, whole.to),
  "+": () => zoom(1 / 2),
  "=": () => zoom(1 / 2),
  "-": () => zoom(2),
  0: showAll,
  Escape: showAll,
  d: () => zoomTo(kDay),
  h: () => zoomTo(kHour),
  n: () => select(neighbour(1, lanes[state.lane])),
  p: () => select(neighbour(-1, lanes[state.lane])),
};

function moveLane(step) {
  const lane = clamp(state.lane + step, 0, lanes.length - 1);
  const top = lane * kLaneHeight;
  lanesBox.scrollTop = clamp(sizes.lanesTop, top + kLaneHeight - sizes.lanes, top);
  plot.setAttribute("aria-label", `Time line of all relays: ${lanes[lane] < 0 ? "problems" : relays[lanes[lane]]}`);
  change("lane", { lane });
}

function listenToKeys() {
  plot.addEventListener("keydown", (event) => {
    const act = kKeys[event.key.length === 1 ? event.key.toLowerCase() : event.key];
    if (act !== undefined && !event.ctrlKey && !event.metaKey && !event.altKey) {
      event.preventDefault();
      tip.hidden = true;
      act();
    }
  });
  for (const type of ["focus", "blur"]) {
    plot.addEventListener(type, () => change("lane", {}));
  }
  const buttons = {
    earlier: () => move(-kPart), later: () => move(kPart), "zoom-in": () => zoom(1 / 2), "zoom-out": () => zoom(2),
    "zoom-day": () => zoomTo(kDay), "zoom-hour": () => zoomTo(kHour), "zoom-all": showAll,
  };
  for (const [id, act] of Object.entries(buttons)) {
    byId(id).addEventListener("click", act);
  }
}

const legendCounts = [];

function makeLegend() {
  kinds.forEach((name, kind) => {
    const count = make("span", { className: "count" });
    const button = make("button", {
      type: "button",
      className: "chip",
      title: `Show or hide: ${name}`,
      onclick: () => change("filter", { kinds: state.kinds.map((shown, at) => (at === kind ? !shown : shown)) }),
    }, kindDot(kind), name, count);
    legendCounts.push({ button, count });
    byId("legend").append(button);
  });
}

function drawLegend() {
  legendCounts.forEach(({ button, count }, kind) => {
    button.setAttribute("aria-pressed", String(state.kinds[kind]));
    count.textContent = numberText(chosen.kindCounts[kind]);
  });
}

function drawWindowText() {
  byId("window").textContent = `${spanText(state.from, state.to)} (${durationText(state.to - state.from)})`;
  byId("zoom-all").disabled = byId("zoom-out").disabled = isWhole();
  byId("earlier").disabled = state.from <= whole.from;
  byId("later").disabled = state.to >= whole.to;
}

/** On the page and on paper. */
const makeMarks = () => kMarks.map(([mark, meaning]) =>
  make("span", {}, make("strong", { textContent: mark }), ` ${meaning}`));

function startTimeLine() {
  byId("marks").append(...makeMarks());
  byId("marks").hidden = kMarks.length === 0;
  makeLaneLabels();
  makeLegend();
  listenToPointer();
  listenToKeys();
  listenToOverview();
  lanesBox.addEventListener("scroll", () => change("lane", {}));
  onChange(["filter", "window"], () => {
    drawLaneLabels();
    drawLegend();
    drawWindowText();
  });
  onChange(["filter", "window", "selection", "lane", "theme"], drawLanes);
  onChange(["filter", "window", "theme"], (topics) => {
    drawAxis();
    drawOverview(topics.has("filter"));
  });
}
