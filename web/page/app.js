// The page: connects the project with what is on the screen.
import { download, save, summaryOf } from "./downloads.js";
import { drawHistogram } from "./histogram.js";
import { brightnessOf, outlinesOf, pictureOf } from "./picture.js";
import { ImageList } from "./image_list.js";
import { medianRadius, Project } from "./project.js";
import { Range } from "./range.js";
import { Viewer } from "./viewer.js";
/* global ORVA_VERSION */

const $ = (id) => document.getElementById(id);
const SETTLED = 160; // milliseconds without a change after which the slow part begins

const SAMPLES = [
  ["dsb_dense_a", "crowded nuclei"],
  ["dsb_large_a", "large nuclei"],
  ["dsb_histw_a", "stained tissue"],
  ["dsb_sparse_a", "few nuclei"],
];

const project = new Project((item) => show(item));
const list = new ImageList(project);
const viewer = new Viewer($("canvas"), (position) => showPosition(position));
let shape = "regions";
let lastShape = "regions";
let plane = null; // the pixels on the screen
let shown = {}; // what is on the screen: item, key of the plane
let brightness = null;
let contrast = null; // [low, high] as shares of the range; null for the image's own
let outlines = { of: null, paths: new Map() }; // of regions, by the place of their object
let maxRadius = 20; // of the histogram

// --- what is on the screen ------------------------------------------------------------------------

const markKey = (object) => `${object.x},${object.y}`;

function show(item) {
  document.body.classList.toggle("has-images", project.items.length > 0);
  list.show();
  showPlace();
  if (item && item !== project.active) return;
  showPlane();
  showResult();
}

function showPlace() {
  const { items, active } = project;
  const at = items.indexOf(active);
  $("steps").hidden = items.length < 2;
  $("place").textContent = `${at + 1} / ${items.length}`;
  // Not disabled, which would take the focus away.
  $("previous").setAttribute("aria-disabled", String(at <= 0));
  $("next").setAttribute("aria-disabled", String(at >= items.length - 1));
}

async function showPlane() {
  const item = project.active;
  $("start").hidden = project.items.length > 0;
  $("viewer").hidden = project.items.length === 0;
  $("panel").inert = !item;
  if (!item) {
    plane = null;
    shown = {};
    viewer.show(null);
    return;
  }
  const { channel, slice, time } = project.settings;
  const key = `${item.id}/${channel}/${slice}/${time}`;
  if (shown.key === key) return;
  if (shown.item !== item) outlines = { of: null, paths: new Map() };
  shown = { key, item };
  let loaded;
  try {
    loaded = await project.plane(item);
  } catch {
    loaded = null; // the list says why
  }
  if (shown.key !== key) return;
  plane = loaded;
  brightness = plane && brightnessOf(plane);
  contrast = null;
  showPlanes(item);
  showPicture();
}

function showPicture() {
  if (!plane) {
    viewer.show(null);
    return;
  }
  const [low, high] = contrast ?? [brightness.low, brightness.high];
  viewer.show(pictureOf(plane, brightness, low, high));
  const text = (share) => String(Number((brightness.min + share * (brightness.max - brightness.min)).toPrecision(4)));
  contrastRange.set(low, high, [text(low), text(high)]);
}

function showPlanes({ source }) {
  const { channel, slice, time } = project.settings;
  const fill = (name, count, textOf, value, extra = []) => {
    $(`${name}-field`).hidden = count < 2;
    const options = [...extra, ...Array.from({ length: count }, (_, i) => [String(i), textOf(i)])];
    $(name).replaceChildren(...options.map(([v, text]) => new Option(text, v, false, v === String(value))));
  };
  const nameOf = (i) => source?.channelNames[i] || `channel ${i + 1}`;
  fill("channel", source?.channels ?? 1, nameOf, channel);
  fill("slice", source?.slices ?? 1, (i) => `slice ${i + 1}`, slice, [["max", "maximum of all"]]);
  fill("time", source?.times ?? 1, (i) => `time ${i + 1}`, time);
  $("planes").hidden = !source || source.channels * source.slices * source.times < 2;
}

function showResult() {
  const item = project.active;
  const result = item && project.result(item);
  const objects = result?.objects ?? [];
  const isFailed = item?.state === "failed";
  const isBusy = Boolean(item) && !isFailed && !project.isCurrent(item);
  $("progress").hidden = !isBusy;
  $("progress").textContent = result ? "Outlining" : "Searching";
  $("count-line").setAttribute("aria-busy", String(isBusy));
  $("count").textContent = result && !isFailed ? String(objects.length) : "–";
  $("count-unit").textContent = objects.length === 1 ? "object" : "objects";
  $("summary").textContent = isFailed ? "" : summaryText(item, result);
  showWarning(item, result);
  for (const button of $("downloads").children) button.disabled = !result || isFailed;

  if (item) showRadii(item, objects);
  showMarks(objects);
  if (shape === "regions" && result && !isBusy && !isFailed) showRegions(item, result);
  const name = item?.name ?? "No image";
  $("canvas").setAttribute("aria-label", result ? `${name}, ${objects.length} objects marked` : name);
}

