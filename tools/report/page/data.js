// What the page shows, unpacked from the compact form in which it is stored: columns of numbers, and every text
// once.

const source = JSON.parse(byId("data").textContent);
const texts = source.texts.map(readable);
const relays = source.relays.map(readable);
const kinds = source.kinds;
const files = source.files.map(([relay, path]) => ({ relay, path: readable(path) }));
const shapes = source.shapes.map(([event, kind, place, plant, description, model, code, flags]) => ({
  event, kind, place, plant, description, model, code,
  isExtended: (flags & 1) !== 0, clockDoubted: (flags & 2) !== 0, summerTime: (flags & 4) !== 0,
  recordDoubted: (flags & 8) !== 0,
}));
const lineLists = source.lists;

// With relays lined up by their clocks, times are UTC and shown in a zone; else there is none.
const kZone = readable(source.zone);

/** What the zone's clock is ahead of UTC at that moment. */
function zoneAhead(moment) {
  const changes = source.zone_ahead;
  const at = lowerBound(changes.length, (place) => changes[place][0], moment + 1) - 1;
  return changes.length > 0 ? changes[Math.max(at, 0)][1] : 0;
}

const shownOf = (moment) => moment + zoneAhead(moment);
/** The moment at which the zone's clock shows that. */
const momentAt = (shown) => shown - zoneAhead(shown - zoneAhead(shown));
/** Its UTC parts are those that the clock shows. */
const dateOf = (moment) => new Date(shownOf(moment));

/** The events' columns; an event is its number, and numbers follow the time. Those without a time come last. */
const events = unpackEvents(source.events);

function unpackEvents(packed) {
  const count = packed.time.length;
  const columns = {
    count,
    timed: packed.timed,
    time: new Float64Array(count),
    file: Uint32Array.from(packed.file),
    shape: Uint32Array.from(packed.shape),
    value: Uint32Array.from(packed.value),
    lines: Uint32Array.from(packed.lines),
    offset: unpackDeltas(packed.offset, packed.file),
    id: unpackDeltas(packed.id, packed.file),
    doubtful: Uint8Array.from(packed.doubtful ?? new Uint8Array(count)),
    ahead: Float64Array.from(packed.ahead ?? new Float64Array(count)),
    relay: new Uint32Array(count),
    kind: new Uint8Array(count),
  };
  let time = 0;
  for (let id = 0; id < count; ++id) {
    time = id < packed.timed ? time + packed.time[id] : packed.time[id];
    columns.time[id] = time;
    columns.relay[id] = files[columns.file[id]].relay;
    columns.kind[id] = shapes[columns.shape[id]].kind;
  }
  return columns;
}

/** Numbers of which each was stored as what it adds to the one before it from the same file. */
function unpackDeltas(deltas, fileOf) {
  const last = new Float64Array(files.length);
  return Float64Array.from(deltas, (delta, id) => (last[fileOf[id]] += delta));
}

const hasTime = (id) => id < events.timed;
const shapeOf = (id) => shapes[events.shape[id]];
const eventText = (id) => texts[shapeOf(id).event];
const valueText = (id) => texts[events.value[id]];
const placeText = (id) => texts[shapeOf(id).place];
const relayText = (id) => relays[events.relay[id]];
const isDoubtful = (id) => events.doubtful[id] === 1;
const isDoubted = (id) => shapeOf(id).clockDoubted || isDoubtful(id);
/** "?" for a clock that its relay does not trust, "~" for a moment that may be wrong, "s" for summer time. */
const markText = (id) =>
  `${shapeOf(id).clockDoubted ? "?" : ""}${isDoubtful(id) ? "~" : ""}${shapeOf(id).summerTime ? "s" : ""}`;
