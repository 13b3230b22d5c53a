// The page: listens to the wall, and paints at most sixty times a second whatever comes.
import { WallClock } from "./clock.js";
import { age, Devices } from "./devices.js";
import { Details, sentenceOf } from "./details.js";
import { listen } from "./feed.js";
import { Timeline } from "./timeline.js";
import { Wall } from "./wall.js";

const frameTime = 1000 / 60;
const numbersTime = 250; // numbers that change faster cannot be read
const timelineTime = 100;
const pictureTime = 1000;

const flashAdvice =
  "Palette mode holds each panel's colour for a second or more; see the README on flashing pictures.";

const get = (id) => document.getElementById(id);
const clock = new WallClock();
const wall = new Wall(get("wall"));
const devices = new Devices(get("devices"));
const timeline = new Timeline(get("timeline"));
const details = new Details(get("card"), wall);

let facts = null; // of the last `wall` event
let state = null; // the last `now` event
let stateAt = 0;
let lost = false;
let theme = readTheme();

// What has been painted, for those who measure.
const counts = { paints: 0, events: 0 };
window.panelwall = counts;

function readTheme() {
  const style = getComputedStyle(document.documentElement);
  const colour = (name) => style.getPropertyValue(name).trim();
  return {
    screen: colour("--screen"),
    screenLine: colour("--screen-line"),
    hollow: colour("--hollow"),
    panelEdge: colour("--panel-edge"),
    accent: colour("--accent"),
    muted: colour("--muted"),
  };
}

// Painting. Everything is painted from here, and only in an animation frame.

let asked = false;
let dirty = true;
let nextPaint = 0;
let nextNumbers = 0;
let nextTimeline = 0;

function ask() {
  if (asked) return;
  asked = true;
  requestAnimationFrame(frame);
}

function repaint() {
  dirty = true;
  ask();
}

function frame(time) {
  asked = false;
  // Displays may be faster than sixty frames a second; the two milliseconds are for their jitter.
  if (time < nextPaint - 2) {
    ask();
    return;
  }
  const now = performance.now();
  const wallNow = clock.at(now);
  const moving = wall.isMoving(wallNow);
  const numbers = now >= nextNumbers;
  const strips = now >= nextTimeline;
  if (dirty || moving || numbers || strips) {
    nextPaint = Math.max(nextPaint, time) + frameTime;
    ++counts.paints;
    if (dirty || moving) wall.draw(wallNow, theme);
    dirty = false;
    if (strips) {
      timeline.draw(now, theme);
      nextTimeline = now + timelineTime;
    }
    if (numbers) {
      showNumbers(now);
      nextNumbers = now + numbersTime;
    }
    details.draw(wallNow);
  }
  if (moving) ask();
}

setInterval(ask, timelineTime);

// Words.

function setState(name, text) {
  const element = get("state");
  if (element.dataset.state === name && element.textContent === text) return;
  element.dataset.state = name;
  element.textContent = text;
}

function setNotice(title, advice) {
  get("notice").hidden = title === "";
  if (get("noticeTitle").textContent !== title) get("noticeTitle").textContent = title;
  if (get("noticeAdvice").textContent !== advice) get("noticeAdvice").textContent = advice;
}

function showNumbers(now) {
  if (lost) {
    setState("gone", "Not connected");
    setNotice(
      "The wall does not answer.",
      "Check that panelwall still runs; after a new start, open the address that it prints. What is " +
        "shown here is old; the page goes on by itself as soon as the wall answers.",
    );
    return;
  }
  if (!state) return;
  const passed = now - stateAt;
  const silence = state.silence + passed;
  devices.show(state.devices, passed);
  if (silence < facts.tellingSilence) {
    if (state.heard) setState("live", facts.recording ? "Replay" : "Live");
    else setState("waiting", "Waiting");
    if (state.warning) setNotice(state.warning, flashAdvice);
    else setNotice("", "");
    return;
  }
  setState("silent", "Silent");
  setNotice(
    state.heard
      ? `Nothing has arrived for ${age(silence)}.`
      : `Nothing has arrived at all in ${age(silence)}.`,
    facts.advice,
  );
}

function showSubject() {
  const size = `${wall.outline.width} × ${wall.outline.height}`;
  const guess = facts.sizeFrom === "panels" && !wall.picture ? " (as the panels need)" : "";
  get("subject").textContent = `${facts.config} · ${facts.mode} · ${size}${guess}`;
  document.title = `panelwall ${facts.config}`;
}

