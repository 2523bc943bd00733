// A slider with two ends, made of two sliders on one track.

export class Range {
  #low;
  #high;
  #fill;

  // In `element`; `labels` name the ends. `onInput(low, high)` gets numbers from 0 to 1.
  constructor(element, labels, onInput) {
    const make = (label) => {
      const input = document.createElement("input");
      Object.assign(input, { type: "range", min: 0, max: 1000, step: 1 });
      input.setAttribute("aria-label", label);
      return input;
    };
    this.#low = make(labels[0]);
    this.#high = make(labels[1]);
    const track = document.createElement("span");
    track.className = "track";
    this.#fill = document.createElement("span");
    this.#fill.className = "fill";
    track.append(this.#fill);
    element.append(track, this.#low, this.#high);
    const changed = (moved) => {
      if (this.#low.valueAsNumber > this.#high.valueAsNumber) {
        if (moved === this.#low) this.#high.value = this.#low.value;
        else this.#low.value = this.#high.value;
      }
      this.#paint();
      onInput(this.#low.valueAsNumber / 1000, this.#high.valueAsNumber / 1000);
    };
    for (const input of [this.#low, this.#high]) input.addEventListener("input", () => changed(input));
  }

  // `texts` are what screen readers say of the ends.
  set(low, high, texts) {
    this.#low.value = Math.round(low * 1000);
    this.#high.value = Math.round(high * 1000);
    this.#low.setAttribute("aria-valuetext", texts[0]);
    this.#high.setAttribute("aria-valuetext", texts[1]);
    this.#paint();
  }

  #paint() {
    const [low, high] = [this.#low.valueAsNumber / 10, this.#high.valueAsNumber / 10];
    this.#fill.style.left = `${low}%`;
    this.#fill.style.right = `${100 - high}%`;
    // Where both ends meet, the one that can still move lies on top.
    this.#low.style.zIndex = low > 50 ? 2 : 1;
    this.#high.style.zIndex = low > 50 ? 1 : 2;
  }
}
