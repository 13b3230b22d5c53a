// The last minute: for each device a strip of the colours that its panels were sent, newest at the
// right. Alternating colours show as stripes. While nothing comes for long, the last colour is
// faint.
import { element, hex, readColours, setText } from "./elements.js";

const maxStrips = 24;
const markHeight = 4;
const faint = 0.2;
const roomForStrips = 400; // CSS pixels, if there are enough devices to fill it

class Strip {
  colours = []; // the current ones, one per row
  first = Infinity; // the earliest slot filled
  last = -Infinity;
  heard = -Infinity; // the slot of the newest datagram

  // Colours become faint when no datagram has come for more than `hold` slots.
  constructor(device, index, slots, hold, highest) {
    this.slots = slots;
    this.hold = hold;
    this.rows = device.rows;
    this.canvas = element("canvas", {
      role: "img",
      ariaLabel: `Colours sent to device ${index} in the last minute`,
    });
    const label = element("p", {}, element("span", {}, "Device "), `${index}`);
    this.element = element("div", { className: "strip" }, label, this.canvas);
    this.element.dataset.device = index;
    this.height = Math.min(highest, Math.max(18, this.rows.length * 5));

    // One column per slot, at the slot's number modulo their count, and one row per panel.
    this.ring = element("canvas", { width: slots, height: Math.max(1, this.rows.length) });
    this.paint = this.ring.getContext("2d", { willReadFrequently: false });
    this.marks = new Uint8Array(slots);
  }

  // Sets the rows' colours from `slot` on, in which a datagram arrived.
  put(slot, colours) {
    if (this.last >= slot) this.last = slot - 1;
    else this.fillUpTo(slot - 1);
    this.colours = colours;
    this.first = Math.min(this.first, slot);
    this.heard = slot;
    this.fillUpTo(slot);
    this.marks[slot % this.slots] = 1;
  }

  // Fills the columns after the last one, up to `slot`, with the current colours.
  fillUpTo(slot) {
    if (this.first === Infinity) return;
    const isFaint = slot - this.heard > this.hold;
    if (isFaint && this.last - this.heard <= this.hold) this.last = Math.min(this.last, this.heard);
    for (let s = Math.max(this.last + 1, slot - this.slots + 1, this.first); s <= slot; ++s) {
      const x = s % this.slots;
      this.marks[x] = 0;
      this.paint.clearRect(x, 0, 1, this.ring.height);
      this.paint.globalAlpha = isFaint && s > this.heard ? faint : 1;
      this.colours.forEach((colour, y) => {
        if (colour < 0) return;
        this.paint.fillStyle = hex(colour);
        this.paint.fillRect(x, y, 1, 1);
      });
    }
    this.last = Math.max(this.last, slot);
  }

  resize() {
    this.density = window.devicePixelRatio || 1;
    const height = this.height + markHeight + 2;
    this.canvas.style.height = `${height}px`;
    this.canvas.width = Math.max(1, Math.round(this.canvas.clientWidth * this.density));
    this.canvas.height = Math.round(height * this.density);
  }

  // Draws the strip with `slot` at the right edge.
  draw(slot, theme) {
    this.fillUpTo(slot);
    const context = this.canvas.getContext("2d");
    const width = this.canvas.width;
    const height = Math.round(this.height * this.density);
    context.imageSmoothingEnabled = false;
    context.clearRect(0, 0, width, this.canvas.height);
    context.fillStyle = theme.screen;
    context.fillRect(0, 0, width, height);
    const head = (((slot + 1) % this.slots) + this.slots) % this.slots; // the oldest slot's column
    const share = width / this.slots;
    const part = (from, count, at) => {
      if (count > 0)
        context.drawImage(this.ring, from, 0, count, this.ring.height,
          at * share, 0, count * share, height);
    };
    part(head, this.slots - head, 0);
    part(0, head, this.slots - head);
    context.fillStyle = theme.muted;
    const markTop = height + Math.round(2 * this.density);
    for (let i = 0; i < this.slots; ++i)
      if (this.marks[(head + i) % this.slots])
        context.fillRect(i * share, markTop, Math.max(share, 0.75), markHeight * this.density);
  }
}

export class Timeline {
  strips = [];

  constructor(container, note) {
    this.container = container;
    this.note = note;
    this.explanation = note.textContent;
  }

  build(facts) {
    this.slotLength = facts.slotLength;
    const hold = facts.tellingSilence / facts.slotLength;
    const shown = facts.devices.slice(0, maxStrips);
    const highest = Math.min(96, roomForStrips / shown.length);
    this.strips = shown.map((device, index) =>
      new Strip(device, index, facts.slotCount, hold, highest));
    this.container.replaceChildren(...this.strips.map((strip) => strip.element));
    const notes = [this.explanation];
    const more = facts.devices.length - shown.length;
    if (more > 0) notes.push(`The other ${more} devices have no strip.`);
    const partial = shown.find((device) => device.rows.length < device.panels.length);
    if (partial) notes.push(`Of a device's panels, at most ${partial.rows.length} have a row.`);
    setText(this.note, notes.join(" "));
    this.totals = [];
    this.resize();
  }

  // A `past` event: for each device an array of slots and colours in turn.
  setPast(devices) {
    this.strips.forEach((strip, d) => {
      for (let i = 0; i < devices[d].length; i += 2)
        strip.put(devices[d][i], readColours(devices[d][i + 1]));
    });
  }

  // A `now` event.
  update(state, at) {
    this.slot = state.slot;
    this.at = at;
    this.strips.forEach((strip, d) => {
      const device = state.devices[d];
      const known = this.totals[d];
      this.totals[d] = device.total;
      if (known === undefined || device.total === known || device.age === undefined) return;
      const all = readColours(device.sent);
      const slot = state.slot - Math.floor(device.age / this.slotLength);
      strip.put(slot, strip.rows.map((panel) => all[panel]));
    });
  }

  resize() {
    for (const strip of this.strips) strip.resize();
  }

  draw(now, theme) {
    if (this.slot === undefined) return;
    const slot = this.slot + Math.floor((now - this.at) / this.slotLength);
    for (const strip of this.strips) strip.draw(slot, theme);
  }
}
