// Draws the wall: the display's outline, and every panel at its place in its colour.
import { hex, readColours } from "./elements.js";

// How far the view may extend beyond the display to include panels outside it, as a share of it.
const maxOutside = 0.5;
const margin = 0.02;

// A panel can be made at least this large by zooming, in CSS pixels.
const largestPanel = 96;
const labelSize = 11;

const white = "rgb(255 255 255 / 0.95)";

// The shortest lines that link all panels of a device, as pairs of panels. None for devices with so
// many panels that finding them would take long.
function linksOf(panels) {
  if (panels.length > 1000) return [];
  const links = [];
  const left = panels.slice(1).map((panel) => ({ panel, to: panels[0], length: Infinity }));
  for (let added = panels[0]; left.length > 0; ) {
    let nearest = 0;
    left.forEach((entry, i) => {
      const length = Math.hypot(entry.panel.x - added.x, entry.panel.y - added.y);
      if (length < entry.length) Object.assign(entry, { to: added, length });
      if (entry.length < left[nearest].length) nearest = i;
    });
    const [{ panel, to }] = left.splice(nearest, 1);
    links.push([panel, to]);
    added = panel;
  }
  return links;
}

// Black or white, whichever is easier to read on the colour.
function inkOn(colour) {
  const [red, green, blue] = [16, 8, 0].map((shift) => (((colour >> shift) & 255) / 255) ** 2.2);
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue > 0.18 ? "#000" : "#fff";
}

export class Wall {
  panels = [];
  picture = null;
  selected = null;
  lit = -1; // the device whose panels are emphasised, or -1
  connected = true; // whether the wall's events still arrive
  zoom = 1;
  scale = 0; // canvas pixels per pixel of the display

  constructor(canvas) {
    this.canvas = canvas;
    this.context = canvas.getContext("2d");
  }

  build(facts) {
    this.facts = facts;
    this.outline = { width: facts.width, height: facts.height };
    this.perDevice = facts.devices.map((device, deviceIndex) =>
      device.panels.map(([id, x, y]) => ({
        device: deviceIndex,
        id,
        x,
        y,
        side: device.side,
        colour: -1, // the last one it was sent
        from: -1, // the colour it showed at `begun`
        begun: 0, // start and end of the transition, by the wall's clock
        ends: 0,
        time: 0, // the transition time that came with the colour
      })),
    );
    this.panels = this.perDevice.flat();
    this.links = facts.devices.length > 1 ? this.perDevice.map(linksOf) : [];
    this.lastArrivals = facts.devices.map(() => -Infinity); // by the wall's clock
    this.selected = null;
    this.resize();
  }

  // Takes over the state of a `now` event. All times are by the wall's clock.
  update({ time, devices }) {
    devices.forEach((device, deviceIndex) => {
      this.lastArrivals[deviceIndex] = time - (device.age ?? Infinity);
      const sent = readColours(device.sent);
      const shown = readColours(device.shown);
      this.perDevice[deviceIndex].forEach((panel, i) => {
        const ends = time + device.left[i];
        panel.time = device.times[i];
        // Still the same transition; its earlier start gives more accurate colours.
        if (sent[i] === panel.colour && ends === panel.ends) return;
        Object.assign(panel, { colour: sent[i], from: shown[i], begun: time, ends });
      });
    });
  }

  // Whether the device's panels show what they receive, and not only what they received last.
  isLive(device, now) {
    return this.connected && now - this.lastArrivals[device] < this.facts.tellingSilence;
  }

  isMoving(now) {
    return this.panels.some((panel) => now < panel.ends);
  }

  // The colour a panel shows, interpolated linearly in a transition; -1 before the first colour.
  shownBy(panel, now) {
    if (panel.colour < 0 || now >= panel.ends) return panel.colour;
    const share = Math.max(0, (now - panel.begun) / (panel.ends - panel.begun));
    const mix = (shift) => {
      const from = (panel.from >> shift) & 255;
      const to = (panel.colour >> shift) & 255;
      return Math.round(from + (to - from) * share) << shift;
    };
    return mix(16) | mix(8) | mix(0);
  }

  // `width` and `height` are the display's true size; the picture may be smaller.
  setPicture(picture, width, height) {
    this.picture?.close();
    this.picture = picture;
    if (picture) this.outline = { width, height };
    this.resize();
  }

  // How many panels are centred outside the view.
  get outOfView() {
    const { left, top, right, bottom } = this.view;
    return this.panels.filter(({ x, y }) => x < left || y < top || x > right || y > bottom).length;
  }

