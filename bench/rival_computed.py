"""Measures what bench_computed's axes cost with numpy, in the form of its results."""

import json
import sys
import time

import numpy as np

LINES, AXES, COMPUTED, CYCLE_TIME = 1000, 8, 4, 0.001


def main():
    at = np.arange(LINES * AXES, dtype=float)
    lines = (100.0 * np.sin(at * 0.0123) + np.sin(at * 1.7)).reshape(LINES, AXES)
    wide = np.zeros((LINES, AXES + COMPUTED))
    before = lines[0]

    def batch():
        wide[:, :AXES] = lines
        speed = np.diff(lines, axis=0, prepend=before[None, :]) / CYCLE_TIME
        wide[:, AXES] = lines[:, 0] - lines[:, 1]
        wide[:, AXES + 1] = np.sqrt(speed[:, 1] ** 2 + speed[:, 3] ** 2)
        wide[:, AXES + 2] = lines[:, 6] - lines[:, 7]
        wide[:, AXES + 3] = lines[:, 1] / 25.4

    times = []
    for _ in range(5):
        start = time.perf_counter()
        for _ in range(2000):
            batch()
        times.append((time.perf_counter() - start) / 2000)
    median = sorted(times)[len(times) // 2] * 1e9
    name = "computed/4/rival"
    json.dump({"context": {}, "benchmarks": [
        {"name": f"{name}_median", "run_name": name, "aggregate_name": "median",
         "ns_per_item": median / (LINES * COMPUTED), "real_time": median, "time_unit": "ns",
         "label": "numpy"}]}, sys.stdout, indent=1)


if __name__ == "__main__":
    main()
