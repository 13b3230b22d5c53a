// Starts lightbridge, sends it one datagram, and compares what receivers of E1.31 and Art-Net that
// others wrote make of its packets with what they should: the colours, then black.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import dgram from "node:dgram";
import { once } from "node:events";
import { createRequire } from "node:module";

const [lightbridge, folder] = process.argv.slice(2);
const modules = createRequire(folder + "/");
const { Receiver } = modules("sacn");
const { dmxnet: Dmxnet } = modules("dmxnet");

const ip = "127.0.0.9";
const colours = Array.from({ length: 172 }, (_, i) => [i + 1, 255 - i, (i * 7) % 256]);
const pixelsPerUniverse = 170;
const output = (members) => ({ ip: "127.0.0.1", device: 0, ...members });
const config = {
  displayID: 1,
  mode: 0,
  devices: [
    {
      ip,
      controlVersion: 2,
      shapeType: 0,
      scaleFactor: 1,
      panels: colours.map((_, i) => ({ panelID: i + 1, centroidX: 100, centroidY: 100 })),
    },
  ],
  lightbridge: {
    outputs: [
      output({ protocol: "e131", universe: 11, priority: 150 }),
      output({ protocol: "e131", universe: 21, ip: "multicast", interface: "127.0.0.1" }),
      output({ protocol: "artnet", universe: 0x0123, colourOrder: "GRB" }),
    ],
  },
};

// For each universe, the different frames in order of arrival.
const expected = {};
const expectFrames = (protocol, universe, order) => {
  const pixels = colours.map((colour) => order.map((channel) => colour[channel]));
  const parts = [pixels.slice(0, pixelsPerUniverse), pixels.slice(pixelsPerUniverse)];
  parts.forEach((part, i) => {
    const slots = part.flat();
    expected[`${protocol} ${universe + i}`] = [slots.join(), slots.map(() => 0).join()];
  });
};
expectFrames("Art-Net", 3, [1, 0, 2]); // of the subnet
expectFrames("E1.31", 11, [0, 1, 2]);
expectFrames("E1.31", 21, [0, 1, 2]);
const received = Object.fromEntries(Object.keys(expected).map((name) => [name, []]));
const packets = []; // of E1.31
const streamTerminated = 0x40;
const ends = () => packets.filter(({ options }) => options === streamTerminated).length;

let complete;
const completion = new Promise((resolve) => (complete = resolve));
const note = (name, slots) => {
  const frame = [...slots].join();
  if (received[name].at(-1) !== frame) received[name].push(frame);
  if (ends() === 12 && Object.values(received).every((frames) => frames.length === 2)) complete();
};

const e131 = new Receiver({ universes: [11, 12, 21, 22], iface: "127.0.0.1" });
for (const fault of ["error", "PacketCorruption", "PacketOutOfOrder"])
  e131.on(fault, (error) => assert.fail(`${fault}: ${error}`));
e131.on("packet", (packet) => {
  packets.push(packet);
  note(`E1.31 ${packet.universe}`, packet.payloadAsBuffer);
});
// It answers only for addresses that it has.
const artNet = new Dmxnet({ hosts: ["none"], log: { silent: true } });
for (const universe of [3, 4])
  artNet
    .newReceiver({ net: 1, subnet: 2, universe })
    .on("data", (slots) => note(`Art-Net ${universe}`, slots));
await Promise.all([once(e131.socket, "listening"), once(artNet.listener4, "listening")]);

const bridge = spawn(lightbridge, ["-", "--transition-unit", "0", "--seconds", "1"], {
  stdio: ["pipe", "pipe", "inherit"],
});
bridge.stdin.end(JSON.stringify(config));
const ended = once(bridge, "exit");
for (let out = ""; !out.includes("driving: output 2"); ) out += await once(bridge.stdout, "data");
bridge.stdout.resume();

const datagram = Buffer.alloc(2 + 8 * colours.length);
datagram.writeUInt16BE(colours.length);
colours.forEach((colour, i) => {
  datagram.writeUInt16BE(i + 1, 2 + 8 * i);
  datagram.set(colour, 4 + 8 * i);
});
const sender = dgram.createSocket("udp4");
sender.send(datagram, 60222, ip, () => sender.close());
assert.deepEqual(await ended, [0, null]);

// The last packets are under way at most.
await Promise.race([completion, new Promise((resolve) => setTimeout(resolve, 10000))]);
assert.deepEqual(received, expected);
for (const number of [11, 12, 21, 22]) {
  const stream = packets.filter(({ universe }) => universe === number);
  assert.deepEqual(
    stream.slice(-4).map(({ options }) => options),
    [0, streamTerminated, streamTerminated, streamTerminated],
  );
  assert.ok(stream.every(({ priority }) => priority === (number < 20 ? 150 : 100)));
}
assert.equal(new Set(packets.map(({ cid, sourceName }) => `${cid} ${sourceName}`)).size, 1);
process.exit(0);
