#!/usr/bin/env python3
"""Trim RINEX 3 observation and navigation files to some satellite systems
and a time window, for the sample data of the repository.

  trim_rinex.py obs IN OUT [--systems GR] [--start T] [--end T]
  trim_rinex.py nav IN OUT [--systems GR] [--start T] [--end T]

T is "YYYY-MM-DD hh:mm:ss" in the file's time scale; both ends included.
IN may be gzipped; OUT is gzipped when its name ends in .gz (with no name
and no time stamp in the gzip header, so that the same input always gives
the same bytes).

Observation files: the header keeps only the observation types and phase
shifts of the kept systems, "# OF SATELLITES" and "PRN / # OF OBS" are
recounted over what is kept, "TIME OF FIRST/LAST OBS" follow the kept
epochs, and a COMMENT line says what was done. Epoch lines get their new
satellite count; event records are kept as they are.

Navigation files: the header is kept whole (it holds the ionosphere and
time corrections of every system); records of other systems, or with a
time of clock outside the window, are dropped.

Standard library only.
"""
import argparse
import datetime
import gzip
import io
import sys


def open_text(path):
    with open(path, "rb") as f:
        magic = f.read(2)
    if magic == b"\x1f\x8b":
        return io.TextIOWrapper(gzip.open(path, "rb"), encoding="ascii", newline="")
    return open(path, "r", encoding="ascii", newline="")


def write_out(path, lines):
    data = "".join(line + "\n" for line in lines).encode("ascii")
    if path.endswith(".gz"):
        with open(path, "wb") as raw:
            with gzip.GzipFile(filename="", mode="wb", fileobj=raw, mtime=0, compresslevel=9) as g:
                g.write(data)
    else:
        with open(path, "wb") as f:
            f.write(data)


def read_lines(path):
    with open_text(path) as f:
        return [line.rstrip("\r\n") for line in f]


def label(line):
    return line[60:80].rstrip()


def header_line(text, lab):
    return "%-60s%-20s" % (text, lab)


def parse_time(text):
    return datetime.datetime.strptime(text, "%Y-%m-%d %H:%M:%S")


def epoch_time3(line):
    """Time of a RINEX 3 epoch line "> 2024 01 01 12 00  0.0000000  0 44"."""
    y, mo, d, h, mi = (int(line[2:6]), int(line[7:9]), int(line[10:12]),
                       int(line[13:15]), int(line[16:18]))
    sec = float(line[18:29])
    whole = int(sec)
    return datetime.datetime(y, mo, d, h, mi, whole,
                             int(round((sec - whole) * 1e6)))


def in_window(t, start, end):
    return (start is None or t >= start) and (end is None or t <= end)


