// What there is to know about one panel, beside it.
import { hex } from "./feed.js";

export function duration(time, unit) {
  const milliseconds = time * unit;
  if (unit === 0) return `${time}, shown at once`;
  return milliseconds < 10000
    ? `${time} (${milliseconds} ms)`
    : `${time} (${Math.round(milliseconds / 1000)} s)`;
}

// The facts about a panel as [name, value, colour or null].
export function factsOf(wall, panel, now) {
  const device = wall.facts.devices[panel.device];
  const shown = wall.shownBy(panel, now);
  const facts = [
    ["Device", `${panel.device} at ${device.ip}`, null],
    ["Panel", String(panel.id), null],
  ];
  if (shown < 0) {
    facts.push(["Colour", "none was sent yet", null]);
  } else {
    const channels = `${shown >> 16}, ${(shown >> 8) & 255}, ${shown & 255}`;
    facts.push(["Colour", `${hex(shown)}  (${channels})`, hex(shown)]);
    if (shown !== panel.colour) facts.push(["Going to", hex(panel.colour), hex(panel.colour)]);
    facts.push(["Transition", duration(panel.time, wall.facts.unit), null]);
  }
  facts.push(["Centre", `${panel.x}, ${panel.y}`, null]);
  return facts;
}

export function sentenceOf(wall, panel, now) {
  return factsOf(wall, panel, now)
    .map(([name, value]) => `${name} ${value}`)
    .join(", ");
}

export class Details {
  constructor(card, wall) {
    this.card = card;
    this.wall = wall;
    this.text = "";
  }

  draw(now) {
    const panel = this.wall.selected;
    this.card.hidden = !panel;
    if (!panel) {
      this.text = "";
      return;
    }
    const facts = factsOf(this.wall, panel, now);
    const text = JSON.stringify(facts);
    if (text !== this.text) {
      this.text = text;
      this.card.replaceChildren(...facts.flatMap(([name, value, colour]) => row(name, value, colour)));
    }
    this.place(panel);
  }

  // Beside the panel where there is room, and inside the wall.
  place(panel) {
    const { left, top, length } = this.wall.boxOf(panel);
    const density = this.wall.density;
    const gap = 12;
    const stage = this.card.parentElement;
    const right = (left + length) / density + gap;
    const width = this.card.offsetWidth;
    const x = right + width <= stage.clientWidth ? right : left / density - gap - width;
    const y = Math.min(top / density, stage.clientHeight - this.card.offsetHeight);
    this.card.style.transform = `translate(${Math.max(0, Math.round(x))}px, ${Math.max(0, Math.round(y))}px)`;
  }
}

function row(name, value, colour) {
  const term = document.createElement("dt");
  term.textContent = name;
  const description = document.createElement("dd");
  if (colour) {
    const swatch = document.createElement("span");
    swatch.className = "swatch";
    swatch.style.background = colour;
    description.append(swatch);
  }
  description.append(value);
  return [term, description];
}
