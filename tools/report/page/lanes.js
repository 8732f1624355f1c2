// The lanes of the time line: one row for each relay, and one above them for the problems of the error log.
// Only the rows and the span in sight are drawn, and events are gathered into bars: many or few, a drawing costs
// one walk over the events of the window.

const kLaneHeight = 30;
const kBar = 4; // width of a bar with its gap
const kSmallestBar = 9;
const kTallestBar = 24;

const hasProblemLane = problems.some(({ time }) => !Number.isNaN(time));
/** Row of the time line to relay; -1 means the problems. */
const lanes = [...(hasProblemLane ? [-1] : []), ...relays.map((_, relay) => relay)];
state.lane = Math.min(lanes.length - 1, hasProblemLane ? 1 : 0);

const lanesBox = byId("lanes");
const plot = byId("plot");
const labelButtons = [];

function makeLaneLabels() {
  const list = byId("lane-labels");
  for (const relay of lanes) {
    const isRelay = relay >= 0;
    const name = make("bdi", { className: "name", textContent: isRelay ? relays[relay] : "Problems" });
    const plant = make("bdi", { className: "plant", textContent: isRelay ? plants[relay] : "of the error log" });
    const count = make("span", { className: "count" });
    const button = make("button", {
      type: "button",
      tabIndex: -1, // there may be hundreds; the choice of a relay below does the same
      className: `lane-label${isRelay && isSilent(relay) ? " silent" : ""}`,
      title: isRelay ? `${relays[relay]} ${plants[relay]}` : "Lines of the error log, at their local time",
      onclick: () => (isRelay ? toggleRelay(relay) : byId("problems-card").scrollIntoView({ block: "nearest" })),
    }, name, plant, count);
    labelButtons.push({ relay, button, count });
    list.append(button);
  }
}

const toggleRelay = (relay) => change("filter", { relay: state.relay === relay ? -1 : relay });

function drawLaneLabels() {
  const seenProblems = problems.filter(({ time }) => time >= state.from && time <= state.to).length;
  for (const { relay, button, count } of labelButtons) {
    count.textContent = numberText(relay >= 0 ? chosen.relayCounts[relay] : seenProblems);
    if (relay >= 0) {
      button.setAttribute("aria-pressed", String(state.relay === relay));
      button.classList.toggle("away", state.relay >= 0 && state.relay !== relay);
    }
  }
}

/** The rows in sight: their first and last, and where the first lies. */
function lanesInSight() {
  const top = sizes.lanesTop;
  const first = clamp(Math.floor(top / kLaneHeight), 0, lanes.length);
  const last = clamp(Math.ceil((top + plotHeight()) / kLaneHeight), first, lanes.length);
  return { first, last, y: first * kLaneHeight - top };
}

const plotWidth = () => sizes.plot;
const plotHeight = () => Math.min(lanes.length * kLaneHeight, sizes.lanes);

function drawLanes() {
  const [width, height] = [plotWidth(), plotHeight()];
  plot.style.height = `${height}px`;
  const pen = openCanvas(plot, width, height);
  if (pen === null) {
    return;
  }
  const scale = makeScale(state.from, state.to, width);
  const rows = lanesInSight();
  drawBackground(pen, scale, rows, width, height);
  drawBars(pen, scale, rows, width);
  drawProblemMarks(pen, scale, rows);
  drawMarks(pen, scale, rows, width, height);
}

function drawBackground(pen, scale, rows, width, height) {
  for (let row = rows.first; row < rows.last; ++row) {
    const y = rows.y + (row - rows.first) * kLaneHeight;
    if (row === state.lane && document.activeElement === plot) {
      pen.fillStyle = theme.wash;
      pen.fillRect(0, y, width, kLaneHeight);
    }
    pen.fillStyle = theme.line;
    pen.fillRect(0, y + kLaneHeight - 1, width, 1);
  }
  for (const { time, isMajor } of ticksOf(state.from, state.to, width)) {
    pen.fillStyle = isMajor ? theme.strongLine : theme.line;
    pen.fillRect(Math.round(scale.toX(time)), 0, 1, height);
  }
}

/** Counts of the events in the window by row, bar and kind; those of clocks that are not trusted as further kinds. */
function gatherBars(rows, scale, bars) {
  const rowOfRelay = new Int32Array(relays.length).fill(-1);
  for (let row = rows.first; row < rows.last; ++row) {
    if (lanes[row] >= 0) {
      rowOfRelay[lanes[row]] = row - rows.first;
    }
  }
  const counts = new Uint32Array((rows.last - rows.first) * bars * kSlots);
  const [low, high] = rangeOf(chosen.filtered, state.from, state.to);
  for (let at = low; at < high; ++at) {
    const id = chosen.filtered[at];
    const row = rowOfRelay[events.relay[id]];
    if (row >= 0) {
      const bar = Math.min(Math.floor(scale.toX(events.time[id]) / kBar), bars - 1);
      ++counts[(row * bars + bar) * kSlots + events.kind[id] + (isDoubted(id) ? kinds.length : 0)];
    }
  }
  return counts;
}

