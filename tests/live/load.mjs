// Many clients of one server, one of which never reads: what each gets, and the server's memory.
//   node load.mjs QVSENSORS [clients] [seconds]
import { spawn } from 'node:child_process';
import { randomBytes } from 'node:crypto';
import { readFileSync } from 'node:fs';
import net from 'node:net';
import path from 'node:path';
import { setTimeout as pause } from 'node:timers/promises';
import { fileURLToPath } from 'node:url';
import WebSocket from 'ws';

const [program, clientCount = '50', seconds = '600'] = process.argv.slice(2);
const reportEveryMs = 10_000;
if (!program) {
  console.error('usage: node load.mjs QVSENSORS [clients] [seconds]');
  process.exit(2);
}

const robot = path.join(
  path.dirname(fileURLToPath(import.meta.url)), '../../robot/descriptions/porter.urdf');
const server = spawn(
  program,
  ['serve', '--robot', robot, '--people', '2', '--port', '0', '--subscribe', 'Laser',
    '--subscribe', 'Sonar', '--subscribe', 'Asus'],
  { stdio: ['ignore', 'pipe', 'inherit'] });
const port = await new Promise((resolve, reject) => {
  server.stdout.on('data', (text) => resolve(Number(/:(\d+)\//.exec(text)[1])));
  server.on('exit', () => reject(new Error('the server has ended')));
});

function memoryInMiB() {
  const status = readFileSync(`/proc/${server.pid}/status`, 'utf8');
  return Number(/VmRSS:\s+(\d+)/.exec(status)[1]) / 1024;
}

// Opens a WebSocket and then leaves everything unread.
function connectSilently() {
  const socket = net.connect(port, '127.0.0.1', () => {
    socket.write(`GET /live HTTP/1.1\r\nHost: localhost:${port}\r\nUpgrade: websocket\r\n` +
      'Connection: Upgrade\r\nSec-WebSocket-Version: 13\r\n' +
      `Sec-WebSocket-Key: ${randomBytes(16).toString('base64')}\r\n\r\n`);
  });
  socket.pause();
  socket.on('error', () => {});
  return socket;
}

function connect() {
  const client = { states: 0, closed: false };
  const socket = new WebSocket(`ws://127.0.0.1:${port}/live`, 'qv.live.v1');
  socket.on('message', (data) => {
    // Enough to know it by: parsing all of it fifty times would measure us.
    if (data.subarray(0, 13).toString() === '{"op":"state"') ++client.states;
  });
  socket.on('close', () => { client.closed = true; });
  socket.on('error', (error) => console.error(error.message));
  return client;
}

// The server gives up a client that answers no ping for a minute: the next one comes before.
let silent = connectSilently();
setInterval(() => {
  silent.destroy();
  silent = connectSilently();
}, 50_000).unref();
const clients = Array.from({ length: Number(clientCount) - 1 }, connect);
await pause(2000);
const start = performance.now();
let slowest = Infinity;
const memories = [];
console.log('seconds  slowest Hz  fastest Hz  MiB');
for (let last = start; performance.now() - start < Number(seconds) * 1000;) {
  for (const client of clients) client.states = 0;
  await pause(reportEveryMs);
  const now = performance.now();
  const rates = clients.map((client) => client.states * 1000 / (now - last));
  last = now;
  memories.push(memoryInMiB());
  slowest = Math.min(slowest, ...rates);
  console.log([(now - start) / 1000, Math.min(...rates), Math.max(...rates), memories.at(-1)]
    .map((number) => number.toFixed(1)).join('  '));
}
const gone = clients.filter((client) => client.closed).length;
console.log(`${clients.length} clients that read: ${gone} lost, the slowest at ` +
  `${slowest.toFixed(2)} Hz in any ${reportEveryMs / 1000} s; one that never reads; memory from ` +
  `${Math.min(...memories).toFixed(1)} to ${Math.max(...memories).toFixed(1)} MiB`);
silent.destroy();
server.removeAllListeners('exit');
server.kill('SIGINT');
const status = await new Promise((resolve) => server.on('exit', resolve));
process.exit(status === 130 && gone === 0 ? 0 : 1);
