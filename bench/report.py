"""Writes docs/performance-notes.md and its plots from what the benchmarks measured.

Usage: report.py FOLDER, the folder of NAME.json or NAME.ROUND.json in Google Benchmark's format. Run
from the project's root. Each figure is the median over the rounds, a ratio their geometric mean.
"""
import glob
import json
import os
import platform
import re
import statistics
import subprocess
import sys
import textwrap
from collections import OrderedDict

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams["svg.hashsalt"] = "qv"
import matplotlib.pyplot as plt  # noqa: E402

PAGE = "docs/performance-notes.md"
PLOTS = "docs/figures"
DARK_STYLE = "@media (prefers-color-scheme: dark) {svg {filter: invert(0.9) hue-rotate(180deg)}}"
BY_HAND = "Measured by hand"
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
NOT_COUNTERS = {
    "name", "family_index", "per_family_instance_index", "run_name", "run_type", "repetitions",
    "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit",
    "aggregate_name", "aggregate_unit", "big_o", "rms", "cpu_coefficient", "real_coefficient",
    "error_occurred", "error_message", "label",
}

SECTIONS = [
    ("scan", "Scan", "Nanoseconds per ray of `occMapSimulateScan` from random free poses of real maps, beside MRPT's "
     "`laserScanSimulator` and a plain walk on the same poses. Goal on each fan: `vs_mrpt` of 7 with AVX-512, 9 from 100 "
     "rays on, 6 with AVX2, 2.8 with the scalar form; beside the cells at most 1 byte a cell, built in under 25 ms for a million cells. On the huge map `vs_medium`, the "
     "medium map's time for the same fan divided by the huge one's, of 0.77 or more; on the vast one, which is measured with "
     "`QV_BENCH_VAST=1` only, of 0.63."),
    ("scans", "Scans from many poses", "Nanoseconds per ray of `occMapSimulateScans` from 2,000 random free poses, beside as many single scans "
     "(`vs_single`), and how many times as fast two threads are as one (`two_threads`), beside what two that share nothing get out of the "
     "machine (`two_apart`). Goal: `vs_single` of 1, `two_threads` of 1.9 where `two_apart` is 2."),
    ("python", "From Python", "`simulate_scans` from 100,000 random free poses × 60 beams beside the same call in C++ (`vs_cpp`), a loop of "
     "single scans in C++, MRPT in C++ and a ray marcher in numpy; and the reading of 50 records of 300 points beside "
     "`getMetricalData()` in C++, as records and with a view of each record's points made. Goal: `vs_cpp` of 0.95 for scans, "
     "`vs_cpp_one_thread` of 1.8 with two threads where the machine has it, `vs_apart` of 1 (two threads that share nothing and do as much), "
     "`vs_cpp` of 0.77 for the reading."),
    ("simulated_robot", "Simulated robot", "A whole reading of a kind 1 robot, six sensors and 170 rays, from random free poses. Goal: 3 µs."),
    ("fleet", "Fleet", "1,000 simulated robots of kind 1 on one map, each at a random free pose. Goal: under 20 KiB each without the map; readings a "
     "second grow with cores."),
    ("depth", "Depth camera", "Recorded frames: labelling, `xFilterScan` (with projection and grouping), and a whole cycle from asking for "
     "the image to publishing the records, beside OpenCV's `connectedComponents` on a mask, PCL's organised segmentation and a copy of "
     "the image. OpenCV has one thread; everybody runs twice and is timed the second time; memory once freed is kept, so that nobody pays for its pages anew. Goal on each frame: `vs_opencv` 2, `vs_pcl` 14; at best 0.15 ms at 640×480."),
    ("records", "Records", "`getMetricalData()` of 50 records of 300 points against a plain copy of the same vector on as many threads; "
     "and what a refresher waits to replace the records while readers spin. Goal: `vs_copy` of 0.91 or more, 99th percentile under 1 ms."),
    ("robot", "Whole robot", "The virtual robot with its eleven sensors, two people and its depth camera at 320×240. Goal: 500 simulated seconds a "
     "second; a refresh in 40 µs; cost in line with the number of sensors; `vs_unwatched`, two refresh cycles whose health is neither watched nor judged "
     "beside two whose health is, of 0.97."),
    ("memory", "Shared memory and calls", "Goal: `vs_pointer_loop` of 0.83 or more, `vs_proxy` of 10 or more, a call under 1 µs."),
    ("mcap", "Recordings", "64 MB of laser scans, of depth images and of both, uncompressed: `vs_write`, a plain write of the same bytes in "
     "pieces of 250 kB, and `vs_read`, a plain read through one buffer, by processor time. Goal: `vs_write` of 0.7, `vs_read` of 0.5. "
     "A simulated second of porter with all its sensors and ten looks: `vs_unrecorded`, the same not recorded, by the processor time "
     "of the session's thread (goal 0.87), and `all_vs_unrecorded`, by that of both threads. A minute of it: `vs_json`, how many times as long it is as lines of JSON (goal 20)."),
    ("ros2", "Messages on a graph", "From a measurement to a reader's callback, on the loopback interface: `vs_bare`, the bare engine's time for the same "
     "bytes, median and 99th percentile. Goal: 0.8."),
    ("graph_robot", "Robots on a graph", "A simulated second of porter with all its sensors, on a graph where nobody listens, beside the same without a "
     "graph (`vs_without`, goal 0.98); of twenty robots on one graph in one process each beside one alone (`vs_alone`, goal 0.83); depth images "
     "of 320×240 from ten robots at 10 Hz, five seconds of the machine's, through sockets of 208 kB (goal: none lost). By the processor time of all threads."),
    ("tasks", "Tasks", "Lateness of a task of 10 ms, posts, delayed calls, runs in simulated time."),
    ("model", "Robot description and obstruction", ""),
    ("range", "Range sensors", "Readings a second on the virtual services, and the share of the time spent in the sensor itself."),
    ("growth", "Growth", "On the project's own map."),
    ("floors", "Floors", "The least that rows above can take: as many bytes copied or written, rays that meet nothing, a lock, a call handed to another thread."),
]

