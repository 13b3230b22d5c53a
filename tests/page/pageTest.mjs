// The live page in a real browser, as a person sees it.
import assert from "node:assert/strict";
import { after, afterEach, beforeEach, test } from "node:test";
import {
  closeBrowser,
  configuration,
  decodePng,
  device,
  grid,
  hex,
  photograph,
  Sender,
  Setting,
  until,
  violations,
  wide,
} from "./support.mjs";

let setting;
let sender;

after(closeBrowser);

beforeEach(() => {
  setting = new Setting();
  sender = new Sender();
});

afterEach(async () => {
  sender.end();
  await setting.end();
});

// Opens a page. The test fails if the page requests anything from elsewhere or logs an error or a
// warning.
const complaints = [];
async function open(url, { width = 800, height = 1000, scheme = "light" } = {}) {
  const context = setting.context ?? (await setting.newContext());
  const page = await context.newPage();
  await page.setViewportSize({ width, height });
  await page.emulateMedia({ colorScheme: scheme });
  page.on("pageerror", (error) => complaints.push(error.message));
  page.on("console", (message) => {
    if (["error", "warning"].includes(message.type())) complaints.push(message.text());
  });
  page.on("request", (request) => {
    if (!request.url().startsWith(url)) complaints.push(`asks for ${request.url()}`);
  });
  await page.goto(url);
  await page.waitForFunction(() => window.panelwall?.events > 0);
  return page;
}

afterEach(() => assert.deepEqual(complaints.splice(0), []));

// Waits until a screenshot of the wall shows these colours: [x, y, colour] for places on the
// display. Returns the screenshot.
const waitForColours = (page, size, colours) =>
  until(`the colours ${JSON.stringify(colours)}`, async () => {
    const picture = await photograph(page, ...size);
    return colours.every(([x, y, colour]) => picture.shows(x, y) === colour) && picture;
  });

test("a wall that flashes is warned of, and the warning goes", async () => {
  const document = configuration([device("127.0.72.19", 2, [[1, 100, 100]])]);
  const wall = await setting.wall(document, ["--size", "400x300"]);
  const page = await open(wall.url);
  const notice = page.locator("#notice");
  for (let i = 0; i < 12; ++i)
    await sender.send("127.0.72.19", wide([[1, i % 2 ? 0 : 0xffffff, 0]]));
  // In a slow browser, the notice about silence may come first.
  const warning = /^The wall flashes, up to 6\.0 times within a second/;
  await until("the warning", async () => warning.test(await notice.innerText()));
  const rest = setInterval(() => sender.send("127.0.72.19", wide([[1, 0, 0]])), 300);
  try {
    await notice.waitFor({ state: "hidden" });
  } finally {
    clearInterval(rest);
  }
});

test("panels have the colours that the library sends, at their true places", async () => {
  const size = [800, 600];
  const stage = await setting.stage(...size);
  await stage.draw("fill 204060");
  await stage.draw("rect 0 0 400 300 c83214");
  await stage.draw("rect 400 300 400 300 14c832");
  const panels = [
    [127, 100, 150, 0xc83214],
    [3, 300, 150, 0xc83214],
    [258, 500, 120, 0x204060],
    [259, 650, 470, 0x14c832],
  ];
  const document = configuration(
    [
      device("127.0.72.1", 1, panels.slice(0, 2)),
      device("127.0.72.2", 2, panels.slice(2)),
    ],
    0,
    stage.id,
  );
  const wall = await setting.wall(document, [], stage.environment);
  setting.start(process.env.MIRRORCTL, ["run", setting.write("run.json", document)],
    stage.environment);
  const page = await open(wall.url);
  const picture = await waitForColours(page, size, panels.map(([, ...colour]) => colour));

  // Panels are squares of 100 display pixels, coloured up to their edges and no further.
  for (const [id, x, y, colour] of panels) {
    for (const [dx, dy] of [[1, 0], [-1, 0], [0, 1], [0, -1]]) {
      assert.equal(hex(picture.shows(x + dx * 46, y + dy * 46)), hex(colour), `inside ${id}`);
      assert.notEqual(hex(picture.shows(x + dx * 54, y + dy * 54)), hex(colour), `outside ${id}`);
    }
  }
  assert.match(await page.textContent("#subject"), /match · 800 × 600$/);
  await page.waitForSelector("#state[data-state=live]");

  // The panels follow the screen.
  await stage.draw("fill f0e0d0");
  await waitForColours(page, size, panels.map(([, x, y]) => [x, y, 0xf0e0d0]));
});

