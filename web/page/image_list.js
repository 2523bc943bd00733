// The list of images with their counts.
import { medianRadius } from "./project.js";

const NO_PICTURE = "data:image/gif;base64,R0lGODlhAQABAIAAAAAAAP///yH5BAEAAAAALAAAAAABAAEAAAIBRAA7"; // a transparent pixel

const $ = (id) => document.getElementById(id);

function element(name, className, facts = {}) {
  return Object.assign(document.createElement(name), { className, ...facts });
}

// Changes no text that stays, which a screen reader would read again.
function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

export class ImageList {
  #project;
  #rows = new Map(); // by item

  constructor(project) {
    this.#project = project;
  }

  // Rows stay the same elements, so that they keep the focus.
  show() {
    const { items } = this.#project;
    $("list").hidden = items.length === 0;
    for (const [item, { row }] of this.#rows) {
      if (items.includes(item)) continue;
      row.remove();
      this.#rows.delete(item);
    }
    for (const item of items) {
      if (!this.#rows.has(item)) {
        this.#rows.set(item, this.#makeRow(item));
        $("images").append(this.#rows.get(item).row);
      }
      this.#fill(item, this.#rows.get(item));
    }
    this.#showTotals();
  }

  #showTotals() {
    const { items } = this.#project;
    const results = items.filter(({ state }) => state !== "failed").map((item) => this.#project.result(item)).filter(Boolean);
    $("totals").replaceChildren();
    if (items.length > 1) {
      const count = results.reduce((sum, { objects }) => sum + objects.length, 0);
      const row = $("totals").insertRow();
      for (const text of [`${results.length} of ${items.length} images`, String(count), "", ""]) {
        row.append(element("td", row.cells.length === 1 ? "number" : "", { textContent: text }));
      }
    }
    $("summary-csv").disabled = results.length === 0;
  }

  #makeRow(item) {
    const row = element("tr", "");
    const open = element("button", "open", { type: "button" });
    const picture = element("img", "thumbnail", { alt: "", src: NO_PICTURE });
    const name = element("span", "name", { textContent: item.name, title: item.name });
    const message = element("span", "message");
    const text = element("span", "text");
    text.append(name, message);
    open.append(picture, text);
    open.addEventListener("click", () => this.#project.select(item));
    const head = element("th", "", { scope: "row" });
    head.append(open);
    const [count, radius] = [element("td", "number"), element("td", "number")];
    const remove = element("button", "remove", { type: "button", textContent: "×" });
    remove.setAttribute("aria-label", `Remove ${item.name}`);
    remove.addEventListener("click", () => this.#remove(item));
    const last = element("td", "");
    last.append(remove);
    row.append(head, count, radius, last);
    return { row, open, picture, message, count, radius, remove };
  }

  #fill(item, { row, open, picture, message, count, radius }) {
    const isActive = item === this.#project.active;
    const isFailed = item.state === "failed";
    const result = isFailed ? null : this.#project.result(item);
    row.classList.toggle("active", isActive);
    row.classList.toggle("pending", !this.#project.isCurrent(item));
    if (isActive) open.setAttribute("aria-current", "true");
    else open.removeAttribute("aria-current");
    if (item.thumbnail && picture.src !== item.thumbnail) picture.src = item.thumbnail;
    setText(message, isFailed ? item.message : "");
    message.title = message.textContent;
    const waiting = item.state === "waiting" ? "" : "…";
    setText(count, isFailed ? "failed" : result ? String(result.objects.length) : waiting);
    setText(radius, result?.objects.length > 0 ? medianRadius(result.objects).toFixed(1) : result ? "–" : "");
  }

  // The focus goes on to the image that takes the place.
  #remove(item) {
    const at = this.#project.items.indexOf(item);
    this.#project.remove(item);
    const next = this.#project.items[Math.min(at, this.#project.items.length - 1)];
    (next ? this.#rows.get(next).remove : $("open")).focus();
  }
}
