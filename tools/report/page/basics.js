"use strict";
// Small tools of the whole page. The script's files are put together in one scope; nothing reaches the window.
// Texts enter the page through textContent and attributes alone: what a relay wrote stays text.

const byId = (id) => document.getElementById(id);

/** Sets what `properties` names: listeners ("onclick"), attributes ("aria-label", "role", "data-..."), or properties. */
function dress(element, properties) {
  for (const [name, value] of Object.entries(properties)) {
    if (name.startsWith("on")) {
      element.addEventListener(name.slice(2), value);
    } else if (name === "role" || name.includes("-")) {
      element.setAttribute(name, value);
    } else {
      element[name] = value;
    }
  }
  return element;
}

/** A new element with children, each an element or a text. */
function make(tag, properties = {}, ...children) {
  const element = dress(document.createElement(tag), properties);
  element.append(...children);
  return element;
}

/** The mark of a kind: a dot of its colour. Its name is shown beside it wherever it is used. */
function kindDot(kind) {
  return make("span", { className: `dot kind-${kind}`, "aria-hidden": "true" });
}

// Characters that no relay has a reason to send and that would turn or hide text around them.
const kTricky = /[\u00AD\u061C\u180E\u200B-\u200F\u2028-\u202E\u2060-\u206F\uFEFF\uFFF9-\uFFFB]/g;

/** The text with such characters named instead of obeyed. */
function readable(text) {
  return text.replace(kTricky, (c) => `<U+${c.codePointAt(0).toString(16).toUpperCase().padStart(4, "0")}>`);
}

const kSecond = 1000;
const kMinute = 60 * kSecond;
const kHour = 60 * kMinute;
const kDay = 24 * kHour;
const kDays = ["Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"];
const kMonths = ["Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"];

const two = (number) => String(number).padStart(2, "0");

// Without a zone, times are counted as if every clock showed UTC: a relay's own time is shown as it is. With one,
// they are UTC, and are shown by the clock of that zone. This computer's time zone is never used.
function dateText(time) {
  const date = dateOf(time);
  return `${date.getUTCDate()} ${kMonths[date.getUTCMonth()]} ${date.getUTCFullYear()}`;
}

function clockText(time, digits = "seconds") {
  const date = dateOf(time);
  const minutes = `${two(date.getUTCHours())}:${two(date.getUTCMinutes())}`;
  if (digits === "minutes") {
    return minutes;
  }
  const seconds = `${minutes}:${two(date.getUTCSeconds())}`;
  return digits === "seconds" ? seconds : `${seconds}.${String(date.getUTCMilliseconds()).padStart(3, "0")}`;
}

/** "2026-11-16 03:12:07.045", for columns. */
function stampText(time) {
  const date = dateOf(time);
  return `${date.getUTCFullYear()}-${two(date.getUTCMonth() + 1)}-${two(date.getUTCDate())} ${clockText(time, "all")}`;
}

function weekdayText(time) {
  return kDays[dateOf(time).getUTCDay()];
}

/** A span of time, as long as it needs to be told apart: "16 Nov 2026, 03:00 to 04:30". */
function spanText(from, to) {
  const digits = to - from < 10 * kSecond ? "all" : to - from < 10 * kMinute ? "seconds" : "minutes";
  const sameDay = dateText(from) === dateText(to);
  const end = sameDay ? clockText(to, digits) : `${dateText(to)}, ${clockText(to, digits)}`;
  return `${weekdayText(from)} ${dateText(from)}, ${clockText(from, digits)} to ${sameDay ? "" : `${weekdayText(to)} `}${end}`;
}

/** "3 days", "2 h", "250 ms". */
function durationText(span) {
  const rows = [[kDay, "day"], [kHour, "h"], [kMinute, "min"], [kSecond, "s"], [1, "ms"]];
  const [unit, name] = rows.find(([size]) => span >= size) ?? rows.at(-1);
  const number = Math.round((span / unit) * 10) / 10;
  return `${numberText(number)} ${name}${name === "day" && number !== 1 ? "s" : ""}`;
}

/** "+0.082", "-1:00.082", "+2d 03:00:00.082": from one event to another. */
function deltaText(span) {
  const length = Math.abs(span);
  const rest = `${two(Math.floor(length / kSecond) % 60)}.${String(length % kSecond).padStart(3, "0")}`;
  const [minutes, hours, days] = [Math.floor(length / kMinute) % 60, Math.floor(length / kHour) % 24, Math.floor(length / kDay)];
  const parts = [...(days > 0 ? [`${days}d ${two(hours)}`] : hours > 0 ? [`${hours}`] : []),
    ...(length >= kHour ? [two(minutes)] : minutes > 0 ? [`${minutes}`] : [])];
  return `${span < 0 ? "-" : "+"}${parts.length > 0 ? `${parts.join(":")}:${rest}` : rest.replace(/^0/, "")}`;
}

const numberFormat = new Intl.NumberFormat("en");
const numberText = (number) => numberFormat.format(number);
const counted = (number, one, many = `${one}s`) => `${numberText(number)} ${number === 1 ? one : many}`;

/** The first place among `length` sorted items whose item is not below the limit. */
function lowerBound(length, itemAt, limit) {
  let low = 0;
  let high = length;
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (itemAt(middle) < limit) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

const clamp = (value, low, high) => Math.min(Math.max(value, low), high);