// A failure stands where the image would be.
function showWarning(item, result) {
  const isFailed = item?.state === "failed";
  const isDoubtful = !isFailed && result?.objects.length > 0 && result.settings.confidence < 0.6;
  $("warning").hidden = !isDoubtful;
  const failure = isFailed ? `${item.name} ${item.message}.` : "";
  $("failure").hidden = !isFailed;
  if ($("failure").textContent !== failure) $("failure").textContent = failure;
}

function summaryText(item, result) {
  if (!result) return "\u00a0";
  if (result.objects.length === 0) return "no objects found";
  const { polarity, confidence } = result.settings;
  const radius = medianRadius(result.objects);
  const size = item.source?.pixelSize ? ` (${(radius * item.source.pixelSize).toPrecision(3)} µm)` : "";
  return `${polarity}, radius about ${radius.toFixed(1)} px${size}, confidence ${confidence.toFixed(2)}`;
}

function showRadii(item, objects) {
  const { low, high } = project.settings;
  const all = project.everything(item);
  // Doubtful large objects do not squeeze the others.
  const sure = all.filter(({ score }) => score >= 0.3);
  const largest = Math.max(10, ...sure.map(({ radius }) => radius));
  maxRadius = 5 * Math.ceil((1.15 * largest) / 5);
  const isWide = (o) => o.radius <= maxRadius;
  drawHistogram($("histogram"), sure.filter(isWide), objects.filter(isWide), maxRadius);
  const share = (radius) => Math.min(1, radius / maxRadius);
  radiusRange.set(share(low ?? 0), share(high ?? Infinity), [
    low === null ? "no limit" : `${low} pixels`,
    high === null ? "no limit" : `${high} pixels`,
  ]);
  for (const [id, value] of [["low", low], ["high", high]]) {
    if (document.activeElement !== $(id)) $(id).value = value ?? (id === "low" ? "0" : "");
  }
  $("radius-reset").hidden = low === null && high === null;
}

function showMarks(objects) {
  if (shape === "none") {
    viewer.mark([]);
    return;
  }
  const { paths } = outlines;
  const isOutlined = shape === "regions";
  viewer.mark(objects.map((object) => ({ ...object, path: isOutlined ? paths.get(markKey(object)) : undefined })));
}

// Outlines instead of circles.
async function showRegions(item, result) {
  if (outlines.of === result) return;
  let segmented;
  try {
    segmented = await project.regions(item);
  } catch (error) {
    toast(error.message);
    return;
  }
  if (project.active !== item || project.result(item) !== result || outlines.of === result) return;
  const byLabel = outlinesOf(segmented.labels);
  outlines = { of: result, paths: new Map(segmented.objects.map((o, i) => [markKey(o), byLabel.get(i + 1)])) };
  if (shape === "regions") showMarks(result.objects);
}

function showPosition(position) {
  const item = project.active;
  if (!position || !plane || !item) {
    $("readout").textContent = "";
    viewer.hover(null);
    return;
  }
  const { x, y } = position;
  const at = (y * plane.width + x) * plane.channels;
  const value = Array.from(plane.data.subarray(at, at + Math.min(plane.channels, 3)), (v) => Number(v.toPrecision(6)));
  let text = `x ${x}  y ${y}  value ${value.join(" ")}`;
  let nearest = null;
  if (shape !== "none") {
    let best = Infinity;
    for (const mark of viewer.marks) {
      const distance = Math.hypot(x - mark.x, y - mark.y) / mark.radius;
      if (distance < Math.min(best, 1.2)) [nearest, best] = [mark, distance];
    }
  }
  if (nearest) text += `  ·  radius ${nearest.radius.toFixed(1)}  score ${nearest.score.toFixed(2)}`;
  $("readout").textContent = text;
  viewer.hover(nearest);
}

// --- controls -------------------------------------------------------------------------------------

const radiusRange = new Range($("radius-range"), ["Smallest radius", "Largest radius"], (low, high) => {
  const rounded = (share) => Math.round(share * maxRadius * 10) / 10;
  setRadii(low > 0 ? rounded(low) : null, high < 1 ? rounded(high) : null);
});

const contrastRange = new Range($("contrast-range"), ["Brightness shown as black", "Brightness shown as white"], (low, high) => {
  contrast = [low, high];
  requestAnimationFrame(showPicture);
});

// What is known follows at once; the search follows when the slider rests.
let searchTimer = 0;
function change(settings) {
  project.set(settings);
  clearTimeout(searchTimer);
  searchTimer = setTimeout(() => project.work(), SETTLED);
}

const setRadii = (low, high) => change({ low, high });

function setScore(value) {
  $("score-value").textContent = value.toFixed(2);
  change({ minScore: value });
}

let toastTimer = 0;
function toast(text) {
  $("toast").textContent = text;
  $("toast").hidden = false;
  clearTimeout(toastTimer);
  toastTimer = setTimeout(() => ($("toast").hidden = true), 6000);
}

