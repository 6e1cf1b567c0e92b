// A viewer of the field's own: the client of the Foxglove WebSocket protocol.
import protocol from '@foxglove/ws-protocol';
import { WebSocket } from 'ws';

/** Resolves to {client, channels} once the program has told its channels. */
export function connectViewer(port, subprotocol = protocol.FoxgloveClient.SUPPORTED_SUBPROTOCOL) {
  return new Promise((resolve, reject) => {
    const client = new protocol.FoxgloveClient({ ws: new WebSocket(`ws://127.0.0.1:${port}/`, [subprotocol]) });
    client.on('error', reject);
    client.on('advertise', (channels) => resolve({ client, channels }));
  });
}