GROWTH = [
    ("growth", "scanByRays", "s_per_ray", 1e9, "rays in a full turn, 8 m", "ns per ray"),
    ("growth", "scanByRange", "s_per_ray", 1e9, "range in an open map (m), 300 rays", "ns per ray"),
    ("growth", "scanByMap", "s_per_ray", 1e9, "side of the map (cells), 300 rays to 8 m", "ns per ray"),
    ("growth", "labelByFrame", "s_per_pixel", 1e9, "width of the depth frame (pixels)", "ns per pixel"),
    ("robot", "refreshManySensors", "real_time", 1e6, "sensors", "µs per refresh cycle"),
    ("records", "getMetricalData/manual_time/threads:", "real_time", 1e6, "reader threads", "µs per reading, of all together"),
    ("records", "getMetricalData/manual_time/threads:", "vs_copy", 1, "reader threads", "plain copy's time / ours"),
]


def load(folder):
    """NAME: {row: [round]}, and what the files say of the machine."""
    results, context = OrderedDict(), {}
    for name, _, _ in SECTIONS:
        rows = OrderedDict()
        rounds = sorted(glob.glob(os.path.join(glob.escape(folder), name + ".[0-9]*.json")))
        single = glob.glob(os.path.join(glob.escape(folder), name + ".json"))
        for path in rounds or single:
            with open(path, encoding="utf-8") as file:
                try:
                    content = json.load(file)
                except ValueError as error:
                    sys.exit(f"{path}: {error}; is it whole?")
            context = content["context"]
            for run in content["benchmarks"]:
                if run["run_type"] == "iteration" and not run.get("error_occurred"):
                    rows.setdefault(run["run_name"], []).append(run)
        if rows:
            results[name] = rows
    return results, context


def figure(runs, key):
    """The median; of a ratio the mean, or a machine with two speeds would show us one by chance."""
    values = [run[key] for run in runs if isinstance(run.get(key), (int, float))]
    if not values:
        return None
    if key.startswith("vs_") and min(values) > 0:
        return statistics.geometric_mean(values)
    return statistics.median(values)


def seconds(runs):
    return figure(runs, "real_time") * SECONDS[runs[0]["time_unit"]]


def short(value):
    """Three digits, whatever the size."""
    if value is None:
        return ""
    if value == 0:
        return "0"
    if abs(value) >= 1000:
        return f"{value:,.0f}"
    if abs(value) < 0.001:
        return f"{value:.2e}"
    return f"{value:.3g}"


def time_text(value):
    for unit, size in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if value >= size:
            return f"{value / size:.3g} {unit}"
    return f"{value / 1e-9:.3g} ns"


def row_name(name):
    name = re.sub(r"/(manual_time|real_time|iterations:\d+)", "", name)
    return name.replace("/threads:", ", threads: ")


def counters_of(rows):
    names = OrderedDict()
    for runs in rows.values():
        for key in runs[0]:
            if key not in NOT_COUNTERS:
                names[key] = None
    return sorted(names, key=lambda key: (not key.startswith("vs_"), key))


def counter_text(key, value):
    if value is not None and re.match("s_per_", key):
        return time_text(value)
    return short(value)


def table(rows):
    counters = counters_of(rows)
    lines = ["| " + " | ".join(["row", "time"] + [f"`{key}`" for key in counters]) + " |",
             "|---" * (2 + len(counters)) + "|"]
    for name, runs in rows.items():
        cells = [row_name(name), time_text(seconds(runs))]
        cells += [counter_text(key, figure(runs, key)) for key in counters]
        lines.append("| " + " | ".join(cells) + " |")
    return "\n".join(lines)


def argument_of(name, prefix):
    match = re.match(re.escape(prefix) + r"/?(\d+)", name)
    return int(match.group(1)) if match else None


