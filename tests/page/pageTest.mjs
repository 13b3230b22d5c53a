// The live page in a real browser, as a person sees it.
import assert from "node:assert/strict";
import { after, afterEach, beforeEach, test } from "node:test";
import {
  closeBrowser,
  configuration,
  decodePng,
  device,
  hex,
  photograph,
  Sender,
  Setting,
  until,
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
  const warning = /^The whole wall flashes, up to 5\.5 times within a second/;
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
  assert.match(await notice.innerText(), /^Nothing has arrived at all in \d\.\d s\./);
  assert.match(await notice.innerText(), /Match mode sends some twenty times a second/);
  assert.match(await notice.innerText(), /Check that the host mirrors/);
  assert.equal(await page.textContent("#state"), "Silent");

  // Only one device receives something; the card of the other says so.
  await sender.send("127.0.72.6", wide([[1, 0xffffff, 1]]));
  await notice.waitFor({ state: "hidden" });
  await page.waitForSelector("#state[data-state=live]");
  assert.match(await page.locator(".device").nth(1).innerText(), /Others receive something/);
  await notice.waitFor({ state: "visible" });
  assert.match(await notice.innerText(), /^Nothing has arrived for \d\.\d s\./);

  wall.process.kill("SIGSTOP");
  await page.waitForSelector("#state[data-state=gone]");
  assert.match(await notice.innerText(), /^The wall does not answer\./);
  // Outdated content looks faint.
  const faintness = () => page.evaluate(() => getComputedStyle(document.querySelector("main")).opacity);
  assert.ok((await faintness()) < 0.6);
  wall.process.kill("SIGCONT");
  await page.waitForFunction(() => document.getElementById("state").dataset.state !== "gone");
  assert.equal(await faintness(), "1");
  await wall.end();
  await page.waitForSelector("#state[data-state=gone]");
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
  await until("12 changes", async () => (await changes()) === 12);
  await sender.send("127.0.72.9", wide([[1, 0xff0000, 1]]));
  await until("13 changes", async () => (await changes()) === 13);
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
  await new Promise((resolve) => setTimeout(resolve, 3000));
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
  const luminance = (colour) => {
    const [r, g, b] = colour.match(/\d+/g).slice(0, 3).map((value) => {
      const share = value / 255;
      return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
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
    // Every text is readable: its contrast with the background is at least 4.5.
    const pairs = await page.evaluate(() => {
      const groundOf = (element) => {
        for (let at = element; at; at = at.parentElement) {
          const colour = getComputedStyle(at).backgroundColor;
          if (colour !== "rgba(0, 0, 0, 0)") return colour;
        }
        return "rgb(255, 255, 255)";
      };
      return [...document.querySelectorAll("h1,h2,h3,h3 span,p,dt,dd,button,summary,kbd")]
        .filter((element) => element.checkVisibility() && element.textContent.trim())
        .map((element) => [element.textContent.trim(), getComputedStyle(element).color,
          groundOf(element)]);
    });
    assert.ok(pairs.length > 20);
    for (const [text, colour, ground] of pairs) {
      const [a, b] = [luminance(colour), luminance(ground)].sort((one, other) => other - one);
      assert.ok((a + 0.05) / (b + 0.05) >= 4.5, `${scheme}: ${text}: ${colour} on ${ground}`);
    }
    grounds.push(luminance(await page.evaluate(() => getComputedStyle(document.body).backgroundColor)));
  }
  assert.ok(grounds[0] > 0.8 && grounds[1] < 0.05, `grounds ${grounds}`);
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

test("without a display the page says why there is no picture", async () => {
  const wall = await setting.wall(configuration([device("127.0.72.14", 2, [[1, 160, 240]])]));
  const page = await open(wall.url);
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
  for (let i = 0; i < 20; ++i) {
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

test("the link in a private file leads to the page", async () => {
  const link = setting.write("page.html", "");
  const wall = await setting.wall(configuration([device("127.0.72.21", 2, [[1, 160, 240]])]),
    ["--web-link", link]);
  const page = await (await setting.newContext()).newPage();
  await page.goto(`file://${link}`);
  await page.waitForURL(wall.url);
  await page.waitForFunction(() => window.panelwall?.events > 0);
  assert.equal(await page.evaluate(() => document.referrer), "");
});

test("whoever does not know the whole address is told so, and nothing else", async () => {
  const wall = await setting.wall(configuration([device("127.0.72.18", 2, [[1, 160, 240]])]));
  for (const path of ["/", "/events", "/screen.png", "/main.js", "/AAAAAAAAAAAAAAAAAAAAAA/events"]) {
    const answer = await fetch(new URL(path, wall.url));
    assert.equal(answer.status, 404);
    assert.equal(await answer.text(), "Open the whole address that panelwall has printed.\n");
  }
});
