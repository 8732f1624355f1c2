// What surrounds the events: the figures at a glance, the relays, the problems of the log, damage in files.

function makeTile(name, number, note, tone = "") {
  return make("li", { className: `tile ${tone}` },
    make("span", { className: "tile-name", textContent: name }),
    make("strong", { textContent: numberText(number) }),
    make("span", { className: "quiet", textContent: note }));
}

const alarming = problems.filter(({ mute }) => mute === undefined);

function problemNote() {
  if (logs.length === 0) {
    return "no error log was given";
  }
  const last = problems.findLast(({ time }) => !Number.isNaN(time));
  const ofMuted = problems.length - alarming.length;
  return `${last === undefined ? "the error log has none" : `last ${stampText(last.time).slice(0, 16)}`}${
    ofMuted > 0 ? `; ${numberText(ofMuted)} of muted relays` : ""}`;
}

function silentNote() {
  const days = counted(source.silent, "day");
  return `no event for more than ${days}${kEnd < kMade ? ` up to ${stampText(kEnd).slice(0, 16)}` : ""}`;
}

function fillTiles() {
  const silent = relays.filter((_, relay) => isSilent(relay)).length;
  const untimed = events.count - events.timed;
  byId("tiles").append(
    makeTile("Relays", relays.length, counted(files.length, "day file")),
    makeTile("Events", events.count, untimed > 0 ? `${numberText(untimed)} without a time` : "all with a time"),
    makeTile("Problems", problems.length, problemNote(), alarming.length > 0 ? "is-problem" : ""),
    makeTile("Silent relays", silent, silentNote(), silent > 0 ? "is-warning" : ""),
    makeTile("Damaged places", damage.length,
      failures.length > 0 ? `${numberText(failures.length)} not readable` : "in the day files",
      damage.length + failures.length > 0 ? "is-problem" : ""));
}

function fillHead() {
  const title = readable(source.title);
  document.title = title;
  byId("title").textContent = title;
  byId("period").textContent = events.timed > 0
    ? spanText(events.time[0], events.time[events.timed - 1]) : "No event with a time";
  const limits = [
    ...(source.since !== "" ? [`since ${source.since}`] : []),
    ...(source.until !== "" ? [`until ${source.until}`] : []),
    ...(source.relay !== "" ? [`relays with "${readable(source.relay)}"`] : []),
    ...(source.match !== "" ? [`events with "${readable(source.match)}"`] : []),
  ].join(", ");
  if (kZone !== "") {
    byId("clocks").textContent = `All times are in the zone ${kZone}, by what the relays' clocks show.`;
  }
  byId("made").textContent = `Made ${source.made.slice(0, 16)} UTC${limits === "" ? "" : `; ${limits}`}`;
}

/** A table whose first cell of a row is its heading. */
function makeTable(heads, rows) {
  return make("table", {},
    make("thead", {}, make("tr", {}, ...heads.map((head) => make("th", { scope: "col", textContent: head })))),
    make("tbody", {}, ...rows));
}

const relayRows = [];

function fillRelays() {
  const totals = relays.map(() => 0);
  events.relay.forEach((relay) => ++totals[relay]);
  relays.forEach((name, relay) => {
    const shown = make("td", { className: "number" });
    const bar = make("span", { className: "bar", "aria-hidden": "true" });
    const button = make("button", { type: "button", className: "link", onclick: () => toggleRelay(relay) },
      make("bdi", { textContent: name }));
    const plant = make("bdi", { className: "plant", textContent: plants[relay] });
    const last = lastEvents[relay];
    const row = make("tr", { className: isSilent(relay) ? "silent" : "" },
      make("th", { scope: "row" }, button, plant),
      make("td", { className: "bar-cell" }, bar), shown,
      make("td", { className: "number", textContent: numberText(totals[relay]) }),
      make("td", {}, Number.isNaN(last) ? "never" : stampText(last).slice(0, 16),
        ...(isSilent(relay) ? [make("span", { className: "badge", textContent: "silent" })] : []),
        ...(muteOf(relay) !== undefined ? [make("p", { className: "quiet" }, text(muteOf(relay).text))] : [])));
    relayRows.push({ relay, row, shown, bar, button });
  });
  const unlisted = mutes.filter(({ relay }) => relay < 0);
  byId("relay-note").textContent = unlisted.map((mute) => `${mute.label} is ${mute.text}`).join("; ");
  byId("relay-list").append(relays.length > 0
    ? makeTable(["Relay", "", "Shown", "All", "Last event"], relayRows.map(({ row }) => row))
    : make("p", { className: "empty", textContent: "No day file was found." }));
}

