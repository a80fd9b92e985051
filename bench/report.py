"""Prints the medians of all benchmarks as one table: ours, rival, limit and the ratios."""

import argparse
import json
import pathlib

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("results", type=pathlib.Path, help="folder with one JSON file per program")
parser.add_argument("--json", type=pathlib.Path, help="file to write the figures to")
parser.add_argument("--against", help="name of the other version, measured into the folder against")
arguments = parser.parse_args()

machine = None


def read(folder):
    """The rows of all programs of a folder, by name."""
    global machine
    rows = {}
    for file in sorted(folder.glob("*.json")):
        data = json.loads(file.read_text())
        machine = data["context"] or machine
        for run in data["benchmarks"]:
            if run.get("aggregate_name") != "median" or run.get("error_occurred"):
                continue
            parts = run["run_name"].split("/")
            # How it was run stands behind the role: arguments, iterations, the kind of time.
            while parts[-1] in ("real_time", "process_time", "manual_time") or \
                    parts[-1].startswith("iterations:") or parts[-1].isdigit():
                parts.pop()
            name, role = "/".join(parts[:-1]), parts[-1]
            if role not in ("ours", "rival", "limit"):
                continue
            row = rows.setdefault(name, {"name": name, "unit": "ns"})
            if "bytes_per_item" in run:
                row["unit"] = "bytes"
                row[role] = run["bytes_per_item"]
            else:
                # Without the counter an iteration is one item.
                row[role] = run.get("ns_per_item", run["real_time"])
            for counter in ("percent_of_core", "percentile_99", "percentile_99_clock", "resident"):
                if counter in run:
                    row[f"{role}_{counter}"] = run[counter]
            if role != "ours":
                row[role + "_name"] = run.get("label", role)
    return rows


rows = read(arguments.results)
if arguments.against:
    for name, before in read(arguments.results / "against").items():
        if name in rows:
            rows[name]["before"] = before["ours"]


def figure(value):
    return f"{value:,.2f}" if value < 100 else f"{value:,.0f}"


def readable(row):
    """Unit for a row whose times are long, and what to divide its figures by."""
    largest = max(row["ours"], row.get("rival", 0))
    if row["unit"] != "ns" or largest < 1e5:
        return row["unit"], 1
    return ("us", 1e3) if largest < 1e8 else ("ms", 1e6)


def ratio(dividend, divisor):
    """Empty where there is nothing to compare with: something may cost nothing."""
    return f"{dividend / divisor:.2f}x" if dividend is not None and divisor else ""


def of_unit(row, role, divisor):
    return figure(row[role] / divisor) if role in row else ""


def remarks(row, unit, divisor):
    """What a row tells besides its figures."""
    said = [row[role + "_name"] for role in ("rival", "limit") if role in row]
    if "ours_percent_of_core" in row:
        said.append(f"ours busy {row['ours_percent_of_core']:.1f}% of a core")
    if "ours_percentile_99" in row:
        said.append(f"99% of ours within {figure(row['ours_percentile_99'] / divisor)} {unit}, "
                    f"by the clock {figure(row['ours_percentile_99_clock'] / divisor)} {unit}")
    if "ours_resident" in row:
        said.append(f"{row['ours_resident'] / 1e6:.0f} MB")
    return "; ".join(said)


print()
print(f"{machine['num_cpus']} CPUs at {machine['mhz_per_cpu']} MHz, load {machine['load_avg']}, "
      f"medians of 5 runs")
before_titles = f" {arguments.against[:10]:>10} {'now/before':>11}" if arguments.against else ""
print(f"{'benchmark':<24} {'unit':<5} {'ours':>10} {'rival':>10} {'limit':>10} "
      f"{'rival/ours':>11} {'ours/limit':>11}{before_titles}  rival; limit")
for row in sorted(rows.values(), key=lambda row: row["name"]):
    if "ours" not in row:
        continue
    unit, divisor = readable(row)
    before = ""
    if "before" in row:
        before = f" {figure(row['before'] / divisor):>10} {ratio(row['ours'], row['before']):>11}"
    elif arguments.against:
        before = " " * 23
    print(f"{row['name']:<24} {unit:<5} {of_unit(row, 'ours', divisor):>10} "
          f"{of_unit(row, 'rival', divisor):>10} {of_unit(row, 'limit', divisor):>10} "
          f"{ratio(row.get('rival'), row['ours']):>11} {ratio(row['ours'], row.get('limit')):>11}"
          f"{before}  {remarks(row, unit, divisor)}")
if arguments.json:
    arguments.json.write_text(json.dumps(list(rows.values()), indent=1) + "\n")
    print(f"\nFigures written to {arguments.json}")
