"""Makes a CARMEN log of a lidar from the records of `qvsensors drive --kind -1 ... -o -`."""

import json
import math
import sys

# The log keeps beams 75 to 225 of 300: from right to left, 1.2 degrees apart.
FIRST, LAST = 75, 225
NOTHING = 81.91

print("# What a simulated laser saw on its way through maps/apartment.yaml.")
for line in sys.stdin:
    record = json.loads(line)
    transform = record["sensorTransform"]
    farthest = record["fieldOfView"]["maxRange"]
    ranges = [math.hypot(point["x"], point["y"]) for point in record["points"][FIRST : LAST + 1]]
    scan = " ".join(f"{r if r < farthest - 1e-3 else NOTHING:.2f}" for r in ranges)
    pose = f"{transform[3]:.6f} {transform[7]:.6f} {math.atan2(transform[4], transform[0]):.6f}"
    seconds = f"{record['timestamp'] * 1e-9:.6f}"
    print(f"FLASER {len(ranges)} {scan} {pose} {pose} {seconds} qv {seconds}")