test("panels go from colour to colour within their time", async () => {
  const document = configuration([device("127.0.72.3", 2, [[1, 200, 100]])]);
  const wall = await setting.wall(document, ["--size", "400x200", "--transition-unit", "500"]);
  const page = await open(wall.url);
  // Reads the pixel in the middle of the wall, where the panel is, after each frame until the panel
  // has its new colour.
  const seen = page.evaluate(async () => {
    const canvas = document.getElementById("wall");
    const read = () =>
      canvas.getContext("2d").getImageData(canvas.width / 2, canvas.height / 2, 1, 1).data;
    const reds = [];
    const begin = performance.now();
    while (performance.now() - begin < 20000) {
      await new Promise((resolve) => requestAnimationFrame(resolve));
      const [red, green, blue] = read();
      // The transition from black is linear: twice as much red as green, no blue.
      if (blue === 0 && Math.abs(red - 2 * green) <= 1) reds.push([red, performance.now()]);
      if (red === 200 && blue === 0) break;
    }
    return reds;
  });
  await sender.send("127.0.72.3", wide([[1, 0xc86400, 3]]));
  const reds = await seen;
  const values = reds.map(([red]) => red);
  assert.equal(values.at(-1), 200);
  assert.deepEqual(values, [...values].sort((a, b) => a - b));
  assert.ok(new Set(values).size > 8, `seen on the way: ${values}`);
  // The duration is as sent: from a tenth to nine tenths of the way takes four fifths of 1500 ms.
  const first = reds.find(([red]) => red >= 20);
  const last = reds.find(([red]) => red >= 180);
  const expected = ((last[0] - first[0]) / 200) * 1500;
  assert.ok(Math.abs(last[1] - first[1] - expected) < 250, `${last[1] - first[1]}, not ${expected}`);
  // The browser warns that reading pixels this way is slow.
  for (const complaint of complaints.splice(0)) assert.match(complaint, /willReadFrequently/);
});

test("what comes late turns no panel back", async () => {
  const wall = await setting.wall(configuration([device("127.0.72.20", 2, [[1, 200, 100]])]));
  const page = await open(wall.url);
  const reds = await page.evaluate(async () => {
    const { WallClock } = await import(location + "feed.js");
    const { Wall } = await import(location + "wall.js");
    const clock = new WallClock();
    const wall = new Wall(document.createElement("canvas"));
    document.createElement("div").append(wall.canvas);
    wall.build({ width: 400, height: 200, devices: [{ panels: [[1, 200, 100]], side: 100 }] });
    // The wall's clock is 50000 ms ahead of the page's. The panel takes 1500 ms from black to red,
    // and five of every ten events are 300 ms late.
    const red = (time) => Math.round(time * 0.1333).toString(16).padStart(2, "0") + "0000";
    const events = [];
    for (let time = 0; time <= 1500; time += 33)
      events.push({
        at: time + (events.length % 10 < 5 ? 2 : 300),
        time: 50000 + time,
        devices: [{ sent: "c80000", shown: red(time), left: [1500 - time], times: [15] }],
      });
    events.sort((one, other) => one.at - other.at);
    const seen = [];
    for (let at = 2; at < 1500; at += 8) {
      while (events.length > 0 && events[0].at <= at) {
        const event = events.shift();
        clock.follow(event.time, event.at);
        wall.update(event);
      }
      seen.push([wall.shownBy(wall.panels[0], clock.at(at)) >> 16, (at - 2) * (200 / 1500)]);
    }
    return seen;
  });
  let last = 0;
  for (const [red, due] of reds) {
    assert.ok(red >= last, `${last} before ${red}`);
    assert.ok(Math.abs(red - due) <= 1, `${red}, not ${due}`);
    last = red;
  }
});

