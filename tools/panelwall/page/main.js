// The page: receives the wall's events, and paints at most sixty times a second.
import { Devices, PanelCard, sentenceOf } from "./cards.js";
import { addressOf, age, setText } from "./elements.js";
import { listen, WallClock } from "./feed.js";
import { Timeline } from "./timeline.js";
import { Wall } from "./wall.js";
import { letZoom } from "./zoom.js";

const frameTime = 1000 / 60;
const numbersTime = 250; // numbers that change faster cannot be read
const timelineTime = 100;
const pictureTime = 1000;

const mostAddresses = 4;

const goneAdvice =
  "Check that panelwall still runs; after a new start, open the address that it prints. The " +
  "colours shown are out of date; the page goes on by itself as soon as panelwall answers.";
const flashAdvice =
  "Palette mode holds each panel's colour for a second or more; see the README on flashing pictures.";

const get = (id) => document.getElementById(id);
const canvas = get("wall");
const clock = new WallClock();
const wall = new Wall(canvas);
const devices = new Devices(get("devices"), get("allButton"));
const timeline = new Timeline(get("timeline"), get("timelineNote"));
const card = new PanelCard(get("card"), wall);

let facts = null; // of the last `wall` event
let state = null; // the last `now` event
let stateAt = 0;
let lost = false;
let theme = readTheme();

// Counters for tests and measurements.
const counts = { paints: 0, events: 0 };
window.panelwall = counts;

function readTheme() {
  const style = getComputedStyle(document.documentElement);
  const names = ["screen", "screenLine", "hollow", "panelEdge", "accent", "muted"];
  const property = (name) => "--" + name.replace(/[A-Z]/, (letter) => "-" + letter.toLowerCase());
  return Object.fromEntries(names.map((name) => [name, style.getPropertyValue(property(name))]));
}

// Painting. Everything is painted from here, and only in an animation frame.

let asked = false;
let dirty = true;
let nextPaint = 0;
let nextNumbers = 0;
let nextTimeline = 0;

function ask() {
  if (!asked) requestAnimationFrame(frame);
  asked = true;
}

function repaint() {
  dirty = true;
  ask();
}

function frame(time) {
  asked = false;
  // Displays may refresh faster than sixty times a second; two milliseconds allow for jitter.
  if (time < nextPaint - 2) return ask();
  const now = performance.now();
  const wallNow = clock.at(now);
  const moving = wall.isMoving(wallNow);
  const numbers = now >= nextNumbers;
  const strips = now >= nextTimeline;
  if (dirty || moving || numbers || strips) {
    nextPaint = Math.max(nextPaint, time) + frameTime;
    ++counts.paints;
    // With the numbers, because silence changes panels too.
    if (dirty || moving || numbers) wall.draw(wallNow, theme);
    dirty = false;
    if (strips) {
      timeline.draw(now, theme);
      nextTimeline = now + timelineTime;
    }
    if (numbers) {
      showNumbers(now);
      nextNumbers = now + numbersTime;
    }
    card.draw(wallNow);
  }
  if (moving) ask();
}

setInterval(ask, timelineTime);

// Status and notices.

function tell(name, text, title = "", advice = "") {
  get("state").dataset.state = name;
  setText(get("state"), text);
  get("notice").hidden = title === "";
  setText(get("noticeTitle"), title);
  setText(get("noticeAdvice"), advice);
}

function showNumbers(now) {
  const passed = now - stateAt;
  if (state) devices.show(state.devices, passed, !lost);
  const waiting = state && !lost && !state.heard && !facts.recording;
  get("start").hidden = !waiting;
  if (lost) return tell("gone", "Not connected", "The wall does not answer.", goneAdvice);
  if (!state) return;
  const silence = state.silence + passed;
  if (waiting) {
    tell("waiting", "Waiting", "Nothing has arrived yet.", facts.advice);
  } else if (silence >= facts.tellingSilence) {
    tell("silent", "Silent", `Nothing has arrived for ${age(silence)}.`, facts.advice);
  } else {
    tell("live", facts.recording ? "Replay" : "Live", state.warning, state.warning && flashAdvice);
  }
}

function showSubject() {
  const size = `${wall.outline.width} × ${wall.outline.height}`;
  const guess = facts.sizeFrom === "panels" && !wall.picture ? " (as the panels need)" : "";
  setText(get("subject"), `${facts.config} · ${facts.mode} · ${size}${guess}`);
  document.title = `panelwall ${facts.config}`;
}

// The command that starts mirroring, and where the wall waits for it.
function showStart() {
  const path = facts.config;
  const quoted = /^[\w./+@:,-]+$/.test(path) ? path : `'${path.replaceAll("'", "'\\''")}'`;
  setText(get("command"), `mirrorctl run ${path === "-" ? "CONFIG" : quoted}`);
  const more = facts.devices.length - mostAddresses;
  setText(get("listening"), "panelwall listens on " +
    facts.devices.slice(0, mostAddresses).map(addressOf).join(", ") +
    (more > 0 ? ` and ${more} more addresses.` : "."));
}

let pictureNote = "";

function showNote() {
  const hidden = facts ? wall.outOfView : 0;
  const hiddenNote =
    hidden > 0 ? `${hidden} of the panels hang too far off the screen to be seen here.` : "";
  setText(get("note"), `${pictureNote} ${hiddenNote}`.trim());
}

// The wall's events.