  resize() {
    if (!this.facts) return;
    const { width, height } = this.outline;
    const outside = { x: maxOutside * width, y: maxOutside * height };
    const view = { left: 0, top: 0, right: width, bottom: height };
    for (const { x, y, side } of this.panels) {
      const half = side / 2;
      if (x < -outside.x || x > width + outside.x) continue;
      if (y < -outside.y || y > height + outside.y) continue;
      view.left = Math.min(view.left, Math.max(x - half, -outside.x));
      view.top = Math.min(view.top, Math.max(y - half, -outside.y));
      view.right = Math.max(view.right, Math.min(x + half, width + outside.x));
      view.bottom = Math.max(view.bottom, Math.min(y + half, height + outside.y));
    }
    const edge = margin * Math.max(width, height);
    view.left -= edge;
    view.top -= edge;
    view.right += edge;
    view.bottom += edge;
    this.view = view;

    const across = view.right - view.left;
    const down = view.bottom - view.top;
    const room = this.canvas.parentElement.clientWidth;
    const highest = Math.max(200, window.innerHeight * 0.72);
    const fit = Math.min(room / across, highest / down);
    const middle = [this.canvas.width, this.canvas.height].map((length) => length / 2);
    const [x, y] = this.scale > 0 ? this.placeAt(...middle) : [0, 0];
    this.density = window.devicePixelRatio || 1;
    this.canvas.style.height = `${Math.round(down * fit)}px`;
    this.canvas.width = Math.round(room * this.density);
    this.canvas.height = Math.round(down * fit * this.density);
    this.fit = fit * this.density;
    const smallest = Math.min(...this.facts.devices.map(({ side }) => side));
    this.maxZoom = Math.max(4, largestPanel / (smallest * fit));
    this.scale = this.fit * this.zoom;
    this.moveTo(this.canvas.width / 2 - x * this.scale, this.canvas.height / 2 - y * this.scale);
  }

  // The place on the display at a position in pixels of the canvas.
  placeAt(px, py) {
    return [(px - this.shiftX) / this.scale, (py - this.shiftY) / this.scale];
  }

  // Moves the display's corner to a position on the canvas, or as near as the view's edges allow.
  moveTo(shiftX, shiftY) {
    const within = (shift, from, to, room) => {
      const spare = room - (to - from) * this.scale;
      const first = -from * this.scale;
      if (spare >= 0) return first + spare / 2;
      return Math.min(first, Math.max(first + spare, shift));
    };
    const { left, top, right, bottom } = this.view;
    this.shiftX = within(shiftX, left, right, this.canvas.width);
    this.shiftY = within(shiftY, top, bottom, this.canvas.height);
  }

  // Moves what is shown by CSS pixels. Returns whether it moved.
  pan(dx, dy) {
    const { shiftX, shiftY } = this;
    this.moveTo(shiftX + dx * this.density, shiftY + dy * this.density);
    return Math.hypot(this.shiftX - shiftX, this.shiftY - shiftY) > 0.5;
  }

  // Zooms in or out; the place at (x, y), in CSS pixels of the canvas, stays where it is.
  zoomBy(factor, x, y) {
    const px = x * this.density;
    const py = y * this.density;
    const [placeX, placeY] = this.placeAt(px, py);
    this.zoom = Math.min(this.maxZoom, Math.max(1, this.zoom * factor));
    this.scale = this.fit * this.zoom;
    this.moveTo(px - placeX * this.scale, py - placeY * this.scale);
  }

  // Moves the panel into sight.
  reveal(panel) {
    const { left, top, length } = this.boxOf(panel);
    const missing = (from, room) => Math.max(0, -from) - Math.max(0, from + length - room);
    this.moveTo(this.shiftX + missing(left, this.canvas.width),
      this.shiftY + missing(top, this.canvas.height));
  }

  // A panel's square on the canvas, in whole pixels so that equal panels look equal.
  boxOf({ x, y, side }) {
    const length = Math.max(3, Math.round(side * this.scale));
    return {
      left: Math.round(x * this.scale + this.shiftX - length / 2),
      top: Math.round(y * this.scale + this.shiftY - length / 2),
      length,
    };
  }

  // The topmost panel at a position in CSS pixels of the canvas, or null.
  panelAt(x, y) {
    const px = x * this.density;
    const py = y * this.density;
    return this.panels.findLast((panel) => {
      const { left, top, length } = this.boxOf(panel);
      return px >= left && px < left + length && py >= top && py < top + length;
    }) ?? null;
  }

  // The nearest panel in the direction (dx, dy) from a panel; the panel itself when there is none.
  neighbour(panel, dx, dy) {
    let best = panel;
    let least = Infinity;
    for (const other of this.panels) {
      const ahead = (other.x - panel.x) * dx + (other.y - panel.y) * dy;
      const aside = Math.abs((other.x - panel.x) * dy) + Math.abs((other.y - panel.y) * dx);
      const distance = ahead + 2 * aside;
      if (ahead <= 0 || distance >= least) continue;
      least = distance;
      best = other;
    }
    return best;
  }