function setShape(value) {
  if (value !== "none") lastShape = value;
  shape = value;
  for (const input of $("shape").querySelectorAll("input")) input.checked = input.value === value;
  change(value === "none" ? {} : { of: value });
}

function step(by) {
  const at = project.items.indexOf(project.active);
  const item = project.items[at + by];
  if (item) project.select(item);
}

function addFiles(files) {
  if (files.length > 0) project.add(files);
}

async function addSample(name) {
  const response = await fetch(`samples/${name}.png`);
  addFiles([new File([await response.blob()], `${name}.png`, { type: "image/png" })]);
}

function setUpFiles() {
  for (const id of ["open", "choose"]) $(id).addEventListener("click", () => $("files").click());
  $("files").addEventListener("change", () => {
    addFiles([...$("files").files]);
    $("files").value = "";
  });
  let depth = 0; // of elements that a dragged file is over
  const isFile = (event) => event.dataTransfer?.types.includes("Files");
  const setDepth = (value) => {
    depth = value;
    $("dropping").hidden = depth <= 0;
  };
  addEventListener("dragenter", (event) => isFile(event) && setDepth(depth + 1));
  addEventListener("dragleave", (event) => isFile(event) && setDepth(depth - 1));
  addEventListener("dragover", (event) => event.preventDefault());
  addEventListener("drop", (event) => {
    event.preventDefault();
    setDepth(0);
    addFiles([...event.dataTransfer.files]);
  });
  addEventListener("paste", (event) => addFiles([...event.clipboardData.files]));
  for (const [name, text] of SAMPLES) {
    const button = document.createElement("button");
    button.type = "button";
    button.className = "sample";
    const picture = Object.assign(new Image(88, 66), { src: `samples/${name}.png`, alt: "" });
    const label = document.createElement("span");
    label.textContent = text;
    button.append(picture, label);
    button.addEventListener("click", () => addSample(name));
    $("samples").append(button);
  }
}

function setUpControls() {
  $("score").addEventListener("input", () => setScore($("score").valueAsNumber));
  for (const id of ["low", "high"]) {
    $(id).addEventListener("change", () => {
      const value = $(id).value === "" || $(id).valueAsNumber <= 0 ? null : $(id).valueAsNumber;
      const radii = { low: project.settings.low, high: project.settings.high, [id]: value };
      if (radii.low !== null && radii.high !== null && radii.low > radii.high) {
        radii[id === "low" ? "high" : "low"] = value;
      }
      setRadii(radii.low, radii.high);
    });
  }
  $("radius-reset").addEventListener("click", () => setRadii(null, null));
  $("polarity").addEventListener("change", (event) => change({ polarity: event.target.value || null }));
  $("shape").addEventListener("change", (event) => setShape(event.target.value));
  $("channel").addEventListener("change", () => change({ channel: Number($("channel").value) }));
  $("slice").addEventListener("change", () => {
    const { value } = $("slice");
    change({ slice: value === "max" ? value : Number(value) });
  });
  $("time").addEventListener("change", () => change({ time: Number($("time").value) }));
  $("contrast-auto").addEventListener("click", () => {
    contrast = null;
    showPicture();
  });
  $("previous").addEventListener("click", () => step(-1));
  $("next").addEventListener("click", () => step(1));
  $("zoom-in").addEventListener("click", () => viewer.zoom(1.5));
  $("zoom-out").addEventListener("click", () => viewer.zoom(1 / 1.5));
  $("fit").addEventListener("click", () => viewer.fit());
  $("downloads").addEventListener("click", async (event) => {
    const button = event.target.closest("button");
    if (!button) return;
    button.classList.add("busy");
    try {
      await download(project, project.active, button.dataset.format);
    } catch (error) {
      toast(error.message);
    }
    button.classList.remove("busy");
  });
  $("summary-csv").addEventListener("click", () => save("summary.csv", summaryOf(project), "text/csv"));
}

function setUpPage() {
  const theme = localStorage.getItem("theme");
  if (theme) document.documentElement.dataset.theme = theme;
  $("theme").addEventListener("click", () => {
    const isDark = getComputedStyle(document.documentElement).getPropertyValue("--is-dark").trim() === "1";
    document.documentElement.dataset.theme = isDark ? "light" : "dark";
    localStorage.setItem("theme", document.documentElement.dataset.theme);
  });
  $("help").addEventListener("click", () => $("help-dialog").showModal());
  $("version").textContent = ORVA_VERSION;
  addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || event.target.closest("input, select, dialog")) return;
    const actions = {
      n: () => step(1),
      p: () => step(-1),
      o: () => setShape(shape === "none" ? lastShape : "none"),
    };
    actions[event.key]?.();
  });
  navigator.serviceWorker?.register("service_worker.js").catch(() => {}); // only offline use needs it
}

setUpFiles();
setUpControls();
setUpPage();
show(null);