def plot_growth(results):
    """A plot for each entry of GROWTH that was measured; the file names."""
    files = []
    os.makedirs(PLOTS, exist_ok=True)
    for bench, prefix, key, scale, x_label, y_label in GROWTH:
        points = []
        for name, runs in results.get(bench, {}).items():
            at = argument_of(name, prefix)
            if at is not None:
                value = seconds(runs) if key == "real_time" else figure(runs, key)
                points.append((at, value * scale))
        if len(points) < 2:
            continue
        of_peer = f"_{key}" if key.startswith("vs_") else ""
        file = f"{bench}_{prefix.split('/')[0]}{of_peer}.svg"
        draw(sorted(points), x_label, y_label, os.path.join(PLOTS, file))
        files.append((file, f"{y_label} by {x_label}"))
    return files


def draw(points, x_label, y_label, path):
    sheet, axes = plt.subplots(figsize=(4.6, 2.8), layout="constrained")
    xs, ys = zip(*points)
    axes.plot(xs, ys, marker="o", color="#1f6f8b", linewidth=1.5)
    if xs[-1] / xs[0] > 8:
        axes.set_xscale("log", base=10 if xs[-1] / xs[0] >= 1000 else 2)
        axes.set_xticks(xs, [f"{x:,}" for x in xs])
        axes.minorticks_off()
    else:
        axes.set_xticks(xs)
    if max(ys) / min(ys) > 20:
        axes.set_yscale("log")
    else:
        axes.set_ylim(0, 1.1 * max(ys))
    axes.set_xlabel(x_label)
    axes.set_ylabel(y_label)
    axes.grid(True, alpha=0.3)
    for side in ("top", "right"):
        axes.spines[side].set_visible(False)
    sheet.patch.set_facecolor("white")
    sheet.savefig(path, metadata={"Date": None})
    plt.close(sheet)
    follow_theme(path)


def follow_theme(path):
    """Adds a style with which a figure is dark where the reader's theme is."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    with open(path, "w", encoding="utf-8") as file:
        file.write(text.replace("</style>", DARK_STYLE + "</style>", 1))


def machine(context):
    model = "unknown processor"
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        text = file.read()
    match = re.search(r"model name\s*: (.*)", text)
    if match:
        model = match.group(1)
    flags = [flag for flag in ("avx512f", "avx2", "sse4_1", "asimd") if re.search(rf"\b{flag}\b", text)]
    best = f", {flags[0].upper()}" if flags else ""
    return f"{context.get('num_cpus', '?')} cores of {model}{best}, {platform.system()} {platform.machine()}"


def compiler():
    return subprocess.run(["g++", "-dumpfullversion"], capture_output=True, text=True, check=True).stdout.strip()


def rounds_of(results):
    return max((len(runs) for rows in results.values() for runs in rows.values()), default=0)


def head(results, context):
    return f"""# Performance notes

The notebook behind the [figures for users](performance.md). Made by `./dev bench` with the real maps and frames in the folder that `QV_DATA` names; `./dev bench NAME...` runs some.
Each figure is the median of {rounds_of(results)} rounds over all benchmarks. A counter `vs_<peer>` is the peer's time divided by ours, taken in turn
within a round, and the geometric mean of the rounds: greater is better. Times move with the machine, ratios hardly.

Machine: {machine(context)}; g++ {compiler()} `-O3`, no `-march`."""


def page(results, context, former):
    """Returns the page; a part that is not measured now stays as `former` has it."""
    parts = [former.get("", "") or head(results, context)]
    apart = f" Measured apart: {rounds_of(results)} rounds on {machine(context)}." if "" in former else ""
    for name, title, intro in SECTIONS:
        if results.get(name):
            told = textwrap.fill(f"`bench/{name}`. {intro}{apart}".rstrip(), 140)
            parts.append(f"## {title}\n\n{told}\n\n" + table(results[name]))
            if name == "growth":
                parts += [f"![{text}](figures/{file})" for file, text in plot_growth(results)]
        elif title in former:
            parts.append(former[title])
    return "\n\n".join([*parts, former.get(BY_HAND, "")]).rstrip() + "\n"


def former_sections(results):
    """Those of the page as it stands, by their titles: its head, "", unless all are measured anew."""
    if not os.path.exists(PAGE):
        return {}
    with open(PAGE, encoding="utf-8") as file:
        first, *parts = re.split(r"^(?=## )", file.read(), flags=re.M)
    sections = {part[3 : part.index("\n")]: part.strip() for part in parts}
    if any(title in sections and name not in results for name, title, _ in SECTIONS):
        sections[""] = first.strip()
    return sections


def main():
    if len(sys.argv) != 2 or not os.path.isdir(sys.argv[1]):
        sys.exit("usage: report.py FOLDER: a folder of NAME.json from the benchmarks")
    results, context = load(sys.argv[1])
    if not results:
        sys.exit(f"{sys.argv[1]}: no NAME.json of a benchmark")
    text = page(results, context, former_sections(results))
    with open(PAGE, "w", encoding="utf-8") as file:
        file.write(text)
    print(f"{PAGE} tells of {', '.join(results)}")


if __name__ == "__main__":
    main()