function drawRelays() {
  const most = Math.max(...chosen.relayCounts, 1);
  for (const { relay, shown, bar, button, row } of relayRows) {
    const count = chosen.relayCounts[relay];
    shown.textContent = numberText(count);
    bar.style.width = count > 0 ? `max(1px, ${(100 * count) / most}%)` : "0";
    row.classList.toggle("chosen", state.relay === relay);
    button.setAttribute("aria-pressed", String(state.relay === relay));
  }
}

const kProblemsAtOnce = 200;
let problemsShown = kProblemsAtOnce;

/** The problems in the window, the newest first; those without a time always. */
function problemsInWindow() {
  return problems
    .filter(({ time }) => Number.isNaN(time) || isWhole() || (time >= state.from && time <= state.to))
    .reverse();
}

function problemItem({ time, message, connection, status, log, mute }) {
  return make("li", { className: mute === undefined ? "" : "muted" },
    make("p", { className: "problem-head" },
      make("time", { textContent: Number.isNaN(time) ? "no time" : stampText(time).slice(0, 19) }),
      ...(logs.length > 1 ? [make("span", { className: "tag" }, text(log))] : []),
      ...(connection !== "" ? [make("span", { className: "tag" }, text(connection))] : []),
      ...(mute === undefined ? [] : [make("span", { className: "tag" }, text(mute.text))])),
    make("p", {}, text(message), ...(status !== "" ? [make("span", { className: "status" }, text(status))] : [])));
}

function drawProblems() {
  const inWindow = problemsInWindow();
  byId("problem-note").textContent = logs.length === 0 ? ""
    : inWindow.length === problems.length ? logs.join(", ") : `${numberText(inWindow.length)} of ${numberText(problems.length)}`;
  const rest = inWindow.length - problemsShown;
  const list = inWindow.length > 0
    ? make("ol", { className: "problems" }, ...inWindow.slice(0, problemsShown).map(problemItem))
    : make("p", { className: "empty", textContent: noProblemText() });
  byId("problem-list").replaceChildren(list, ...(rest > 0 ? [make("button", {
    type: "button",
    textContent: `Show ${numberText(Math.min(rest, kProblemsAtOnce))} more`,
    onclick: () => {
      problemsShown += kProblemsAtOnce;
      drawProblems();
    },
  })] : []));
}

function noProblemText() {
  if (logs.length === 0) {
    return "Give the error log with --log to see its problems here.";
  }
  return problems.length === 0 ? "The error log names no problem." : "No problem in the time line's window.";
}

const kDamageAtMost = 500;

function fillDamage() {
  byId("damage-card").hidden = damage.length + failures.length === 0;
  byId("damage-note").textContent = damage.length > kDamageAtMost
    ? `The first ${numberText(kDamageAtMost)} of ${numberText(damage.length)}; ruvoctl events shows all.`
    : "What is around a damaged place is shown all the same.";
  const rows = damage.slice(0, kDamageAtMost).map(({ file, offset, length, reason }) => make("tr", {},
    make("th", { scope: "row" }, text(files[file].path)),
    make("td", { className: "number", textContent: numberText(offset) }),
    make("td", { className: "number", textContent: numberText(length) }),
    make("td", {}, text(reason))));
  byId("damage-list").append(
    ...failures.map((failure) => make("p", { className: "failure" }, "Not read: ", text(failure))),
    ...(rows.length > 0 ? [makeTable(["File", "Offset", "Bytes", "Why"], rows)] : []));
}

function startPanels() {
  fillHead();
  fillTiles();
  fillRelays();
  fillDamage();
  onChange(["rest"], () => {
    drawRelays();
    problemsShown = kProblemsAtOnce;
    drawProblems();
  });
}