test("hovering, tapping and keys show what a panel is", async () => {
  const document = configuration([
    device("127.0.72.4", 2, [[7, 100, 100], [300, 300, 100]]),
    device("127.0.72.5", 2, [[9, 300, 300]]),
  ]);
  const wall = await setting.wall(document, ["--size", "400x400"]);
  const page = await open(wall.url);
  await sender.send("127.0.72.4", wide([[300, 0x102030, 5]]));
  const card = page.locator("#card");
  assert.equal(await card.isVisible(), false);

  const at = async (x, y) => {
    const { place } = await photograph(page, 400, 400);
    const box = await page.locator("#wall").boundingBox();
    const [left, top] = place(x, y);
    return [box.x + left, box.y + top];
  };

  // Each panel has its identifier in its upper left corner; a line links the panels of a device.
  const picture = await until("a live panel", async () => {
    await sender.send("127.0.72.4", wide([[300, 0x102030, 0]]));
    const now = await photograph(page, 400, 400);
    return now.shows(340, 100) === 0x102030 && now;
  });
  const inksIn = (left, top, width, height) => {
    const inks = new Set();
    for (let x = left; x < left + width; ++x)
      for (let y = top; y < top + height; ++y) inks.add(picture.shows(x, y));
    return inks.size;
  };
  for (const [x, y] of [[100, 100], [300, 100], [300, 300]]) {
    assert.ok(inksIn(x - 46, y - 46, 20, 12) > 3, `an identifier at ${x}, ${y}`);
    assert.ok(inksIn(x, y + 10, 40, 30) === 1, `only the identifier at ${x}, ${y}`);
  }
  assert.notEqual(picture.shows(200, 100), picture.shows(200, 130), "a line within device 0");
  assert.equal(picture.shows(300, 200), picture.shows(330, 200), "no line between devices");

  // A device's card, pointed at or focused, lights its panels up, and a panel the card.
  const lit = () => page.evaluate(() =>
    [...document.querySelectorAll(".device[data-lit], .strip[data-lit]")]
      .map((element) => `${element.className} ${element.dataset.device}`));
  const otherPanelsFaint = async (device) => {
    const [own, other] = device === 1 ? [[340, 300], [340, 100]] : [[340, 100], [340, 300]];
    await until(`device ${device} alone to be bright`, async () => {
      await sender.send("127.0.72.4", wide([[300, 0x0000ff, 0]]));
      await sender.send("127.0.72.5", wide([[9, 0x0000ff, 0]]));
      const now = await photograph(page, 400, 400);
      return now.shows(...own) === 0x0000ff && now.shows(...other) !== 0x0000ff &&
        now.shows(...other) !== picture.shows(200, 200);
    });
    assert.deepEqual(await lit(), [`device ${device}`, `strip ${device}`]);
  };
  await page.locator(".device").nth(1).hover();
  await otherPanelsFaint(1);
  await page.mouse.move(1, 1);
  await until("no device to be lit", async () => (await lit()).length === 0);
  await page.locator(".device").nth(0).focus();
  await otherPanelsFaint(0);
  await page.mouse.move(...(await at(300, 300)));
  await until("the panel's card", async () =>
    (await lit()).join() === "device 1,strip 1");
  await page.locator("h1").click();
  await until("no device to be lit", async () => (await lit()).length === 0);
  await sender.send("127.0.72.4", wide([[300, 0x102030, 5]]));
  await page.mouse.move(...(await at(300, 100)));
  await page.waitForFunction(() =>
    document.getElementById("card").textContent.includes("#102030  (16, 32, 48)"),
  );
  const text = await card.textContent();
  assert.match(text, /Device0 at 127\.0\.72\.4Panel300Colour/);
  assert.match(text, /Transition5 \(500 ms\)Centre300, 100$/);
  await page.mouse.move(...(await at(200, 200)));
  await card.waitFor({ state: "hidden" });

  // The Tab key stops once at the wall; arrow keys move to the nearest panel in their direction.
  await page.mouse.move(1, 1);
  await page.keyboard.press("Tab");
  assert.equal(await page.evaluate(() => document.activeElement.id), "wall");
  const shows = (pattern) =>
    until(`${pattern} beside the panel`, async () => pattern.test(await card.textContent()));
  await shows(/Panel7Colournone was sent yet/);
  await page.keyboard.press("ArrowRight");
  await shows(/Panel300/);
  assert.match(await page.textContent("#spoken"), /^Device 0 at 127\.0\.72\.4, Panel 300, Colour #10/);
  await page.keyboard.press("ArrowDown");
  await shows(/Device1 at 127\.0\.72\.5Panel9/);
  await page.keyboard.press("ArrowDown");
  await shows(/Panel9/);
  await page.keyboard.press("Home");
  await shows(/Panel7/);
  await page.keyboard.press("Escape");
  await card.waitFor({ state: "hidden" });
  await page.keyboard.press("Tab");
  assert.equal(await page.evaluate(() => document.activeElement.id), "pictureButton");

  await page.mouse.click(...(await at(100, 100)));
  await shows(/Panel7/);
});

test("silence is told plainly, with what to check, and so is a wall that has ended", async () => {
  const document = configuration([
    device("127.0.72.6", 2, [[1, 100, 100]]),
    device("127.0.72.7", 2, [[1, 300, 100]]),
  ]);
  const wall = await setting.wall(document);
  const page = await open(wall.url);
  const notice = page.locator("#notice");
  await notice.waitFor({ state: "visible" });
  // Before anything arrives, the page says what to do.
  const told = await notice.innerText();
  assert.match(told, /^Nothing has arrived yet\./);
  assert.equal(await page.textContent("#command"), `mirrorctl run ${wall.document}`);
  assert.match(told, /panelwall listens on 127\.0\.72\.6:60222, 127\.0\.72\.7:60222\./);
  assert.match(told, /Match mode sends some twenty times a second/);
  assert.match(told, /Check that the host mirrors/);
  assert.equal(await page.textContent("#state"), "Waiting");

  // Only one device receives something; the card of the other says so.
  for (let i = 0; i < 4; ++i) await sender.send("127.0.72.6", wide([[1, 0x00ff00, 0]]));
  await notice.waitFor({ state: "hidden" });
  await page.waitForSelector("#state[data-state=live]");
  assert.match(await page.locator(".device").nth(1).innerText(), /Others receive something/);
  const inkOf = (name) => page.locator(".device").nth(0).locator("dt", { hasText: name })
    .evaluate((term) => getComputedStyle(term.nextElementSibling).color);
  // Whether the strip's newest colour and the panel's middle and edge are as sent.
  const sent = async () => {
    const strip = decodePng(await page.locator(".strip canvas").first().screenshot());
    const picture = await photograph(page, 350, 150);
    const colours = [strip.at(strip.width - 4, 8), picture.shows(100, 100), picture.shows(100, 140)];
    return colours.map((colour) => colour === 0x00ff00).join();
  };
  const text = await inkOf("Malformed");
  await until("everything to be live", async () => {
    await sender.send("127.0.72.6", wide([[1, 0x00ff00, 0]]));
    return (await sent()) === "true,true,true" && (await inkOf("Interval")) === text;
  });

  // Once nothing arrives any more, nothing looks live: not the numbers, the panel, the strip.
  await notice.waitFor({ state: "visible" });
  assert.match(await notice.innerText(), /^Nothing has arrived for \d\.\d s\./);
  assert.equal(await page.textContent("#state"), "Silent");
  for (const name of ["Rate", "Interval", "Jitter"]) assert.notEqual(await inkOf(name), text);
  await until("colours that are not live", async () => (await sent()) === "false,true,false");

  wall.process.kill("SIGSTOP");
  await page.waitForSelector("#state[data-state=gone]");
  assert.match(await notice.innerText(), /^The wall does not answer\./);
  // Outdated pictures look faint.
  const faintness = () => page.evaluate(() => getComputedStyle(document.querySelector("canvas")).opacity);
  assert.ok((await faintness()) < 0.6);
  wall.process.kill("SIGCONT");
  await page.waitForFunction(() => document.getElementById("state").dataset.state !== "gone");
  assert.equal(await faintness(), "1");
  await sender.send("127.0.72.6", wide([[1, 0x00ff00, 0]]));
  await page.waitForSelector("#state[data-state=live]");
  await page.setViewportSize({ width: 390, height: 500 });
  await page.evaluate(() => scrollTo(0, document.body.scrollHeight));
  await wall.end();
  await page.waitForSelector("#state[data-state=gone]");
  assert.match(await page.locator(".device").nth(0).innerText(), /Last\s*–\s/);
  assert.notEqual(await inkOf("Interval"), text);
  assert.ok(await page.evaluate(() => scrollY > 100 && document.elementFromPoint(innerWidth - 40, 20)
    .closest("header")?.querySelector("#state")), "the status is in sight");
  for (const colorScheme of ["light", "dark"]) {
    await page.emulateMedia({ colorScheme });
    assert.deepEqual(await violations(page), []);
  }
  await page.close();
  // The browser logs addresses that it cannot reach; that is no fault of the page.
  for (const complaint of complaints.splice(0)) assert.match(complaint, /ERR_CONNECTION_REFUSED|ERR_INCOMPLETE/);
});

test("a device's card tells rate, rhythm, losses and malformed datagrams", async () => {
  const wall = await setting.wall(configuration([device("127.0.72.8", 2, [[1, 100, 100]])]));
  const page = await open(wall.url);
  for (let i = 0; i < 30; ++i) {
    await sender.send("127.0.72.8", wide([[1, i, 1]]));
    await new Promise((resolve) => setTimeout(resolve, 40));
  }
  await sender.send("127.0.72.8", Uint8Array.from([0, 1, 2]));
  const card = page.locator(".device");
  await until("the malformed one", async () => /Malformed\s*1\b/.test(await card.innerText()));
  const text = (await card.innerText()).replace(/\s+/g, " ");
  assert.match(text, /Device 0 127\.0\.72\.8:60222 wide/);
  assert.match(text, /Rate \d+ \/s Interval \d+\.\d ms Jitter \d+\.\d ms Last \d\.\d s/);
  assert.match(text, new RegExp(`Lost ${process.env.LOST ?? 0} Gaps \\d+ Last malformed: `));
  assert.match(text, /Last malformed: 3 bytes, but a panel count of 1 needs 10$/);
  await until("the rate to fall", async () => /Rate\s*0 \/s/.test(await card.innerText()));
});

test("two colours taking turns show as stripes in the last minute", async () => {
  const wall = await setting.wall(configuration([device("127.0.72.9", 2, [[1, 100, 100]])]));
  for (let i = 0; i < 13; ++i) {
    await sender.send("127.0.72.9", wide([[1, i % 2 ? 0xff0000 : 0x0000ff, 1]]));
    await new Promise((resolve) => setTimeout(resolve, 200));
  }
  // A page that is opened later shows them too.
  const page = await open(wall.url);
  const strip = page.locator(".strip canvas");
  const changes = async () => {
    const picture = decodePng(await strip.screenshot());
    let count = 0;
    let last = null;
    for (let x = 0; x < picture.width; ++x) {
      const colour = picture.at(x, 5);
      if (colour !== 0xff0000 && colour !== 0x0000ff) continue;
      if (last !== null && colour !== last) ++count;
      last = colour;
    }
    return count;
  };
  // The last colour is faint unless it keeps coming.
  for (const [count, colour] of [[12, 0x0000ff], [13, 0xff0000]])
    await until(`${count} changes`, async () => {
      await sender.send("127.0.72.9", wide([[1, colour, 1]]));
      return (await changes()) === count;
    });
});

test("the page repaints at most sixty times a second whatever comes", async () => {
  const ip = "127.0.72.10";
  const wall = await setting.wall(configuration([device(ip, 2, [[1, 100, 100]])]));
  const context = await setting.newContext();
  // Simulates a display with 250 frames a second, and counts the repaints.
  await context.addInitScript(() => {
    window.requestAnimationFrame = (callback) =>
      setTimeout(() => callback(performance.now()), 4);
    window.painted = 0;
    const clear = CanvasRenderingContext2D.prototype.clearRect;
    CanvasRenderingContext2D.prototype.clearRect = function (...area) {
      if (this.canvas.id === "wall") ++window.painted;
      return clear.apply(this, area);
    };
  });
  const page = await open(wall.url);
  let flooding = true;
  const flood = (async () => {
    for (let i = 0; flooding; ++i) {
      await sender.send(ip, wide([[1, (i * 7919) & 0xffffff, 10]]));
      if (i % 20 === 0) await new Promise((resolve) => setTimeout(resolve, 1));
    }
  })();
  await page.waitForFunction(() => window.painted > 5);
  const read = () =>
    page.evaluate(() => [performance.now(), window.painted, window.panelwall.events]);
  const before = await read();
  await new Promise((resolve) => setTimeout(resolve, 2000));
  const behind = await read();
  flooding = false;
  await flood;
  const seconds = (behind[0] - before[0]) / 1000;
  const rate = (behind[1] - before[1]) / seconds;
  const events = (behind[2] - before[2]) / seconds;
  const total = Number((await page.evaluate(async () =>
    (await new Promise((resolve) => {
      const source = new EventSource("events");
      source.addEventListener("now", (event) => {
        source.close();
        resolve(JSON.parse(event.data));
      });
    })).devices[0].total)));
  assert.ok(total > 500, `only ${total} datagrams came`);
  assert.ok(rate <= 60.5, `${rate} repaints a second`);
  // It does repaint; how often depends on the load from other tests.
  assert.ok(rate > 1, `only ${rate} repaints a second`);
  assert.ok(events <= 31, `${events} events a second`);
});

test("the page fits a phone, in light and dark", async () => {
  const panels = Array.from({ length: 40 }, (_, i) => [i, 80 + (i % 8) * 160, 72 + (i >> 3) * 144]);
  const wall = await setting.wall(
    configuration([device("127.0.72.11", 1, panels), device("127.0.72.12", 2, [])]),
  );
  const grounds = [];
  for (const scheme of ["light", "dark"]) {
    const page = await open(wall.url, { width: 360, height: 740, scheme });
    await page.waitForSelector("#notice:not([hidden])");
    assert.ok(
      await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth),
      "nothing lies beyond the right edge",
    );
    const box = await page.locator("#wall").boundingBox();
    assert.ok(box.width > 320 && box.width <= 360, `the wall is ${box.width} wide`);
    // A long path gets a full line instead of many short ones.
    const subject = await page.locator("#subject").boundingBox();
    assert.ok(subject.width > 300, `what is shown has ${subject.width} pixels`);
    assert.deepEqual(await violations(page), []);
    grounds.push(await page.evaluate(() => getComputedStyle(document.body).backgroundColor));
  }
  assert.deepEqual(grounds, ["rgb(245, 246, 248)", "rgb(16, 18, 23)"]);
});

