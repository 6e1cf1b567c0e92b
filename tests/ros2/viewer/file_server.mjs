// Files by ranges, as viewers ask for those of recordings.
import { createReadStream, statSync } from 'node:fs';
import http from 'node:http';
import path from 'node:path';

const TYPES = { '.html': 'text/html', '.js': 'text/javascript', '.wasm': 'application/wasm' };

function find(folders, name) {
  for (const folder of folders) {
    const file = path.join(folder, name);
    const status = statSync(file, { throwIfNoEntry: false });
    if (status?.isFile()) return { file, size: status.size };
  }
  return undefined;
}

function answer(folders, request, response) {
  const found = find(folders, new URL(request.url, 'http://localhost').pathname);
  if (!found) return response.writeHead(404).end();
  const { file, size } = found;
  const [, first, last] = /bytes=(\d+)-(\d*)/.exec(request.headers.range ?? '') ?? [];
  const start = Number(first ?? 0);
  const end = last ? Number(last) : size - 1;
  response.writeHead(first ? 206 : 200, {
    'content-type': TYPES[path.extname(file)] ?? 'application/octet-stream',
    'content-length': end - start + 1,
    'accept-ranges': 'bytes',
    ...(first && { 'content-range': `bytes ${start}-${end}/${size}` }),
  });
  return request.method === 'HEAD' ? response.end() : createReadStream(file, { start, end }).pipe(response);
}

/** A server on a free port of this machine, of the files in these folders. */
export async function serve(...folders) {
  const server = http.createServer((request, response) => answer(folders, request, response));
  await new Promise((done) => server.listen(0, '127.0.0.1', done));
  return { url: `http://127.0.0.1:${server.address().port}`, close: () => server.close() };
}