  draw(now, theme) {
    const { context, canvas } = this;
    context.clearRect(0, 0, canvas.width, canvas.height);
    if (!this.outline) return;
    const line = Math.max(1, Math.round(this.density));
    const left = Math.round(this.shiftX);
    const top = Math.round(this.shiftY);
    const width = Math.round(this.outline.width * this.scale);
    const height = Math.round(this.outline.height * this.scale);
    context.fillStyle = theme.screen;
    context.fillRect(left, top, width, height);
    if (this.picture) context.drawImage(this.picture, left, top, width, height);
    context.lineWidth = line;
    context.strokeStyle = theme.screenLine;
    context.strokeRect(left - line / 2, top - line / 2, width + line, height + line);

    this.drawLinks(theme, line);
    for (const panel of this.panels) {
      const { left, top, length } = this.boxOf(panel);
      if (left > canvas.width || left + length < 0) continue;
      if (top > canvas.height || top + length < 0) continue;
      // While a device's card is pointed at, the other devices' panels are faint.
      const others = this.lit >= 0 && panel.device !== this.lit;
      if (!this.picture) {
        context.fillStyle = theme.screen;
        this.outlineSquare(panel, 0);
        context.fill();
      }
      context.globalAlpha = others && !this.selected ? 0.25 : 1;
      this.drawPanel(panel, now, theme, line);
      context.globalAlpha = 1;
      if (panel.device !== this.lit || panel === this.selected) continue;
      this.outlineSquare(panel, -line);
      this.stroke(theme.accent, 2 * line);
    }
    if (this.selected) {
      this.outlineSquare(this.selected, -3 * line);
      this.stroke(theme.accent, 4 * line);
    }
  }

  // Lines behind the panels, which link those of one device. They would hide the picture, so there
  // only an emphasised device has them.
  drawLinks(theme, line) {
    const { context } = this;
    this.links.forEach((links, device) => {
      const isLit = device === this.lit;
      if (this.picture && !isLit) return;
      context.beginPath();
      for (const link of links) {
        const [from, to] = link.map(({ x, y }) => [
          x * this.scale + this.shiftX,
          y * this.scale + this.shiftY,
        ]);
        context.moveTo(...from);
        context.lineTo(...to);
      }
      this.stroke(isLit ? theme.accent : theme.screenLine, 3 * line);
    });
  }

  drawPanel(panel, now, theme, line) {
    const { context, picture } = this;
    const shown = this.shownBy(panel, now);
    const isLive = shown >= 0 && this.isLive(panel.device, now);
    const isFull = isLive && !picture;
    const { length } = this.boxOf(panel);
    if (isFull) {
      context.fillStyle = hex(shown);
      this.outlineSquare(panel, 0);
      context.fill();
    }
    if (!isLive) context.setLineDash([4 * line, 3 * line]);
    this.outlineSquare(panel, line * (picture ? 1.5 : 0.5));
    if (picture) this.stroke("rgb(0 0 0 / 0.65)", 3 * line);
    this.stroke(picture ? white : isFull ? theme.panelEdge : theme.hollow, line);
    context.setLineDash([]);
    // The colour only in the middle: over the picture, so that the part of the screen that
    // determines it stays visible around it; without, for a panel that is not live.
    if (shown >= 0 && !isFull) {
      context.fillStyle = hex(shown);
      this.outlineSquare(panel, length * 0.27);
      context.fill();
      this.stroke(picture ? white : theme.panelEdge, line);
    }
    if (isFull) this.label(panel, inkOn(shown));
    else if (picture) this.label(panel, "#fff", "#000");
    else this.label(panel, theme.muted, shown < 0 ? "" : theme.screen);
  }

  // Writes into the panel's upper left corner, where there is room, its identifier and device. Text
  // that may lie across colours has a halo.
  label(panel, ink, halo = "") {
    const { context } = this;
    const { left, top, length } = this.boxOf(panel);
    const size = labelSize * this.density;
    const inset = Math.max(3 * this.density, length * 0.08);
    if (length < inset + 1.2 * size) return;
    context.font = `${size}px system-ui, sans-serif`;
    context.textBaseline = "top";
    context.lineJoin = "round";
    context.fillStyle = ink;
    const write = (text, y) => {
      if (context.measureText(text).width > length - 2 * inset) return false;
      if (halo) {
        context.strokeStyle = halo;
        context.lineWidth = 3 * this.density;
        context.strokeText(text, left + inset, y);
      }
      context.fillText(text, left + inset, y);
      return true;
    };
    const twoLines = !halo && this.links.length > 0 && length > inset + 3 * size;
    if (write(`${panel.id}`, top + inset) && twoLines)
      write(`device ${panel.device}`, top + inset + 1.2 * size);
  }

  // The path of a panel's square, smaller by `inset` at each side, with rounded corners.
  outlineSquare(panel, inset) {
    const { left, top, length } = this.boxOf(panel);
    const side = length - 2 * inset;
    this.context.beginPath();
    this.context.roundRect(left + inset, top + inset, side, side, Math.max(0, length * 0.12 - inset));
  }

  stroke(style, width) {
    this.context.strokeStyle = style;
    this.context.lineWidth = width;
    this.context.stroke();
  }
}
