"use strict";
(() => {
  const filter = document.getElementById("filter");
  const words = document.getElementById("words");
  const show = document.getElementById("show");
  const compare = new Intl.Collator("en", { numeric: true }).compare;
  const tables = [...document.querySelectorAll("table")].filter((table) => table.querySelector("tr[data-card]"));
  const sorted = {};

  // What all parts of the page say of a card is filtered together.
  const cards = new Map();
  for (const place of document.querySelectorAll("[data-card]")) {
    const card = cards.get(place.dataset.card) ?? { places: [], text: "", marks: new Set() };
    card.places.push(place);
    card.text += place.textContent.toLowerCase() + "\n";
    (place.dataset.marks ?? "").split(" ").filter(Boolean).forEach((mark) => card.marks.add(mark));
    cards.set(place.dataset.card, card);
  }

  function matches(card) {
    const isShown = show.value === "" || (show.value === "any" ? card.marks.size > 0 : card.marks.has(show.value));
    return isShown && words.value.toLowerCase().split(/\s+/).every((word) => card.text.includes(word));
  }

  function apply() {
    let shown = 0;
    for (const card of cards.values()) {
      const isHidden = !matches(card);
      shown += isHidden ? 0 : 1;
      card.places.forEach((place) => { place.hidden = isHidden; });
    }
    for (const list of document.querySelectorAll("ul.cards")) {
      list.closest("ul.reasons > li").hidden = !list.querySelector("li:not([hidden])");
    }
    for (const reasons of document.querySelectorAll("ul.reasons")) {
      reasons.hidden = !reasons.querySelector(":scope > li:not([hidden])");
    }
    document.getElementById("count").value = `${shown} of ${cards.size} cards`;
  }

  function valueOf(row, column) {
    const cell = row.cells[column];
    return cell ? cell.dataset.value ?? cell.textContent : "";
  }

  function compareValues(one, other) {
    const difference = Number(one) - Number(other);
    return Number.isNaN(difference) ? compare(one, other) : difference;
  }

  function sort(table, column, isDescending) {
    const body = table.tBodies[0];
    const rows = [...body.rows].map((row) => [valueOf(row, column), row]);
    rows.sort(([one], [other]) => compareValues(one, other) * (isDescending ? -1 : 1));
    body.append(...rows.map(([, row]) => row));
    [...table.tHead.rows[0].cells].forEach((head, index) => {
      head.removeAttribute("aria-sort");
      if (index === column) {
        head.setAttribute("aria-sort", isDescending ? "descending" : "ascending");
      }
      head.querySelector("button span").textContent = index !== column ? "\u2195" : isDescending ? "\u25bc" : "\u25b2";
    });
    sorted[table.id] = `${column}${isDescending ? "-" : "+"}`;
  }

  // The address of the page has its state, so that a view can be passed on.
  function keep() {
    const state = new URLSearchParams(sorted);
    words.value && state.set("words", words.value);
    show.value && state.set("show", show.value);
    history.replaceState(null, "", `#?${state}`);
  }

  function restore() {
    if (!location.hash.startsWith("#?")) {
      return;
    }
    const state = new URLSearchParams(location.hash.slice(2));
    words.value = state.get("words") ?? "";
    show.value = state.get("show") ?? "";
    for (const table of tables) {
      const [, column, order] = /^(\d+)([+-])$/.exec(state.get(table.id)) ?? [];
      if (column < table.tHead.rows[0].cells.length) {
        sort(table, Number(column), order === "-");
      }
    }
  }

  for (const table of tables) {
    [...table.tHead.rows[0].cells].forEach((head, column) => {
      const button = document.createElement("button");
      const arrow = document.createElement("span");
      button.type = "button";
      arrow.textContent = "\u2195";
      arrow.setAttribute("aria-hidden", "true");
      button.append(...head.childNodes, arrow);
      button.addEventListener("click", () => {
        sort(table, column, head.getAttribute("aria-sort") === "ascending");
        keep();
      });
      head.append(button);
    });
  }
  filter.addEventListener("submit", (event) => event.preventDefault());
  filter.addEventListener("input", () => { apply(); keep(); });
  filter.hidden = false;
  restore();
  apply();
  document.documentElement.dataset.script = "ran";
})();
