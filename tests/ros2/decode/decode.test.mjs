// Recordings as others read them: by their index and as a stream, every message by value.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { parse } from '@foxglove/rosmsg';
import { MessageReader } from '@foxglove/rosmsg2-serialization';
import { McapIndexedReader, McapStreamReader } from '@mcap/core';
import { loadDecompressHandlers } from '@mcap/support';

const folder = process.env.QV_SAMPLES;
const expected = JSON.parse(readFileSync(`${folder}/expected.json`, 'utf8'));
const decompressHandlers = await loadDecompressHandlers();

class Readable {
  constructor(bytes) {
    this.bytes = bytes;
  }
  async size() {
    return BigInt(this.bytes.length);
  }
  async read(offset, size) {
    return this.bytes.subarray(Number(offset), Number(offset + size));
  }
}

/** Converts a message to the form of the expected values: plain times and arrays, numbers that JSON lacks as text. */
function plain(value) {
  if (typeof value === 'bigint') return String(value);
  if (typeof value === 'number') return Number.isFinite(value) ? value : String(value);
  if (ArrayBuffer.isView(value) || Array.isArray(value)) return Array.from(value, plain);
  if (value === null || typeof value !== 'object') return value;
  const entries = Object.entries(value).map(([key, inner]) => [key === 'nsec' ? 'nanosec' : key, plain(inner)]);
  return Object.fromEntries(entries);
}

function decode(message, channels, schemas) {
  const channel = channels.get(message.channelId);
  const schema = schemas.get(channel.schemaId);
  assert.equal(channel.messageEncoding, 'cdr');
  assert.equal(schema.encoding, 'ros2msg');
  const definitions = parse(new TextDecoder().decode(schema.data), { ros2: true });
  return {
    topic: channel.topic,
    schema: schema.name,
    message: plain(new MessageReader(definitions).readMessage(message.data)),
  };
}

async function readIndexed(bytes) {
  const reader = await McapIndexedReader.Initialize({ readable: new Readable(bytes), decompressHandlers });
  const messages = [];
  for await (const message of reader.readMessages())
    messages.push(decode(message, reader.channelsById, reader.schemasById));
  return { reader, messages };
}

function readStreaming(bytes) {
  const reader = new McapStreamReader({ decompressHandlers, validateCrcs: true });
  const channels = new Map();
  const schemas = new Map();
  const messages = [];
  // The bytes come in pieces, so that records cross their borders.
  for (let place = 0; place < bytes.length; place += 997) {
    reader.append(bytes.subarray(place, place + 997));
    for (let record; (record = reader.nextRecord()); ) {
      if (record.type === 'Schema') schemas.set(record.id, record);
      if (record.type === 'Channel') channels.set(record.id, record);
      if (record.type === 'Message') messages.push(decode(record, channels, schemas));
    }
  }
  assert.ok(reader.done());
  return messages;
}

for (const name of ['none', 'lz4', 'zstd']) {
  const bytes = new Uint8Array(readFileSync(`${folder}/${name}.mcap`));

  test(`${name}: every message by the index`, async () => {
    const { reader, messages } = await readIndexed(bytes);
    assert.deepEqual(messages, expected);
    assert.equal(reader.header.profile, 'ros2');
    assert.equal(reader.statistics.messageCount, BigInt(expected.length));
    assert.ok(reader.chunkIndexes.length > 3);
    assert.equal(reader.chunkIndexes[0].compression, name === 'none' ? '' : name);
  });

  test(`${name}: every message from a stream`, () => assert.deepEqual(readStreaming(bytes), expected));
}

test('a recorded robot: every message, in place on the map', async () => {
  const bytes = new Uint8Array(readFileSync(`${folder}/run.mcap`));
  const { reader, messages } = await readIndexed(bytes);
  assert.equal(reader.statistics.messageCount, BigInt(messages.length));
  assert.equal(readStreaming(bytes).length, messages.length);
  const last = new Map(messages.map(({ topic, message }) => [topic, message]));
  const frames = new Set(['map']);
  for (const topic of ['/tf', '/tf_static'])
    for (const { child_frame_id: child } of last.get(topic).transforms) frames.add(child);
  for (const [topic, { header }] of last) if (header) assert.ok(frames.has(header.frame_id), `${topic} in ${header.frame_id}`);
  for (const { header } of last.get('/fields_of_view').markers) assert.ok(frames.has(header.frame_id));
  const { width, height, data } = { ...last.get('/map').info, data: last.get('/map').data };
  assert.equal(data.length, width * height);
});

