// A card for each device: how regularly datagrams come, and what is wrong with them.

export function age(milliseconds) {
  const seconds = milliseconds / 1000;
  if (seconds < 60) return `${seconds.toFixed(1)} s`;
  if (seconds < 3600) return `${Math.round(seconds / 60)} min`;
  return `${Math.round(seconds / 3600)} h`;
}

const milliseconds = (value) => (value === undefined ? "–" : `${value.toFixed(1)} ms`);

// Sets only what is different, so that a page at rest is not laid out again.
function set(element, text, bad = false) {
  if (element.textContent !== text) element.textContent = text;
  element.toggleAttribute("data-bad", bad);
}

class Card {
  constructor(device, index, steady) {
    this.steady = steady;
    this.element = document.createElement("article");
    this.element.className = "device";
    const heading = document.createElement("h3");
    const place = document.createElement("span");
    const ip = device.ip.includes(":") ? `[${device.ip}]` : device.ip;
    place.textContent = `${ip}:${device.port} ${device.layout}`;
    heading.append(`Device ${index}`, place);
    const list = document.createElement("dl");
    this.values = {};
    const names = ["Rate", "Interval", "Jitter", "Last", "Malformed", "Lost"];
    if (steady) names.push("Gaps");
    for (const name of names) {
      const group = document.createElement("div");
      const term = document.createElement("dt");
      const value = document.createElement("dd");
      term.textContent = name;
      group.append(term, value);
      list.append(group);
      this.values[name] = value;
    }
    this.remark = document.createElement("p");
    this.remark.className = "remark";
    this.remark.hidden = true;
    this.element.append(heading, list, this.remark);
  }

  show(state, passed, tellingSilence, othersHear) {
    const { Rate, Interval, Jitter, Last, Lost, Gaps, Malformed } = this.values;
    const old = state.age === undefined ? undefined : state.age + passed;
    const silent = old === undefined || old >= tellingSilence;
    set(Rate, `${silent ? 0 : state.rate} /s`);
    set(Interval, milliseconds(state.interval));
    set(Jitter, milliseconds(state.jitter));
    set(Last, old === undefined ? "never" : age(old), silent && this.steady);
    set(Lost, state.lost === undefined ? "unknown" : String(state.lost), state.lost > 0);
    if (Gaps) set(Gaps, String(state.gaps), state.gaps > 0);
    set(Malformed, String(state.malformed), state.malformed > 0);
    let remark = "";
    if (state.malformed > 0) remark = `Last malformed: ${state.reason}`;
    else if (old === undefined && othersHear)
      remark = "Others hear something: check this device's address and control version.";
    set(this.remark, remark);
    this.remark.hidden = remark === "";
  }
}

export class Devices {
  constructor(container) {
    this.container = container;
    this.cards = [];
  }

  build(facts) {
    this.tellingSilence = facts.tellingSilence;
    this.cards = facts.devices.map((device, index) => new Card(device, index, facts.steady));
    this.container.replaceChildren(...this.cards.map((card) => card.element));
  }

  // The devices of a `now` event that came `passed` milliseconds ago.
  show(devices, passed) {
    const someHear = devices.some((device) => device.age !== undefined);
    devices.forEach((state, i) => {
      this.cards[i].show(state, passed, this.tellingSilence, someHear);
    });
  }
}