const timeText = (id) => (hasTime(id) ? `${stampText(events.time[id])} ${markText(id)}`.trimEnd() : "no time");
const kMarks = [
  ["?", "the relay reports its clock as unreliable; hollow in the time line", shapes.some(({ clockDoubted }) => clockDoubted)],
  ["~", "the moment may be wrong: an hour that the clock shows twice or skips, or an unknown zone; hollow, too",
    events.doubtful.includes(1)],
  ["s", "summer time", shapes.some(({ summerTime }) => summerTime)],
].filter(([, , isThere]) => isThere);

/** Lines of the error log, in their order. A foreign line has no time. */
const logs = source.logs.map(readable);
const mutes = source.mutes.map(([relay, label, until, why]) => ({
  relay, label: readable(label), text: `muted until ${until}: ${readable(why)}`,
}));
const muteOf = (relay) => mutes.find((mute) => mute.relay === relay);
const problems = source.problems.map(([time, message, connection, status, log, mute]) => ({
  time: time === "" ? NaN : momentAt(Date.parse(`${time}Z`)),
  mute: mutes[mute],
  message: readable(message),
  connection: readable(connection),
  status: readable(status),
  log: logs[log],
}));

const damage = source.damage.map(([file, offset, length, reason]) => ({ file, offset, length, reason }));
const failures = source.failures.map(readable);

const kMade = momentOf(source.made);

/** A moment as the command line takes it; of a date alone, the end of that day. */
function momentOf(written) {
  const isDate = written.length === "2026-11-16".length;
  return Date.parse(`${written.replace(" ", "T")}${isDate ? "T23:59:59.999" : ""}Z`);
}

/** All that there is to see, with a little air at both ends. */
const whole = wholeSpan();

function wholeSpan() {
  let first = events.timed > 0 ? events.time[0] : Infinity;
  let last = events.timed > 0 ? events.time[events.timed - 1] : -Infinity;
  for (const { time } of problems) {
    first = Math.min(first, Number.isNaN(time) ? Infinity : time);
    last = Math.max(last, Number.isNaN(time) ? -Infinity : time);
  }
  if (first > last) {
    first = last = kMade;
  }
  const air = Math.max((last - first) * 0.015, 30 * kSecond);
  return { from: first - air, to: last + air, first, last };
}

/**
 * Where nearly all events lie, when that is a small part of the whole: a relay whose clock has failed sends stamps
 * that are decades away, and must not squeeze all others into one line.
 */
const bulk = bulkSpan();

function bulkSpan() {
  const kStray = 0.02;
  const kSmallPart = 0.2;
  if (events.timed === 0) {
    return whole;
  }
  const low = events.time[Math.floor(events.timed * kStray)];
  const high = events.time[Math.ceil(events.timed * (1 - kStray)) - 1];
  const air = Math.max((high - low) * 0.05, kHour / 2);
  const span = { from: Math.max(low - air, whole.from), to: Math.min(high + air, whole.to) };
  return span.to - span.from < kSmallPart * (whole.to - whole.from) ? span : whole;
}

/** What the relays call their plant: the last such text of each. */
const plants = plantOfEachRelay();

function plantOfEachRelay() {
  const names = relays.map(() => "");
  for (let id = 0; id < events.count; ++id) {
    names[events.relay[id]] = texts[shapeOf(id).plant] || names[events.relay[id]];
  }
  return names;
}

// A relay without an event for days would go unnoticed otherwise. As ruvoctl status has it, days count from the date
// of its newest day file, whatever its clock says, to the end of what the page could have shown.
const lastEvents = lastEventOfEachRelay();
const kEnd = source.until === "" ? kMade : Math.min(momentAt(momentOf(source.until)), kMade);
const kSilent = source.last_days.map((day) =>
  Math.floor(kEnd / kDay) - Math.floor(Date.parse(`${day}T00:00Z`) / kDay) > source.silent);
const isSilent = (relay) => kSilent[relay] && muteOf(relay) === undefined;

function lastEventOfEachRelay() {
  const last = new Float64Array(relays.length).fill(NaN);
  for (let id = 0; id < events.timed; ++id) {
    last[events.relay[id]] = events.time[id];
  }
  return last;
}
