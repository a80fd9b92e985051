"""Prints the medians of all benchmarks as one table: ours, rival, limit and the ratios."""

import argparse
import json
import pathlib

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("results", type=pathlib.Path, help="folder with one JSON file per program")
parser.add_argument("--json", type=pathlib.Path, help="file to write the figures to")
arguments = parser.parse_args()

rows = {}
machine = None
for file in sorted(arguments.results.glob("*.json")):
    data = json.loads(file.read_text())
    machine = data["context"]
    for run in data["benchmarks"]:
        if run.get("aggregate_name") != "median":
            continue
        parts = run["run_name"].split("/")
        if parts[-1] in ("real_time", "process_time"):
            parts.pop()
        name, role = "/".join(parts[:-1]), parts[-1]
        if role not in ("ours", "rival", "limit"):
            continue
        row = rows.setdefault(name, {"name": name, "unit": "ns"})
        # Without the counter an iteration is one item.
        row[role] = run.get("ns_per_item", run["real_time"])
        if role != "ours":
            row[role + "_name"] = run.get("label", role)


def figure(value):
    return f"{value:,.2f}" if value < 100 else f"{value:,.0f}"


print()
print(f"{machine['num_cpus']} CPUs at {machine['mhz_per_cpu']} MHz, load {machine['load_avg']}, "
      f"medians of 5 runs")
print(f"{'benchmark':<20} {'unit':<5} {'ours':>10} {'rival':>10} {'limit':>10} "
      f"{'rival/ours':>11} {'ours/limit':>11}  rival; limit")
for row in sorted(rows.values(), key=lambda row: row["name"]):
    print(f"{row['name']:<20} {row['unit']:<5} {figure(row['ours']):>10} "
          f"{figure(row['rival']):>10} {figure(row['limit']):>10} "
          f"{row['rival'] / row['ours']:>10.2f}x {row['ours'] / row['limit']:>10.2f}x  "
          f"{row['rival_name']}; {row['limit_name']}")
if arguments.json:
    arguments.json.write_text(json.dumps(list(rows.values()), indent=1) + "\n")
    print(f"\nFigures written to {arguments.json}")