def trim_obs(lines, systems, start, end, note):
    try:
        hdr_end = next(i for i, l in enumerate(lines) if label(l) == "END OF HEADER")
    except StopIteration:
        sys.exit("no END OF HEADER")
    header, body = lines[:hdr_end], lines[hdr_end + 1:]
    if not header[0][0:9].strip().startswith("3"):
        sys.exit("only RINEX 3 observation files are trimmed")

    # Observation types per system, for the recount.
    types = {}
    current = None
    for l in header:
        if label(l) == "SYS / # / OBS TYPES":
            if l[0] != " ":
                current = l[0]
                types[current] = []
            types[current] += l[7:60].split()

    # Body: keep epochs in the window and satellites of kept systems.
    out_body = []
    counts = {}          # satellite -> list of counts per type
    first = last = None
    i = 0
    while i < len(body):
        line = body[i]
        if not line.startswith(">"):
            i += 1
            continue
        flag, n = int(line[31]), int(line[32:35])
        block = body[i + 1:i + 1 + n]
        i += 1 + n
        if 2 <= flag <= 5:
            if line[2:6].strip():
                t = epoch_time3(line)
                if not in_window(t, start, end):
                    continue
            out_body.append(line)
            out_body += block
            continue
        t = epoch_time3(line)
        if not in_window(t, start, end):
            continue
        kept = [s for s in block if s[0] in systems]
        out_body.append(line[:32] + "%3d" % len(kept) + line[35:])
        out_body += kept
        if flag in (0, 1):
            first = first or t
            last = t
            for s in kept:
                nt = len(types.get(s[0], []))
                c = counts.setdefault(s[0:3], [0] * nt)
                for k in range(nt):
                    if s[3 + 16 * k:3 + 16 * k + 14].strip():
                        c[k] += 1

    def fmt_time(t, scale):
        sec = t.second + t.microsecond / 1e6
        return "%6d%6d%6d%6d%6d%13.7f     %-3s" % (t.year, t.month, t.day, t.hour,
                                                  t.minute, sec, scale)

    out = []
    current = None
    for l in header:
        lab = label(l)
        if lab in ("SYS / # / OBS TYPES", "SYS / PHASE SHIFT", "SYS / DCBS APPLIED",
                   "SYS / PCVS APPLIED", "SYS / SCALE FACTOR"):
            if l[0] != " ":
                current = l[0]
            if current not in systems:
                continue
        elif lab in ("# OF SATELLITES", "PRN / # OF OBS"):
            continue        # written again below, from the kept data
        elif lab in ("TIME OF FIRST OBS", "TIME OF LAST OBS") and first is not None:
            t = first if lab == "TIME OF FIRST OBS" else last
            l = header_line(fmt_time(t, l[48:51]), lab)
        out.append(l)
        if lab == "PGM / RUN BY / DATE":
            out.append(header_line(note[:60], "COMMENT"))
    # The satellite counts go where the original had them: just before
    # END OF HEADER is allowed and simplest.
    out.append(header_line("%6d" % len(counts), "# OF SATELLITES"))
    for sat in sorted(counts):
        c = counts[sat]
        for j in range(0, max(len(c), 1), 9):
            head = "   %s" % sat if j == 0 else "      "
            out.append(header_line(head + "".join("%6d" % v for v in c[j:j + 9]),
                                   "PRN / # OF OBS"))
    out.append(lines[hdr_end])
    return out + out_body


def nav_time(line):
    return datetime.datetime(int(line[4:8]), int(line[9:11]), int(line[12:14]),
                             int(line[15:17]), int(line[18:20]), int(line[21:23]))


def trim_nav(lines, systems, start, end, note):
    hdr_end = next(i for i, l in enumerate(lines) if label(l) == "END OF HEADER")
    if not lines[0][0:9].strip().startswith("3"):
        sys.exit("only RINEX 3 navigation files are trimmed")
    out = []
    for l in lines[:hdr_end]:
        out.append(l)
        if label(l) == "PGM / RUN BY / DATE":
            out.append(header_line(note[:60], "COMMENT"))
    out.append(lines[hdr_end])
    keep = False
    for l in lines[hdr_end + 1:]:
        if l and l[0] != " ":
            keep = l[0] in systems and in_window(nav_time(l), start, end)
        if keep:
            out.append(l)
    return out


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("kind", choices=["obs", "nav"])
    ap.add_argument("input")
    ap.add_argument("output")
    ap.add_argument("--systems", default="GR")
    ap.add_argument("--start")
    ap.add_argument("--end")
    a = ap.parse_args()
    start = parse_time(a.start) if a.start else None
    end = parse_time(a.end) if a.end else None
    note = "trimmed to %s" % a.systems
    if start or end:
        note += ", %s - %s" % (a.start or "start", a.end or "end")
    lines = read_lines(a.input)
    if a.kind == "obs":
        out = trim_obs(lines, set(a.systems), start, end, note)
    else:
        out = trim_nav(lines, set(a.systems), start, end, note)
    write_out(a.output, out)


if __name__ == "__main__":
    main()