// Sends every device a datagram over and over until `end.now`, with each panel's colour by its
// number.
function keepSending(devices, end, colourOf = () => 0x3366cc) {
  return (async () => {
    while (!end.now) {
      for (const { ip, panels } of devices)
        await sender.send(ip, wide(panels.map(({ panelID }) => [panelID, colourOf(panelID), 0])));
      await new Promise((resolve) => setTimeout(resolve, 400));
    }
  })();
}

// Devices 127.0.THIRD.1 and so on, with equally many of the panels each.
const share = (panels, count, third, scaleFactor) =>
  Array.from({ length: count }, (_, d) =>
    device(`127.0.${third}.${d + 1}`, 2,
      panels.filter((_, i) => Math.floor((i * count) / panels.length) === d), scaleFactor));

// Whether every card that is shown lies wholly in the page, and not in a part of it that scrolls.
const noCardIsCut = (page) =>
  page.evaluate(() => {
    const cards = [...document.querySelectorAll(".device")].filter((card) => card.checkVisibility());
    return cards.every((card) => {
      for (let at = card.parentElement; at !== document.body; at = at.parentElement)
        if (getComputedStyle(at).overflowY !== "visible") return false;
      return card.getBoundingClientRect().bottom + scrollY < document.documentElement.scrollHeight;
    });
  });

