// The table of events as a file for spreadsheets: what is listed, in its order. Columns have the names that
// ruvoctl's exports give them.

const kCsvColumns = [
  ["time", (id) => (hasTime(id) ? stampText(events.time[id]).replace(" ", "T") : "")],
  ...(kZone === "" ? [] : [["utc", (id) => (hasTime(id) ? new Date(events.time[id]).toISOString() : "")]]),
  ["marks", (id) => csvText(markText(id))],
  ["delta_ms", (id) => csvNumber(deltaOf(id).span)],
  ["relay", (id) => csvText(relayText(id))],
  ["plant", (id) => csvText(texts[shapeOf(id).plant])],
  ["description", (id) => csvText(texts[shapeOf(id).description])],
  ["model", (id) => csvText(texts[shapeOf(id).model])],
  ["kind", (id) => csvText(kinds[events.kind[id]])],
  ["event", (id) => csvText(eventText(id))],
  ["value_text", (id) => csvText(valueText(id))],
  ["location", (id) => placeText(id)],
  ["cells", (id) => csvText(linesOf(id).map(([label, value]) => `${label} ${value}`.trim()).join("; "))],
  ["file", (id) => csvText(files[events.file[id]].path)],
  ["offset", (id) => csvNumber(events.offset[id])],
];

const csvNumber = (number) => (Number.isNaN(number) ? "" : String(number));

/** In quotes where it needs them; with an apostrophe where a spreadsheet would run it. */
function csvText(content) {
  const safe = /^[ ]*[=+\-@\t\r]/.test(content) ? `'${content}` : content;
  return /[",;\r\n]/.test(safe) ? `"${safe.replaceAll('"', '""')}"` : safe;
}

function csvOf(ids) {
  const rows = Array.from(ids, (id) => kCsvColumns.map(([, fieldOf]) => fieldOf(id)).join(","));
  return ["\uFEFF" + kCsvColumns.map(([name]) => name).join(","), ...rows, ""].join("\r\n");
}

function saveCsv() {
  const address = URL.createObjectURL(new Blob([csvOf(listed)], { type: "text/csv" }));
  const link = make("a", { href: address, download: "events.csv" });
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), kMinute);
}

function startCsv() {
  byId("csv").addEventListener("click", saveCsv);
  onChange(["filter", "window"], () => (byId("csv").disabled = countInWindow() === 0));
}
