// Shared by the page's tests: programs, datagrams, a browser, and pixels.
import { spawn } from "node:child_process";
import dgram from "node:dgram";
import { once } from "node:events";
import { existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";

const modules = createRequire(process.env.PAGE_MODULES + "/");
const { chromium } = modules("playwright-core");
const { PNG } = modules("pngjs");
const axe = modules("axe-core");

const patience = 20000;

// A program whose output can be waited for.
export class Program {
  constructor(command, args, environment = {}) {
    this.command = command;
    this.out = "";
    this.errors = "";
    // The kernel ends the program when this process dies.
    this.process = spawn("setpriv", ["--pdeathsig", "KILL", command, ...args], {
      env: { ...process.env, ...environment },
    });
    this.process.stdout.on("data", (bytes) => (this.out += bytes));
    this.process.stderr.on("data", (bytes) => (this.errors += bytes));
    this.ended = once(this.process, "exit").then(([code]) => code);
  }

  // Waits for output that the pattern matches, and returns the match.
  async waitFor(pattern) {
    return until(`${pattern} in the output of ${this.command}`, () => {
      const match = this.out.match(pattern);
      if (!match && this.process.exitCode !== null)
        throw new Error(`${this.command} ended: ${this.out}${this.errors}`);
      return match;
    });
  }

  async end() {
    this.process.kill("SIGINT");
    return this.ended;
  }
}

// Calls `look` until it returns a truthy value, and returns that value; throws after 20 s.
export async function until(what, look) {
  const deadline = Date.now() + patience;
  for (;;) {
    const found = await look();
    if (found) return found;
    if (Date.now() > deadline) throw new Error(`waited in vain for ${what}`);
    await new Promise((resolve) => setTimeout(resolve, 20));
  }
}

// A screen to be mirrored.
export class Stage extends Program {
  constructor(width, height) {
    super(process.env.STAGE, [String(width), String(height)]);
  }

  async open() {
    this.display = (await this.waitFor(/^(:\d+)\n/))[1];
    const list = new Program(process.env.MIRRORCTL, ["displays", "--json"], this.environment);
    this.id = Number((await list.waitFor(/"displayID":(\d+)/))[1]);
    return this;
  }

  get environment() {
    return { DISPLAY: this.display };
  }

  async draw(line) {
    const before = this.out.length;
    this.process.stdin.write(line + "\n");
    await until("the drawing", () => this.out.indexOf("done", before) >= 0);
  }

  async end() {
    this.process.stdin.end();
    return this.ended;
  }
}

// One browser for all tests, with a fresh profile.
let opened;
export function browser() {
  opened ??= chromium.launch({
    executablePath: process.env.CHROMIUM,
    args: [
      "--headless",
      "--no-sandbox",
      "--disable-gpu",
      "--disable-quic",
      "--no-first-run",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
    ],
  });
  return opened;
}

export async function closeBrowser() {
  await (await opened)?.close();
}

// What a checker of accessibility finds wrong with the page, as "rule: element" texts.
export async function violations(page) {
  // The page's security policy forbids scripts from elsewhere; code that is evaluated is exempt.
  await page.evaluate(axe.source);
  const { violations } = await page.evaluate(() => window.axe.run());
  return violations.flatMap(({ id, nodes }) => nodes.map(({ html }) => `${id}: ${html}`));
}

// The folder of one test and the programs that it starts. `end` ends the programs and removes the
// folder.
export class Setting {
  constructor() {
    this.folder = mkdtempSync(join(tmpdir(), "panelwall-page-"));
    this.started = [];
  }

  write(name, document) {
    const path = join(this.folder, name);
    writeFileSync(path, typeof document === "string" ? document : JSON.stringify(document));
    return path;
  }

  async stage(width, height) {
    const stage = new Stage(width, height);
    this.started.push(stage);
    return stage.open();
  }

  // Starts a wall with its page; returns the program, with the page's address in `url`. That comes
  // from the file that leads to the page, because a wall of many devices that is read slowly leaves
  // lines out of its output.
  async wall(document, args = [], environment = { DISPLAY: "" }) {
    const path = this.write("wall.json", document);
    const link = join(this.folder, "page.html");
    rmSync(link, { force: true });
    const wall = new Program(process.env.PANELWALL,
      [path, "--web", "0", "--web-link", link, ...args], environment);
    this.started.push(wall);
    wall.url = await until("the page's address", () => {
      if (wall.process.exitCode !== null) throw new Error(`panelwall ended: ${wall.errors}`);
      return existsSync(link) && readFileSync(link, "utf8").match(/url=(http:\S+)"/)?.[1];
    });
    return Object.assign(wall, { document: path, link });
  }

  start(command, args, environment) {
    const program = new Program(command, args, environment);
    this.started.push(program);
    return program;
  }

  // A separate browser context: it shares no storage or cache with other tests.
  async newContext(options) {
    this.context = await (await browser()).newContext(options);
    return this.context;
  }

  async end() {
    await this.context?.close();
    for (const program of this.started.reverse()) await program.end();
    rmSync(this.folder, { recursive: true, force: true });
  }
}

export const device = (ip, controlVersion, panels, scaleFactor = 1) => ({
  ip,
  controlVersion,
  shapeType: 0,
  scaleFactor,
  panels: panels.map(([panelID, centroidX, centroidY]) => ({ panelID, centroidX, centroidY })),
});

export const configuration = (devices, mode = 0, displayID = 1) => ({ displayID, mode, devices });

// Panels in rows over a display, numbered from `first`.
export const grid = (count, columns, width, height, first = 0) =>
  Array.from({ length: count }, (_, i) => [
    first + i,
    Math.round(((i % columns) + 0.5) * (width / columns)),
    Math.round((Math.floor(i / columns) + 0.5) * (height / Math.ceil(count / columns))),
  ]);

// A wide datagram of [id, 0xRRGGBB, transition time] records.
export function wide(records) {
  const bytes = [records.length >> 8, records.length & 255];
  for (const [id, colour, time] of records)
    bytes.push(id >> 8, id & 255, colour >> 16, (colour >> 8) & 255, colour & 255, 0,
      time >> 8, time & 255);
  return Uint8Array.from(bytes);
}

export class Sender {
  constructor() {
    this.socket = dgram.createSocket("udp4");
  }

  send(ip, bytes) {
    return new Promise((resolve, reject) =>
      this.socket.send(bytes, 60222, ip, (error) => (error ? reject(error) : resolve())),
    );
  }

  end() {
    this.socket.close();
  }
}

// The pixels of a PNG.
export function decodePng(bytes) {
  const { width, height, data } = PNG.sync.read(bytes);
  return {
    width,
    height,
    at(x, y) {
      const i = (Math.round(y) * width + Math.round(x)) * 4;
      return (data[i] << 16) | (data[i + 1] << 8) | data[i + 2];
    },
  };
}

// A screenshot of the page's wall, with functions from places on the display to pixels of it.
export async function photograph(page, width, height) {
  const canvas = page.locator("#wall");
  const picture = decodePng(await canvas.screenshot());
  const margin = 0.02 * Math.max(width, height);
  const scale = Math.min(picture.width / (width + 2 * margin), picture.height / (height + 2 * margin));
  const left = (picture.width - (width + 2 * margin) * scale) / 2;
  return {
    ...picture,
    scale,
    place: (x, y) => [left + (x + margin) * scale, (y + margin) * scale],
    shows(x, y) {
      return picture.at(...this.place(x, y));
    },
  };
}

export const hex = (colour) => colour.toString(16).padStart(6, "0");