listen({
  wall(event) {
    lost = false;
    wall.connected = true;
    clock.forget();
    // After a lost connection it is still the same wall, so build only once.
    if (!facts) {
      wall.build(event);
      devices.build(event);
    }
    facts = event;
    timeline.build(facts);
    document.querySelector("main").classList.toggle("many", facts.devices.length > 4);
    showSubject();
    showStart();
    showNote();
  },
  past(event) {
    timeline.setPast(event);
  },
  now(event) {
    ++counts.events;
    state = event;
    stateAt = performance.now();
    clock.follow(event.time, stateAt);
    wall.update(event);
    timeline.update(event, stateAt);
    repaint();
  },
  lost() {
    lost = true;
    wall.connected = false;
    nextNumbers = 0;
    ask();
  },
});

// Hovering, tapping and keys.

let byKeyboard = false;

function select(panel, withKeys) {
  byKeyboard = withKeys && panel !== null;
  if (wall.selected === panel) return;
  wall.selected = panel;
  get("spoken").textContent =
    panel && withKeys ? sentenceOf(wall, panel, clock.at(performance.now())) : "";
  light();
}

// Emphasises the panels, card and strip of the device to which the selected panel belongs, or whose
// card or strip is pointed at or has the focus.
function light() {
  const find = (state) => document.querySelector(`[data-device]${state}`);
  const used = find(":hover") ?? find(":focus");
  wall.lit = wall.selected?.device ?? Number(used?.dataset.device ?? -1);
  for (const element of document.querySelectorAll("[data-device]"))
    element.toggleAttribute("data-lit", element.dataset.device === String(wall.lit));
  repaint();
}

for (const type of ["pointerover", "focusin"])
  document.addEventListener(type, (event) => {
    if (!event.target.closest("[data-device]")) return;
    select(null, false);
    light();
  });
for (const type of ["pointerout", "focusout"]) document.addEventListener(type, light);

function point(event) {
  if (!facts || (event.type === "pointermove" && event.buttons > 0)) return;
  const { left, top } = canvas.getBoundingClientRect();
  const panel = wall.panelAt(event.clientX - left, event.clientY - top);
  if (!panel && byKeyboard && event.type === "pointermove") return;
  select(panel, false);
}

canvas.addEventListener("pointermove", point);
canvas.addEventListener("pointerdown", point);
canvas.addEventListener("pointerleave", (event) => {
  if (!byKeyboard && event.pointerType === "mouse") select(null, false);
});
canvas.addEventListener("blur", () => {
  if (byKeyboard) select(null, false);
});
canvas.addEventListener("focus", () => {
  if (canvas.matches(":focus-visible") && !wall.selected && wall.panels.length > 0)
    select(wall.panels[0], true);
});

const go = (dx, dy) => () =>
  wall.selected ? wall.neighbour(wall.selected, dx, dy) : wall.panels[0];
const keys = {
  ArrowLeft: go(-1, 0),
  ArrowRight: go(1, 0),
  ArrowUp: go(0, -1),
  ArrowDown: go(0, 1),
  Home: () => wall.panels[0],
  End: () => wall.panels.at(-1),
  Escape: () => null,
};
const zoomKeys = letZoom(wall, canvas,
  { in: get("zoomIn"), out: get("zoomOut"), all: get("zoomAll") }, repaint);
const isPlain = (event) => !event.altKey && !event.ctrlKey && !event.metaKey;

canvas.addEventListener("keydown", (event) => {
  if (!isPlain(event)) return;
  if (event.key in zoomKeys) {
    zoomKeys[event.key]();
  } else if (wall.panels.length > 0 && event.key in keys) {
    select(keys[event.key](), true);
    if (wall.selected) wall.reveal(wall.selected);
  } else {
    return;
  }
  event.preventDefault();
});

// The screen behind the panels, requested only while it is shown and the page is visible.

const button = get("pictureButton");
let pictureTimer;

const isPictureOn = () => button.getAttribute("aria-pressed") === "true";

async function fetchPicture() {
  clearTimeout(pictureTimer);
  if (!document.hidden) {
    try {
      const answer = await fetch("screen.png");
      if (!answer.ok) throw new Error((await answer.text()).trim());
      const size = answer.headers.get("X-Screen-Size").split("x").map(Number);
      const picture = await createImageBitmap(await answer.blob());
      if (!isPictureOn()) return;
      pictureNote = "";
      wall.setPicture(picture, ...size);
    } catch (error) {
      pictureNote = error instanceof TypeError ? "The wall does not answer." : error.message;
    }
    if (facts) showSubject();
    showNote();
    repaint();
  }
  if (isPictureOn()) pictureTimer = setTimeout(fetchPicture, pictureTime);
}

function togglePicture() {
  button.setAttribute("aria-pressed", String(!isPictureOn()));
  if (isPictureOn()) return fetchPicture();
  clearTimeout(pictureTimer);
  pictureNote = "";
  wall.setPicture(null);
  showNote();
  repaint();
}

button.addEventListener("click", togglePicture);
document.addEventListener("keydown", (event) => {
  if (event.key === "s" && isPlain(event)) togglePicture();
});

// Changes of colour scheme and size.

matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
  theme = readTheme();
  repaint();
});

new ResizeObserver(() => {
  wall.resize();
  timeline.resize();
  nextTimeline = 0;
  repaint();
}).observe(get("stage"));