// A shape that a viewer does not know takes the whole robot away, a field that it does not find the cloud.
test('a recorded robot: shapes, clouds and markers as viewers know them', async () => {
  const { messages } = await readIndexed(new Uint8Array(readFileSync(`${folder}/run.mcap`)));
  const last = new Map(messages.map(({ topic, schema, message }) => [topic, { schema, message }]));
  const description = last.get('/robot_description').message.data;
  const shapes = [...description.matchAll(/<geometry>\s*<(\w+)/g)].map(([, shape]) => shape);
  assert.ok(shapes.length > 5);
  for (const shape of shapes) assert.match(shape, /^(box|cylinder|sphere|mesh)$/);

  const clouds = [...last.values()].filter(({ schema }) => schema === 'sensor_msgs/msg/PointCloud2');
  assert.ok(clouds.length > 5);
  for (const { message } of clouds) {
    assert.deepEqual(message.fields.map(({ name, offset, datatype }) => [name, offset, datatype]), [['x', 0, 7], ['y', 4, 7], ['z', 8, 7]]);
    assert.equal(message.data.length, message.height * message.row_step);
    assert.equal(message.row_step, message.width * message.point_step);
  }
  const { markers } = last.get('/fields_of_view').message;
  for (const { type, points, color, scale } of markers)
    assert.ok(type === 4 && points.length > 2 && color.a > 0 && scale.x > 0);
});

test('a recorded robot: what its drivers measured', async () => {
  const measured = JSON.parse(readFileSync(`${folder}/measured.json`, 'utf8'));
  const { messages } = await readIndexed(new Uint8Array(readFileSync(`${folder}/run.mcap`)));
  const last = new Map(messages.map(({ topic, message }) => [topic, message]));
  const { range, max_range: farthest } = last.get('/FrontSonar/range');
  assert.ok(measured.range < farthest);
  assert.equal(range, measured.range);

  const scan = last.get('/FrontLaser/scan');
  const met = measured.ranges.map((distance) => (distance < scan.range_max ? distance : 'Infinity'));
  assert.ok(new Set(met).size > 2);
  assert.deepEqual(scan.ranges, met);

  const { pose, twist } = last.get('/odom');
  const { position, orientation } = pose.pose;
  const { linear, angular } = twist.twist;
  assert.ok(measured.velocity[0] > 0 && measured.velocity[2] > 0);
  assert.deepEqual([position.x, position.y], measured.odometry.slice(0, 2));
  assert.ok(Math.abs(2 * Math.atan2(orientation.z, orientation.w) - measured.odometry[2]) < 1e-6);
  assert.deepEqual([linear.x, linear.y, angular.z], measured.velocity);
});

test('what rosbag2 needs to play it is there', async () => {
  const { reader } = await readIndexed(new Uint8Array(readFileSync(`${folder}/none.mcap`)));
  for (const channel of reader.channelsById.values()) {
    assert.match(channel.metadata.get('offered_qos_profiles'), /^- history: 3\n  depth: 0\n  reliability: 1\n/);
    assert.match(channel.metadata.get('topic_type_hash'), /^RIHS01_[0-9a-f]{64}$/);
  }
  const records = [];
  for await (const record of reader.readMetadata()) records.push(record);
  assert.deepEqual(records.map((record) => record.name), ['rosbag2', 'rosbag2']);
  const text = records[1].metadata.get('serialized_metadata');
  assert.match(text, /version: 8\n/);
  assert.match(text, new RegExp(`message_count: ${expected.length}\n`));
});

test('all checksums are right', () => {
  const said = execFileSync('/usr/bin/python3', ['check_crcs.py', `${folder}/none.mcap`], { encoding: 'utf8' });
  assert.match(said, /^5 chunks, 1 attachments, data and summary\n$/);
});
