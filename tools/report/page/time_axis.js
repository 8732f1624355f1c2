// Where times lie on a drawing, and which of them get a line.

const kTickSteps = [
  1, 2, 5, 10, 20, 50, 100, 200, 500,
  ...[1, 2, 5, 10, 30].map((n) => n * kSecond),
  ...[1, 2, 5, 10, 30].map((n) => n * kMinute),
  ...[1, 2, 3, 6, 12].map((n) => n * kHour),
  ...[1, 2, 3, 7, 14].map((n) => n * kDay),
];
const kMonthSteps = [1, 3, 6, 12, 24, 60, 120];
const kWidthOfTick = 84; // for its label and some air

/** Maps times to places along `width` pixels and back. */
function makeScale(from, to, width) {
  return {
    toX: (time) => ((time - from) / (to - from)) * width,
    toTime: (x) => from + (x / width) * (to - from),
  };
}

/** Round times between the two: {time, label, isMajor}, a major one where a day (or year) begins. */
function ticksOf(from, to, width) {
  const wanted = ((to - from) / Math.max(width, 1)) * kWidthOfTick;
  const step = kTickSteps.find((size) => size >= wanted);
  return step === undefined ? monthTicks(from, to, wanted) : evenTicks(from, to, step);
}

function evenTicks(from, to, step) {
  const ticks = [];
  for (let shown = Math.ceil(shownOf(from) / step) * step; momentAt(shown) <= to; shown += step) {
    const time = momentAt(shown);
    const isMajor = shown % kDay === 0;
    ticks.push({ time, isMajor, label: isMajor ? dayLabel(time, step) : clockLabel(time, step) });
  }
  return ticks;
}

function dayLabel(time, step) {
  const date = dateOf(time);
  const day = `${date.getUTCDate()} ${kMonths[date.getUTCMonth()]}`;
  return step > kDay ? day : `${weekdayText(time)} ${day}`;
}

function clockLabel(time, step) {
  if (step < kSecond) {
    return clockText(time, "all").slice(6);
  }
  return clockText(time, step < kMinute ? "seconds" : "minutes");
}

const monthStart = (month) => momentAt(Date.UTC(Math.floor(month / 12), month % 12));

function monthTicks(from, to, wanted) {
  const step = kMonthSteps.find((months) => months * 30 * kDay >= wanted) ?? kMonthSteps.at(-1);
  const ticks = [];
  const first = dateOf(from);
  let month = Math.ceil((first.getUTCFullYear() * 12 + first.getUTCMonth()) / step) * step;
  for (let time = monthStart(month); time <= to; month += step, time = monthStart(month)) {
    const date = dateOf(time);
    const isMajor = date.getUTCMonth() === 0;
    if (time >= from) {
      ticks.push({ time, isMajor, label: isMajor ? String(date.getUTCFullYear()) : kMonths[date.getUTCMonth()] });
    }
  }
  return ticks;
}

/** A canvas as sharp as the screen, with its size in CSS pixels; null while it has none. */
function openCanvas(canvas, width, height) {
  if (width < 1 || height < 1) {
    return null;
  }
  const scale = window.devicePixelRatio || 1;
  const [columns, rows] = [Math.round(width * scale), Math.round(height * scale)];
  if (canvas.width !== columns || canvas.height !== rows) {
    canvas.width = columns;
    canvas.height = rows;
  }
  const pen = canvas.getContext("2d");
  pen.setTransform(scale, 0, 0, scale, 0, 0);
  pen.clearRect(0, 0, width, height);
  return pen;
}

/** The theme's colours, as the style has them at the moment. */
let theme = readTheme();

function readTheme() {
  const style = getComputedStyle(document.documentElement);
  const colour = (name) => style.getPropertyValue(`--${name}`).trim();
  return {
    kinds: kinds.map((_, kind) => colour(`kind-${kind}`)),
    ink: colour("ink"),
    quiet: colour("quiet"),
    line: colour("line"),
    strongLine: colour("strong-line"),
    band: colour("band"),
    accent: colour("accent"),
    wash: colour("wash"),
    surface: colour("surface"),
    problem: colour("problem"),
    font: `12px ${style.getPropertyValue("--font")}`,
  };
}
