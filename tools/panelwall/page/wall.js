// Draws the wall: the display's outline, and every panel at its place in its colour.
import { hex, readColours } from "./elements.js";

// How far the view may extend beyond the display to include panels outside it, as a share of it.
const maxOutside = 0.5;
const margin = 0.02;

const white = "rgb(255 255 255 / 0.95)";

export class Wall {
  panels = [];
  picture = null;
  selected = null;

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
    this.selected = null;
    this.resize();
  }

  // Takes over the state of a `now` event. All times are by the wall's clock.
  update({ time, devices }) {
    devices.forEach((device, deviceIndex) => {
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
    if (!this.outline) return;
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
    const scale = Math.min(room / across, highest / down);
    this.density = window.devicePixelRatio || 1;
    this.canvas.style.height = `${Math.round(down * scale)}px`;
    this.canvas.width = Math.round(room * this.density);
    this.canvas.height = Math.round(down * scale * this.density);
    this.scale = scale * this.density;
    this.shiftX = (room * this.density - across * this.scale) / 2 - view.left * this.scale;
    this.shiftY = -view.top * this.scale;
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

    for (const panel of this.panels) this.drawPanel(panel, now, theme, line);
    if (this.selected) {
      this.outlineSquare(this.selected, -3 * line);
      this.stroke(theme.accent, 2 * line);
    }
  }

  drawPanel(panel, now, theme, line) {
    const { context } = this;
    const shown = this.shownBy(panel, now);
    if (shown < 0) {
      context.setLineDash([4 * line, 3 * line]);
      this.outlineSquare(panel, line / 2);
      this.stroke(this.picture ? white : theme.hollow, line);
      context.setLineDash([]);
      return;
    }
    context.fillStyle = hex(shown);
    if (!this.picture) {
      this.outlineSquare(panel, 0);
      context.fill();
      this.outlineSquare(panel, line / 2);
      this.stroke(theme.panelEdge, line);
      return;
    }
    // Over the picture: the square's edge, and the colour only in its middle, so that the part of
    // the screen that determines the colour stays visible around it.
    this.outlineSquare(panel, line * 1.5);
    this.stroke("rgb(0 0 0 / 0.65)", 3 * line);
    this.stroke(white, line);
    this.outlineSquare(panel, this.boxOf(panel).length * 0.27);
    context.fill();
    context.stroke();
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
