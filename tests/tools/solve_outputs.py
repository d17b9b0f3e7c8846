#!/usr/bin/env python3
"""`zelnav solve --format` read back by other people's parsers, and
`--jobs` over several logs, and the log on the standard input.

  solve_outputs.py ZELNAV LOG SCRATCH

NMEA sentences go through pynmea2 with checksum checking on, GeoJSON
through the json module; the .pos lines are split as RTKLIB reads them.
Every position must agree with the CSV of the same run. --jobs 2 over two
copies of the log must write both outputs, each equal to a single run,
with one progress line per log.
"""
import csv
import io
import json
import os
import shutil
import subprocess
import sys

import pynmea2

zelnav, log, scratch = sys.argv[1:4]
failures = []


def check(cond, what):
    if not cond:
        failures.append(what)


def solve(*args):
    r = subprocess.run([zelnav, "solve", *args], capture_output=True, text=True)
    check(r.returncode == 0, f"solve {args}: status {r.returncode}: {r.stderr}")
    return r.stdout, r.stderr


rows = list(csv.DictReader(io.StringIO(solve(log)[0])))
fixes = [r for r in rows if r["fix"] == "1"]
check(len(rows) == 300 and len(fixes) > 250, f"{len(rows)} epochs, {len(fixes)} fixes")
by_time = {r["utc"]: r for r in rows}

# The same log on the standard input, bare messages and records mixed.
with open(log, "rb") as f:
    raw = f.read()
r = subprocess.run([zelnav, "solve", "-"], input=raw, capture_output=True)
check(r.returncode == 0 and r.stdout.decode() == solve(log)[0], "solve - differs from the file")

# NMEA: a GGA and an RMC per epoch, checksums right, positions as in the CSV.
nmea, _ = solve(log, "--format", "nmea")
lines = nmea.splitlines()
check(len(lines) == 2 * len(rows), f"{len(lines)} NMEA sentences")
seen_fix = 0
for line in lines:
    try:
        s = pynmea2.parse(line, check=True)
    except pynmea2.ParseError as e:
        failures.append(f"pynmea2 refuses {line!r}: {e}")
        continue
    stamp = s.timestamp.strftime("%H:%M:%S")
    row = next(r for t, r in by_time.items() if t.endswith(stamp))
    if s.sentence_type == "GGA":
        check((s.gps_qual == 1) == (row["fix"] == "1"), f"quality of {line}")
        if s.gps_qual == 1:
            seen_fix += 1
            check(abs(s.latitude - float(row["lat"])) < 2e-7, f"latitude of {line}")
            check(abs(s.longitude - float(row["lon"])) < 2e-7, f"longitude of {line}")
            check(abs(float(s.altitude) - float(row["h"])) < 1e-3, f"altitude of {line}")
            check(int(s.num_sats) == int(row["nglo"]) + int(row["ngps"]), f"satellites of {line}")
    elif s.sentence_type == "RMC":
        check(s.datestamp.isoformat() == row["utc"][:10], f"date of {line}")
        check((s.status == "A") == (row["fix"] == "1"), f"status of {line}")
    else:
        failures.append(f"unexpected sentence {line}")
check(seen_fix == len(fixes), f"{seen_fix} GGA fixes")

# RTKLIB .pos: % header lines naming UTC, then one line per fix.
pos, _ = solve(log, "--format", "pos")
header = [l for l in pos.splitlines() if l.startswith("%")]
data = [l.split() for l in pos.splitlines() if not l.startswith("%")]
check(any("UTC" in l and "latitude(deg)" in l for l in header), "pos column line")
check(len(data) == len(fixes), f"{len(data)} pos lines")
for d, row in zip(data, fixes):
    check(d[0].replace("/", "-") + "T" + d[1][:8] == row["utc"], f"time {d[:2]} vs {row['utc']}")
    check(abs(float(d[2]) - float(row["lat"])) < 1e-9 and abs(float(d[3]) - float(row["lon"])) < 1e-9,
          f"position {d}")
    check(d[5] == "5" and len(d) == 15, f"quality and columns {d}")

# GeoJSON: valid JSON, a Point per fix, the LineString through all of them.
doc = json.loads(solve(log, "--format", "geojson")[0])
feats = doc["features"]
points = [f for f in feats if f["geometry"]["type"] == "Point"]
tracks = [f for f in feats if f["geometry"]["type"] == "LineString"]
check(doc["type"] == "FeatureCollection" and len(points) == len(fixes) and len(tracks) == 1,
      f"{len(points)} points, {len(tracks)} tracks")
check(tracks and tracks[0]["geometry"]["coordinates"] == [p["geometry"]["coordinates"] for p in points],
      "the track runs through the points")
for p, row in zip(points, fixes):
    lon, lat, h = p["geometry"]["coordinates"]
    check(p["properties"]["utc"] == row["utc"] + "Z" and abs(lat - float(row["lat"])) < 1e-9
          and abs(lon - float(row["lon"])) < 1e-9, f"point {p}")

# --jobs: two logs at once, one output each, as a single run writes it.
work = os.path.join(scratch, "solve_jobs")
shutil.rmtree(work, ignore_errors=True)
os.makedirs(work)
shutil.copy(log, os.path.join(work, "a.zlog"))
shutil.copy(log, os.path.join(work, "b.zlog"))
single, _ = solve(log, "--format", "pos")
_, err = solve("--jobs", "2", "--format", "pos", "-o", os.path.join(work, "out"),
               os.path.join(work, "a.zlog"), os.path.join(work, "b.zlog"))
progress = [l for l in err.splitlines() if "] " in l and " -> " in l]
check(len(progress) == 2 and any("[1/2]" in l for l in progress)
      and any("[2/2]" in l for l in progress), f"progress lines: {err}")
for name in ("a", "b"):
    with open(os.path.join(work, "out", name + ".pos")) as f:
        got = f.read()
    check(got == single.replace(log, os.path.join(work, name + ".zlog")), f"{name}.pos differs")

for f in failures[:20]:
    print(f)
sys.exit(1 if failures else 0)
