// The field's own viewers, through the Foxglove WebSocket protocol.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { PORTER, serve } from './support/program.mjs';
import { connectViewer } from './support/viewer.mjs';

let program;

before(async () => (program = await serve([...PORTER, '--people', '2'])));
after(() => program.stop());

test('a viewer receives messages that fit the schema of their channel', async () => {
  const { client, channels } = await connectViewer(program.port);
  const missing = new Map(channels.map((channel) => [client.subscribe(channel.id), channel]));
  await new Promise((resolve) => {
    client.on('message', ({ subscriptionId, data }) => {
      const channel = missing.get(subscriptionId);
      if (!channel) return;
      const message = JSON.parse(new TextDecoder().decode(data));
      const { required } = JSON.parse(channel.schema);
      assert.notEqual(required.length, 0);
      assert.deepEqual(Object.keys(message).sort(), required.sort(), channel.topic);
      missing.delete(subscriptionId);
      if (missing.size === 0) resolve();
    });
  });
  client.close();
  const schemas = new Set(channels.map(({ schemaName }) => schemaName));
  for (const name of ['PointCloud', 'FrameTransform', 'Grid', 'Log', 'SceneUpdate', 'RawImage']) {
    assert.ok(schemas.has(`foxglove.${name}`), `no channel of ${name}`);
  }
});

test('both subprotocol names are accepted', async () => {
  for (const name of ['foxglove.websocket.v1', 'foxglove.sdk.v1']) {
    const { client } = await connectViewer(program.port, name);
    client.close();
  }
});

test('a viewer drives if allowed', async () => {
  const driven = await serve([...PORTER, '--pose', '3,6.3,0', '--viewer-drive']);
  const { client, channels } = await connectViewer(driven.port);
  const wheels = client.advertise({ topic: '/cmd_vel', encoding: 'json', schemaName: 'geometry_msgs/Twist' });
  const velocity = { linear: { x: 0.3, y: 0, z: 0 }, angular: { x: 0, y: 0, z: 0 } };
  const renewal = setInterval(() => client.sendMessage(wheels, new TextEncoder().encode(JSON.stringify(velocity))), 100);
  client.subscribe(channels.find(({ topic }) => topic === '/tf').id);
  await new Promise((resolve) => client.on('message', ({ data }) => {
    if (JSON.parse(new TextDecoder().decode(data)).translation.x > 3.2) resolve();
  }));
  clearInterval(renewal);
  client.close();
  await driven.stop();
});
