"use strict";
(() => {
  const data = JSON.parse(document.getElementById("pictures").textContent);
  const byId = (id) => document.getElementById(id);
  const [stage, amounts, caption] = ["stage", "amounts", "caption"].map(byId);
  const make = (tag, kind) => Object.assign(document.createElement(tag), { className: kind });
  // A choice of one is not offered.
  const chosen = (name) => document.querySelector(`input[name=${name}]:checked`)?.value;
  const factor = () => chosen("factor") ?? Object.keys(data.scaled)[0];
  const frame = () => chosen("frame") ?? data.frames[0];
  const scaled = () => data.scaled[factor()][frame()];
  // Pictures that the page shows on paper are in it once, as elements.
  const source = (text) => text.startsWith("#") ? document.querySelector(text).src : text;
  const splits = {};  // by how many lie beside the native picture, in percent
  let gain = 4;

  function image(text, kind) {
    const result = make("img", kind);
    result.src = source(text);
    result.alt = kind === "base" ? "" : "picture";
    return result;
  }

  // Every layer shows where each filter's worst tile is, so that all can be compared there.
  function layer(name, picture, base) {
    const result = make("div", "layer");
    const pane = make("div", "pane");
    if (base) pane.append(image(base, "base"));
    pane.append(image(picture, "own"));
    for (const one of scaled().filter((s) => s.place)) {
      const mark = make("span", "worst");
      mark.style.cssText = one.place;
      pane.append(mark);
    }
    result.append(pane);
    const tag = make("span", "tag");
    tag.textContent = name;
    result.append(tag);
    result.addEventListener("scroll", () => {
      for (const other of stage.querySelectorAll(".layer")) {
        other.scrollLeft = result.scrollLeft;
        other.scrollTop = result.scrollTop;
      }
    });
    return result;
  }

  function showPictures() {
    const native = data.native[frame()];
    stage.replaceChildren(layer("native", native, null),
      ...scaled().map((s) => layer(s.name, s.image, native)));
    caption.textContent = `Frame ${frame()}: native` +
      scaled().map((s) => `; ${s.name}: ${s.text}`).join("") + ".";
    showMode();
  }

  function split() {
    const count = scaled().length;
    splits[count] ??= scaled().map((_, i) => Math.round(100 * (i + 1) / (count + 1)));
    return splits[count];
  }

  function showSplits() {
    const at = [0, ...split(), 100];
    stage.querySelectorAll(".layer").forEach((one, i) => {
      one.style.setProperty("--from", `${at[i]}%`);
      one.style.setProperty("--to", `${100 - at[i + 1]}%`);
    });
    stage.querySelectorAll(".divider").forEach((one, i) => one.style.left = `${at[i + 1]}%`);
    amounts.querySelectorAll("input").forEach((one, i) => one.value = at[i + 1]);
  }

  function move(index, value) {
    const all = split();
    all[index] = value;
    // The others give way.
    for (let i = 0; i < all.length; ++i)
      all[i] = i < index ? Math.min(all[i], value) : Math.max(all[i], value);
    showSplits();
  }

  function range(label, min, max, value, change) {
    const result = Object.assign(make("input", "amount"), { type: "range", min, max, value });
    result.setAttribute("aria-label", label);
    result.addEventListener("input", () => change(Number(result.value)));
    return result;
  }

  function showGain() {
    stage.style.setProperty("--gain", gain);
    amounts.querySelector("output").textContent = `${gain} times`;
  }

  function showMode() {
    const mode = chosen("mode");
    stage.dataset.mode = mode;
    stage.querySelectorAll(".divider").forEach((one) => one.remove());
    amounts.replaceChildren();
    if (mode === "slider") {
      stage.append(...split().map(() => make("div", "divider")));
      amounts.append(...scaled().map((s, i) =>
        range(`where ${s.name} begins`, 0, 100, split()[i], (value) => move(i, value))));
      showSplits();
    } else if (mode === "difference") {
      amounts.append(range("amplification", 1, 20, gain, (value) => { gain = value; showGain(); }),
        document.createElement("output"));
      showGain();
    }
    showZoom();
    showMarks();
  }

  function showMarks() {
    stage.classList.toggle("marked", chosen("worst") === "on");
  }

  // With the slider all lie on each other and the viewport scrolls; else each scrolls
  // over its own picture.
  function showZoom() {
    const zoom = chosen("zoom");
    const slider = chosen("mode") === "slider";
    const width = zoom === "fit" ? "100%" : `${data.width * Number(zoom) / window.devicePixelRatio}px`;
    stage.style.width = slider ? width : "100%";
    stage.querySelectorAll(".pane").forEach((one) => one.style.width = slider ? "100%" : width);
    stage.classList.toggle("pixels", zoom !== "fit");
  }

  function drag(event) {
    if (chosen("mode") !== "slider" || (event.type === "pointermove" && event.buttons === 0)) return;
    const box = stage.getBoundingClientRect();
    const value = Math.max(0, Math.min(100, Math.round((event.clientX - box.left) / box.width * 100)));
    const away = split().map((at) => Math.abs(at - value));
    move(away.indexOf(Math.min(...away)), value);
  }

  for (const [names, show] of [[["factor", "frame"], showPictures], [["mode"], showMode], [["zoom"], showZoom],
    [["worst"], showMarks]])
    for (const name of names)
      document.querySelectorAll(`input[name=${name}]`).forEach((i) => i.addEventListener("change", show));
  stage.addEventListener("pointerdown", drag);
  stage.addEventListener("pointermove", drag);
  stage.addEventListener("dragstart", (event) => event.preventDefault());
  document.documentElement.classList.add("js");
  byId("viewer").hidden = false;
  showPictures();
})();