let pictureNote = "";

function showNote() {
  const hidden = facts && wall.view ? wall.outOfView : 0;
  get("note").textContent = [
    pictureNote,
    hidden > 0 ? `${hidden} of the panels hang too far off the screen to be seen here.` : "",
  ]
    .join(" ")
    .trim();
}

// The wall's events.

listen({
  wall(event) {
    lost = false;
    clock.forget(); // it may be another wall
    const same = facts && JSON.stringify(event) === JSON.stringify(facts);
    facts = event;
    if (!same) {
      wall.build(facts);
      devices.build(facts);
    }
    timeline.build(facts);
    showSubject();
    showNote();
  },
  past(event) {
    timeline.setPast(event);
  },
  now(event) {
    ++counts.events;
    state = event;
    stateAt = performance.now();
    clock.hear(event.time, stateAt);
    wall.update(event);
    timeline.update(event, stateAt);
    repaint();
  },
  lost() {
    lost = true;
    nextNumbers = 0;
    ask();
  },
});

// Hovering, tapping and keys.

function select(panel, spoken) {
  if (wall.selected === panel) return;
  wall.selected = panel;
  get("spoken").textContent =
    panel && spoken ? sentenceOf(wall, panel, clock.at(performance.now())) : "";
  repaint();
}

const canvas = get("wall");
let byKeyboard = false;

function pointed(event) {
  if (!facts) return;
  const { left, top } = canvas.getBoundingClientRect();
  const panel = wall.panelAt(event.clientX - left, event.clientY - top);
  if (!panel && byKeyboard && event.type === "pointermove") return;
  byKeyboard = false;
  select(panel, false);
}

canvas.addEventListener("pointermove", pointed);
canvas.addEventListener("pointerdown", pointed);
canvas.addEventListener("pointerleave", (event) => {
  if (!byKeyboard && event.pointerType === "mouse") select(null, false);
});
canvas.addEventListener("blur", () => {
  if (byKeyboard) select(null, false);
  byKeyboard = false;
});

const directions = {
  ArrowLeft: [-1, 0],
  ArrowRight: [1, 0],
  ArrowUp: [0, -1],
  ArrowDown: [0, 1],
};

canvas.addEventListener("keydown", (event) => {
  if (event.altKey || event.ctrlKey || event.metaKey || wall.panels.length === 0) return;
  let panel;
  if (event.key in directions)
    panel = wall.selected
      ? wall.neighbour(wall.selected, ...directions[event.key])
      : wall.panels[0];
  else if (event.key === "Home") panel = wall.panels[0];
  else if (event.key === "End") panel = wall.panels.at(-1);
  else if (event.key === "Escape") panel = null;
  else return;
  event.preventDefault();
  byKeyboard = panel !== null;
  select(panel, true);
});

canvas.addEventListener("focus", () => {
  if (!canvas.matches(":focus-visible") || wall.selected || wall.panels.length === 0) return;
  byKeyboard = true;
  select(wall.panels[0], true);
});

// The screen behind the panels, asked for only while it is shown and the page is looked at.

const button = get("pictureButton");
let pictureTimer;

async function fetchPicture() {
  clearTimeout(pictureTimer);
  if (!document.hidden) {
    try {
      const answer = await fetch("screen.png");
      if (!answer.ok) throw new Error((await answer.text()).trim());
      const [width, height] = answer.headers.get("X-Screen-Size").split("x").map(Number);
      const picture = await createImageBitmap(await answer.blob());
      if (!isPictureOn()) return;
      pictureNote = "";
      wall.picture?.close();
      wall.setPicture(picture, width, height);
    } catch (error) {
      pictureNote = error instanceof TypeError ? "The wall does not answer." : error.message;
    }
    if (facts) showSubject();
    showNote();
    repaint();
  }
  if (isPictureOn()) pictureTimer = setTimeout(fetchPicture, pictureTime);
}

const isPictureOn = () => button.getAttribute("aria-pressed") === "true";

function togglePicture() {
  const on = !isPictureOn();
  button.setAttribute("aria-pressed", String(on));
  clearTimeout(pictureTimer);
  if (on) {
    fetchPicture();
    return;
  }
  pictureNote = "";
  wall.picture?.close();
  wall.setPicture(null);
  showNote();
  repaint();
}

button.addEventListener("click", togglePicture);
document.addEventListener("keydown", (event) => {
  if (event.key === "s" && !event.altKey && !event.ctrlKey && !event.metaKey) togglePicture();
});

// The surroundings.

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