function drawBars(pen, scale, rows, width) {
  const bars = Math.max(Math.ceil(width / kBar), 1);
  const counts = gatherBars(rows, scale, bars);
  const sums = new Uint32Array(counts.length / kSlots);
  let most = 1;
  for (let bar = 0; bar < sums.length; ++bar) {
    for (let slot = 0; slot < kSlots; ++slot) {
      sums[bar] += counts[bar * kSlots + slot];
    }
    most = Math.max(most, sums[bar]);
  }
  const stacks = makeStacks(kSlots);
  for (let bar = 0; bar < sums.length; ++bar) {
    if (sums[bar] > 0) {
      const bottom = rows.y + (Math.floor(bar / bars) + 1) * kLaneHeight - 3;
      const height = kSmallestBar + (kTallestBar - kSmallestBar) * (Math.log(sums[bar]) / Math.log(Math.max(most, 2)));
      addStack(stacks, (bar % bars) * kBar, bottom, height, sums[bar], counts, bar * kSlots);
    }
  }
  drawStacks(pen, stacks);
}

// Bars are gathered first and drawn kind by kind: changing the colour costs more than drawing.
const kSlots = 2 * kinds.length;
const makeStacks = (slots) => Array.from({ length: slots }, () => []);

/** One bar, its kinds on top of each other; a rare one keeps a pixel, and a hollow one its middle. */
function addStack(stacks, x, bottom, height, sum, counts, first) {
  let y = bottom;
  for (let slot = stacks.length - 1; slot >= 0; --slot) {
    const count = counts[first + slot];
    if (count > 0) {
      const part = Math.max((height * count) / sum, slot < kinds.length ? 1.5 : 4);
      y -= part;
      stacks[slot].push(x, y, part);
    }
  }
}

function drawStacks(pen, stacks) {
  stacks.forEach((parts, slot) => {
    pen.fillStyle = pen.strokeStyle = theme.kinds[slot % kinds.length];
    pen.lineWidth = 1;
    for (let at = 0; at < parts.length; at += 3) {
      if (slot < kinds.length) {
        pen.fillRect(parts[at], parts[at + 1], kBar - 1, parts[at + 2]);
      } else {
        pen.strokeRect(parts[at] + 0.5, parts[at + 1] + 0.5, kBar - 2, parts[at + 2] - 1);
      }
    }
  });
}

function drawProblemMarks(pen, scale, rows) {
  if (!hasProblemLane || rows.first > 0) {
    return;
  }
  const middle = rows.y + kLaneHeight / 2;
  pen.fillStyle = theme.problem;
  let lastX = -Infinity;
  for (const { time } of problems) {
    const x = scale.toX(time);
    if (time >= state.from && time <= state.to && x - lastX >= 2) {
      lastX = x;
      pen.beginPath();
      pen.moveTo(x, middle - 6);
      pen.lineTo(x + 5, middle + 5);
      pen.lineTo(x - 5, middle + 5);
      pen.fill();
    }
  }
}

/** What the person points at, drags over, and has chosen. */
const pointer = { x: -1, dragFrom: -1, dragTo: -1 };

function drawMarks(pen, scale, rows, width, height) {
  if (pointer.dragFrom >= 0) {
    pen.fillStyle = theme.wash;
    pen.fillRect(Math.min(pointer.dragFrom, pointer.dragTo), 0, Math.abs(pointer.dragTo - pointer.dragFrom), height);
  }
  if (pointer.x >= 0) {
    pen.fillStyle = theme.quiet;
    pen.fillRect(Math.round(pointer.x), 0, 1, height);
  }
  const id = state.selected;
  const row = id >= 0 && hasTime(id) ? lanes.indexOf(events.relay[id]) : -1;
  const x = row >= 0 ? scale.toX(events.time[id]) : -1;
  if (x >= 0 && x <= width) {
    const y = rows.y + (row - rows.first) * kLaneHeight;
    pen.fillStyle = theme.ink;
    pen.fillRect(Math.round(x), 0, 1, height);
    pen.strokeStyle = theme.ink;
    pen.lineWidth = 2;
    pen.strokeRect(Math.round(x) - 4, y + 2, 9, kLaneHeight - 5);
  }
}

function drawAxis() {
  const width = plotWidth();
  const height = 24;
  const pen = openCanvas(byId("axis"), width, height);
  if (pen === null) {
    return;
  }
  const scale = makeScale(state.from, state.to, width);
  pen.font = theme.font;
  pen.textBaseline = "middle";
  let free = 0;
  for (const { time, label, isMajor } of ticksOf(state.from, state.to, width)) {
    const x = Math.round(scale.toX(time));
    pen.fillStyle = isMajor ? theme.strongLine : theme.line;
    pen.fillRect(x, isMajor ? 4 : 14, 1, height);
    if (x >= free && x + 5 + pen.measureText(label).width <= width) {
      pen.fillStyle = isMajor ? theme.ink : theme.quiet;
      pen.fillText(label, x + 5, height / 2);
      free = x + 12 + pen.measureText(label).width;
    }
  }
}
