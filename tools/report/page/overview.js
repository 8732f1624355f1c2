// The overview above the lanes: all events of the filter over the whole time, and the window on it, which can be
// drawn anew, moved, and made longer at its ends.

const overview = byId("overview");
const kOverviewHeight = 52;
const kGrip = 7; // how near to an end counts as on it

/** Counts by bar and kind, kept while only the window moves. */
let histogram = { width: 0, bars: 0, counts: new Uint32Array(0), sums: new Uint32Array(0) };

function drawOverview(isNew = true) {
  const width = plotWidth();
  const pen = openCanvas(overview, width, kOverviewHeight);
  if (pen === null) {
    return;
  }
  const scale = makeScale(whole.from, whole.to, width);
  if (isNew || histogram.width !== width) {
    histogram = countBars(scale, width);
  }
  drawHistogram(pen);
  drawWindow(pen, scale, width);
}

function countBars(scale, width) {
  const bars = Math.max(Math.ceil(width / kBar), 1);
  const counts = new Uint32Array(bars * kinds.length);
  const sums = new Uint32Array(bars);
  const { filtered } = chosen;
  const [, timed] = rangeOf(filtered, -Infinity, Infinity);
  for (let at = 0; at < timed; ++at) {
    const id = filtered[at];
    const bar = clamp(Math.floor(scale.toX(events.time[id]) / kBar), 0, bars - 1);
    ++counts[bar * kinds.length + events.kind[id]];
    ++sums[bar];
  }
  return { width, bars, counts, sums };
}

function drawHistogram(pen) {
  const { bars, counts, sums } = histogram;
  const most = sums.reduce((a, b) => Math.max(a, b), 1);
  const stacks = makeStacks(kinds.length);
  for (let bar = 0; bar < bars; ++bar) {
    if (sums[bar] > 0) {
      const height = 3 + (kOverviewHeight - 9) * Math.sqrt(sums[bar] / most);
      addStack(stacks, bar * kBar, kOverviewHeight - 2, height, sums[bar], counts, bar * kinds.length);
    }
  }
  drawStacks(pen, stacks);
}

function drawWindow(pen, scale, width) {
  const [left, right] = [scale.toX(state.from), scale.toX(state.to)];
  pen.fillStyle = theme.band;
  pen.fillRect(0, 0, left, kOverviewHeight);
  pen.fillRect(right, 0, width - right, kOverviewHeight);
  pen.strokeStyle = theme.accent;
  pen.lineWidth = 1.5;
  pen.strokeRect(left + 0.75, 0.75, Math.max(right - left - 1.5, 1), kOverviewHeight - 1.5);
  pen.fillStyle = theme.accent;
  for (const x of [left, right - 4]) {
    pen.fillRect(x, kOverviewHeight / 2 - 9, 4, 18);
  }
}

/** What a drag that begins there does with the window; `from` and `to` are the pointer's times. */
function dragKind(x, scale) {
  const [left, right] = [scale.toX(state.from), scale.toX(state.to)];
  if (isWhole()) {
    return "draw";
  }
  if (Math.abs(x - left) <= kGrip) {
    return "left";
  }
  if (Math.abs(x - right) <= kGrip) {
    return "right";
  }
  return x > left && x < right ? "move" : "draw";
}

const kDrags = {
  draw: (window, from, to) => setWindow(Math.min(from, to), Math.max(from, to)),
  left: (window, from, to) => setWindow(Math.min(to, window.to - kShortestWindow), window.to),
  right: (window, from, to) => setWindow(window.from, Math.max(to, window.from + kShortestWindow)),
  move: (window, from, to) => setWindow(window.from + to - from, window.to + to - from),
};
const kCursors = { draw: "crosshair", left: "ew-resize", right: "ew-resize", move: "grab" };

function listenToOverview() {
  let drag = null;
  const scaleNow = () => makeScale(whole.from, whole.to, plotWidth());
  overview.addEventListener("pointerdown", (event) => {
    const scale = scaleNow();
    drag = {
      kind: dragKind(event.offsetX, scale),
      time: scale.toTime(event.offsetX),
      x: event.offsetX,
      window: { from: state.from, to: state.to },
    };
    overview.setPointerCapture(event.pointerId);
  });
  overview.addEventListener("pointermove", (event) => {
    const scale = scaleNow();
    overview.style.cursor = kCursors[drag?.kind ?? dragKind(event.offsetX, scale)];
    if (drag !== null && Math.abs(event.offsetX - drag.x) > 2) {
      kDrags[drag.kind](drag.window, drag.time, scale.toTime(clamp(event.offsetX, 0, plotWidth())));
    }
  });
  overview.addEventListener("pointerup", () => (drag = null));
  overview.addEventListener("pointercancel", () => (drag = null));
  overview.addEventListener("dblclick", showAll);
  overview.addEventListener("wheel", (event) => {
    event.preventDefault();
    zoom(wheelFactor(event), clamp(scaleNow().toTime(event.offsetX), state.from, state.to));
  }, { passive: false });
}

/** How much a turn of the wheel zooms; a touchpad turns it in many small steps. */
const wheelFactor = (event) => Math.exp(clamp(event.deltaY * (event.deltaMode === 0 ? 1 : 30), -200, 200) * 0.0022);