test("many devices are summed up, those in trouble shown, and the rest on request", async () => {
  const devices = share(grid(600, 30, 1280, 720), 100, 74, 0.3);
  const wall = await setting.wall(configuration(devices), ["--size", "1280x720"]);
  const end = {};
  // Device 98 receives nothing, and device 1 a malformed datagram.
  const sending = keepSending(devices.filter((_, d) => d !== 98), end);
  await sender.send(devices[1].ip, Uint8Array.from([0, 1, 2]));
  const page = await open(wall.url, { width: 1280, height: 800 });
  const summary = async () => (await page.innerText("#summary")).replace(/\s+/g, " ");
  await until("the summary", async () =>
    (await summary()).startsWith("Devices 100 Receiving 99 In trouble 2 "));
  assert.match(await summary(), / Rate \d+ \/s Malformed 1 Lost 0 Gaps \d+$/);
  const shown = async () => (await page.locator(".device:visible h3").allInnerTexts())
    .map((name) => name.split(/\s/)[1]).join();
  for (const [width, colorScheme] of [[1280, "light"], [390, "dark"]]) {
    await page.setViewportSize({ width, height: 800 });
    await page.emulateMedia({ colorScheme });
    assert.equal(await shown(), "1,98");
    const { height } = await page.locator("#timelineSection").boundingBox();
    assert.ok(height < 850, `the timelines are ${height} high at ${width}`);
    assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth));
    assert.deepEqual(await violations(page), []);
    await page.click("#allButton");
    assert.equal(await shown(), Array.from(devices.keys()).join());
    assert.equal(await page.getAttribute("#allButton", "aria-expanded"), "true");
    assert.ok(await noCardIsCut(page), `a card is cut at ${width}`);
    await page.click("#allButton");
  }
  end.now = true;
  await sending;
});

