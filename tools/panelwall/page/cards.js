// Cards that show facts about the selected panel and about every device.
import { age, element, hex, setText } from "./elements.js";

function duration(time, unit) {
  if (unit === 0) return `${time}, shown at once`;
  const length = time * unit;
  return `${time} (${length < 10000 ? `${length} ms` : `${Math.round(length / 1000)} s`})`;
}

// The facts about a panel as [name, value, colour]; only facts about colours have a third element.
function factsOf(wall, panel, now) {
  const shown = wall.shownBy(panel, now);
  const facts = [
    ["Device", `${panel.device} at ${wall.facts.devices[panel.device].ip}`],
    ["Panel", `${panel.id}`],
  ];
  if (shown < 0) {
    facts.push(["Colour", "none was sent yet"]);
  } else {
    const channels = [16, 8, 0].map((shift) => (shown >> shift) & 255).join(", ");
    facts.push(["Colour", `${hex(shown)}  (${channels})`, hex(shown)]);
    if (shown !== panel.colour) facts.push(["Going to", hex(panel.colour), hex(panel.colour)]);
    facts.push(["Transition", duration(panel.time, wall.facts.unit)]);
  }
  facts.push(["Centre", `${panel.x}, ${panel.y}`]);
  return facts;
}

export const sentenceOf = (wall, panel, now) =>
  factsOf(wall, panel, now).map(([name, value]) => `${name} ${value}`).join(", ");

export class PanelCard {
  text = "";

  constructor(card, wall) {
    this.card = card;
    this.wall = wall;
  }

  draw(now) {
    const panel = this.wall.selected;
    this.card.hidden = !panel;
    if (!panel) return;
    const facts = factsOf(this.wall, panel, now);
    const text = JSON.stringify(facts);
    if (text !== this.text) {
      this.text = text;
      this.card.replaceChildren(...facts.flatMap(row));
    }
    this.place(panel);
  }

  // Places the card beside the panel, on the side where there is room, within the wall.
  place(panel) {
    const { left, top, length } = this.wall.boxOf(panel);
    const density = this.wall.density;
    const gap = 12;
    const stage = this.card.parentElement;
    const width = this.card.offsetWidth;
    const right = (left + length) / density + gap;
    const x = right + width <= stage.clientWidth ? right : left / density - gap - width;
    const y = Math.min(top / density, stage.clientHeight - this.card.offsetHeight);
    const pixels = (value) => `${Math.max(0, Math.round(value))}px`;
    this.card.style.transform = `translate(${pixels(x)}, ${pixels(y)})`;
  }
}

function row([name, value, colour]) {
  const description = element("dd", {}, value);
  if (colour) {
    description.prepend(element("span", { className: "swatch" }));
    description.firstChild.style.background = colour;
  }
  return [element("dt", {}, name), description];
}

class DeviceCard {
  values = {};

  constructor(device, index, steady) {
    this.steady = steady;
    const ip = device.ip.includes(":") ? `[${device.ip}]` : device.ip;
    const place = element("span", {}, `${ip}:${device.port} ${device.layout}`);
    const names = ["Rate", "Interval", "Jitter", "Last", "Malformed", "Lost"];
    if (steady) names.push("Gaps");
    const groups = names.map((name) => {
      this.values[name] = element("dd");
      return element("div", {}, element("dt", {}, name), this.values[name]);
    });
    this.remark = element("p", { className: "remark", hidden: true });
    this.element = element("article", { className: "device" },
      element("h3", {}, `Device ${index}`, place), element("dl", {}, ...groups), this.remark);
  }

  set(name, text, bad = false) {
    setText(this.values[name], text);
    this.values[name].toggleAttribute("data-bad", bad);
  }

  show(state, passed, tellingSilence, othersHear) {
    const never = state.age === undefined;
    const silent = never || state.age + passed >= tellingSilence;
    const milliseconds = (value) => (value === undefined ? "–" : `${value.toFixed(1)} ms`);
    this.set("Rate", `${silent ? 0 : state.rate} /s`);
    this.set("Interval", milliseconds(state.interval));
    this.set("Jitter", milliseconds(state.jitter));
    this.set("Last", never ? "never" : age(state.age + passed), silent && this.steady);
    this.set("Lost", `${state.lost ?? "unknown"}`, state.lost > 0);
    if (this.steady) this.set("Gaps", `${state.gaps}`, state.gaps > 0);
    this.set("Malformed", `${state.malformed}`, state.malformed > 0);
    let remark = "";
    if (state.malformed > 0) remark = `Last malformed: ${state.reason}`;
    else if (never && othersHear)
      remark = "Others receive something: check this device's address and control version.";
    setText(this.remark, remark);
    this.remark.hidden = remark === "";
  }
}

// How regularly datagrams arrive for each device, and what is wrong with them.
export class Devices {
  constructor(container) {
    this.container = container;
  }

  build(facts) {
    this.tellingSilence = facts.tellingSilence;
    this.cards = facts.devices.map((device, index) => new DeviceCard(device, index, facts.steady));
    this.container.replaceChildren(...this.cards.map((card) => card.element));
  }

  // Shows the devices of a `now` event that arrived `passed` milliseconds ago.
  show(devices, passed) {
    const someHear = devices.some((device) => device.age !== undefined);
    devices.forEach((state, i) =>
      this.cards[i].show(state, passed, this.tellingSilence, someHear));
  }
}
