#!/usr/bin/env node
// A host in JavaScript: lists the displays, mirrors the first one onto a light device for some
// seconds, and shows the data sent and the colours on the screen.
//
//     npm ci
//     node mirrorScreen.mjs ADDRESS [SECONDS]
//
// The library is found on the system's search path, or by its path in the environment variable
// SCREEN_MIRROR_LIBRARY.
import { isIP } from "node:net";
import { constants } from "node:os";
import { setTimeout as sleep } from "node:timers/promises";
import { promisify } from "node:util";
import koffi from "koffi";

// Has an error message of one line.
class MirrorError extends Error {}

function check(condition, message) {
  if (!condition) throw new MirrorError(message);
}

function loadLibrary() {
  const usual = `libscreenMirrorMac.${process.platform === "darwin" ? "dylib" : "so.1"}`;
  const name = process.env.SCREEN_MIRROR_LIBRARY ?? usual;
  try {
    return koffi.load(name);
  } catch (error) {
    throw new MirrorError(`the library cannot be loaded: ${name}: ${error.message}`);
  }
}

// startMirror() replaces the handlers of these signals with the library's, which end the process.
// They are in place when it returns, so that is when to restore those of Node.js. 256 bytes hold
// sigaction()'s structure on every system.
const replaced = ["SIGINT", "SIGABRT", "SIGTERM", "SIGBUS", "SIGFPE", "SIGPIPE", "SIGSEGV"];

function keepingSignalHandlers(start) {
  const sigaction = koffi
    .load(null)
    .func("int sigaction(int signal, const void *wanted, void *before)");
  const saved = replaced.map((name) => [constants.signals[name], Buffer.alloc(256)]);
  for (const [signal, action] of saved) sigaction(signal, null, action);
  const result = start();
  for (const [signal, action] of saved) sigaction(signal, action, null);
  return result;
}

// The library allows one call at a time. captureCurrentStreamFrames() and stopMirror() wait, so
// they run on another thread and do not block the host; each is awaited before the next call.
class ScreenMirror {
  constructor(library) {
    const waiting = (declaration) => promisify(library.func(declaration).async);
    this.getDisplays = library.func("int getDisplays(void *buffer, int bufferLength)");
    this.getPalette = library.func("int getPalette(void *buffer)");
    this.getSize = library.func("int getSizeOfStreamFrameJson()");
    this.getStreamFrameJson = library.func("int getStreamFrameJson(void *buffer)");
    this.setMirrorConfig = library.func("int setMirrorConfig(str json)");
    this.startMirror = library.func("int startMirror()");
    this.captureCurrentStreamFrames = waiting("int captureCurrentStreamFrames()");
    this.stopMirror = waiting("int stopMirror()");
  }

  displays() {
    const buffer = Buffer.alloc(4096);
    check(this.getDisplays(buffer, buffer.length) === 1, "the displays cannot be listed");
    return JSON.parse(textIn(buffer, "the list of displays is cut")).displays;
  }

  palette() {
    const buffer = Buffer.alloc(512);
    check(this.getPalette(buffer) === 0, "the palette could not be made");
    return JSON.parse(textIn(buffer, "the palette is cut")).palette;
  }

  async sent() {
    const captured = await this.captureCurrentStreamFrames();
    check(captured === 0, "nothing was sent within a second");
    const size = this.getSize();
    check(size >= 0, "the snapshot could not be made");
    check(size > 0, "no frame was captured");
    const buffer = Buffer.alloc(size);
    check(this.getStreamFrameJson(buffer) === 0, "the snapshot could not be fetched");
    return JSON.parse(buffer.toString()).devices;
  }

  // Mirrors while `work` runs. A process can have one run at a time.
  async during(document, work) {
    const applied = this.setMirrorConfig(JSON.stringify(document));
    check(applied === 1, "the configuration was not applied: the screen cannot be captured");
    const started = keepingSignalHandlers(this.startMirror);
    check(started !== 0, "mirroring was not started: a run exists already or there is no device");
    check(started === 1, "mirroring was not started: no thread could be made");
    let stopped;
    try {
      await work();
    } finally {
      stopped = await this.stopMirror();
    }
    check(stopped === 1, "mirroring could not be stopped");
  }
}

// A text that fills its buffer has no terminating zero and may be cut.
function textIn(buffer, ifCut) {
  const end = buffer.indexOf(0);
  check(end >= 0, ifCut);
  return buffer.toString("utf8", 0, end);
}

// The library accepts only numeric addresses without a zone and does not report others.
const isAddress = (text) => isIP(text) !== 0 && !text.includes("%");

// Four panels in a row across the middle of the display. Integers in the document are signed: pass
// the identifier's 32 bits as a signed integer.
const configuration = ({ displayID, width, height }, ip) => ({
  displayID: displayID | 0,
  mode: 0,
  devices: [
    {
      ip,
      controlVersion: 2,
      shapeType: 0,
      scaleFactor: 1.0,
      panels: [0, 1, 2, 3].map((i) => ({
        panelID: i + 1,
        centroidX: Math.floor(((2 * i + 1) * width) / 8),
        centroidY: Math.floor(height / 2),
      })),
    },
  ],
});

function swatch({ R, G, B }) {
  const hex = [R, G, B].map((channel) => channel.toString(16).padStart(2, "0")).join("");
  return (process.stdout.isTTY ? `\x1b[48;2;${R};${G};${B}m  \x1b[0m ` : "") + `#${hex}`;
}

async function main(address, seconds = "10") {
  let isWritten = true;
  process.stdout.on("error", () => (isWritten = false));
  check(isAddress(address), `not an IPv4 or IPv6 address: ${address}`);
  const mirror = new ScreenMirror(loadLibrary());
  const displays = mirror.displays();
  for (const { displayID, width, height } of displays)
    console.log(`display ${displayID}: ${width} x ${height}`);
  check(displays.length > 0, "there is no display to mirror; on Linux, DISPLAY names an X server");

  await mirror.during(configuration(displays[0], address), async () => {
    console.log(`mirroring display ${displays[0].displayID} onto ${address}`);
    await sleep(Number(seconds) * 1000);
    for (const { ip, animData } of await mirror.sent()) console.log(`sent to ${ip}: ${animData}`);
    console.log("palette:", ...mirror.palette().map(swatch));
  });
  check(isWritten, "standard output cannot be written");
}

const words = process.argv.slice(2);
if (words.length < 1 || words.length > 2) {
  console.error("usage: node mirrorScreen.mjs ADDRESS [SECONDS]");
  process.exit(2);
}
try {
  await main(...words);
} catch (error) {
  if (!(error instanceof MirrorError)) throw error;
  console.error(`mirrorScreen.mjs: ${error.message}`);
  process.exitCode = 1;
}
