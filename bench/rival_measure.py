"""Measures what bench_measure's figures cost with numpy and scipy, in the form of its results."""

import json
import sys
import time

import numpy as np
from scipy import optimize, signal


def moving(count):
    at = np.arange(count, dtype=float)
    return 100.0 * np.sin(at * 0.0123) + np.sin(at * 1.7)


def band(values, cycle_time=0.001):
    """The figures of a band, as they are written down: a pass of numpy for each."""
    times = np.arange(len(values)) * cycle_time
    mean = values.mean()
    centred = values - mean
    slope = np.dot(times - times.mean(), centred) / np.sum((times - times.mean()) ** 2)
    return (mean, np.sqrt(np.mean(values ** 2)), centred.std(ddof=1), values.min(), values.max(),
            values.argmin(), values.argmax(), np.ptp(values), slope)


def circle_lines(count):
    turns = 3.0
    at = np.arange(count, dtype=float)
    along = at / (count / 2.0)
    sense = np.where(along < 1.0, 1.0, -1.0)
    angle = np.where(along < 1.0, along, 2.0 - along) * turns * 2.0 * np.pi
    late = angle - sense * 0.00015
    x = (50.002 * np.cos(late) + 0.0003 * np.sin(at * 0.7)
         + sense * np.where(np.sin(late) > 0, 0.0025, -0.0025))
    y = (49.999 * np.sin(late) + 0.0003 * np.cos(at * 0.9)
         - sense * np.where(np.cos(late) > 0, 0.0025, -0.0025))
    return x, y, 50.0 * np.cos(angle), 50.0 * np.sin(angle)


def circle(x, y, radius=50.0):
    """One turn of either sense: circles and the joint fit, the turns given."""
    half = len(x) // 2
    third = half // 3
    arcs = [(slice(third, 2 * third), 1.0), (slice(half + third, half + 2 * third), -1.0)]
    rows, right, centres = [], [], []
    for part, _ in arcs:
        px, py = x[part], y[part]
        fit = optimize.least_squares(
            lambda c, px=px, py=py: np.hypot(px - c[0], py - c[1]) - c[2], [0.0, 0.0, 50.0],
            method="lm")
        centres.append(fit.x)
    for number, (part, sense) in enumerate(arcs):
        u, w = x[part] - centres[number][0], y[part] - centres[number][1]
        r = np.hypot(u, w)
        c, s = u / r, w / r
        keep = np.minimum(abs(c), abs(s)) > np.sin(np.radians(5.0))
        columns = np.zeros((keep.sum(), 10))
        c, s, r = c[keep], s[keep], r[keep]
        columns[:, 2 * number], columns[:, 2 * number + 1] = c, s
        columns[:, 4] = 1.0
        columns[:, 5] = radius / 2 * (c * c - s * s)
        columns[:, 6] = radius / 2 * 2 * s * c
        columns[:, 7] = -sense * 50.0 * s * c
        columns[:, 8] = sense * np.sign(s) / 2 * c
        columns[:, 9] = -sense * np.sign(c) / 2 * s
        rows.append(columns)
        right.append(r - radius)
    return np.linalg.lstsq(np.vstack(rows), np.concatenate(right), rcond=None)


def contour(x, y, x_cmd, y_cmd, reach=15):
    """Distances from the segments around each cycle, one shift after another."""
    n = len(x)
    best = np.full(n, np.inf)
    dx, dy = np.diff(x_cmd), np.diff(y_cmd)
    length = dx * dx + dy * dy
    for shift in range(-reach, reach):
        i = np.arange(max(0, -shift), min(n, n - 1 - shift))
        j = i + shift
        px, py = x[i] - x_cmd[j], y[i] - y_cmd[j]
        foot = np.clip((px * dx[j] + py * dy[j]) / length[j], 0.0, 1.0)
        best[i] = np.minimum(best[i], (px - foot * dx[j]) ** 2 + (py - foot * dy[j]) ** 2)
    return np.sqrt(best)


def match(a, b):
    return np.argmax(signal.correlate(b - b.mean(), a - a.mean(), method="fft")) - len(a) + 1


def measure(name, label, work, repeats=5):
    work()
    times = []
    for _ in range(repeats):
        start = time.perf_counter()
        work()
        times.append(time.perf_counter() - start)
    median = sorted(times)[len(times) // 2] * 1e9
    return {"name": f"{name}_median", "run_name": name, "aggregate_name": "median",
            "real_time": median, "time_unit": "ns", "label": label}


def main():
    x, y, x_cmd, y_cmd = circle_lines(1000000)
    curves = [moving(100000) for _ in range(16)]
    long_band = moving(10000000)
    values = moving(1000000)
    runs = [
        measure("measure/live16/rival", "numpy", lambda: [band(curve) for curve in curves]),
        measure("measure/band1e7/rival", "numpy", lambda: band(long_band)),
        measure("circle/1e6/rival", "scipy, turns given", lambda: circle(x, y)),
        measure("contour/1e6/rival", "numpy", lambda: contour(x, y, x_cmd, y_cmd)),
        measure("match/1e6/rival", "scipy", lambda: match(values, values)),
    ]
    json.dump({"context": {}, "benchmarks": runs}, sys.stdout, indent=1)


if __name__ == "__main__":
    main()