test("a thousand panels can be zoomed and moved on a phone", async () => {
  const devices = share(grid(1000, 40, 1280, 720), 2, 75, 0.25);
  const wall = await setting.wall(configuration(devices), ["--size", "1280x720"]);
  const context = await setting.newContext({ hasTouch: true });
  const page = await open(wall.url, { width: 390, height: 844 });
  // The columns that are in sight in the wall's middle, read off the panels' colours.
  const columns = async () => {
    const picture = decodePng(await page.locator("#wall").screenshot());
    const seen = new Set();
    for (let x = 0; x < picture.width; ++x) {
      const colour = picture.at(x, Math.floor(picture.height / 2));
      if ((colour & 0xffff) === 0x40c0) seen.add((colour >> 16) / 5 - 2);
    }
    return [...seen];
  };
  const all = Array.from({ length: 40 }, (_, column) => column).join();
  const end = {};
  const sending = keepSending(devices, end, (id) => ((((id % 40) + 2) * 5) << 16) | 0x40c0);
  await until("the whole wall", async () => (await columns()).join() === all);
  await page.locator("#notice").waitFor({ state: "hidden" });

  // A tap on a card lights the device's panels up.
  await page.locator(".device").nth(1).tap();
  await page.waitForSelector(".device[data-lit]:nth-child(2)");
  await page.locator("h1").tap();
  await page.waitForFunction(() => !document.querySelector("[data-lit]"));
  await page.evaluate(() => scrollTo(0, 0));
  const box = await page.locator("#wall").boundingBox();
  const middle = [box.x + box.width / 2, box.y + box.height / 2];

  // Each way of zooming in makes panels larger, and none scrolls or zooms the page.
  const touch = await context.newCDPSession(page);
  const pinch = async (from, to, shift = 0) => {
    const points = (spread, x) => [-1, 1].map((side, id) => ({
      x: middle[0] + side * spread + x, y: middle[1], id }));
    await touch.send("Input.dispatchTouchEvent", { type: "touchStart", touchPoints: points(from, 0) });
    for (let i = 1; i <= 5; ++i)
      await touch.send("Input.dispatchTouchEvent", {
        type: "touchMove", touchPoints: points(from + ((to - from) * i) / 5, (shift * i) / 5) });
    await touch.send("Input.dispatchTouchEvent", { type: "touchEnd", touchPoints: [] });
  };
  const wheel = async (dx, dy, key) => {
    await page.mouse.move(...middle);
    if (key) await page.keyboard.down(key);
    await page.mouse.wheel(dx, dy);
    if (key) await page.keyboard.up(key);
  };
  const ways = {
    buttons: async () => { for (let i = 0; i < 4; ++i) await page.click("#zoomIn"); },
    keys: async () => {
      await page.focus("#wall");
      await page.keyboard.press("Escape");
      for (let i = 0; i < 4; ++i) await page.keyboard.press("+");
    },
    wheel: () => wheel(0, -480, "Control"),
    fingers: () => pinch(30, 150),
  };
  for (const [name, way] of Object.entries(ways)) {
    await way();
    await until(`larger panels by ${name}`, async () => (await columns()).length < 12);
    assert.equal(await page.evaluate(() => visualViewport.scale), 1);
    assert.equal(await page.evaluate(() => scrollY), 0);
    if (name === "keys") await page.keyboard.press("0");
    else await page.click("#zoomAll");
    await until("the whole wall", async () => (await columns()).join() === all);
  }

  // Moving: by wheel, a finger, and to the panel that the arrow keys select.
  await ways.buttons();
  await until("larger panels", async () => (await columns()).length < 12);
  let seen = await columns();
  const moved = async (name, by) => {
    const now = await until(`other panels by ${name}`, async () => {
      const at = await columns();
      return Math.sign(at[0] - seen[0]) === by && at.at(-1) !== seen.at(-1) && at;
    });
    assert.ok(now.length < 12, `still as large: ${now}`);
    seen = now;
  };
  await wheel(150, 0);
  await moved("the wheel", 1);
  const at = (x) => [{ x, y: middle[1], id: 1 }];
  await touch.send("Input.dispatchTouchEvent", { type: "touchStart", touchPoints: at(100) });
  for (const x of [150, 200, 250])
    await touch.send("Input.dispatchTouchEvent", { type: "touchMove", touchPoints: at(x) });
  await touch.send("Input.dispatchTouchEvent", { type: "touchEnd", touchPoints: [] });
  await moved("a finger", -1);
  await page.focus("#wall");
  await page.keyboard.press("Home");
  await page.keyboard.press("ArrowRight");
  await until("the panel that the keys selected", async () =>
    (await page.textContent("#spoken")).includes("Panel 1,"));
  await until("its column", async () => (await columns())[0] === 0);
  end.now = true;
  await sending;
});

