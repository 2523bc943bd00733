// The image with its objects on a canvas: zoom and pan by wheel, pointers and keys.

const MAX_SCALE = 40; // screen pixels per pixel
const REST = 120; // milliseconds without a change after which nothing moves

// Of a mark in pixels of the image, whose centers are at whole numbers.
function pathOf({ x, y, radius, path }) {
  if (path) return path;
  const circle = new Path2D();
  circle.arc(x + 0.5, y + 0.5, radius, 0, 2 * Math.PI);
  return circle;
}

export class Viewer {
  #canvas;
  #context;
  #picture = null; // a canvas
  #marks = []; // {x, y, radius, path} in pixels of the image; a path or a circle
  #path = new Path2D(); // of all marks
  #hovered = null;
  #scale = 1;
  #x = 0; // of the image's corner on the screen
  #y = 0;
  #isFitted = true;
  #pointers = new Map();
  #frame = 0;
  #isMoving = false;
  #rest = 0; // timer

  // `onHover(position)` gets the pixel under the pointer, or null.
  constructor(canvas, onHover) {
    this.#canvas = canvas;
    this.#context = canvas.getContext("2d");
    this.onHover = onHover;
    new ResizeObserver(() => this.#resize()).observe(canvas.parentElement);
    canvas.addEventListener("wheel", (event) => this.#wheel(event), { passive: false });
    canvas.addEventListener("pointerdown", (event) => this.#down(event));
    canvas.addEventListener("pointermove", (event) => this.#move(event));
    for (const name of ["pointerup", "pointercancel"]) canvas.addEventListener(name, (event) => this.#up(event));
    canvas.addEventListener("pointerleave", () => this.onHover(null));
    canvas.addEventListener("dblclick", (event) => this.zoom(2, event.offsetX, event.offsetY));
    canvas.addEventListener("keydown", (event) => this.#key(event));
  }

  // Another picture of the same size keeps the view.
  show(picture) {
    const isSameSize =
      this.#picture && picture && this.#picture.width === picture.width && this.#picture.height === picture.height;
    this.#picture = picture;
    if (picture && !isSameSize) this.fit();
    this.#draw();
  }

  mark(marks) {
    this.#marks = marks;
    this.#path = new Path2D();
    for (const mark of marks) this.#path.addPath(pathOf(mark));
    this.#draw();
  }

  hover(mark) {
    if (this.#hovered === mark) return;
    this.#hovered = mark;
    this.#draw();
  }

  fit() {
    if (!this.#picture) return;
    const { clientWidth: w, clientHeight: h } = this.#canvas;
    const margin = Math.min(24, w / 20);
    const { width, height } = this.#picture;
    this.#scale = Math.max(Math.min((w - 2 * margin) / width, (h - 2 * margin) / height), 0.01);
    this.#x = (w - width * this.#scale) / 2;
    this.#y = (h - height * this.#scale) / 2;
    this.#isFitted = true;
    this.#draw();
  }

  // Around a point of the canvas, its center unless given.
  zoom(factor, x = this.#canvas.clientWidth / 2, y = this.#canvas.clientHeight / 2) {
    const scale = Math.min(Math.max(this.#scale * factor, 0.02), MAX_SCALE);
    this.#x = x - ((x - this.#x) * scale) / this.#scale;
    this.#y = y - ((y - this.#y) * scale) / this.#scale;
    this.#scale = scale;
    this.#isFitted = false;
    this.#draw();
  }

  pan(dx, dy) {
    this.#x += dx;
    this.#y += dy;
    this.#isFitted = false;
    this.#keepInside();
    this.#draw();
  }

  get marks() {
    return this.#marks;
  }

  // {scale, x, y}: where the image is on the canvas.
  get view() {
    return { scale: this.#scale, x: this.#x, y: this.#y };
  }

  #keepInside() {
    if (!this.#picture) return;
    const { clientWidth: w, clientHeight: h } = this.#canvas;
    const rest = 40; // of the image that stays in view
    const width = this.#picture.width * this.#scale;
    const height = this.#picture.height * this.#scale;
    this.#x = Math.min(Math.max(this.#x, rest - width), w - rest);
    this.#y = Math.min(Math.max(this.#y, rest - height), h - rest);
  }

  #resize() {
    const ratio = devicePixelRatio || 1;
    const { clientWidth, clientHeight } = this.#canvas;
    this.#canvas.width = Math.max(1, Math.round(clientWidth * ratio));
    this.#canvas.height = Math.max(1, Math.round(clientHeight * ratio));
    if (this.#isFitted) this.fit();
    this.#paint();
  }

  #wheel(event) {
    event.preventDefault();
    const step = event.deltaMode === 1 ? 16 : 1;
    this.zoom(Math.exp((-event.deltaY * step) / (event.ctrlKey ? 100 : 400)), event.offsetX, event.offsetY);
  }

  #down(event) {
    this.#canvas.setPointerCapture(event.pointerId);
    this.#pointers.set(event.pointerId, { x: event.offsetX, y: event.offsetY });
  }

  #move(event) {
    const before = this.#pointers.get(event.pointerId);
    const point = { x: event.offsetX, y: event.offsetY };
    if (before) {
      const other = [...this.#pointers].find(([id]) => id !== event.pointerId)?.[1];
      if (other) {
        const distance = (p) => Math.hypot(p.x - other.x, p.y - other.y);
        this.zoom(distance(point) / Math.max(distance(before), 1), (point.x + other.x) / 2, (point.y + other.y) / 2);
        this.pan((point.x - before.x) / 2, (point.y - before.y) / 2);
      } else {
        this.pan(point.x - before.x, point.y - before.y);
      }
      this.#pointers.set(event.pointerId, point);
    }
    const x = Math.floor((point.x - this.#x) / this.#scale);
    const y = Math.floor((point.y - this.#y) / this.#scale);
    const isInside = this.#picture && x >= 0 && y >= 0 && x < this.#picture.width && y < this.#picture.height;
    this.onHover(isInside ? { x, y } : null);
  }

  #up(event) {
    this.#pointers.delete(event.pointerId);
  }

  #key(event) {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const step = 48;
    const actions = {
      ArrowLeft: () => this.pan(step, 0),
      ArrowRight: () => this.pan(-step, 0),
      ArrowUp: () => this.pan(0, step),
      ArrowDown: () => this.pan(0, -step),
      "+": () => this.zoom(1.25),
      "=": () => this.zoom(1.25),
      "-": () => this.zoom(0.8),
      0: () => this.fit(),
    };
    const action = actions[event.key];
    if (!action) return;
    event.preventDefault();
    action();
  }

  // Thin lines while things move, which every machine draws fast; then the others.
  #draw() {
    this.#isMoving = true;
    clearTimeout(this.#rest);
    this.#rest = setTimeout(() => {
      this.#isMoving = false;
      this.#paint();
    }, REST);
    if (this.#frame) return;
    this.#frame = requestAnimationFrame(() => {
      this.#frame = 0;
      this.#paint();
    });
  }

  #paint() {
    const context = this.#context;
    const ratio = devicePixelRatio || 1;
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.clearRect(0, 0, this.#canvas.width, this.#canvas.height);
    if (!this.#picture) return;
    const scale = this.#scale * ratio;
    context.setTransform(scale, 0, 0, scale, this.#x * ratio, this.#y * ratio);
    context.imageSmoothingEnabled = scale < 2;
    context.imageSmoothingQuality = "high";
    context.drawImage(this.#picture, 0, 0);
    // Outlines consist of straight pieces along the axes: square ends close their corners, and cost
    // a small part of what round ones do.
    context.lineCap = "square";
    const stroke = (path, colour, width) => {
      context.strokeStyle = colour;
      context.lineWidth = (width * ratio) / scale;
      context.stroke(path);
    };
    const width = Math.min(Math.max(this.#scale * 1.1, 1.4), 2.2);
    if (!this.#isMoving) stroke(this.#path, "rgb(0 0 0 / 65%)", width + 1.8);
    stroke(this.#path, "#ff9a3c", this.#isMoving ? 1 / ratio : width);
    if (this.#hovered && this.#marks.includes(this.#hovered)) stroke(pathOf(this.#hovered), "#ffffff", width + 1);
  }
}
