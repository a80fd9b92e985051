// Prints the lines of a Wavo recording as CSV, and its events on standard error.
//
//     node read_recording.mjs FILE.mcap
//
// Needs nothing but Node.js. CRCs are not checked here: `wavo_record --verify FILE` does that.
import fs from "node:fs";

const decoder = new TextDecoder();

/** A text with its length in front, and where the next field begins. */
function text(view, at) {
  const size = view.getUint32(at, true);
  return [decoder.decode(new Uint8Array(view.buffer, view.byteOffset + at + 4, size)), at + 4 + size];
}

/** Opcode and content of the whole records from byte `at` on. */
function* records(view, at) {
  while (at + 9 <= view.byteLength) {
    const size = Number(view.getBigUint64(at + 1, true));
    if (at + 9 + size > view.byteLength) {
      return; // cut off
    }
    yield [view.getUint8(at), new DataView(view.buffer, view.byteOffset + at + 9, size)];
    at += 9 + size;
  }
}

/** The entries of the Metadata record `wavo`; nothing of another one. */
function metadata(view) {
  let [key, at] = text(view, 0);
  if (key !== "wavo") {
    return undefined;
  }
  const entries = {};
  at += 4;
  while (at < view.byteLength) {
    [key, at] = text(view, at);
    [entries[key], at] = text(view, at);
  }
  return entries;
}

const file = fs.readFileSync(process.argv[2]);
const view = new DataView(file.buffer, file.byteOffset, file.byteLength);
if (decoder.decode(file.subarray(1, 6)) !== "MCAP0") {
  throw new Error("not a recording");
}
const topics = new Map();
const out = [];
for (const [opcode, content] of records(view, 8)) {
  if (opcode === 0x0f) {
    break; // the end of the data: what follows is an index
  } else if (opcode === 0x04) {
    topics.set(content.getUint16(0, true), text(content, 4)[0]);
  } else if (opcode === 0x0c) {
    const entries = metadata(content);
    if (entries) {
      out.push("line,time_ns," + JSON.parse(entries.axes).join(","));
    }
  } else if (opcode === 0x06) {
    const [compression, at] = text(content, 28);
    if (compression !== "") {
      throw new Error("a chunk is compressed");
    }
    const inner = new DataView(content.buffer, content.byteOffset + at + 8,
      content.byteLength - at - 8);
    for (const [innerOpcode, message] of records(inner, 0)) {
      const topic = innerOpcode === 0x05 ? topics.get(message.getUint16(0, true)) : undefined;
      if (topic === "lines") {
        const line = [message.getUint32(2, true), message.getBigUint64(6, true)];
        for (let place = 26; place < message.byteLength; place += 8) {
          line.push(message.getFloat64(place, true));
        }
        out.push(line.join(","));
      } else if (topic === "events") {
        console.error("event: " + decoder.decode(new Uint8Array(message.buffer,
          message.byteOffset + 22, message.byteLength - 22)));
      }
    }
  }
}
console.log(out.join("\n"));