test("the screen's picture lies behind the panels when it is asked for", async () => {
  const size = [640, 480];
  const stage = await setting.stage(...size);
  await stage.draw("fill 336699");
  await stage.draw("rect 0 0 320 480 993366");
  const document = configuration([device("127.0.72.13", 2, [[1, 160, 240]])], 0, stage.id);
  const wall = await setting.wall(document, [], stage.environment);
  const page = await open(wall.url);
  const requests = [];
  page.on("request", (request) => requests.push(request.url().replace(wall.url, "")));
  await sender.send("127.0.72.13", wide([[1, 0x00ff00, 0]]));
  await waitForColours(page, size, [[160, 240, 0x00ff00]]);
  assert.ok(!requests.includes("screen.png"));
  await page.keyboard.press("s");
  // The screen's picture shows between the panel's edge and the colour in its middle.
  await waitForColours(page, size, [
    [600, 400, 0x336699],
    [40, 400, 0x993366],
    [160 - 35, 240, 0x993366],
    [160, 240, 0x00ff00],
  ]);
  assert.equal(await page.getAttribute("#pictureButton", "aria-pressed"), "true");
  // The picture follows the screen while it is shown.
  await stage.draw("fill 123456");
  await waitForColours(page, size, [[600, 400, 0x123456]]);
  await page.click("#pictureButton");
  await until("the picture to go", async () =>
    (await photograph(page, ...size)).shows(600, 400) !== 0x123456);
});

