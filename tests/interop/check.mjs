// Reads recordings with the official MCAP reader and writes some with the official writer.
//
//   node check.mjs dump FILE         every line, event and other part of FILE, as interop_tool dumps it
//   node check.mjs repair FILE       the same of a file without an end, through the stream reader
//   node check.mjs write FILE        a recording as another program would write it; prints its dump
//
// Needs @mcap/core in node_modules of the current folder.
import fs from "node:fs";
import path from "node:path";
import { createRequire } from "node:module";

const require = createRequire(path.join(process.cwd(), "package.json"));
const { McapIndexedReader, McapStreamReader, McapWriter } = require("@mcap/core");

const text = new TextDecoder();
const bytes = new TextEncoder();
const out = [];

function bitsOf(data) {
  const view = new DataView(data.buffer, data.byteOffset, data.byteLength);
  const values = [];
  for (let at = 4; at < data.byteLength; at += 8) {
    values.push(view.getBigUint64(at, true).toString(16).padStart(16, "0"));
  }
  return values.join(" ");
}

function dumpMessage(topic, message) {
  if (topic === "lines") {
    out.push(`line ${message.sequence} ${message.logTime} ${bitsOf(message.data)}`);
  } else {
    const event = JSON.parse(text.decode(message.data));
    out.push(`event ${event.kind} ${event.line} ${event.lost} ${event.text}`);
  }
}

async function dump(file) {
  const handle = await fs.promises.open(file);
  const readable = {
    size: async () => BigInt((await handle.stat()).size),
    read: async (offset, length) => {
      const buffer = new Uint8Array(Number(length));
      await handle.read(buffer, 0, Number(length), Number(offset));
      return buffer;
    },
  };
  const reader = await McapIndexedReader.Initialize({ readable });
  for (const topic of ["lines", "events"]) {
    for await (const message of reader.readMessages({ topics: [topic] })) {
      dumpMessage(topic, message);
    }
  }
  for await (const metadata of reader.readMetadata({ name: "wavo" })) {
    out.push(`axes ${metadata.metadata.get("axes")}`, `cycle ${metadata.metadata.get("cycle_time")}`);
  }
  for await (const attachment of reader.readAttachments()) {
    out.push(`attachment ${attachment.name} ${text.decode(attachment.data)}`);
  }
  if (Number(reader.statistics.messageCount) !== out.filter((l) => /^(line|event) /.test(l)).length) {
    throw new Error("the statistics tell of other messages");
  }
  await handle.close();
}

function repair(file) {
  const reader = new McapStreamReader({ validateCrcs: true });
  reader.append(new Uint8Array(fs.readFileSync(file)));
  const topics = new Map();
  const events = [];
  for (let record; (record = reader.nextRecord()); ) {
    if (record.type === "Channel") {
      topics.set(record.id, record.topic);
    } else if (record.type === "Message") {
      dumpMessage(topics.get(record.channelId), record);
    }
  }
}

// Numbers that any program can make again.
function* values(count) {
  let noise = 1;
  for (let i = 0; i < count; i++) {
    noise = (Math.imul(noise, 1664525) + 1013904223) >>> 0;
    yield noise / 65536 - 32768;
  }
}

async function write(file) {
  const handle = fs.openSync(file, "w");
  let position = 0n;
  const writable = {
    position: () => position,
    write: async (buffer) => {
      fs.writeSync(handle, buffer);
      position += BigInt(buffer.byteLength);
    },
  };
  const writer = new McapWriter({ writable, chunkSize: 20000 });
  await writer.start({ profile: "", library: "another program" });
  const lineSchema = await writer.registerSchema({
    name: "wavo/msg/Line", encoding: "ros2msg", data: bytes.encode("float64 x\nfloat64 y\n") });
  const eventSchema = await writer.registerSchema({
    name: "wavo.Event", encoding: "jsonschema", data: bytes.encode('{"type":"object"}') });
  const lines = await writer.registerChannel({
    schemaId: lineSchema, topic: "lines", messageEncoding: "cdr", metadata: new Map() });
  const events = await writer.registerChannel({
    schemaId: eventSchema, topic: "events", messageEncoding: "json", metadata: new Map() });
  const start = 1754056800000000000n;
  await writer.addMetadata({ name: "wavo", metadata: new Map([
    ["format_version", "1"], ["axes", '["X","Y"]'], ["cycle_time", "0.001"],
    ["start_time", String(start)], ["limits", "[]"], ["program", "another program"]]) });
  const seen = [];
  const numbers = values(2 * 3000);
  for (let i = 0; i < 3000; i++) {
    const number = i < 2000 ? i : i + 500;  // a gap
    const data = new DataView(new ArrayBuffer(20));
    data.setUint8(1, 1);
    data.setFloat64(4, numbers.next().value, true);
    data.setFloat64(12, numbers.next().value, true);
    const time = start + BigInt(number) * 1000000n;
    const message = { channelId: lines, sequence: number, logTime: time, publishTime: time,
      data: new Uint8Array(data.buffer) };
    await writer.addMessage(message);
    dumpMessage("lines", message);
    if (number === 2500) {
      const event = { kind: "overrun", line: 2500, lost: 500, text: "a gap \u00e4 \"here\"" };
      const note = { channelId: events, sequence: 0, logTime: time, publishTime: time,
        data: bytes.encode(JSON.stringify(event)) };
      await writer.addMessage(note);
      seen.push(() => dumpMessage("events", note));
    }
  }
  await writer.addAttachment({ logTime: start, createTime: 0n, name: "graph.ini",
    mediaType: "text/plain", data: bytes.encode("[GENERAL]") });
  await writer.end();
  seen.forEach((put) => put());
  out.push('axes ["X","Y"]', "cycle 0.001", "attachment graph.ini [GENERAL]");
}

const [mode, file] = process.argv.slice(2);
await { dump, repair, write }[mode](file);
console.log(out.join("\n"));
