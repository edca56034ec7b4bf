"use strict";
// Builds the explanations of a page from its data. The drawings are in the page itself: those of a
// pair are copied from the elements that data-drawing names.
(function () {
  const data = JSON.parse(document.getElementById("data").textContent);

  function element(name, attributes, ...children) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes || {})) {
      if (key === "text") made.textContent = value;
      else made.setAttribute(key, value);
    }
    made.append(...children);
    return made;
  }

  function percent(share) { return Math.round(100 * share) + " %"; }

  function plural(count, word) { return count + " " + word + (count === 1 ? "" : "s"); }

  // A fragment of a pair is [entry of the table, times in the second molecule, atoms, bonds]; the
  // table has what belongs to the first molecule, which many pairs share.
  function marksOf(fragment, which) {
    return which === 0 ? data.fragments[fragment[0]].marks : [fragment[2], fragment[3]];
  }

  function noteOf(fragment) {
    const entry = data.fragments[fragment[0]];
    const bit = entry.bit === undefined ? "" : "bit " + entry.bit + ", ";
    const second = fragment.length === 1 ? "" : " in the first, " + fragment[1] + " in the second";
    return bit + plural(entry.size, "atom") + ", " + plural(entry.times, "place") + second;
  }

  // One molecule of an explanation: a copy of its drawing, with marks for shared atoms and weights.
  function makeFigure(side, greatest) {
    const drawing = document.querySelector('[data-drawing="' + side.drawing + '"] svg').cloneNode(true);
    const atoms = new Set(side.atoms);
    const bonds = new Set(side.bonds);
    for (const halo of drawing.querySelectorAll(".halo")) {
      const atom = halo.dataset.atom;
      const marks = atom === undefined ? bonds : atoms;
      halo.classList.toggle("shared", marks.has(Number(atom === undefined ? halo.dataset.bond : atom)));
      if (atom === undefined || !side.weights) continue;
      const weight = side.weights[Number(atom)] || 0;
      halo.style.setProperty("--weight", greatest > 0 ? 0.75 * Math.abs(weight) / greatest : 0);
      if (0 > weight) halo.style.setProperty("--side", "var(--less)");
    }
    const caption = element("figcaption", {}, element("div", { class: "name", text: side.name }));
    if (side.smiles !== side.name) caption.append(element("p", { class: "muted" }, element("code", { text: side.smiles })));
    if (data.covering) {
      caption.append(element("p", { class: "muted", text: percent(side.covered[0]) + " of its atoms and " +
        percent(side.covered[1]) + " of its bonds are in " + data.covering }));
    }
    return element("figure", { class: "molecule card" }, drawing, caption);
  }

  function makeScore(pair) {
    const card = element("div", { class: "card" });
    card.append(element("div", { class: "row" }, element("h2", { text: pair.measure }),
      element("div", { class: "big", text: pair.score })));
    card.append(element("p", { class: "formula muted" }, element("code", { text: pair.formula })));
    const [a, b, both] = pair.counts;
    const venn = element("div", { class: "venn", role: "img",
      "aria-label": a - both + " only in the first, " + both + " in both, " + (b - both) + " only in the second" });
    for (const [count, kind] of [[a - both, "a"], [both, "both"], [b - both, "b"]]) {
      const part = element("span", { class: kind, text: count });
      part.style.flex = Math.max(count, 0.001);
      venn.append(part);
    }
    card.append(venn);
    const table = element("table", {});
    const rows = [[data.items + " of the first (a)", a], [data.items + " of the second (b)", b],
      [data.items + " in both", both]].concat(pair.scores || []);
    for (const [name, value] of rows) {
      table.append(element("tr", {}, element("th", { scope: "row", text: name }), element("td", { text: value })));
    }
    card.append(table);
    return card;
  }

  function makeModes(root, hasWeights) {
    const modes = element("fieldset", { class: "modes" });
    const name = "mode" + Math.random().toString(36).slice(2);
    const choices = [["shared", data.sharedLabel]];
    if (hasWeights) choices.push(["weights", "Weight of each atom"]);
    choices.push(["plain", "Plain"]);
    for (const [mode, label] of choices) {
      const input = element("input", { type: "radio", name: name });
      input.checked = mode === "shared";
      input.addEventListener("change", function () {
        root.classList.remove("mode-shared", "mode-weights", "mode-plain");
        root.classList.add("mode-" + mode);
      });
      modes.append(element("label", {}, input, label));
    }
    root.classList.add("mode-shared");
    return modes;
  }

  // A fragment is lit in both molecules while it is pointed at, or for good once it is chosen.
  function makeFragments(root, figures, pair) {
    const list = element("ul", { class: "fragments" });
    let pinned = null;
    function light(fragment) {
      root.classList.toggle("pointing", fragment !== null);
      figures.forEach(function (figure, which) {
        const marks = fragment === null ? [[], []] : marksOf(fragment, which);
        const atoms = new Set(marks[0]);
        const bonds = new Set(marks[1]);
        for (const halo of figure.querySelectorAll(".halo")) {
          const atom = halo.dataset.atom;
          halo.classList.toggle("lit", atom === undefined ? bonds.has(Number(halo.dataset.bond)) : atoms.has(Number(atom)));
        }
      });
    }
    function restore() { light(pinned === null ? null : pinned.fragment); }
    for (const fragment of pair.fragments) {
      const button = element("button", { type: "button", "aria-pressed": "false" },
        element("code", { text: data.fragments[fragment[0]].text }),
        element("p", { class: "muted", text: noteOf(fragment) }));
      button.addEventListener("pointerenter", function () { light(fragment); });
      button.addEventListener("pointerleave", restore);
      button.addEventListener("focus", function () { light(fragment); });
      button.addEventListener("blur", restore);
      button.addEventListener("click", function () {
        const again = pinned !== null ? pinned.button === button : false;
        if (pinned !== null) {
          pinned.button.classList.remove("pinned");
          pinned.button.setAttribute("aria-pressed", "false");
        }
        pinned = again ? null : { button: button, fragment: fragment };
        if (!again) {
          button.classList.add("pinned");
          button.setAttribute("aria-pressed", "true");
        }
        restore();
      });
      list.append(element("li", {}, button));
    }
    return list;
  }

  function makeExplanation(pair) {
    const root = element("div", { class: "explanation" });
    if (pair.sides.length === 1) root.classList.add("single");
    let greatest = 0;
    for (const side of pair.sides) {
      for (const weight of side.weights || []) greatest = Math.max(greatest, Math.abs(weight));
    }
    const figures = pair.sides.map(function (side) { return makeFigure(side, greatest); });
    const drawings = element("div", { class: "figures" },
      element("div", { class: "pair" }, ...figures),
      element("div", { class: "key" },
        element("span", {}, dot("var(--more)"), "raises the score"),
        element("span", {}, dot("var(--less)"), "lowers the score")));
    const side = element("div", { class: "side" });
    if (pair.counts) side.append(makeScore(pair));
    const list = element("div", { class: "card" }, element("h2", { text: data.listTitle + " (" + pair.fragments.length + ")" }));
    if (pair.fragments.length === 0) list.append(element("p", { class: "muted", text: data.listEmpty }));
    else list.append(element("p", { class: "muted", text: "Point at one to see its atoms, choose it to keep them lit." }),
      makeFragments(root, figures, pair));
    side.append(list);
    if (data.covering) drawings.prepend(makeModes(root, greatest > 0));
    root.append(drawings, side);
    return root;
  }

  function dot(color) {
    const made = element("b", {});
    made.style.background = color;
    return made;
  }

  // A page of one explanation shows it in place, a page of hits in a dialog.
  const place = document.getElementById("explanation");
  if (place) {
    place.append(makeExplanation(data.pairs[0]));
    document.querySelector(".store").remove();
    return;
  }
  const dialog = document.querySelector("dialog");
  for (const hit of document.querySelectorAll(".hit")) {
    hit.addEventListener("click", function () {
      const pair = data.pairs[Number(hit.dataset.pair)];
      const close = element("button", { class: "close", type: "button", text: "Close" });
      close.addEventListener("click", function () { dialog.close(); });
      const title = element("h1", { id: "dialog-title", text: pair.title });
      dialog.setAttribute("aria-labelledby", "dialog-title");
      dialog.replaceChildren(element("div", { class: "row" }, title, close), makeExplanation(pair));
      dialog.showModal();
    });
  }
  dialog.addEventListener("click", function (event) { if (event.target === dialog) dialog.close(); });
}());
