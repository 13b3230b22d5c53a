// Cards that show facts about the selected panel and about every device.
import { addressOf, age, element, hex, setText } from "./elements.js";

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

// Up to so many devices are all shown.
const few = 8;
const mostTroubled = 12;

// Named numbers. Their looks are "bad", "stale" (out of date) or empty.
class Numbers {
  values = {};

  constructor(names, properties) {
    const groups = names.map((name) => {
      this.values[name] = element("dd");
      return element("div", {}, element("dt", {}, name), this.values[name]);
    });
    this.element = element("dl", properties, ...groups);
  }

  set(name, text, look = "") {
    setText(this.values[name], `${text}`);
    if (this.values[name].dataset.look !== look) this.values[name].dataset.look = look;
  }
}

const counted = (count) => (count > 0 ? "bad" : "");

class DeviceCard {
  constructor(device, index, steady) {
    this.steady = steady;
    const place = element("span", {}, `${addressOf(device)} ${device.layout}`);
    const names = ["Rate", "Interval", "Jitter", "Last", "Malformed", "Lost"];
    if (steady) names.push("Gaps");
    this.numbers = new Numbers(names);
    this.remark = element("p", { className: "remark", hidden: true });
    this.element = element("article", { className: "device", tabIndex: 0 },
      element("h3", {}, `Device ${index}`, place), this.numbers.element, this.remark);
    this.element.ariaLabel = `Device ${index}`;
    this.element.dataset.device = index;
  }

  // `silent` is whether nothing has arrived for long, `connected` whether it is known.
  show(state, passed, silent, othersLive, connected) {
    const { numbers } = this;
    const never = state.age === undefined;
    const stale = silent || !connected ? "stale" : "";
    const milliseconds = (value) => (value === undefined ? "–" : `${value.toFixed(1)} ms`);
    numbers.set("Rate", connected ? `${silent ? 0 : state.rate} /s` : "–", stale);
    numbers.set("Interval", milliseconds(state.interval), stale);
    numbers.set("Jitter", milliseconds(state.jitter), stale);
    const last = never ? "never" : connected ? age(state.age + passed) : "–";
    numbers.set("Last", last, silent && connected && this.steady ? "bad" : stale);
    numbers.set("Lost", state.lost ?? "unknown", counted(state.lost));
    if (this.steady) numbers.set("Gaps", state.gaps, counted(state.gaps));
    numbers.set("Malformed", state.malformed, counted(state.malformed));
    let remark = "";
    if (state.malformed > 0) remark = `Last malformed: ${state.reason}`;
    else if (never && othersLive)
      remark = "Others receive something: check this device's address and control version.";
    setText(this.remark, remark);
    this.remark.hidden = remark === "";
  }
}

// How regularly datagrams arrive for each device, and what is wrong with them. Of many devices,
// only those in trouble are shown below a summary, and the others on request.
export class Devices {
  all = true;

  constructor(container, button) {
    this.container = container;
    this.button = button;
    button.addEventListener("click", () => this.showAll(!this.all));
  }

  build(facts) {
    this.tellingSilence = facts.tellingSilence;
    this.steady = facts.steady;
    this.cards = facts.devices.map((device, index) => new DeviceCard(device, index, facts.steady));
    const names = ["Devices", "Receiving", "In trouble", "Rate", "Malformed", "Lost"];
    this.summary = new Numbers(facts.steady ? [...names, "Gaps"] : names, { id: "summary" });
    const many = this.cards.length > few;
    this.button.before(this.summary.element);
    this.summary.element.hidden = this.button.hidden = !many;
    this.container.replaceChildren(...this.cards.map((card) => card.element));
    this.showAll(!many);
  }

  showAll(all) {
    this.all = all;
    this.button.ariaExpanded = all;
    setText(this.button,
      all ? "Show only devices in trouble" : `Show all ${this.cards.length} devices`);
    if (this.states) this.show(this.states, this.passed, this.connected);
  }

  // Shows the devices of a `now` event that arrived `passed` milliseconds ago.
  show(states, passed, connected) {
    Object.assign(this, { states, passed, connected });
    const silent = states.map((state) => !(state.age + passed < this.tellingSilence));
    const someLive = silent.includes(false);
    const troubled = states.map(({ age, malformed, lost }, i) =>
      malformed > 0 || lost > 0 ||
      (someLive && silent[i] && (this.steady || age === undefined)));
    let room = mostTroubled;
    this.cards.forEach((card, i) => {
      card.element.hidden = !this.all && !(troubled[i] && room-- > 0);
      if (!card.element.hidden) card.show(states[i], passed, silent[i], someLive, connected);
    });
    if (this.cards.length <= few) return;

    const live = states.filter((_, i) => !silent[i]);
    const trouble = troubled.filter(Boolean).length;
    const sum = (list, name) => list.reduce((total, state) => total + state[name], 0);
    const tell = (name, text, look) =>
      this.summary.set(name, connected ? text : "–", connected ? look : "stale");
    const count = (name, number) =>
      this.summary.set(name, Number.isNaN(number) ? "unknown" : number, counted(number));
    this.summary.set("Devices", states.length);
    tell("Receiving", live.length);
    tell("Rate", `${sum(live, "rate")} /s`);
    tell("In trouble", trouble, counted(trouble));
    count("Malformed", sum(states, "malformed"));
    count("Lost", sum(states, "lost"));
    if (this.steady) count("Gaps", sum(states, "gaps"));
  }
}
