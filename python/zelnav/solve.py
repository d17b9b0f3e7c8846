"""Solving a log, epoch by epoch, the way `zelnav solve` does it.

The satellite computation needs a reference point for its atmospheric
corrections: it is seeded from the log's approximate position, or else
from a first fix on GLONASS rows alone (they need no point), and moves to
every plausible fix. Positions are given in WGS-84 whatever the mode (a
PZ-90 fix is moved by the datum shift), as the command prints them.

The messages go to the library as the log holds them: unlike the command,
which runs a structural check on each message first, this is meant for
logs the converter wrote.
"""
import ctypes as C
import math
from collections import namedtuple

from ._lib import lib
from .handles import Converter, SatelliteComputer, Solution
from .log import read_header, read_log

FIELDS = ("utc", "fix", "sys", "x", "y", "z", "lat", "lon", "h", "dt", "tau", "nglo", "ngps",
          "dop", "vx", "vy", "vz")
# One epoch, the columns of the command's CSV; fields of a missing fix or
# velocity are None.
Fix = namedtuple("Fix", FIELDS)

MODES = {"glo": 0, "gps": 1, "both": 10, 0: 0, 1: 1, 10: 10}
UTC_OFFSET = 10800                  # the receiver time scale runs 3 h ahead of UTC
_WGS84_A, _WGS84_INVF = 6378137.0, 298.257223563
_RAD = 57.29577951308232


def pz90_to_wgs84(xyz):
    """The datum shift: a translation only."""
    return (xyz[0] - 0.36, xyz[1] + 0.08, xyz[2] + 0.18)


def xyz_to_blh(xyz):
    """WGS-84 latitude, longitude (degrees, longitude 0..360) and height
    (m) of an Earth-centred point, iterated as the library does it (the
    latitude of the last pass is c plus the correction of the pass
    before)."""
    f = 1.0 / _WGS84_INVF
    a, e2 = _WGS84_A, 2.0 * f - f * f
    X, Y, Z = xyz
    D = math.hypot(X, Y)
    la = abs(math.asin(Y / D))
    if Y < 0 < X:
        L = 2 * math.pi - la
    elif Y < 0 and X < 0:
        L = math.pi + la
    elif Y > 0 > X:
        L = math.pi - la
    elif X > 0:
        L = la
    else:
        L = math.pi
    r = math.sqrt(X * X + Y * Y + Z * Z)
    c = math.asin(Z / r)
    p = e2 * a / (2.0 * r)
    s1 = 0.0
    while True:
        b = c + s1
        sb = math.sin(b)
        s2 = math.asin(p * math.sin(2.0 * b) / math.sqrt(1.0 - e2 * sb * sb))
        d = abs(s2 - s1)
        s1 = s2
        if not d > 1e-6:
            break
    sb = math.sin(b)
    h = D * math.cos(b) + Z * sb - a * math.sqrt(1.0 - e2 * sb * sb)
    return (b * _RAD, L * _RAD, h)


def utc_text(tm):
    """"YYYY-MM-DDTHH:MM:SS" of a receiver time (tmZel)."""
    d = (C.c_uint * 6)()
    if tm >= UTC_OFFSET:
        lib.tmZelToDate(tm - UTC_OFFSET, d)
    return "%04u-%02u-%02uT%02u:%02u:%02u" % tuple(d)


def _plausible(fix):
    """A fix worth using as the next reference point: finite and within
    1000 km of the Earth's surface."""
    if fix is None or fix.actual != 1:
        return False
    r = math.sqrt(sum(v * v for v in fix.xyz))
    return math.isfinite(r) and 5371000.0 < r < 7371000.0


def _row(tm, fix, spd, datum):
    if fix is None or fix.actual != 1:
        return Fix(utc_text(tm), 0, *([None] * 15))
    xyz = pz90_to_wgs84(fix.xyz) if datum == 1 else tuple(fix.xyz)
    lat, lon, h = xyz_to_blh(xyz)
    if lon > 180.0:
        lon -= 360.0
    v = tuple(spd.vxyz) if spd is not None and spd.actual == 1 else (None, None, None)
    return Fix(utc_text(tm), 1, fix.sys, *xyz, lat, lon, h, fix.dt, fix.tau, fix.numGlo,
               fix.numGps, fix.dop10 / 10.0, *v)


def solve(path, mode="both", recorded_only=False):
    """Yields one Fix per epoch of the log at `path`. mode: "glo", "gps"
    or "both" (or 0, 1, 10)."""
    if mode not in MODES:
        raise ValueError(f"mode must be glo, gps or both, not {mode!r}")
    mode = MODES[mode]
    datum = 0 if mode == 1 else 1
    header = read_header(path)
    with Converter() as cnv, SatelliteComputer() as sat, \
            Solution(mode) as pnt, Solution(0) as boot:
        point_set = False
        if header.position is not None:
            sat.set_point(header.position, 0, 0)
            point_set = True
        d_utc = 0
        for msg in read_log(path):
            lst = cnv.decode(msg.data)
            utc = cnv.gps_utc()
            if utc.actual:
                d_utc = utc.dtGpsUtc
            tm = lib.getTmZel(lst.address)
            if tm == 0:
                continue
            fix = spd = None
            if not point_set:
                # First point from GLONASS rows alone, else from a fix in
                # the chosen mode; without one the epoch has no fix.
                rows = sat.get(lst, tm, d_utc)
                first, first_datum = boot.get(rows), 1
                if not _plausible(first):
                    first, first_datum = pnt.get(rows), datum
                    pnt.speed()
                if _plausible(first):
                    sat.set_point(first.xyz, 0, first_datum)
                    point_set = True
            if point_set:
                rows = sat.get(lst, tm, d_utc)
                fix, spd = pnt.get(rows), pnt.speed()
                if _plausible(fix):
                    sat.set_point(fix.xyz, 0, datum)
            if recorded_only and msg.interpolated:
                continue
            yield _row(tm, fix, spd, datum)


def solve_array(path, mode="both", recorded_only=False):
    """The epochs of solve() as one numpy structured array (needs numpy);
    missing values are NaN, utc is a datetime64[s]."""
    import numpy as np
    dtype = [("utc", "datetime64[s]"), ("fix", "i1"), ("sys", "i1")] + [
        (n, "f8") for n in FIELDS[3:11]] + [("nglo", "i1"), ("ngps", "i1")] + [
        (n, "f8") for n in FIELDS[13:]]
    rows = [tuple(float("nan") if v is None and k not in ("sys", "nglo", "ngps") else
                  (0 if v is None else v) for k, v in zip(FIELDS, r))
            for r in solve(path, mode, recorded_only)]
    return np.array(rows, dtype=dtype)
