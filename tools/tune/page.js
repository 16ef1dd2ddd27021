"use strict";
(() => {
  const data = JSON.parse(document.getElementById("pictures").textContent);
  const byId = (id) => document.getElementById(id);
  const [stage, under, over, native, scaled, amount, shown, caption] =
    ["stage", "under", "over", "native", "scaled", "amount", "shown", "caption"].map(byId);
  const chosen = (name) => document.querySelector(`input[name=${name}]:checked`).value;
  const position = { slider: 50, difference: 4 };

  function showAmount() {
    const mode = chosen("mode");
    amount.disabled = mode === "side";
    if (mode === "side") { shown.textContent = ""; return; }
    position[mode] = Number(amount.value);
    if (mode === "slider") stage.style.setProperty("--split", `${amount.value}%`);
    else stage.style.setProperty("--gain", amount.value);
    shown.textContent = mode === "slider" ? `${amount.value} % native` : `${amount.value} times`;
  }

  function showMode() {
    const mode = chosen("mode");
    stage.dataset.mode = mode;
    [amount.min, amount.max] = mode === "difference" ? [1, 20] : [0, 100];
    if (mode !== "side") amount.value = position[mode];
    amount.setAttribute("aria-label", mode === "difference" ? "amplification" : "position of the slider");
    showZoom();
    showAmount();
  }

  // Side by side, each half scrolls over its own picture; else both lie on each
  // other and the viewport scrolls.
  function showZoom() {
    const zoom = chosen("zoom");
    const side = chosen("mode") === "side";
    const width = zoom === "fit" ? "100%" : `${data.width * Number(zoom) / window.devicePixelRatio}px`;
    stage.style.width = side ? "100%" : width;
    native.style.width = scaled.style.width = side ? width : "100%";
    stage.classList.toggle("pixels", zoom !== "fit");
  }

  function scrollTogether(one, other) {
    one.addEventListener("scroll", () => {
      other.scrollLeft = one.scrollLeft;
      other.scrollTop = one.scrollTop;
    });
  }

  function showPictures() {
    const [factor, frame] = [chosen("factor"), chosen("frame")];
    const picture = data.scaled[factor][frame];
    native.src = data.native[frame];
    scaled.src = picture.image;
    caption.textContent = `Frame ${frame}: native on the left, ${data.titles[factor]} on the right; ` +
      `SSIM ${picture.ssim}, PSNR ${picture.psnr}.`;
  }

  function drag(event) {
    if (chosen("mode") !== "slider" || (event.type === "pointermove" && event.buttons === 0)) return;
    const box = stage.getBoundingClientRect();
    amount.value = Math.round((event.clientX - box.left) / box.width * 100);
    showAmount();
  }

  for (const name of ["factor", "frame"])
    document.querySelectorAll(`input[name=${name}]`).forEach((i) => i.addEventListener("change", showPictures));
  document.querySelectorAll("input[name=mode]").forEach((i) => i.addEventListener("change", showMode));
  document.querySelectorAll("input[name=zoom]").forEach((i) => i.addEventListener("change", showZoom));
  amount.addEventListener("input", showAmount);
  scrollTogether(under, over);
  scrollTogether(over, under);
  stage.addEventListener("pointerdown", drag);
  stage.addEventListener("pointermove", drag);
  stage.addEventListener("dragstart", (event) => event.preventDefault());
  showPictures();
  showMode();
})();
