// qvsensors serve, on a free port, with its output.
import assert from 'node:assert/strict';
import { execFileSync, spawn } from 'node:child_process';
import { once } from 'node:events';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../../..');
const binary = process.env.QV_SENSORS ?? path.join(root, 'build/release/bin/qvsensors');

export const PORTER = ['--robot', 'robot/descriptions/porter.urdf'];

export function inRoot(name) {
  return path.join(root, name);
}

/** Drives porter to and fro, and gives the recording's path. */
export function record(folder) {
  const file = path.join(folder, 'run.mcap');
  execFileSync(binary, ['drive', ...PORTER, '--path', '3,3 6,3 3,3', '-o', file], { cwd: root });
  return file;
}

/** Resolves when it serves: {url, port, stop}, where stop(signal) expects that signal's exit code and gives what was warned of. */
export async function serve(options, port = 0) {
  const program = spawn(binary, ['serve', ...options, '--port', String(port)], { cwd: root });
  let output = '';
  let errors = '';
  program.stderr.on('data', (text) => (errors += text));
  const url = await new Promise((resolve, reject) => {
    program.once('error', reject);
    program.once('exit', (code) => reject(new Error(`qvsensors left with ${code}: ${errors}`)));
    program.stdout.on('data', (text) => {
      output += text;
      const found = output.match(/http:\/\/[\d.]+:\d+\//);
      if (found) resolve(found[0]);
    });
  });
  // A test that fails leaves no program behind, and does not wait for it either.
  const kill = () => program.kill();
  process.once('exit', kill);
  program.once('exit', () => process.off('exit', kill));
  for (const handle of [program, program.stdout, program.stderr]) handle.unref();
  const stop = async (signal = 'SIGTERM') => {
    program.ref();
    if (program.exitCode === null && program.kill(signal)) {
      await once(program, 'exit');
      assert.equal(program.exitCode, { SIGINT: 130, SIGTERM: 143 }[signal], errors);
    }
    return errors;
  };
  return { url, port: Number(new URL(url).port), stop };
}
