// Puts the parts together, and prepares the page for paper.

const kPrintedEvents = 1000;

/** On paper there is no scrolling: the events stand there as a plain table, as many as anybody would read. */
function fillPrintPart() {
  const ids = Array.from(listed.subarray(0, kPrintedEvents));
  const rows = ids.flatMap((id) => [make("tr", {}, ...kColumns.map(({ name, text: textOf }) =>
    make("td", { className: `cell-${name}` }, ...(name === "kind" ? [kindDot(events.kind[id])] : []),
      make("bdi", { textContent: textOf(id) })))), ...printedCells(id)]);
  const note = listed.length > ids.length
    ? `The first ${numberText(ids.length)} of ${counted(listed.length, "event")}: zoom or filter before printing to see others.`
    : counted(listed.length, "event");
  byId("print-part").replaceChildren(make("h2", { textContent: "Events" }), make("p", { textContent: note }),
    make("p", { className: "marks" }, ...makeMarks()),
    makeTable(kColumns.map(({ title, isFixed }) => (isFixed ? deltaTitle() : title)), rows));
}

/** What a fault record holds, below its event. */
function printedCells(id) {
  const cells = shapeOf(id).isExtended ? linesOf(id) : [];
  return cells.length === 0 ? [] : [make("tr", { className: "cells-row" }, make("td", { colSpan: kColumns.length },
    ...cells.map(([label, value]) => make("span", {}, text(label), " ", make("strong", {}, text(value))))))];
}

function setPrinting(isPrinting) {
  document.documentElement.classList.toggle("printing", isPrinting);
  if (isPrinting) {
    fillPrintPart();
  } else {
    byId("print-part").replaceChildren();
  }
  theme = readTheme();
  measure();
  drawAxis();
  drawOverview();
  drawLanes();
}

function listenToSurroundings() {
  window.addEventListener("beforeprint", () => setPrinting(true));
  window.addEventListener("afterprint", () => setPrinting(false));
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
    theme = readTheme();
    change("theme", {});
  });
  new ResizeObserver(() => {
    change("theme", {});
    change("sort", {});
  }).observe(byId("chart"));
}

startTimeLine();
startEvents();
startDetails();
startCsv();
startPanels();
listenToSurroundings();
change("filter", {});
change("selection", {});
change("rest", {});