test("a private file leads to the page, which says why there is no picture without a display", async () => {
  const wall = await setting.wall(configuration([device("127.0.72.14", 2, [[1, 160, 240]])]));
  const page = await open(wall.url);
  // Other users' programs cannot learn the address: a file that only its user can read leads to it.
  const followed = await setting.context.newPage();
  await followed.goto(`file://${wall.link}`);
  await followed.waitForURL(wall.url);
  await followed.waitForFunction(() => window.panelwall?.events > 0);
  assert.equal(await followed.evaluate(() => document.referrer), "");
  await followed.close();

  await page.click("#pictureButton");
  await until("the reason", async () =>
    /cannot be seen from panelwall: start it where mirroring runs/.test(
      await page.textContent("#note")));
  for (const complaint of complaints.splice(0)) assert.match(complaint, /404/);
});

test("a recording is shown as one", async () => {
  const document = configuration([device("127.0.72.17", 2, [[1, 100, 100]])]);
  const file = setting.write("run.wall", "");
  const recorder = await setting.wall(document, ["--record", file]);
  for (let i = 0; i < 10; ++i) {
    await sender.send("127.0.72.17", wide([[1, 0x336699, 0]]));
    await new Promise((resolve) => setTimeout(resolve, 100));
  }
  await recorder.end();
  // Slow enough that the replay is still running during the checks.
  const replay = setting.start(process.env.PANELWALL,
    ["--replay", file, "--speed", "0.05", "--web", "0"]);
  const page = await open((await replay.waitFor(/live page: (http:\S+)/))[1]);
  await waitForColours(page, [150, 150], [[100, 100, 0x336699]]);
  await page.waitForFunction(() => document.getElementById("state").textContent === "Replay");
});

test("another site's page is told nothing, even if it knows the address", async () => {
  const wall = await setting.wall(configuration([device("127.0.72.15", 2, [[1, 160, 240]])]));
  const other = await setting.wall(configuration([device("127.0.72.16", 2, [[1, 160, 240]])]));
  const page = await open(other.url);
  const outcome = await page.evaluate(async (url) => {
    const outcomeOf = (address, options) => fetch(address, options).then(() => "read", () => "refused");
    return [
      await outcomeOf(url + "events"),
      await outcomeOf(url, { mode: "no-cors" }),
      await outcomeOf(new URL("/", url), { mode: "no-cors" }),
    ];
  }, wall.url);
  assert.deepEqual(outcome, ["refused", "refused", "refused"]);
  complaints.splice(0);
});

test("whoever does not know the whole address is told so, and nothing else", async () => {
  const wall = await setting.wall(configuration([device("127.0.72.18", 2, [[1, 160, 240]])]));
  for (const path of ["/", "/events", "/screen.png", "/main.js", "/AAAAAAAAAAAAAAAAAAAAAA/events"]) {
    const answer = await fetch(new URL(path, wall.url));
    assert.equal(answer.status, 404);
    assert.equal(await answer.text(), "Open the whole address that panelwall has printed.\n");
  }
});
